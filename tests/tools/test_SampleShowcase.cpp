#include "QtPrinters.h"
#include "TestFiles.h"
#include "ToolRunner.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct TableRow
{
    QString nation;
    QString name;
};

QList<TableRow> vehicleTable(const ToolResult& tanks)
{
    QList<TableRow> rows;
    for (const QByteArray& line : tanks.out.split('\n')) {
        const QList<QByteArray> columns = line.split('\t');
        if (columns.size() > 4)
            rows.append({QString::fromUtf8(columns[1]), QString::fromUtf8(columns[4])});
    }
    return rows;
}

int linesStartingWith(const QByteArray& text, const QByteArray& start)
{
    int count = 0;
    for (const QByteArray& line : text.split('\n'))
        count += line.startsWith(start) ? 1 : 0;
    return count;
}

// The showcase is what a new user meets: every vehicle of its table is
// assembled, and every tool a modder runs on a vehicle succeeds on each,
// none of them writing into the game folder. One tool process per command
// and vehicle, as a modder runs them.
TEST(SampleShowcase, EveryVehicleAssemblesAndEveryToolSucceedsOnItWithoutTouchingTheGame)
{
    const QByteArray before = folderDigest(SampleGame);
    const QList<TableRow> table = vehicleTable(runTool({"tanks", SampleGame}));
    QMap<QString, int> perNation;
    for (const TableRow& row : table)
        ++perNation[row.nation];
    ASSERT_EQ(perNation.size(), 4);
    for (auto it = perNation.cbegin(); it != perNation.cend(); ++it)
        EXPECT_GE(it.value(), 4) << it.key().toStdString();

    QTemporaryDir out;
    for (int index = 0; index < table.size(); ++index) {
        const QString name = table[index].name;
        SCOPED_TRACE(name.toStdString());
        // Each vehicle in its own folders, so that no command meets the
        // files of an earlier one.
        const QString folder = out.path() + '/' + QString::number(index);
        ASSERT_TRUE(QDir().mkpath(folder));
        const ToolResult tank = runTool({"tank", SampleGame, name, "--json"});
        if (noOpenGl(tank))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        ASSERT_EQ(tank.exitCode, 0) << tank.err.toStdString();
        const QJsonObject json = QJsonDocument::fromJson(tank.out).object();
        EXPECT_EQ(json["name"].toString(), name) << "a name shared with another vehicle";
        const int parts = int(json["parts"].toArray().size()) / 2; // intact and burnt out
        EXPECT_EQ(parts, 4);
        const int masks = int(json["textures"].toObject()["exclusion"].toArray().size());

        const ToolResult render = runTool({"render", SampleGame, name, "--size", "160x120",
                                           "--no-garage", "--out", folder + "/shot.png"});
        EXPECT_EQ(render.exitCode, 0) << render.err.toStdString();
        EXPECT_EQ(QImage(folder + "/shot.png").size(), QSize(160, 120));

        const ToolResult obj = runTool({"obj", SampleGame, name, "--out", folder + "/obj"});
        EXPECT_EQ(obj.exitCode, 0) << obj.err.toStdString();
        EXPECT_EQ(filesBelow(folder + "/obj", "*.obj").size(), parts);

        const ToolResult uv = runTool({"uv", SampleGame, name, "--out", folder + "/uv"});
        EXPECT_EQ(uv.exitCode, 0) << uv.err.toStdString();
        EXPECT_FALSE(filesBelow(folder + "/uv", "*.png").isEmpty());

        const ToolResult extract =
            runTool({"extract", SampleGame, name, "--mod", folder + "/extracted"});
        EXPECT_EQ(extract.exitCode, 0) << extract.err.toStdString();
        EXPECT_FALSE(filesBelow(folder + "/extracted", "*.dds").isEmpty());

        // As many baked maps as masks: the bake refused nothing.
        const ToolResult bake = runTool({"bake", SampleGame, name, "--mod", folder + "/baked"});
        EXPECT_EQ(bake.exitCode, 0) << bake.err.toStdString();
        EXPECT_GE(masks, 3);
        EXPECT_EQ(filesBelow(folder + "/baked", "*.dds").size(), masks);
        EXPECT_EQ(linesStartingWith(bake.out, "written\t"), masks) << bake.out.toStdString();

        const ToolResult armor = runTool({"armor", SampleGame, name, "--table"});
        EXPECT_EQ(armor.exitCode, 0) << armor.err.toStdString();
        for (const char* part : {"chassis\t", "hull\t", "turret\t", "gun\t"})
            EXPECT_GT(linesStartingWith(armor.out, part), 0) << part << armor.out.toStdString();
        EXPECT_GT(linesStartingWith(armor.out, "hull\t"), 1) << "one plate for a whole hull";
    }
    EXPECT_EQ(folderDigest(SampleGame), before);
}

} // namespace
