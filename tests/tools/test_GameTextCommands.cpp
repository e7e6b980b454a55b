// ferrox-tool translate and tanks, run as separate processes on the sample
// installation, with the program's own tank list beside the tool.

#include "QtPrinters.h"
#include "ToolRunner.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>

namespace {

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

} // namespace

TEST(GameTextCommandsTest, TranslatePrintsWhatTheCatalogueGives)
{
    // Texts without a ":" pass; a missing key comes back with a warning; a
    // missing catalogue gives an empty text.
    QTemporaryDir elsewhere;
    const std::pair<const char*, QString> cases[] = {
        {"#menu:nations/borvia", "Borvia\n"},
        {"#borvia_vehicles:B04_Skorpion", "Škorpion\n"},
        {"Plain text", "Plain text\n"},
        {"#menu:no/such/key", "no/such/key\n"},
        {"#nocatalogue:x", "\n"}};
    for (const auto& [text, printed] : cases) {
        const ToolResult result = runTool({"translate", SampleGame, text}, elsewhere.path());
        EXPECT_EQ(result.exitCode, 0) << text;
        EXPECT_EQ(QString::fromUtf8(result.out), printed) << text;
        EXPECT_EQ(result.err.contains("Could not translate: no/such/key"),
                  text == QByteArray("#menu:no/such/key"))
            << text << ": " << result.err.toStdString();
    }
}

// The whole table in the program's order (nation folder, then tier), and the
// options acting like the filter boxes: the filter text matches anywhere in
// the name, without regard to case.
TEST(GameTextCommandsTest, TanksListsTheTableAsTheFilterBoxesChooseIt)
{
    QTemporaryDir elsewhere;
    const ToolResult all = runTool({"tanks", SampleGame}, elsewhere.path());
    ASSERT_EQ(all.exitCode, 0) << all.err.toStdString();
    const QList<QStringList> table = rows(all.out);
    ASSERT_EQ(table.size(), 26);
    EXPECT_EQ(column(table, 8).mid(0, 6), (QStringList{"1", "3", "5", "6", "7", "10"}));
    EXPECT_EQ(table[0], (QStringList{"1", "ardenia", "Ardenia", "A01_Talon", "Talon",
                                     "vehicles/Ardenia/A01_Talon", "lightTank", "Light Tanks", "1",
                                     "scripts/item_defs/vehicles/ardenia/a01_talon.xml",
                                     "Talon: a light tank of Ardenia, tier 1."}));
    EXPECT_FALSE(column(table, 3).contains("Observer"));

    const std::tuple<QStringList, int, QStringList> cases[] = {
        {{"--nation", "Borvia", "--tier", "8"}, 3, {"B08_Sentinel"}},
        {{"--category", "Tank Destroyers"},
         4,
         {"Kestrel's Wrath", "Škorpion", "Pike", "Warden", "Anvil"}},
        {{"--filter", "KESTREL"}, 4, {"Kestrel's Wrath", "Kestrel"}},
        {{"--filter", "l's"}, 4, {"Kestrel's Wrath"}},
        {{"--nation", "Nowhere"}, 4, {}}};
    for (const auto& [options, number, expected] : cases) {
        SCOPED_TRACE(options.join(' ').toStdString());
        const ToolResult result = runTool(QStringList{"tanks", SampleGame} + options);
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_EQ(column(rows(result.out), number), expected);
    }
}
