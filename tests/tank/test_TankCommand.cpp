#include "Msgfmt.h"
#include "QtPrinters.h"
#include "TankGame.h"
#include "ToolRunner.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace tankgame;

namespace {

QStringList numbers(const QJsonValue& value)
{
    QStringList out;
    for (const QJsonValue& number : value.toArray())
        out.append(QString::number(number.toDouble(), 'g', 6));
    return out;
}

TEST(TankCommand, JsonDescribesTheAssembledVehicle)
{
    TankGame game;
    game.writeVehicle(TankGame::vehicleText(), true);
    // The tool reads the game's catalogues, as the program does.
    game.writeFile("res/text/LC_MESSAGES/testland_vehicles.mo",
                   compileCatalogue({{"T01_Turret", "Box Turret"}, {"Big_Gun", "Big Gun"}}));
    const QStringList common{"--resources", game.resourcesPath(), "--tank-list",
                             game.tankListPath()};
    const ToolResult result =
        runTool(QStringList{"tank", game.path(), "Box Tank", "--json"} + common);
    if (result.err.contains("No OpenGL"))
        GTEST_SKIP() << "no OpenGL 3.2 core context";
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    ASSERT_EQ(result.out.count('\n'), 1);
    const QJsonObject tank = QJsonDocument::fromJson(result.out).object();
    EXPECT_EQ(tank["name"].toString(), "Box Tank");
    EXPECT_EQ(tank["file"].toString(), VehiclePath);
    EXPECT_EQ(tank["source"].toString(), "loose");

    const QJsonArray parts = tank["parts"].toArray();
    ASSERT_EQ(parts.size(), 8);
    const QJsonObject hull = parts[1].toObject();
    EXPECT_EQ(hull["part"].toString(), "hull");
    EXPECT_EQ(hull["state"].toInt(), 0);
    EXPECT_EQ(hull["model"].toString(), Folder + "Hull.model");
    EXPECT_EQ(hull["triangles"].toInt(), 8);
    EXPECT_EQ(numbers(hull["matrix"]).join(' '), "1 0 0 0 0 2 0 0 0 0 1 0 -0.1 0.4 0 1");
    const QJsonObject destroyedGun = parts[7].toObject();
    EXPECT_EQ(destroyedGun["part"].toString(), "gun");
    EXPECT_EQ(destroyedGun["state"].toInt(), 1);
    EXPECT_EQ(destroyedGun["model"].toString(), Folder + "crash/Gun.model");

    const QJsonArray turrets = tank["turrets"].toArray();
    ASSERT_EQ(turrets.size(), 1);
    const QJsonObject turret = turrets[0].toObject();
    EXPECT_EQ(turret["name"].toString(), "Box Turret");
    EXPECT_EQ(turret["tag"].toString(), "T01_Turret");
    EXPECT_EQ(numbers(turret["yaw"]), (QStringList{"-30", "40"}));
    const QJsonArray guns = turret["guns"].toArray();
    ASSERT_EQ(guns.size(), 2);
    EXPECT_EQ(guns[1].toObject()["name"].toString(), "Big Gun");
    EXPECT_EQ(numbers(guns[1].toObject()["pitch"]), (QStringList{"-5", "15"}));
    EXPECT_EQ(numbers(guns[1].toObject()["yaw"]), (QStringList{"-12", "15"}));

    const QJsonObject textures = tank["textures"].toObject();
    EXPECT_EQ(textures.keys(), (QStringList{"all", "diffuse", "exclusion", "metallicDetail",
                                            "metallicGloss", "normal", "specular", "texformat"}));
    EXPECT_EQ(textures["exclusion"].toArray(), QJsonArray{Folder + "mask.dds"});

    // The same without --json, as text.
    const ToolResult text = runTool(QStringList{"tank", game.path(), "Box Tank"} + common);
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_TRUE(text.out.contains("file: " + VehiclePath.toUtf8() + " (loose)"));
}

TEST(TankCommand, UnknownNamesAndFailedLoadsExitWithOne)
{
    TankGame game;
    game.writeVehicle(TankGame::vehicleText(""));
    const QStringList common{"--resources", game.resourcesPath(), "--tank-list",
                             game.tankListPath(), "--json"};
    const struct
    {
        QString name;
        QByteArray message;
    } cases[] = {
        {"Nobody", "Not in the vehicle table: Nobody"},
        {"Box Tank", "Ferrox cannot assemble: Box Tank"},
    };
    for (const auto& c : cases) {
        const ToolResult result = runTool(QStringList{"tank", game.path(), c.name} + common);
        if (result.err.contains("No OpenGL"))
            GTEST_SKIP() << "no OpenGL 3.2 core context";
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.err.contains(c.message)) << result.err.toStdString();
        EXPECT_TRUE(result.out.isEmpty());
    }
}

} // namespace
