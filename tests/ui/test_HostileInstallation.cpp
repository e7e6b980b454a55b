// The window on the hostile installation: each broken vehicle in turn tells
// the user why it fails and leaves the program working; the sound vehicle
// loaded after them stands in the viewport as the off-screen frame of the
// same scene and camera shows it.

#include "WindowFixture.h"

#include "RenderWidget.h"
#include "TankLoader.h"
#include "TestFiles.h"
#include "ToolRunner.h"

#include <QTemporaryDir>

namespace {

class HostileWindowTest : public WindowTest
{
protected:
    HostileWindowTest()
    {
        writeSettings("<ShadowMap>1024</ShadowMap>", HostileGame, mod.path());
        // The program's own lists, made for the installation it reads.
        for (const char* list : {"resources.cfg", "tank_list.cfg"})
            root.writeFile(QStringLiteral("data/") + list,
                           readFile(HostileGame + QStringLiteral("/ferrox-") + list));
    }

    // The texts of the boxes shown and of the lines logged since `since`.
    QString messagesSince(int boxesBefore, int linesBefore) const
    {
        QStringList texts;
        for (int i = boxesBefore; i < boxes.boxes.size(); ++i)
            texts.append(boxes.boxes[i].text);
        return (texts + logLines().mid(linesBefore)).join('\n');
    }

    QTemporaryDir mod;
};

// Pixels whose colour differs by more than a rounding between two frames.
int differingPixels(const QImage& a, const QImage& b)
{
    int differing = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            differing += sameColour(a.pixel(x, y), QColor(b.pixel(x, y)), 24) ? 0 : 1;
    return differing;
}

TEST_F(HostileWindowTest, EachBrokenVehicleSaysWhyAndTheSoundOneThenShows)
{
    runWindow([this](MainWindow& window) {
        const QString parse = QStringLiteral("Failed to parse xml file for tank: ");
        const QString models = QStringLiteral("vehicles/Hostile/");
        // Each case by name, and the message that names its fault.
        const std::pair<QString, QString> cases[] = {
            {"No Turret", parse + "No Turret"},
            {"Turret Without Gun", parse + "Turret Without Gun"},
            {"Missing Gun File", parse + "Missing Gun File"},
            {"Empty Document", "Error reading data"},
            {"No Vehicle File",
             "Could not open file: scripts/item_defs/vehicles/hostile/h08_no_vehicle_file.xml"},
            {"Missing Model",
             "Failed loading: " + models + "H05_Missing_Model/normal/lod0/Chassis.primitives"},
            {"Truncated Member",
             "Size mismatch: " + models + "H06_Truncated_Member/normal/lod0/Hull.primitives"},
            {"Broken DDS", "Failed to load texture: " + models + "H07_Broken_DDS/Hull_AM.dds"},
        };
        for (const auto& [name, message] : cases) {
            SCOPED_TRACE(name.toStdString());
            const int boxesBefore = int(boxes.boxes.size());
            const int linesBefore = int(logLines().size());
            loadByName(window, name);
            EXPECT_TRUE(messagesSince(boxesBefore, linesBefore).contains(message))
                << messagesSince(boxesBefore, linesBefore).toStdString();
        }

        // The sound vehicle: the viewport's frame is the off-screen frame of
        // the scene with it, and far from the one of the scene without it.
        loadByName(window, QStringLiteral("Sound Vehicle"));
        EXPECT_EQ(window.statusBar()->currentMessage().indexOf("Sound Vehicle loaded in: "), 0);
        RenderWidget* viewport = window.renderWidget;
        const QImage shown = viewport->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
        const auto offscreen = [&] {
            return viewport->renderToImage(shown.width(), shown.height(), false)
                .convertToFormat(QImage::Format_RGB32);
        };
        const QImage expected = offscreen();
        TankLoader* loader = TankLoader::instance();
        loader->hideChassis = loader->hideHull = loader->hideTurret = loader->hideGun = true;
        const QImage withoutVehicle = offscreen();
        loader->hideChassis = loader->hideHull = loader->hideTurret = loader->hideGun = false;
        const int pixels = shown.width() * shown.height();
        const int differing = differingPixels(shown, expected);
        const int vehicle = differingPixels(shown, withoutVehicle);
        if (differing > pixels / 1000 || vehicle < pixels / 50) {
            saveFailedImage(shown, QStringLiteral("window"));
            saveFailedImage(expected, QStringLiteral("offscreen"));
            saveFailedImage(withoutVehicle, QStringLiteral("offscreen-without-vehicle"));
            ADD_FAILURE() << differing << " pixels differ from the off-screen frame, " << vehicle
                          << " from the one without the vehicle, of " << pixels;
        }
    });
}

} // namespace
