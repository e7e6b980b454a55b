#include "Log.h"

#include "Constants.h"
#include "Environment.h"
#include "StartupError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTextStream>
#include <QThread>
#include <QTime>

namespace {
Log::FallbackSink& fallbackSink()
{
    static Log::FallbackSink sink;
    return sink;
}

QString levelMark(int level)
{
    switch (level) {
    case Log::Warning:
        return QStringLiteral("[ Warning ] ");
    case Log::Error:
        return QStringLiteral("[ Error ] ");
    default:
        return QStringLiteral("[ Info ] ");
    }
}

QString permissionText(const char* sourceText)
{
    return QCoreApplication::translate("Log", sourceText) + userDirectory();
}
} // namespace

Log::Log()
{
    openFile();
    writeHeader();
}

Log::~Log()
{
    write(QStringLiteral("Log shutting down."), Info);
    if (file) {
        file->close();
        delete file;
    }
}

void Log::openFile()
{
    logFilePath = QDir::toNativeSeparators(userDirectory() + QStringLiteral("/Ferrox.log"));
    file = new QFile(logFilePath);
    if (file->open(QIODevice::WriteOnly | QIODevice::Text))
        return;

    if (!QDir().mkdir(userDirectory())) {
        reportStartupError(permissionText(
            "Could not create user directory,this is most likely a permissions issue.\n"
            "Please check that you have sufficient write access to: "));
    }
    if (!file->open(QIODevice::WriteOnly | QIODevice::Text)) {
        reportStartupError(
            permissionText("Could not open log file,this is most likely a permissions issue.\n"
                           "Please check that you have sufficient write access to: "));
    }
}

void Log::writeHeader()
{
    write(QStringLiteral("OS Version: ") + osVersionName(), Info);
    write(QStringLiteral("Ferrox Version: ") + QLatin1String(Ferrox::ApplicationVersion) +
              QLatin1Char(' ') + architectureName(),
          Info);
    write(QStringLiteral("Cpu Count: ") + QString::number(QThread::idealThreadCount()), Info);
    write(QStringLiteral("QT Version: ") + qtVersionString(), Info);
    write(QStringLiteral("Local Language: ") + QLocale::system().name(), Info);
}

void Log::log(const QString& message, int level)
{
    if (Log* log = instance()) {
        log->write(message, level);
    } else if (fallbackSink()) {
        fallbackSink()(message, level);
    }
}

void Log::setFallbackSink(FallbackSink sink)
{
    fallbackSink() = std::move(sink);
}

void Log::write(const QString& message, int level)
{
    const QTime now = QTime::currentTime();
    const QString line = levelMark(level) + message + QStringLiteral("\r\n");

    // The file is opened in text mode, which on this platform leaves "\r\n"
    // as it is; the stream writes UTF-8.
    if (file && file->isOpen()) {
        QTextStream stream(file);
        stream.setEncoding(QStringConverter::Utf8);
        stream << now.hour() << ':' << now.minute() << ':' << now.second() << line;
        stream.flush();
    }

    allText.append(line);
    linesByLevel.insert(level, line);
    emit logChanged();
}

QString Log::text(int level) const
{
    QString result;
    for (auto it = linesByLevel.constFind(level);
         it != linesByLevel.constEnd() && it.key() == level; ++it)
        result += it.value();
    return result;
}
