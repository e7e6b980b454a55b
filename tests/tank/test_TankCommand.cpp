#include "ImageCheck.h"
#include "QtPrinters.h"
#include "ToolRunner.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString Game = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

QStringList numbers(const QJsonValue& value)
{
    QStringList out;
    for (const QJsonValue& number : value.toArray())
        out.append(QString::number(number.toDouble(), 'g', 6));
    return out;
}

TEST(TankCommand, JsonDescribesTheAssembledVehicle)
{
    const ToolResult result = runTool({"tank", Game, "Talon", "--json"});
    if (result.err.contains("No OpenGL"))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    ASSERT_EQ(result.out.count('\n'), 1);
    const QJsonObject tank = QJsonDocument::fromJson(result.out).object();

    const QString folder = QStringLiteral("vehicles/Ardenia/A01_Talon/");
    const QJsonArray parts = tank["parts"].toArray();
    ASSERT_EQ(parts.size(), 8);
    const QJsonObject hull = parts[1].toObject();
    EXPECT_EQ(hull["model"].toString(), folder + "normal/lod0/Hull.model");
    EXPECT_EQ(hull["triangles"].toInt(), 80);
    EXPECT_EQ(numbers(hull["matrix"]).join(' '), "1 0 0 0 0 1 0 0 0 0 1 0 0 0.38 0 1");
    EXPECT_EQ(parts[7].toObject()["model"].toString(), folder + "crash/lod0/Gun_01.model");

    // Names come from the game's catalogues, as in the program.
    const QJsonArray turrets = tank["turrets"].toArray();
    ASSERT_EQ(turrets.size(), 2);
    const QJsonObject turret = turrets[0].toObject();
    EXPECT_EQ(turret["name"].toString(), "Talon turret");
    const QJsonArray guns = turret["guns"].toArray();
    ASSERT_EQ(guns.size(), 2);
    EXPECT_EQ(guns[1].toObject()["name"].toString(), "Talon gun L2");
    EXPECT_EQ(numbers(guns[1].toObject()["pitch"]), (QStringList{"-12", "25"}));

    // Without --json, as text; with --mod the mod folder's file wins.
    const ToolResult text = runTool({"tank", Game, "Basilisk", "--mod", Game + "-mod"});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_TRUE(
        text.out.contains("file: scripts/item_defs/vehicles/caldera/c02_basilisk.xml (mod)"))
        << text.out.toStdString();

    // A vehicle the loader cannot assemble exits with 1 and says why; an
    // unknown name takes the same path, which the render command's cases check.
    const ToolResult failed =
        runTool(QStringList{"tank", HostileGame, "No Turret", "--json"} + hostileLists());
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_TRUE(failed.out.isEmpty());
    EXPECT_TRUE(failed.err.contains("Ferrox cannot assemble: No Turret")) << failed.err.data();
}

// Each gun's shells, "gun: name kind calibre pen100/pen500 loss; ...", as
// the sample writes them: packed and plain shell files, a shared gun whose
// vehicle file lists its own shots, and a gun without any.
TEST(TankCommand, EveryGunListsItsShellsByTranslatedName)
{
    const struct
    {
        const char* vehicle;
        QStringList guns;
    } cases[] = {
        {"Talon",
         {"Talon main gun: 45 mm AP ARMOR_PIERCING 45 60/48 0",
          "Talon gun L2: 88 mm AP ARMOR_PIERCING 88 140/120 0; 88 mm HEAT HOLLOW_CHARGE 88 "
          "180/180 0.05; 88 mm HE HIGH_EXPLOSIVE 88 44/44 0"}},
        {"Kestrel",
         {"Kestrel main gun: 45 mm AP ARMOR_PIERCING 45 60/48 0; 45 mm HE HIGH_EXPLOSIVE 45 "
          "23/23 0",
          "Kestrel gun Early: "}},
        {"Proving Ground",
         {"Proving Ground main gun: 88 mm AP ARMOR_PIERCING 88 140/120 0; 88 mm HEAT "
          "HOLLOW_CHARGE 88 180/180 0.05; 88 mm HE HIGH_EXPLOSIVE 88 44/44 0",
          "Proving Ground gun L2: 122 mm APHE ARMOR_PIERCING_HE 122 175/160 0; 122 mm APCR "
          "ARMOR_PIERCING_CR 122 230/210 0; 122 mm HE HIGH_EXPLOSIVE 122 61/61 0"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.vehicle);
        const ToolResult result = runTool({"tank", Game, c.vehicle, "--json"});
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        const QJsonObject tank = QJsonDocument::fromJson(result.out).object();
        QStringList listed;
        for (const QJsonValue& gun : tank["turrets"].toArray()[0].toObject()["guns"].toArray()) {
            QStringList shells;
            for (const QJsonValue& value : gun.toObject()["shells"].toArray()) {
                const QJsonObject shell = value.toObject();
                shells << QStringLiteral("%1 %2 %3 %4 %5")
                              .arg(shell["name"].toString(), shell["kind"].toString(),
                                   QString::number(shell["caliber"].toDouble()),
                                   numbers(shell["piercingPower"]).join('/'),
                                   QString::number(
                                       shell["piercingPowerLossFactorByDistance"].toDouble(), 'g',
                                       3));
            }
            listed << gun.toObject()["name"].toString() + ": " + shells.join("; ");
        }
        EXPECT_EQ(listed, c.guns);
    }
}

// Rows of the vehicle table without their running number, sorted.
QStringList tableRows(const QByteArray& out)
{
    QStringList rows;
    for (const QByteArray& line : out.split('\n'))
        if (!line.isEmpty())
            rows.append(QString::fromUtf8(line).section('\t', 1));
    rows.sort();
    return rows;
}

// An installation whose lists name none of its archives and none of its
// nations opens by itself: the vehicle table and the picture of a vehicle
// are those of the lists written for it.
TEST(FoundInstallation, ListsThatNameNothingOfItGiveTheSameTableAndPicture)
{
    QTemporaryDir dir;
    const QString resources = dir.filePath("resources.cfg");
    const QString tankList = dir.filePath("tank_list.cfg");
    for (const auto& [path, text] :
         {std::pair{resources, QByteArray("<resources><Zip>elsewhere.pkg</Zip></resources>")},
          {tankList,
           "<tank_list.cfg><nowhere><ResPath>scripts/item_defs/vehicles/nowhere"
           "</ResPath><DataPath>vehicles/Nowhere</DataPath></nowhere></tank_list.cfg>"}}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    const QStringList foreign = {"--resources", resources, "--tank-list", tankList};

    const ToolResult written = runTool({"tanks", Game});
    const ToolResult found = runTool(QStringList{"tanks", Game} + foreign);
    ASSERT_EQ(written.exitCode, 0) << written.err.toStdString();
    ASSERT_EQ(found.exitCode, 0) << found.err.toStdString();
    EXPECT_GT(tableRows(written.out).size(), 5);
    EXPECT_EQ(tableRows(found.out), tableRows(written.out));

    const QStringList picture = {"--size", "160x120", "--no-garage"};
    const ToolResult drawn = runTool(
        QStringList{"render", Game, "Talon", "--out", dir.filePath("written.png")} + picture);
    if (noOpenGl(drawn))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    ASSERT_EQ(drawn.exitCode, 0) << drawn.err.toStdString();
    const ToolResult drawnFound =
        runTool(QStringList{"render", Game, "Talon", "--out", dir.filePath("found.png")} + picture +
                foreign);
    ASSERT_EQ(drawnFound.exitCode, 0) << drawnFound.err.toStdString();
    const QImage expected =
        QImage(dir.filePath("written.png")).convertToFormat(QImage::Format_ARGB32);
    const QImage image = QImage(dir.filePath("found.png")).convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(image, expected);
    if (image != expected) {
        saveFailedImage(expected, "written-lists");
        saveFailedImage(image, "found");
    }
}

} // namespace
