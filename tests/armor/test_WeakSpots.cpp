// Weak-spot maps of the proving ground through ferrox-tool: an
// orthographic camera straight at the plates, so that every ray meets
// each plate at its built angle.

#include "ImageCheck.h"
#include "ToolRunner.h"

#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

const QString sampleGame = QStringLiteral(FERROX_SAMPLE_GAME_DIR);

// Looking along -z at (0, 1.38, 0); the orthographic box of 320 x 240
// pixels at zoom 10 spans 6.4 x 4.8 units, so x maps to (x + 3.2) * 50 and
// y = 1.38 to row 120: the plates at x = 1, 0 and -1 lie at columns 210,
// 160 and 110.
const QByteArray frontCamera = "<Camera><Type>1</Type><Target>0 1.38 0</Target>"
                               "<Rotation>0 0 0</Rotation><Zoom>10</Zoom><Fov>55</Fov></Camera>";

// Red for 0 through yellow to green for 1.
QColor expectedColour(double chance)
{
    const int red = chance <= 0.5 ? 255 : int(255 * (1 - chance) * 2 + 0.5);
    const int green = chance >= 0.5 ? 255 : int(255 * chance * 2 + 0.5);
    return QColor(red, green, 0);
}

TEST(WeakSpotsTest, EachPlateShowsTheColourOfItsChance)
{
    QTemporaryDir dir;
    const QString camera = dir.filePath("front.Camera");
    QFile file(camera);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(frontCamera);
    file.close();

    struct Case
    {
        const char* what;
        QStringList shell;
        double chances[3]; // plate_45, plate_75, plate_75_heavy
    };
    const Case cases[] = {
        // 136.733 mm effective: (175 - 136.733) / 70; the steep plates ricochet.
        {"AP at 100 m", {"--shell", "88 mm AP"}, {0.5467, 0, 0}},
        // HEAT without normalisation: 141.42, 386.37 and 772.74 mm against
        // a roll of 375 to 625 mm.
        {"500 mm HEAT",
         {"--pen", "500", "--type", "HEAT", "--norm", "0", "--calibre", "88"},
         {1, (625 - 386.37) / 250, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString out = dir.filePath("map.png");
        const ToolResult result =
            runTool(QStringList{"weakspots", sampleGame, "Proving Ground", "--out", out, "--size",
                                "320x240", "--camera", camera, "--json"} +
                    c.shell);
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        const QImage map(out);
        ASSERT_EQ(map.size(), QSize(320, 240));
        const int columns[3] = {210, 160, 110};
        for (int plate = 0; plate < 3; ++plate) {
            const QColor seen = map.pixelColor(columns[plate], 120);
            const QColor expected = expectedColour(c.chances[plate]);
            EXPECT_LE(std::abs(seen.red() - expected.red()) +
                          std::abs(seen.green() - expected.green()) + seen.blue(),
                      2)
                << "plate " << plate << ": " << seen.name().toStdString() << " for "
                << expected.name().toStdString() << " " << saveFailedImage(map).toStdString();
            EXPECT_EQ(seen.alpha(), 255);
        }
        EXPECT_EQ(map.pixelColor(2, 2).alpha(), 0); // beside the vehicle
        const QJsonObject shares = QJsonDocument::fromJson(result.out).object();
        EXPECT_GT(shares["silhouettePixels"].toInt(), 1000);
        const double sum = shares["penetrated"].toDouble() + shares["notPenetrated"].toDouble() +
                           shares["ricochet"].toDouble() + shares["noRegularPlate"].toDouble();
        EXPECT_NEAR(sum, 1, 1e-9);
    }
    // Never into the game folder.
    const ToolResult refused = runTool({"weakspots", sampleGame, "Proving Ground", "--pen", "100",
                                        "--out", sampleGame + "/map.png"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_FALSE(QFile::exists(sampleGame + "/map.png"));
}

} // namespace
