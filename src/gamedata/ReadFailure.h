#pragma once

#include "MessageBoxes.h"

#include <QString>

// The first failure of a read, with the text of its closing box. A reader
// records it and stops; the operation that owns the read shows the box once,
// or hands the failure to a caller that reports it in its own way.
class ReadFailure
{
public:
    bool failed() const { return !text.isEmpty(); }
    const QString& message() const { return text; }

    // Later failures follow from the first and only repeat it.
    void record(const QString& message)
    {
        if (text.isEmpty())
            text = message;
    }

    // The closing box, when anything failed.
    void showClosingBox() const
    {
        if (failed())
            fatalError(text);
    }

private:
    QString text;
};
