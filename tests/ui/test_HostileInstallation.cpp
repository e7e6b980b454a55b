// The window on the hostile installation: each broken vehicle in turn tells
// the user why it fails and leaves the program working; the sound vehicle
// loaded after them stands in the viewport exactly as an off-screen frame
// of the same vehicle and camera shows it.

#include "WindowFixture.h"

#include "RenderWidget.h"
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

        // The sound vehicle, without the overlay's text, from the start camera.
        window.ui.TankInfoCheckBox->setChecked(false);
        loadByName(window, QStringLiteral("Sound Vehicle"));
        EXPECT_EQ(window.statusBar()->currentMessage().indexOf("Sound Vehicle loaded in: "), 0);
        const QImage shown = window.renderWidget->grabFramebuffer().convertToFormat(
            QImage::Format_RGB32);
        QTemporaryDir out;
        const QString file = out.filePath(QStringLiteral("oracle.png"));
        const ToolResult oracle = runTool(
            QStringList{"render", HostileGame, "Sound Vehicle", "--out", file, "--size",
                        QStringLiteral("%1x%2").arg(shown.width()).arg(shown.height())} +
            hostileLists());
        ASSERT_EQ(oracle.exitCode, 0) << oracle.err.toStdString();
        const QImage expected = QImage(file).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(expected.size(), shown.size());
        // Edges may round apart (the window's shadow map and sampling);
        // a vehicle missing or misplaced differs over a far larger area.
        const int differing = differingPixels(shown, expected);
        if (differing > shown.width() * shown.height() / 100) {
            saveFailedImage(shown, QStringLiteral("hostile-window"));
            saveFailedImage(expected, QStringLiteral("hostile-offscreen"));
            ADD_FAILURE() << differing << " pixels differ";
        }
    });
}

} // namespace
