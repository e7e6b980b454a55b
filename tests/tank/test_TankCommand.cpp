#include "QtPrinters.h"
#include "ToolRunner.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

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
          "HOLLOW_CHARGE 88 180/180 0.05; 88 mm HE HIGH_EXPLOSIVE 88 44/44 0"}},
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

} // namespace
