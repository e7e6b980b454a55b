#pragma once

#include "Log.h"

#include <QStringList>

// Collects what is logged while no Log object exists, as "[level] message".
class LogCapture
{
public:
    LogCapture()
    {
        Log::setFallbackSink([this](const QString& message, int level) {
            static const char* marks[] = {"[Info] ", "[Warning] ", "[Error] "};
            lines.append(QLatin1String(marks[qBound(0, level, 2)]) + message);
        });
    }
    ~LogCapture() { Log::setFallbackSink({}); }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    bool contains(const QString& line) const { return lines.contains(line); }

    QStringList lines;
};
