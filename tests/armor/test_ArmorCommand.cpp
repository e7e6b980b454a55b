// The armour inspection of the sample installation's vehicles through
// ferrox-tool: real collision models, real rays.

#include "ImageCheck.h"
#include "ToolRunner.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

QJsonArray shoot(const QString& vehicle, const QStringList& options)
{
    const ToolResult result =
        runTool(QStringList{"armor", sampleGame, vehicle, "--json"} + options);
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    return QJsonDocument::fromJson(result.out).array();
}

// The proving ground's plates stand side by side, level with y = 1.38 in
// the program's space: x = 1 the 100 mm plate at 45 degrees, x = 0 the
// 100 mm and x = -1 the 200 mm plate at 75 degrees.
TEST(ArmorCommandTest, WorkedExamplesOnTheProvingGround)
{
    struct Case
    {
        const char* x;
        const char* calibre;
        double normalized;
        double effective;
        bool ricochet;
    };
    const Case cases[] = {
        {"1", "88", 43, 136.73, false},
        {"0", "300", 66.6, 251.80, false}, // three calibres: 75 - 2 x 1.4 x 3
        {"-1", "300", 73, 684.06, true},   // below two calibres
        {"-1", "88", 73, 684.06, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.x) + " " + c.calibre);
        const QString x = QLatin1String(c.x);
        const QJsonArray plates =
            shoot("Proving Ground",
                  {"--from", x + ",1.38,10", "--to", x + ",1.38,-10", "--calibre", c.calibre});
        ASSERT_FALSE(plates.isEmpty());
        const QJsonObject first = plates[0].toObject();
        EXPECT_NEAR(first["angle"].toDouble(), x == "1" ? 45 : 75, 1e-3);
        EXPECT_NEAR(first["normalizedAngle"].toDouble(), c.normalized, 1e-3);
        EXPECT_NEAR(first["effective"].toDouble(), c.effective, 0.01);
        EXPECT_EQ(first["ricochet"].toBool(), c.ricochet);
        EXPECT_EQ(first["category"].toInt(), 4);
        EXPECT_EQ(first.keys(),
                  (QStringList{"angle", "armor", "category", "effective", "freeTravel", "hitPoint",
                               "name", "normalizedAngle", "ricochet", "spaced"}));
    }
}

// The proving ground's gun fires "88 mm AP": 140 mm at 100 m, 120 mm at
// 500 m; the chances are worked out by hand in test_Penetration.
TEST(ArmorCommandTest, TheGunsOwnShellPenetratesByDistance)
{
    struct Case
    {
        const char* x;
        QStringList shell;
        double before, after, chance;
        const char* verdict;
    };
    const Case cases[] = {
        {"1", {"--shell", "88 mm AP"}, 140, 3.267, 0.5467, "Penetrated"},
        {"1", {"--shell", "_88mm_AP", "--distance", "500"}, 120, 0, 0.2211, "Not penetrated"},
        {"-1", {"--shell", "88 mm AP"}, 140, 0, 0, "Ricochet"},
        // (218.75 - 136.733) / 87.5
        {"1", {"--pen", "175"}, 175, 38.267, 0.9373, "Penetrated"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.shell.join(' ').toStdString());
        const QString x = QLatin1String(c.x);
        const QJsonArray plates =
            shoot("Proving Ground",
                  QStringList{"--from", x + ",1.38,10", "--to", x + ",1.38,-10"} + c.shell);
        ASSERT_FALSE(plates.isEmpty());
        const QJsonObject first = plates[0].toObject();
        EXPECT_NEAR(first["penetrationBefore"].toDouble(), c.before, 1e-3);
        EXPECT_NEAR(first["penetrationAfter"].toDouble(), c.after, 1e-3);
        EXPECT_NEAR(first["chance"].toDouble(), c.chance, 1e-4);
        EXPECT_EQ(first["verdict"].toString(), c.verdict);
    }
    const ToolResult unknown = runTool({"armor", sampleGame, "Proving Ground", "--from",
                                        "1,1.38,10", "--to", "1,1.38,-10", "--shell", "75 mm AP"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_TRUE(unknown.err.contains("The fitted gun has no shell named: 75 mm AP"));
}

TEST(ArmorCommandTest, TheTurretsPlatesTurnWithIt)
{
    auto turretHits = [](const QString& yaw) {
        int hits = 0;
        for (const QJsonValue& plate :
             shoot("Talon", {"--from", "10,1.8,0.72", "--to", "-10,1.8,0.72", "--turret-yaw", yaw}))
            hits += plate.toObject()["name"].toString().startsWith("turret_");
        return hits;
    };
    EXPECT_GT(turretHits("0"), 0);
    EXPECT_EQ(turretHits("90"), 0);
}

TEST(ArmorCommandTest, TheTableListsEachPartsMaterials)
{
    const ToolResult result = runTool({"armor", sampleGame, "Talon", "--table"});
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    const QStringList lines = QString::fromUtf8(result.out).split('\n', Qt::SkipEmptyParts);
    // A thickness both regular and spaced keeps a colour from each scale;
    // the surveying device is purple.
    for (const char* line :
         {"chassis\tleftTrack\t10\tregular\t#ff0000", "hull\tarmor_1\t25\tregular\t#ffff00",
          "hull\tarmor_4\t25\tspaced\t#ff7fff", "hull\tsurveyingDevice\t5\tregular\t#800080"})
        EXPECT_TRUE(lines.contains(QLatin1String(line))) << line << "\n"
                                                         << result.out.toStdString();
}

TEST(ArmorCommandTest, TheCollisionStateShowsTheArmourColours)
{
    QTemporaryDir out;
    auto render = [&](const QString& state) {
        const QString file = out.filePath(state + ".png");
        const ToolResult result = runTool({"render", sampleGame, "Talon", "--state", state, "--out",
                                           file, "--size", "320x240", "--no-garage"});
        EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
        return QImage(file);
    };
    // Red is the thinnest regular armour (the tracks), which no texture of
    // the intact vehicle shows.
    auto redPixels = [](const QImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QColor c = image.pixelColor(x, y);
                count += c.red() > 100 && c.green() < c.red() / 8 && c.blue() < c.red() / 8;
            }
        return count;
    };
    const QImage collision = render("collision");
    const QImage intact = render("intact");
    EXPECT_GT(redPixels(collision), 200) << saveFailedImage(collision).toStdString();
    EXPECT_EQ(redPixels(intact), 0) << saveFailedImage(intact).toStdString();
}

} // namespace
