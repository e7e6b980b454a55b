// Preferences in the running window: what accepting the dialog writes into
// the settings, the signals it sends in which order, the boxes it shows.
// The first run that leads into it is in test_Startup.cpp, its Russian
// texts in test_MainWindow.cpp.

#include "WindowFixture.h"

#include "DialogAnswer.h"
#include "Preferences.h"
#include "Settings.h"
#include "ui_Preferences.h"

#include <functional>

namespace {
const QString Restart = QStringLiteral("Application requires restart for settings to take effect.");
const QString EmptyPath = QStringLiteral("Gavrel path is empty, using default path.");
const QString InvalidPath =
    QStringLiteral("Gavrel path does not appear to be valid. Please check Preferences again.");

class PreferencesWindowTest : public WindowTest
{
protected:
    // Every value the dialog shows, so that an untouched dialog changes
    // nothing.
    PreferencesWindowTest()
    {
        writeSettings("<TextureFilter>Anisotropic 4x</TextureFilter><MSAA>Disabled</MSAA>"
                      "<ShadowMap>1024</ShadowMap><ShadowMapSamples>8</ShadowMapSamples>"
                      "<VSync>1</VSync>");
    }

    // Records the settings' signals by name, in the order they arrive.
    static void recordSignals(Settings& settings, QStringList& names)
    {
        const std::pair<void (Settings::*)(), const char*> signalNames[] = {
            {&Settings::gavrelPathChanged, "gavrelPath"},
            {&Settings::modPathChanged, "modPath"},
            {&Settings::textureFilterChanged, "textureFilter"},
            {&Settings::msaaChanged, "msaa"},
            {&Settings::shadowMapSizeChanged, "shadowMapSize"},
            {&Settings::mouseInvertChanged, "mouseInvert"},
        };
        for (const auto& [signal, name] : signalNames)
            QObject::connect(&settings, signal, &settings,
                             [&names, name = name] { names.append(QLatin1String(name)); });
    }

    QStringList boxTextsFrom(int first) const
    {
        QStringList texts;
        for (int i = first; i < boxes.boxes.size(); ++i)
            texts.append(boxes.boxes[i].text);
        return texts;
    }
};

using Edit = std::function<void(Ui::Preferences&)>;

void pick(QComboBox* combo, const char* text)
{
    combo->setCurrentIndex(combo->findText(QLatin1String(text)));
}

struct ApplyCase
{
    const char* name;
    bool accept;
    Edit edit;
    QStringList signalNames;
    QStringList boxTexts;
    std::function<void(const Settings&, MainWindow&)> check;
};
} // namespace

TEST_F(PreferencesWindowTest, AcceptingAppliesInOrderWithSignalsAndBoxes)
{
    // The sample under another name: a new game path that holds a game.
    const QString other = root.filePath(QStringLiteral("other-game"));
    ASSERT_TRUE(QFile::link(Game, other));
    const QString mods = root.filePath(QStringLiteral("mods"));
    using S = const Settings&;
    using W = MainWindow&;
    const ApplyCase cases[] = {
        // clang-format off
        {"unchanged", true, [](Ui::Preferences&) {}, {"mouseInvert"}, {}, {}},
        {"cancelled", false,
         [](Ui::Preferences& ui) { pick(ui.MsaaCombo, "8x"); ui.GavrelPathTxt->clear(); },
         {}, {}, [](S s, W) { EXPECT_EQ(s.msaa, QStringLiteral("Disabled")); }},
        {"msaa", true, [](Ui::Preferences& ui) { pick(ui.MsaaCombo, "8x"); },
         {"msaa", "mouseInvert"}, {Restart}, [](S s, W) { EXPECT_EQ(s.msaa, "8x"); }},
        {"vsync", true, [](Ui::Preferences& ui) { ui.VSyncCombo->setCurrentIndex(0); },
         {"mouseInvert"}, {Restart}, [](S s, W) { EXPECT_EQ(s.vsync, 0); }},
        {"renderer without restart", true,
         [](Ui::Preferences& ui) {
             pick(ui.TextureFilterCombo, "Trilinear");
             pick(ui.ShadowMapCombo, "2048");
             pick(ui.ShadowSamplesCombo, "16");
             ui.camInvertY->setChecked(true);
             ui.verticalTabs->setChecked(true);
             ui.nativeFileDialog->setChecked(true);
         },
         {"shadowMapSize", "textureFilter", "mouseInvert"}, {},
         [](S s, W window) {
             EXPECT_EQ(s.textureFilter, QStringLiteral("Trilinear"));
             EXPECT_EQ(s.shadowMap, 2048);
             EXPECT_EQ(s.shadowMapSamples, 16.0f);
             EXPECT_TRUE(s.mouseInvertY && !s.mouseInvertX);
             EXPECT_FALSE(s.nativeFileDialog);
             EXPECT_TRUE(window.dockOptions() & QMainWindow::VerticalTabs);
         }},
        {"everything, the game last", true,
         [other, mods](Ui::Preferences& ui) {
             ui.GavrelPathTxt->setText(other);
             ui.ModPathTxt->setText(mods);
             pick(ui.MsaaCombo, "2x");
             pick(ui.TextureFilterCombo, "Bilinear");
             pick(ui.ShadowMapCombo, "4096");
             ui.verticalTabs->setChecked(false);
         },
         {"shadowMapSize", "modPath", "msaa", "textureFilter", "mouseInvert", "gavrelPath"},
         {Restart},
         [other, this](S s, W window) {
             EXPECT_EQ(s.gavrelPath, other);
             EXPECT_FALSE(window.dockOptions() & QMainWindow::VerticalTabs);
             // The archives reopened and the table was built again.
             EXPECT_EQ(logLines().filter(QStringLiteral("] Loading zip archives.")).size(), 2);
             EXPECT_EQ(logLines().filter(QStringLiteral("] Building database.")).size(), 2);
             EXPECT_TRUE(listedNames(window).contains(QStringLiteral("Talon")));
         }},
        {"empty game path", true, [](Ui::Preferences& ui) { ui.GavrelPathTxt->clear(); },
         {"mouseInvert"}, {EmptyPath, InvalidPath},
         [](S s, W) {
             EXPECT_EQ(s.gavrelPath, QStringLiteral("c:\\Games\\Gavrel"));
             EXPECT_FALSE(s.gavrelPathValid);
         }},
        // clang-format on
    };

    runWindow([&](MainWindow& window) {
        Settings& settings = *Settings::instance();
        QStringList signalNames;
        recordSignals(settings, signalNames);
        DialogAnswer answer(QStringLiteral("PreferencesDialog"), true);
        for (const ApplyCase& c : cases) {
            SCOPED_TRACE(c.name);
            signalNames.clear();
            const int firstBox = int(boxes.boxes.size());
            answer.answer(c.accept,
                          [&c](QDialog& dialog) { c.edit(*static_cast<Preferences&>(dialog).ui); });
            window.ui.actionPreferences->trigger();
            EXPECT_EQ(signalNames, c.signalNames);
            EXPECT_EQ(boxTextsFrom(firstBox), c.boxTexts);
            if (c.check)
                c.check(settings, window);
            // The file holds what was applied: a fresh read agrees.
            if (c.accept) {
                QFile file(settings.filePath());
                ASSERT_TRUE(file.open(QIODevice::ReadOnly));
                EXPECT_TRUE(file.readAll().contains("<MSAA>" + settings.msaa.toUtf8() + "</MSAA>"));
            }
        }
        EXPECT_EQ(answer.shown, int(std::size(cases)));
    });
}
