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
    EXPECT_EQ(tank["name"].toString(), "Talon");
    EXPECT_EQ(tank["file"].toString(), "scripts/item_defs/vehicles/ardenia/a01_talon.xml");
    EXPECT_EQ(tank["source"].toString(), "archive");

    const QString folder = QStringLiteral("vehicles/Ardenia/A01_Talon/");
    const QJsonArray parts = tank["parts"].toArray();
    ASSERT_EQ(parts.size(), 8);
    const QJsonObject hull = parts[1].toObject();
    EXPECT_EQ(hull["part"].toString(), "hull");
    EXPECT_EQ(hull["state"].toInt(), 0);
    EXPECT_EQ(hull["model"].toString(), folder + "normal/lod0/Hull.model");
    EXPECT_EQ(hull["triangles"].toInt(), 80);
    EXPECT_EQ(numbers(hull["matrix"]).join(' '), "1 0 0 0 0 1 0 0 0 0 1 0 0 0.38 0 1");
    const QJsonObject destroyedGun = parts[7].toObject();
    EXPECT_EQ(destroyedGun["part"].toString(), "gun");
    EXPECT_EQ(destroyedGun["state"].toInt(), 1);
    EXPECT_EQ(destroyedGun["model"].toString(), folder + "crash/lod0/Gun_01.model");

    // Names come from the game's catalogues, as in the program.
    const QJsonArray turrets = tank["turrets"].toArray();
    ASSERT_EQ(turrets.size(), 2);
    const QJsonObject turret = turrets[0].toObject();
    EXPECT_EQ(turret["name"].toString(), "Talon turret");
    EXPECT_EQ(turret["tag"].toString(), "A01_Talon_Turret");
    EXPECT_EQ(numbers(turret["yaw"]), (QStringList{"-180", "180"}));
    const QJsonArray guns = turret["guns"].toArray();
    ASSERT_EQ(guns.size(), 2);
    EXPECT_EQ(guns[1].toObject()["name"].toString(), "Talon gun L2");
    EXPECT_EQ(numbers(guns[1].toObject()["pitch"]), (QStringList{"-12", "25"}));
    EXPECT_EQ(numbers(guns[1].toObject()["yaw"]), (QStringList{"-30", "30"}));

    const QJsonObject textures = tank["textures"].toObject();
    EXPECT_EQ(textures.keys(), (QStringList{"all", "diffuse", "exclusion", "metallicDetail",
                                            "metallicGloss", "normal", "specular", "texformat"}));
    EXPECT_EQ(
        textures["exclusion"].toArray(),
        (QJsonArray{folder + "Tank_CM.dds", folder + "Turret_CM.dds", folder + "Gun_CM.dds"}));

    // Without --json, as text; with --mod the mod folder's file wins.
    const ToolResult text = runTool({"tank", Game, "Basilisk", "--mod", Game + "-mod"});
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_TRUE(
        text.out.contains("file: scripts/item_defs/vehicles/caldera/c02_basilisk.xml (mod)"))
        << text.out.toStdString();
    EXPECT_TRUE(text.out.contains("turret Basilisk turret (mod)"));
}

TEST(TankCommand, UnknownNamesAndFailedLoadsExitWithOne)
{
    const struct
    {
        QString name;
        QByteArray message;
    } cases[] = {
        {"Nobody", "Not in the vehicle table: Nobody"},
        {"Harrow", "Ferrox cannot assemble: Harrow"},
    };
    for (const auto& c : cases) {
        const ToolResult result = runTool({"tank", Game, c.name, "--json"});
        if (result.err.contains("No OpenGL"))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
        EXPECT_TRUE(result.out.isEmpty());
    }
}

} // namespace
