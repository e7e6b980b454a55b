#pragma once

#include "Singleton.h"

#include <QMultiMap>
#include <QObject>
#include <QString>

#include <functional>

class QFile;

// The program's one diagnostic channel. Every line goes to Ferrox.log in the
// user directory at once, and stays in memory for the log panel.
class Log : public QObject, public Singleton<Log>
{
    Q_OBJECT
public:
    enum Level
    {
        Info = 0,
        Warning = 1,
        Error = 2
    };

    Log();
    ~Log() override;

    // Logs through the one Log object. Without one (command-line tools,
    // tests of a single class) the message goes to the fallback sink, if any.
    static void log(const QString& message, int level);

    using FallbackSink = std::function<void(const QString& message, int level)>;
    static void setFallbackSink(FallbackSink sink);

    // All lines of one level, newest first.
    QString text(int level) const;

    QString filePath() const { return logFilePath; }

    // Every line of this run in the order of logging, without the time.
    QString allText;

signals:
    void logChanged();

private:
    void write(const QString& message, int level);
    void openFile();
    void writeHeader();

    QFile* file = nullptr;
    QMultiMap<int, QString> linesByLevel;
    QString logFilePath;
};
