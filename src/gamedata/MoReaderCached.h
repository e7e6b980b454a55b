#pragma once

#include "Singleton.h"

#include <QObject>
#include <QString>

#include <memory>

class MoFile;

// Turns a catalogue key such as "#menu:nations/ardenia" into the display
// text of the installation's language. One catalogue (one .mo file of
// res/text/LC_MESSAGES) is kept in memory at a time.
class MoReaderCached : public QObject, public Singleton<MoReaderCached>
{
    Q_OBJECT
public:
    MoReaderCached();
    ~MoReaderCached() override;

    // Any text without a ":" comes back as it is. A key of a catalogue that
    // can't be read gives "", a key missing from its catalogue gives itself.
    QString translate(const QString& text);

    // Full path of the catalogue in memory, empty before the first load.
    QString currentPath() const { return path; }

private:
    static QString catalogPath(const QString& catalogName);

    QString path;
    std::unique_ptr<MoFile> file;
};
