// ferrox-tool translate and tanks, run as separate processes on the sample
// installation, with the program's own tank list beside the tool.

#include "QtPrinters.h"
#include "TestRoot.h"
#include "ToolRunner.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {
const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

QList<QStringList> rows(const QByteArray& out)
{
    QList<QStringList> result;
    for (const QString& line : QString::fromUtf8(out).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        result.append(line.split(QLatin1Char('\t')));
    return result;
}

QStringList column(const QList<QStringList>& table, int number)
{
    QStringList values;
    for (const QStringList& row : table)
        values.append(row.value(number));
    return values;
}

ToolResult tanks(const QStringList& options = {})
{
    return runTool(QStringList{QStringLiteral("tanks"), sampleGame} + options);
}
} // namespace

TEST(GameTextCommandsTest, TranslatePrintsWhatTheCatalogueGives)
{
    QTemporaryDir elsewhere;
    const ToolResult nation =
        runTool({QStringLiteral("translate"), sampleGame, QStringLiteral("#menu:nations/borvia")},
                elsewhere.path());
    ASSERT_EQ(nation.exitCode, 0) << nation.err.toStdString();
    EXPECT_EQ(nation.out, QByteArray("Borvia\n"));

    const ToolResult name = runTool(
        {QStringLiteral("translate"), sampleGame, QStringLiteral("#borvia_vehicles:B04_Skorpion")});
    EXPECT_EQ(name.out, QStringLiteral("Škorpion\n").toUtf8());

    // Texts without a ":" pass; a missing key comes back with a warning; a
    // missing catalogue gives an empty text.
    EXPECT_EQ(runTool({QStringLiteral("translate"), sampleGame, QStringLiteral("Plain text")}).out,
              QByteArray("Plain text\n"));
    const ToolResult missingKey =
        runTool({QStringLiteral("translate"), sampleGame, QStringLiteral("#menu:no/such/key")});
    EXPECT_EQ(missingKey.out, QByteArray("no/such/key\n"));
    EXPECT_TRUE(missingKey.err.contains("Could not translate: no/such/key"));
    EXPECT_EQ(
        runTool({QStringLiteral("translate"), sampleGame, QStringLiteral("#nocatalogue:x")}).out,
        QByteArray("\n"));
}

TEST(GameTextCommandsTest, TanksListsTheWholeTableInTheProgramsOrder)
{
    QTemporaryDir elsewhere;
    const ToolResult all = runTool({QStringLiteral("tanks"), sampleGame}, elsewhere.path());
    ASSERT_EQ(all.exitCode, 0) << all.err.toStdString();
    const QList<QStringList> table = rows(all.out);
    ASSERT_EQ(table.size(), 25);
    for (const QStringList& row : table)
        EXPECT_EQ(row.size(), 11) << row.join('|').toStdString();
    // Ordered by nation folder, then tier.
    EXPECT_EQ(column(table, 1).mid(0, 6), QStringList(6, QStringLiteral("ardenia")));
    EXPECT_EQ(column(table, 8).mid(0, 6),
              (QStringList{QStringLiteral("1"), QStringLiteral("3"), QStringLiteral("5"),
                           QStringLiteral("6"), QStringLiteral("7"), QStringLiteral("10")}));
    EXPECT_EQ(
        table[0],
        (QStringList{QStringLiteral("1"), QStringLiteral("ardenia"), QStringLiteral("Ardenia"),
                     QStringLiteral("A01_Talon"), QStringLiteral("Talon"),
                     QStringLiteral("vehicles/Ardenia/A01_Talon"), QStringLiteral("lightTank"),
                     QStringLiteral("Light Tanks"), QStringLiteral("1"),
                     QStringLiteral("scripts/item_defs/vehicles/ardenia/a01_talon.xml"),
                     QStringLiteral("Talon: a light tank of Ardenia, tier 1.")}));
    EXPECT_FALSE(column(table, 3).contains(QStringLiteral("Observer")));
}

TEST(GameTextCommandsTest, TanksOptionsActLikeTheFilterBoxes)
{
    const ToolResult borvia = tanks({QStringLiteral("--nation"), QStringLiteral("Borvia"),
                                     QStringLiteral("--tier"), QStringLiteral("8")});
    ASSERT_EQ(borvia.exitCode, 0) << borvia.err.toStdString();
    EXPECT_EQ(column(rows(borvia.out), 3), QStringList{QStringLiteral("B08_Sentinel")});

    const ToolResult destroyers =
        tanks({QStringLiteral("--category"), QStringLiteral("Tank Destroyers")});
    EXPECT_EQ(
        column(rows(destroyers.out), 4),
        (QStringList{QStringLiteral("Kestrel's Wrath"), QStringLiteral("Škorpion"),
                     QStringLiteral("Pike"), QStringLiteral("Sentinel"), QStringLiteral("Anvil")}));

    // The filter text matches anywhere in the name, without regard to case.
    const ToolResult kestrel = tanks({QStringLiteral("--filter"), QStringLiteral("KESTREL")});
    EXPECT_EQ(column(rows(kestrel.out), 4),
              (QStringList{QStringLiteral("Kestrel's Wrath"), QStringLiteral("Kestrel")}));
    const ToolResult quote = tanks({QStringLiteral("--filter"), QStringLiteral("l's")});
    EXPECT_EQ(column(rows(quote.out), 4), QStringList{QStringLiteral("Kestrel's Wrath")});

    const ToolResult none = tanks({QStringLiteral("--nation"), QStringLiteral("Nowhere")});
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_TRUE(none.out.isEmpty());
}

TEST(GameTextCommandsTest, RefusesFoldersThatAreNoGame)
{
    QTemporaryDir notAGame;
    const ToolResult listed = runTool({QStringLiteral("tanks"), notAGame.path()});
    EXPECT_EQ(listed.exitCode, 1);
    EXPECT_TRUE(listed.out.isEmpty());
    EXPECT_TRUE(listed.err.contains("Not a Gavrel installation"));

    // A game without item_types.xml: the warning goes to standard error.
    GameTree game;
    const ToolResult empty = runTool({QStringLiteral("tanks"), game.path()});
    EXPECT_EQ(empty.exitCode, 1);
    EXPECT_TRUE(empty.out.isEmpty());
    EXPECT_TRUE(empty.err.contains("Could not build the database.")) << empty.err.toStdString();

    EXPECT_EQ(runTool({QStringLiteral("translate"), sampleGame}).exitCode, 2);
    EXPECT_EQ(runTool({QStringLiteral("tanks")}).exitCode, 2);
}
