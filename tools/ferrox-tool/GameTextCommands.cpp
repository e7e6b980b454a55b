#include "GameTextCommands.h"

#include "Database.h"
#include "Log.h"
#include "MoReaderCached.h"
#include "StartupError.h"
#include "ToolContext.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

#include <cstdio>
#include <memory>

namespace {
void printLine(const QString& text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

// One table row on one line: a tab or line break inside a value becomes a
// blank, so that the columns stay apart.
QString rowText(const QSqlQuery& query)
{
    QStringList values;
    for (int column = 0; column < query.record().count(); ++column) {
        QString value = query.value(column).toString();
        value.replace(QLatin1Char('\t'), QLatin1Char(' '))
            .replace(QLatin1Char('\n'), QLatin1Char(' '))
            .replace(QLatin1Char('\r'), QLatin1Char(' '));
        values.append(value);
    }
    return values.join(QLatin1Char('\t'));
}

// A box that was not given reads as the "all" word, as the window starts.
QString boxValue(const ToolArguments& arguments, const char* name, const QString& all)
{
    const QString value = arguments.option(QLatin1String(name));
    return arguments.hasOption(QLatin1String(name)) ? value : all;
}
} // namespace

int translateCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2) {
        printError(QStringLiteral("usage: ferrox-tool translate GAME_DIR KEY"));
        return 2;
    }
    ToolContext context(arguments.positional[0], arguments);
    if (!context.requireGameDirectory())
        return 1;
    reportToStandardError();
    MoReaderCached reader;
    printLine(reader.translate(arguments.positional[1]));
    return 0;
}

int tanksCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 1) {
        printError(QStringLiteral("usage: ferrox-tool tanks GAME_DIR [--nation N] [--category C] "
                                  "[--tier T] [--filter TEXT] [--tank-list FILE] "
                                  "[--resources FILE]"));
        return 2;
    }
    // Named before the context moves to the tool's folder.
    const QString tankList =
        arguments.hasOption(QStringLiteral("tank-list"))
            ? QFileInfo(arguments.option(QStringLiteral("tank-list"))).absoluteFilePath()
            : QString();
    ToolContext context(arguments.positional[0], arguments);
    if (!context.requireGameDirectory())
        return 1;
    reportToStandardError();
    resetStartupState();

    MoReaderCached reader;
    Database database;
    // The context made the tool's folder the working directory, so the
    // program's relative default names the tank list beside the tool.
    if (!tankList.isEmpty())
        database.tankListPath = tankList;
    bool rebuilt = false;
    QObject::connect(&database, &Database::databaseRebuilt, [&rebuilt] { rebuilt = true; });
    database.rebuildDatabase();
    if (startupErrorPending())
        printError(takeStartupError());
    if (!rebuilt) {
        printError(QStringLiteral("The vehicle table could not be built."));
        return 1;
    }

    const QString all = database.nations.value(0);
    const QString nation = boxValue(arguments, "nation", all);
    const QString category = boxValue(arguments, "category", all);
    const QString tier = boxValue(arguments, "tier", all);
    std::unique_ptr<QSqlQuery> query(
        arguments.hasOption(QStringLiteral("filter"))
            ? database.filter(nation, category, tier,
                              QLatin1Char('%') + arguments.option(QStringLiteral("filter")) +
                                  QLatin1Char('%'))
            : database.query(nation, category, tier));
    while (query->next())
        printLine(rowText(*query));
    return 0;
}
