// The window on the hostile installation: each broken vehicle in turn tells
// the user why it fails and leaves the program working; the sound vehicle
// loaded after them stands in the viewport as ferrox-tool draws it.

#include "FrameOracle.h"
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
        writeToolSceneSettings(HostileGame, mod.path());
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

        // The sound vehicle: the viewport shows it as the tool draws it.
        loadByName(window, QStringLiteral("Sound Vehicle"));
        EXPECT_EQ(window.statusBar()->currentMessage().indexOf("Sound Vehicle loaded in: "), 0);
        window.ui.TankInfoCheckBox->setChecked(true);
        const QStringList lists{
            QStringLiteral("--resources"), HostileGame + QStringLiteral("/ferrox-resources.cfg"),
            QStringLiteral("--tank-list"), HostileGame + QStringLiteral("/ferrox-tank_list.cfg"),
            QStringLiteral("--mod"),       mod.path()};
        EXPECT_TRUE(FrameOracle::sameFrame(window, QStringLiteral("Sound Vehicle"), lists,
                                           QStringLiteral("sound-vehicle"), HostileGame));
    });
}

TEST_F(HostileWindowTest, AFailedLoadLeavesNeitherTheOldFactsNorTheLoadingMessage)
{
    runWindow([this](MainWindow& window) {
        loadByName(window, QStringLiteral("Sound Vehicle"));
        // Without a turret, without a gun, without models.
        for (const QString& broken :
             {QStringLiteral("No Turret"), QStringLiteral("Turret Without Gun"),
              QStringLiteral("Missing Model")}) {
            SCOPED_TRACE(broken.toStdString());
            loadByName(window, broken);
            const QString failed = QStringLiteral("Failed to load tank: ") + broken;
            ASSERT_FALSE(boxes.boxes.isEmpty());
            EXPECT_EQ(boxes.boxes.last().text, failed);
            EXPECT_EQ(window.statusBar()->currentMessage(), failed);
            OverlayFacts facts;
            window.renderWidget->frame.vehicleFacts(facts);
            EXPECT_EQ(facts.hitPoints, 0);
            EXPECT_EQ(facts.name, QString());
            EXPECT_EQ(facts.tankTriangles, 0);
        }
    });
}

} // namespace
