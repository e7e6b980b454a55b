// The window's frame: dock keys, full-screen mode, layouts, the log panel
// and the translated texts.

#include "WindowFixture.h"

#include "DialogAnswer.h"
#include "FindReplaceForm.h"
#include "Log.h"
#include "Preferences.h"
#include "RenderWidget.h"
#include "VisualEditWidget.h"
#include "ui_Preferences.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QMenuBar>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QStyle>
#include <QTabBar>

namespace {
QStringList qtWarnings;
void collectWarnings(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        qtWarnings.append(message);
}

bool shownInFront(const QDockWidget* dock)
{
    return dock->isVisible() && !dock->visibleRegion().isEmpty();
}
} // namespace

TEST_F(WindowTest, DockKeysToggleDocksOnlyOutsideFullScreen)
{
    qtWarnings.clear();
    qInstallMessageHandler(collectWarnings);
    runWindow([](MainWindow& window) {
        const std::tuple<int, Qt::KeyboardModifiers, QDockWidget*> keys[] = {
            {Qt::Key_Q, Qt::ShiftModifier, window.ui.TanksDock},
            {Qt::Key_W, Qt::ShiftModifier, window.ui.TankOptionsDock},
            {Qt::Key_S, Qt::ShiftModifier, window.ui.CamoDock},
            {Qt::Key_Z, Qt::ShiftModifier, window.ui.SceneSettingsDock},
            {Qt::Key_X, Qt::ShiftModifier, window.ui.CameraDock},
            {Qt::Key_C, Qt::ShiftModifier, window.ui.armorInspectionDock},
            {Qt::Key_F11, Qt::ControlModifier, window.ui.LogViewDock},
        };
        for (const auto& [key, modifiers, dock] : keys) {
            SCOPED_TRACE(dock->objectName().toStdString());
            // Hidden or behind a tab, the key brings it to the front; in
            // front, it hides it.
            if (!shownInFront(dock)) {
                QTest::keyClick(&window, Qt::Key(key), modifiers);
                EXPECT_TRUE(shownInFront(dock));
            }
            QTest::keyClick(&window, Qt::Key(key), modifiers);
            EXPECT_FALSE(dock->isVisible());
            // Without Shift a letter is no dock key.
            if (modifiers == Qt::ShiftModifier) {
                QTest::keyClick(&window, Qt::Key(key));
                EXPECT_FALSE(dock->isVisible());
            }
            QTest::keyClick(&window, Qt::Key(key), modifiers);
            EXPECT_TRUE(shownInFront(dock));
        }
        // A dock hands its key on to the window: the Log dock's own F11
        // and the window's both run, and hide then show it.
        QTest::keyClick(window.ui.LogViewDock, Qt::Key_F11);
        EXPECT_TRUE(window.ui.LogViewDock->isVisible());

        QTest::keyClick(&window, Qt::Key_Return, Qt::AltModifier);
        EXPECT_TRUE(window.isFullScreen());
        EXPECT_TRUE(window.menuBar()->isHidden());
        EXPECT_FALSE(window.ui.TanksDock->isVisible());
        QTest::keyClick(&window, Qt::Key_Q, Qt::ShiftModifier);
        EXPECT_FALSE(window.ui.TanksDock->isVisible());
        QTest::keyClick(&window, Qt::Key_Return, Qt::AltModifier);
        EXPECT_TRUE(window.ui.actionFullscreen->isChecked());
        QTest::keyClick(&window, Qt::Key_Escape);
        EXPECT_FALSE(window.isFullScreen());
        EXPECT_FALSE(window.ui.actionHide_all_Widgets->isChecked());
        EXPECT_TRUE(window.ui.TanksDock->isVisible());
        EXPECT_TRUE(window.ui.MainToolBar->isVisible());
        EXPECT_TRUE(window.statusBar()->isVisible());
    });
    qInstallMessageHandler(nullptr);
    // Every connection of the form found its slot.
    EXPECT_EQ(qtWarnings.filter(QStringLiteral("QObject::connect")), QStringList());
}

TEST_F(WindowTest, FullScreenWithHiddenDocksReturnsToHiddenDocks)
{
    runWindow([](MainWindow& window) {
        window.ui.actionHide_all_Widgets->setChecked(true);
        EXPECT_FALSE(window.ui.TanksDock->isVisible());
        window.ui.actionFullscreen->setChecked(true);
        window.ui.actionFullscreen->setChecked(false);
        EXPECT_TRUE(window.ui.actionHide_all_Widgets->isChecked());
        EXPECT_FALSE(window.ui.TanksDock->isVisible());
        // The state saved when hiding comes back.
        window.ui.actionHide_all_Widgets->setChecked(false);
        EXPECT_TRUE(window.ui.TanksDock->isVisible());
    });
}

TEST_F(WindowTest, LayoutsComeFromTheUserTheShippedFileOrTheBuiltInTabs)
{
    // No file at all: four docks tabbed with Tanks in front.
    QFile::remove(root.dataDirectory() + QStringLiteral("/default.layout"));
    runWindow([](MainWindow& window) {
        EXPECT_EQ(window.tabifiedDockWidgets(window.ui.TanksDock).size(), 3);
        EXPECT_TRUE(shownInFront(window.ui.TanksDock));
        EXPECT_FALSE(window.ui.CameraDock->isVisible());
        EXPECT_FALSE(window.ui.LogViewDock->isVisible());
        window.ui.CameraDock->show();
        window.saveLayoutAction->trigger();
    });
    EXPECT_EQ(logLines().filter(QStringLiteral("[ Warning ]")),
              QStringList{QStringLiteral("[ Warning ] Could not locate default.layout")});
    ASSERT_EQ(boxes.boxes.size(), 1);
    EXPECT_EQ(boxes.boxes[0].text, QStringLiteral("Saved window layout"));
    EXPECT_TRUE(QFile::exists(userFile(QStringLiteral("user.layout"))));

    // The user's layout wins, and "Load default layout" without a shipped
    // file restores nothing but still says so.
    runWindow([](MainWindow& window) {
        EXPECT_TRUE(window.ui.CameraDock->isVisible());
        window.loadDefaultLayoutAction->trigger();
        EXPECT_TRUE(window.ui.CameraDock->isVisible());
    });
    EXPECT_TRUE(logLines().contains(QStringLiteral("[ Info ] Loaded layout file: user.layout")));
    EXPECT_EQ(boxes.boxes.last().text, QStringLiteral("Restored default layout"));

    QFile::remove(userFile(QStringLiteral("user.layout")));
    QFile::copy(QStringLiteral(FERROX_SOURCE_DIR "/data/default.layout"),
                root.dataDirectory() + QStringLiteral("/default.layout"));
    runWindow([](MainWindow& window) {
        EXPECT_TRUE(shownInFront(window.ui.TanksDock));
        EXPECT_FALSE(window.ui.LogViewDock->isVisible());
        EXPECT_TRUE(window.ui.MainToolBar->isVisible());
    });
    EXPECT_TRUE(logLines().contains(QStringLiteral("[ Info ] Loaded layout file: default.layout")));
}

namespace {
// Whether a tab's title has the room its text needs, so that it is not
// cut short to a few letters like its neighbours'.
bool titleShownWhole(const QTabBar* bar, int tab)
{
    const int needed = bar->fontMetrics().horizontalAdvance(bar->tabText(tab)) +
                       bar->style()->pixelMetric(QStyle::PM_TabBarTabHSpace, nullptr, bar);
    return bar->tabRect(tab).width() >= needed;
}
} // namespace

// The shipped layout on a 1920 x 1080 screen: the viewport takes the larger
// share, each panel fits its dock's width, and the tabs can be told apart.
TEST_F(WindowTest, TheShippedLayoutFitsThePanelsAndGivesTheViewportTheRoom)
{
    runWindow([](MainWindow& window) {
        const QRect screen = window.screen()->availableGeometry();
        EXPECT_GE(window.width(), screen.width() * 9 / 10);
        EXPECT_GE(window.height(), screen.height() * 9 / 10);
        const QWidget* viewport = window.renderWidget;
        EXPECT_GT(viewport->width(), window.width() * 2 / 3);
        EXPECT_GT(viewport->width(), viewport->height());

        for (QDockWidget* dock : window.findChildren<QDockWidget*>()) {
            auto* scroll = dock->findChild<QScrollArea*>();
            if (!scroll)
                continue;
            SCOPED_TRACE(dock->objectName().toStdString());
            dock->raise();
            QCoreApplication::processEvents();
            EXPECT_TRUE(dock->isVisible());
            EXPECT_FALSE(scroll->horizontalScrollBar()->isVisible())
                << scroll->widget()->minimumSizeHint().width() << " in "
                << scroll->viewport()->width();
        }
        window.ui.TankOptionsDock->raise();
        QCoreApplication::processEvents();
        for (const QWidget* control : std::initializer_list<const QWidget*>{
                 window.ui.turretComboBox, window.ui.gunComboBox, window.ui.CollisionBtn})
            EXPECT_EQ(control->visibleRegion(), QRegion(control->rect()))
                << control->objectName().toStdString();

        int tabs = 0;
        for (const QTabBar* bar : window.findChildren<QTabBar*>()) {
            if (!bar->isVisible())
                continue;
            for (int tab = 0; tab < bar->count(); ++tab, ++tabs)
                EXPECT_TRUE(titleShownWhole(bar, tab)) << bar->tabText(tab).toStdString();
        }
        EXPECT_EQ(tabs, 5);
    });
}

TEST_F(WindowTest, LogPanelShowsEachLevelInItsTab)
{
    runWindow([](MainWindow& window) {
        Log::log(QStringLiteral("a warning for the panel"), Log::Warning);
        Log::log(QStringLiteral("an error for the panel"), Log::Error);
        const std::tuple<QTextEdit*, bool, bool> tabs[] = {
            {window.ui.LogAllText, true, true},
            {window.ui.LogWarningText, true, false},
            {window.ui.LogErrorText, false, true},
        };
        for (const auto& [text, warning, error] : tabs) {
            SCOPED_TRACE(text->objectName().toStdString());
            EXPECT_EQ(text->toPlainText().contains(QStringLiteral("a warning for")), warning);
            EXPECT_EQ(text->toPlainText().contains(QStringLiteral("an error for")), error);
            EXPECT_TRUE(text->isReadOnly());
        }
        EXPECT_EQ(window.ui.tabWidget_2->currentWidget(), window.ui.LogAllText->parentWidget());
    });
}

TEST_F(WindowTest, RussianLocaleTranslatesMenusPreferencesAndTheVisualEditor)
{
    QDir(root.root()).mkpath(QStringLiteral("languages"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(FERROX_BIN_DIR "/../languages/Ferrox_ru.qm"),
                            root.filePath(QStringLiteral("languages/Ferrox_ru.qm"))));
    QStringList shown;
    runWindow(
        [&](MainWindow& window) {
            const std::pair<QMenu*, const char*> menus[] = {
                {window.ui.menu_File, "&Файл"},          {window.ui.menu_Edit, "&Правка"},
                {window.ui.menu_View, "&Вид"},           {window.ui.menu_Window, "&Окно"},
                {window.ui.menu_Settings, "&Настройки"}, {window.ui.menu_Help, "&Справка"},
            };
            for (const auto& [menu, title] : menus)
                EXPECT_EQ(menu->title(), QString::fromUtf8(title));
            EXPECT_EQ(window.ui.TanksDock->windowTitle(), QStringLiteral("Танки"));
            EXPECT_EQ(window.ui.shellDistanceLabel->text(), QStringLiteral("Дистанция (м):"));
            EXPECT_EQ(window.ui.shellChoiceBox->itemText(0), QStringLiteral("Свой"));
            EXPECT_EQ(window.ui.pushButton->text(), QStringLiteral("Загрузить"));
            // The camouflage exports' texts come from a library without a window.
            window.ui.pushButton_10->click();
            ASSERT_FALSE(boxes.boxes.isEmpty());
            EXPECT_EQ(boxes.boxes.last().text,
                      QStringLiteral("Сначала необходимо загрузить танк."));

            DialogAnswer answer(QStringLiteral("PreferencesDialog"), false, [&](QDialog& dialog) {
                const Ui::Preferences& ui = *static_cast<Preferences&>(dialog).ui;
                shown << dialog.windowTitle() << ui.listWidget->item(2)->text()
                      << ui.buttonBox->button(QDialogButtonBox::Ok)->text()
                      << ui.camInvertX->text()
                      // The renderer reads these texts back from the settings.
                      << ui.MsaaCombo->itemText(0) << ui.TextureFilterCombo->itemText(1);
            });
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

namespace {
QString glText(GLenum name)
{
    QOpenGLFunctions* gl = QOpenGLContext::currentContext()->functions();
    return QString::fromLatin1(reinterpret_cast<const char*>(gl->glGetString(name)));
}
} // namespace

TEST_F(WindowTest, AboutBoxShowsTheViewportsDriver)
{
    runWindow([](MainWindow& window) {
        Qt::WindowFlags flags;
        QString vendor, renderer;
        DialogAnswer answer(QStringLiteral("aboutDialog"), false, [&](QDialog& about) {
            flags = about.windowFlags();
            vendor = about.findChild<QLabel*>(QStringLiteral("glVendorLabel"))->text();
            renderer = about.findChild<QLabel*>(QStringLiteral("glRendererLabel"))->text();
        });
        // The slot must make the viewport's context current itself.
        window.renderWidget->doneCurrent();
        window.ui.actionAbout_Ferrox->trigger();
        ASSERT_EQ(answer.shown, 1);
        EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
        EXPECT_TRUE(flags.testFlag(Qt::WindowSystemMenuHint));
        window.renderWidget->makeCurrent();
        EXPECT_EQ(vendor, glText(GL_VENDOR));
        EXPECT_EQ(renderer, glText(GL_RENDERER));
        EXPECT_FALSE(renderer.isEmpty());
    });
}

TEST_F(WindowTest, ALoadedCameraFileSetsTheTypeAndViewBoxes)
{
    root.writeFile(QStringLiteral("top.Camera"),
                   "<Camera>\n <Target>0 0.5 0</Target>\n <Rotation>30 -60 0</Rotation>\n"
                   " <Fov>50</Fov>\n <Zoom>14</Zoom>\n <Type>1</Type>\n</Camera>\n");
    runWindow([this](MainWindow& window) {
        window.ui.CameraViewCombo->setCurrentIndex(3);
        setFileDialogHandler([this](const FileDialogRequest&) {
            return root.filePath(QStringLiteral("top.Camera"));
        });
        window.ui.actionLoad_Camera_View->trigger();
        setFileDialogHandler({});
        EXPECT_EQ(window.ui.CameraTypeCombo->currentIndex(), 1);
        EXPECT_EQ(window.ui.CameraViewCombo->currentIndex(), 0);
        // The boxes follow the file's view without setting one of their own.
        const CameraControls& controls = window.renderWidget->controls;
        EXPECT_EQ(controls.typeIndex, 1);
        EXPECT_EQ(controls.rotation, (Vector3{30, -60, 0}));
        EXPECT_FLOAT_EQ(controls.zoom, 14);
        EXPECT_DOUBLE_EQ(window.ui.RotYDoubleSpinBox->value(), -60);
    });
}
