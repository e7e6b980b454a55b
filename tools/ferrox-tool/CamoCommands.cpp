#include "CamoCommands.h"

#include "CamoExports.h"
#include "CamoLoader.h"
#include "Database.h"
#include "MessageBoxes.h"
#include "MoReaderCached.h"
#include "OffscreenVehicle.h"
#include "Settings.h"
#include "StartupError.h"
#include "ToolContext.h"

#include "CamoBakeJob.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <cstdio>

namespace {

void printLine(const QString& text)
{
    std::fputs((text + QLatin1Char('\n')).toUtf8().constData(), stdout);
}

QString numbers(const Vector4& v)
{
    QStringList parts;
    for (float value : v)
        parts.append(QString::number(double(value), 'g', 6));
    return parts.join(QLatin1Char(' '));
}

void printOption(const CamoOption& option)
{
    printLine(QStringLiteral("  %1\t%2\t%3").arg(option.group, option.name, option.texture));
    QStringList colours;
    for (const Vector4& colour : option.colors)
        colours.append(numbers(colour));
    printLine(QStringLiteral("    colours: ") + colours.join(QStringLiteral(" | ")));
    QStringList keys = option.tiling.keys();
    keys.sort();
    QStringList tilings;
    for (const QString& key : std::as_const(keys))
        tilings.append(key + QLatin1Char(' ') + numbers(option.tiling.value(key)));
    printLine(QStringLiteral("    tiling: ") +
              (tilings.isEmpty() ? QStringLiteral("-") : tilings.join(QStringLiteral(", "))));
}

bool nationMatches(const QString& wanted, const QString& nation)
{
    return wanted.isEmpty() || wanted.compare(nation, Qt::CaseInsensitive) == 0;
}

} // namespace

bool applyCamoChoice(CamoLoader& camo, const QString& choice)
{
    static const QRegularExpression pattern(QStringLiteral("^(summer|winter|desert):(\\d{1,4})$"));
    const QRegularExpressionMatch match = pattern.match(choice);
    if (!match.hasMatch()) {
        printError(QStringLiteral("--camo wants SEASON:ROW, such as summer:0 (seasons summer, "
                                  "winter, desert): ") +
                   choice);
        return false;
    }
    const QString season = match.captured(1);
    const int row = match.captured(2).toInt();
    const int rows = int(camo.current.season(season).size());
    if (row >= rows) {
        printError(QStringLiteral("%1 of %2 has %3 patterns: no row %4")
                       .arg(season, camo.nation.isEmpty() ? QStringLiteral("?") : camo.nation)
                       .arg(rows)
                       .arg(row));
        return false;
    }
    camo.enabled = true;
    camo.select(row, season);
    return true;
}

int camoCommand(const ToolArguments& arguments)
{
    if (arguments.positional.isEmpty() || arguments.positional.size() > 2) {
        printError(QStringLiteral("usage: ferrox-tool camo GAME_DIR [NATION]"));
        return 2;
    }
    ToolContext tool(arguments.positional[0], arguments);
    if (!tool.requireGameDirectory())
        return 1;
    reportToStandardError();
    resetStartupState();
    MoReaderCached catalogues;
    Database database;
    if (arguments.hasOption(QStringLiteral("tank-list")))
        database.tankListPath = arguments.option(QStringLiteral("tank-list"));
    // No GL: patterns get no texture, but their previews and values.
    CamoLoader camo;
    database.rebuildDatabase();
    if (startupErrorPending())
        printError(takeStartupError());

    const QString wanted = arguments.positional.value(1);
    bool found = false;
    for (int i = 1; i < database.nations.size(); ++i) {
        const QString nation = database.nations[i];
        const QString folder = QString(nation).toLower();
        if (!nationMatches(wanted, nation) && !nationMatches(wanted, folder))
            continue;
        found = true;
        const CamoNation* catalogue = nullptr;
        for (const CamoNation& candidate : std::as_const(camo.nations))
            if (candidate.nation == nation)
                catalogue = &candidate;
        if (!catalogue) {
            printLine(nation + QStringLiteral(": no camouflage catalogue"));
            continue;
        }
        printLine(nation + QStringLiteral(": %1 patterns").arg(catalogue->options.size()));
        for (const CamoOption& option : catalogue->options)
            printOption(option);
    }
    if (!found) {
        printError(QStringLiteral("No nation named: ") + wanted);
        return 1;
    }
    return 0;
}

int bakeCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() != 2 || arguments.modDirectory.isEmpty()) {
        printError(QStringLiteral("usage: ferrox-tool bake GAME_DIR NAME --mod DIR "
                                  "[--camo SEASON:ROW] [--overwrite]"));
        return 2;
    }
    if (isInsideFolder(arguments.modDirectory, arguments.positional[0])) {
        printError(QStringLiteral("Ferrox never writes into the game folder: ") +
                   arguments.modDirectory);
        return 1;
    }
    OffscreenVehicle vehicle;
    vehicle.withCamouflage = true;
    if (!vehicle.load(arguments))
        return 1;
    CamoLoader& camo = *vehicle.camouflage();
    const QString choice = arguments.hasOption(QStringLiteral("camo"))
                               ? arguments.option(QStringLiteral("camo"))
                               : QStringLiteral("summer:0");
    if (!applyCamoChoice(camo, choice))
        return 1;
    const bool overwrite = arguments.hasOption(QStringLiteral("overwrite"));
    setMessageBoxHandler([overwrite](const MessageBoxRequest& request) {
        const bool prompt = request.buttons.testFlag(QMessageBox::Cancel);
        if (!prompt)
            printError(request.text);
        return int(prompt && !overwrite ? QMessageBox::Cancel : QMessageBox::Ok);
    });
    QDir().mkpath(QFileInfo(arguments.modDirectory).absoluteFilePath());
    const CamoBakeReport report = exportCamoBake();
    for (const QString& path : report.written)
        printLine(QStringLiteral("written\t") + path);
    for (const QString& path : report.refused)
        printLine(QStringLiteral("kept\t") + path + QStringLiteral(" (exists; --overwrite)"));
    for (const QString& path : report.failed)
        printLine(QStringLiteral("failed\t") + path);
    return report.started && report.failed.isEmpty() ? 0 : 1;
}
