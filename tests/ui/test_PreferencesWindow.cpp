// Preferences in the running window: what accepting the dialog writes into
// the settings, the signals it sends in which order, the boxes it shows,
// and the first run that leads the user into it.

#include "WindowFixture.h"

#include "DialogAnswer.h"
#include "FindReplaceForm.h"
#include "Preferences.h"
#include "Settings.h"
#include "VisualEditWidget.h"
#include "ui_Preferences.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QPushButton>

#include <functional>

namespace {
const QString Restart = QStringLiteral("Application requires restart for settings to take effect.");
const QString EmptyPath = QStringLiteral("Gavrel path is empty, using default path.");
const QString InvalidPath =
    QStringLiteral("Gavrel path does not appear to be valid. Please check Preferences again.");

class PreferencesWindowTest : public WindowTest
{
protected:
    PreferencesWindowTest()
    {
        // Every value the dialog shows, so that an untouched dialog changes
        // nothing.
        root.writeFile(QStringLiteral("data/settings.cfg"),
                       "<Settings>\n <Paths><GavrelPath>" + Game.toUtf8() +
                           "</GavrelPath><ModPath>" + Game.toUtf8() +
                           "-mod</ModPath></Paths>\n"
                           " <RendererSystems><Renderer><ShaderDir>../data/shaders/glsl150"
                           "</ShaderDir></Renderer></RendererSystems>\n"
                           " <RendererCommon><TextureFilter>Anisotropic 4x</TextureFilter>"
                           "<MSAA>Disabled</MSAA><ShadowMap>1024</ShadowMap>"
                           "<ShadowMapSamples>8</ShadowMapSamples><VSync>1</VSync>"
                           "</RendererCommon>\n</Settings>\n");
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
    const ApplyCase cases[] = {
        {"unchanged", true, [](Ui::Preferences&) {}, {"mouseInvert"}, {}, {}},
        {"cancelled",
         false,
         [](Ui::Preferences& ui) {
             pick(ui.MsaaCombo, "8x");
             ui.GavrelPathTxt->clear();
         },
         {},
         {},
         [](const Settings& s, MainWindow&) { EXPECT_EQ(s.msaa, QStringLiteral("Disabled")); }},
        {"msaa",
         true,
         [](Ui::Preferences& ui) { pick(ui.MsaaCombo, "8x"); },
         {"msaa", "mouseInvert"},
         {Restart},
         [](const Settings& s, MainWindow&) { EXPECT_EQ(s.msaa, QStringLiteral("8x")); }},
        {"vsync",
         true,
         [](Ui::Preferences& ui) { ui.VSyncCombo->setCurrentIndex(0); },
         {"mouseInvert"},
         {Restart},
         [](const Settings& s, MainWindow&) { EXPECT_EQ(s.vsync, 0); }},
        {"renderer without restart",
         true,
         [](Ui::Preferences& ui) {
             pick(ui.TextureFilterCombo, "Trilinear");
             pick(ui.ShadowMapCombo, "2048");
             pick(ui.ShadowSamplesCombo, "16");
             ui.camInvertY->setChecked(true);
             ui.verticalTabs->setChecked(true);
             ui.nativeFileDialog->setChecked(true);
         },
         {"shadowMapSize", "textureFilter", "mouseInvert"},
         {},
         [](const Settings& s, MainWindow& window) {
             EXPECT_EQ(s.textureFilter, QStringLiteral("Trilinear"));
             EXPECT_EQ(s.shadowMap, 2048);
             EXPECT_EQ(s.shadowMapSamples, 16.0f);
             EXPECT_TRUE(s.mouseInvertY && !s.mouseInvertX);
             EXPECT_FALSE(s.nativeFileDialog);
             EXPECT_TRUE(window.dockOptions() & QMainWindow::VerticalTabs);
         }},
        {"everything, the game last",
         true,
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
         [other, this](const Settings& s, MainWindow& window) {
             EXPECT_EQ(s.gavrelPath, other);
             EXPECT_FALSE(window.dockOptions() & QMainWindow::VerticalTabs);
             // The archives reopened and the table was built again.
             EXPECT_EQ(logLines().filter(QStringLiteral("] Loading zip archives.")).size(), 2);
             EXPECT_EQ(logLines().filter(QStringLiteral("] Building database.")).size(), 2);
             EXPECT_TRUE(listedNames(window).contains(QStringLiteral("Talon")));
         }},
        {"empty game path",
         true,
         [](Ui::Preferences& ui) { ui.GavrelPathTxt->clear(); },
         {"mouseInvert"},
         {EmptyPath, InvalidPath},
         [](const Settings& s, MainWindow&) {
             EXPECT_EQ(s.gavrelPath, QStringLiteral("c:\\Games\\Gavrel"));
             EXPECT_FALSE(s.gavrelPathValid);
         }},
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

TEST_F(PreferencesWindowTest, FirstRunOpensPreferencesAfterTheListsFirstFill)
{
    QFile::remove(userFile(QStringLiteral("settings.cfg")));
    bool listFilledWhenShown = false;
    DialogAnswer answer(QStringLiteral("PreferencesDialog"), true, [&](QDialog& dialog) {
        listFilledWhenShown =
            mainWindow && qobject_cast<QStringListModel*>(mainWindow->ui.mTankListView->model());
        static_cast<Preferences&>(dialog).ui->GavrelPathTxt->setText(Game);
    });
    QStringList namesAtStart;
    runWindow([&](MainWindow& window) { namesAtStart = listedNames(window); });

    EXPECT_EQ(answer.shown, 1);
    EXPECT_TRUE(listFilledWhenShown);
    // The path given in the dialog opened the game before the loop ran.
    EXPECT_TRUE(namesAtStart.contains(QStringLiteral("Talon")));
    ASSERT_FALSE(boxes.boxes.isEmpty());
    EXPECT_TRUE(boxes.boxes[0].text.startsWith(
        QStringLiteral("Could not locate settings file, creating a new one.")));
    EXPECT_FALSE(boxTextsFrom(1).contains(InvalidPath));
}

TEST_F(PreferencesWindowTest, RussianLocaleTranslatesPreferencesAndTheVisualEditor)
{
    QDir(root.root()).mkpath(QStringLiteral("languages"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(FERROX_BIN_DIR "/../languages/Ferrox_ru.qm"),
                            root.filePath(QStringLiteral("languages/Ferrox_ru.qm"))));
    QStringList shown;
    DialogAnswer answer(QStringLiteral("PreferencesDialog"), false, [&shown](QDialog& dialog) {
        const Ui::Preferences& ui = *static_cast<Preferences&>(dialog).ui;
        shown << dialog.windowTitle() << ui.listWidget->item(2)->text()
              << ui.buttonBox->button(QDialogButtonBox::Ok)->text()
              << ui.camInvertX->text()
              // The renderer reads these texts back from the settings.
              << ui.MsaaCombo->itemText(0) << ui.TextureFilterCombo->itemText(1);
    });
    runWindow(
        [](MainWindow& window) {
            window.showPreferences();
            EXPECT_EQ(window.visualEditor->windowTitle(), QStringLiteral("Редактор визуалов"));
            auto* find = window.visualEditor->findChild<FindReplaceForm*>();
            ASSERT_NE(find, nullptr);
            EXPECT_EQ(find->windowTitle(), QStringLiteral("Найти и заменить"));
        },
        QStringLiteral("ru_RU"));
    EXPECT_EQ(shown, (QStringList{QStringLiteral("Настройки"), QStringLiteral("Отрисовка"),
                                  QStringLiteral("ОК"), QStringLiteral("Инвертировать X"),
                                  QStringLiteral("Disabled"), QStringLiteral("Trilinear")}));
}
