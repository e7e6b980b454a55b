#include "MainWindow.h"

#include "AboutViewerWidget.h"
#include "CamoBakeJob.h"
#include "CamoExports.h"
#include "CamoList.h"
#include "CamoLoader.h"
#include "CamoScene.h"
#include "CollisionArmor.h"
#include "CommonMessages.h"
#include "Constants.h"
#include "Database.h"
#include "Environment.h"
#include "FileDialogs.h"
#include "Log.h"
#include "MaterialLoader.h"
#include "MessageBoxes.h"
#include "ModDirectory.h"
#include "Physics.h"
#include "Preferences.h"
#include "RenderWidget.h"
#include "ScreenShotUI.h"
#include "Screenshots.h"
#include "Settings.h"
#include "ShellChoice.h"
#include "StartupError.h"
#include "StatusMessages.h"
#include "TankLoader.h"
#include "TurretGunChooser.h"
#include "UpdateCheck.h"
#include "VehicleGltf.h"
#include "VehicleScene.h"
#include "VisualEditWidget.h"
#include "WeakSpotDisplay.h"

#include <QClipboard>
#include <QColorDialog>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMessageBox>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QSqlQuery>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTime>
#include <QUrl>

#include <cmath>

MainWindow* mainWindow = nullptr;

namespace {
const QString WindowStateKey = QStringLiteral("windowState");
const QString RecentTanksKey = QStringLiteral("RecentTanks");

QString programName()
{
    return QLatin1String(Ferrox::ApplicationName);
}

bool anyNonZero(const Vector3& triple)
{
    return triple[0] != 0 || triple[1] != 0 || triple[2] != 0;
}

void showOk(bool warning, QWidget* parent, const QString& text)
{
    if (warning)
        warningBox(parent, programName(), text, QMessageBox::Ok, QMessageBox::NoButton);
    else
        informationBox(parent, programName(), text, QMessageBox::Ok);
}
} // namespace

MainWindow::MainWindow(QWidget* parent, Qt::WindowFlags flags) : QMainWindow(parent, flags)
{
    visualEditor = new VisualEditWidget(this);
    visualEditor->hide();
    mainWindow = this;
    Log::log(QStringLiteral("Creating main window"), Log::Info);
    qRegisterMetaType<ShellParamaters>("ShellParamaters");
    ui.setupUi(this);
    renderWidget = ui.mRenderWidget;
    installVehicleLoader(*renderWidget);
    installCamoLoader(*renderWidget);
    connect(this, &MainWindow::reloadSceneItems, renderWidget, &RenderWidget::sceneReload);
    if (Database* database = Database::instance())
        database->sceneReloadRequested = [this] { reloadScene(); };
    ui.mTankListView->followFilter(ui.tankFilter);
    connectCameraBoxes();
    setStatusMessageSink(
        [this](const QString& text, int timeoutMs) { statusBar()->showMessage(text, timeoutMs); });

    setWindowTitle(programName() + QLatin1Char(' ') + QLatin1String(Ferrox::ApplicationVersion));
    for (QDockWidget* dock : {ui.armorDock, static_cast<QDockWidget*>(ui.armorInspectionDock)}) {
        dock->hide();
        dock->setFloating(true);
    }

    // Maximised where a window manager does it; where none does (or before
    // it does), the screen's whole available area rather than the form's
    // narrow size, so that the viewport gets the larger share.
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        setGeometry(screen->availableGeometry());
    // The first show starts the viewport's GL, which creates the loaders
    // used from here on.
    showMaximized();
    initialiseViewport();
    connectCamouflage();
    ui.armorDock->move(50, height() - 420);

    buildWindowMenu();
    restoreStartLayout();
    if (Log* log = Log::instance())
        connect(log, SIGNAL(logChanged()), this, SLOT(updateLogWidget()));
    updateLogWidget();
    connect(renderWidget, SIGNAL(viewportColorChanged(QColor)), this,
            SLOT(setViewportLabelColor(QColor)));
    setViewportLabelColor(renderWidget->viewportColor);
    setTabPosition(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea, QTabWidget::North);

    if (Database* database = Database::instance())
        connect(database, SIGNAL(databaseRebuilt()), this, SLOT(updateTankList()));
    updateTankList();
    // A run that ends in the fatal box before its loop asks for nothing.
    if (Settings::instance() && Settings::instance()->firstRun && !startupErrorPending())
        showPreferences();
    applySceneSettings();
    // After the first fill, so that the fill doesn't run the filter.
    for (QComboBox* box : {ui.NationCombo, ui.CatergoryCombo, ui.TierCombo})
        connect(box, SIGNAL(currentTextChanged(QString)), this, SLOT(tankFilterChanged()));

    if (TankLoader* loader = TankLoader::instance())
        connectTankLoader(*loader);
    connect(this, SIGNAL(armorModeToggled(bool)), renderWidget, SLOT(armorToggle(bool)));
    connectArmorCollisionState();
    shellChoice = new ShellChoice({ui.shellChoiceBox, ui.shellDistanceBox, ui.shellPenetrationBox,
                                   ui.shellCombo, ui.shellSizeBox, ui.shellNormalBox},
                                  this);
    connect(shellChoice, &ShellChoice::changed, this, &MainWindow::emitShellParamaters);
    weakSpots = new WeakSpotDisplay(renderWidget, ui.weakSpotsCheckbox, ui.weakSpotsProgress, this);
    emitShellParamaters();
    toggleSolidMode();
    updateChecker = new UpdateCheck(this);

    for (QAction*& action : recentActions) {
        action = new QAction(this);
        action->setVisible(false);
        ui.menuRecent_Tanks->addAction(action);
        connect(action, SIGNAL(triggered()), this, SLOT(_loadTankFromRecent()));
    }
    loadRecentList();
    refreshRecentActions();

    // Their shortcuts must work while the menu bar and tool bars are hidden.
    addActions(windowActions());
    Log::log(QStringLiteral("main window setup complete."), Log::Info);

    // Twice, so that toggled() reaches the viewport whatever the box held;
    // checked means hidden.
    const bool showGrid = Settings::instance() && Settings::instance()->showGrid;
    ui.GridCheckBox->setChecked(showGrid);
    ui.GridCheckBox->setChecked(!showGrid);
}

MainWindow::~MainWindow()
{
    for (QAction* action : windowActions())
        removeAction(action);
    saveRecentList();
    if (TankLoader* loader = TankLoader::instance())
        loader->window = TankWindowSink{};
    if (CollisionArmor* armor = CollisionArmor::instance())
        armor->tablesChanged = nullptr;
    if (Database* database = Database::instance())
        database->sceneReloadRequested = nullptr;
    if (mainWindow == this) {
        mainWindow = nullptr;
        setStatusMessageSink({});
    }
}

QList<QAction*> MainWindow::windowActions() const
{
    return {ui.actionAbout_Qt,         ui.actionAbout_Ferrox,   ui.action_Quit,
            ui.actionSolid_Mode,       ui.actionWireframe_mode, ui.actionSolid_Wireframe_mode,
            ui.actionTake_screenshot,  ui.actionReload_Scene,   ui.actionCamera_Reset,
            ui.actionHide_all_Widgets, ui.actionFullscreen,     ui.actionScreenShotSave};
}

void MainWindow::initialiseViewport()
{
    // QOpenGLWidget starts its GL when it is first shown with a size; the
    // show normally does it at once, queued layout events may delay it.
    if (!renderWidget->isValid())
        QCoreApplication::processEvents();
    if (!renderWidget->isValid() && !startupErrorPending())
        reportStartupError(QStringLiteral("OpenGL 3.2 is required."));
}

// A loaded .Camera file sets the type and view boxes; the camera has taken
// the file's view already, so the boxes' own signals must not set it again.
void MainWindow::connectCameraBoxes()
{
    const auto showIndex = [](QComboBox* box) {
        return [box](int index) {
            const QSignalBlocker quiet(box);
            box->setCurrentIndex(index);
        };
    };
    connect(&renderWidget->controls, &CameraControls::cameraTypeIndexChanged, ui.CameraTypeCombo,
            showIndex(ui.CameraTypeCombo));
    connect(&renderWidget->controls, &CameraControls::cameraViewIndexChanged, ui.CameraViewCombo,
            showIndex(ui.CameraViewCombo));
}

void MainWindow::connectTankLoader(TankLoader& loader)
{
    loader.window.turretRange = [this](float minimum, float maximum) {
        setSpinRange(ui.turretRotationSpin, minimum, maximum);
    };
    loader.window.gunRange = [this](float minimum, float maximum) {
        setSpinRange(ui.gunRotationSpin, minimum, maximum);
    };
    loader.window.addRecent = [this](const QString& name) { addTankRecent(name); };
    visualEditor->connectVisualText(loader.window);
    connect(&loader, SIGNAL(tankLoaded()), this, SLOT(tankOptionsChanged()));
    connect(this, &MainWindow::armorModeToggled, &loader, [this, &loader](bool on) {
        renderWidget->withContext([&] { loader.armorToggle(on); });
    });
}

void MainWindow::setSpinRange(QDoubleSpinBox* spin, float minimum, float maximum)
{
    spin->setEnabled(true);
    spin->setRange(minimum, maximum);
    spin->setValue(0.0);
}

// ---------------------------------------------------------------- docks and layout

QList<MainWindow::DockEntry> MainWindow::dockEntries() const
{
    return {{ui.TanksDock, "Shift + Q", "tank.png", Qt::Key_Q},
            {ui.TankOptionsDock, "Shift + W", "tank_options.png", Qt::Key_W},
            {ui.CamoDock, "Shift + S", "camo.png", Qt::Key_S},
            {ui.SceneSettingsDock, "Shift + Z", "scene_settings.png", Qt::Key_Z},
            {ui.CameraDock, "Shift + X", "camera.png", Qt::Key_X},
            {ui.armorInspectionDock, "Shift + C", "silver_shaded.png", Qt::Key_C},
            {ui.LogViewDock, "F11", "Log.png", Qt::Key_F11}};
}

void MainWindow::buildWindowMenu()
{
    for (const DockEntry& entry : dockEntries()) {
        QAction* toggle = entry.dock->toggleViewAction();
        const QString title = entry.dock->windowTitle();
        toggle->setText(title + QLatin1Char('\t') + QLatin1String(entry.key));
        toggle->setToolTip(title);
        toggle->setIcon(QIcon(QStringLiteral(":/icons/") + QLatin1String(entry.icon)));
        if (entry.dock == ui.LogViewDock) {
            ui.menu_Window->addSeparator();
            ui.WidgetToolBar->addSeparator();
        }
        ui.menu_Window->addAction(toggle);
        ui.WidgetToolBar->addAction(toggle);
    }
    ui.menu_Window->addSeparator();
    saveLayoutAction =
        new QAction(QIcon(QStringLiteral(":/icons/floppy-32.png")), tr("Save Layout"), this);
    saveLayoutAction->setObjectName(QStringLiteral("saveLayoutAction"));
    loadDefaultLayoutAction =
        new QAction(QIcon(QStringLiteral(":/icons/fileopen.png")), tr("Load default layout"), this);
    loadDefaultLayoutAction->setObjectName(QStringLiteral("loadDefaultLayoutAction"));
    ui.menu_Window->addAction(saveLayoutAction);
    ui.menu_Window->addAction(loadDefaultLayoutAction);
    connect(saveLayoutAction, SIGNAL(triggered()), this, SLOT(saveLayout()));
    connect(loadDefaultLayoutAction, SIGNAL(triggered()), this, SLOT(loadDefaultLayout()));
}

QString MainWindow::userLayoutPath()
{
    return QDir::toNativeSeparators(userDirectory() + QStringLiteral("/user.layout"));
}

QString MainWindow::defaultLayoutPath()
{
    return QLatin1String(Ferrox::DataDirectory) + QStringLiteral("default.layout");
}

QString MainWindow::recentListPath()
{
    return QDir::toNativeSeparators(userDirectory() + QStringLiteral("/recent.list"));
}

namespace {
void restoreLayout(QMainWindow& window, const QString& path)
{
    QSettings layout(path, QSettings::IniFormat);
    window.restoreState(layout.value(WindowStateKey).toByteArray(), 0);
}
} // namespace

void MainWindow::restoreStartLayout()
{
    if (QFile::exists(userLayoutPath())) {
        restoreLayout(*this, userLayoutPath());
        Log::log(QStringLiteral("Loaded layout file: user.layout"), Log::Info);
    } else if (QFile::exists(defaultLayoutPath())) {
        restoreLayout(*this, defaultLayoutPath());
        Log::log(QStringLiteral("Loaded layout file: default.layout"), Log::Info);
    } else {
        ui.CameraDock->hide();
        ui.armorInspectionDock->hide();
        ui.LogViewDock->hide();
        tabifyDockWidget(ui.TanksDock, ui.TankOptionsDock);
        tabifyDockWidget(ui.TankOptionsDock, ui.CamoDock);
        tabifyDockWidget(ui.CamoDock, ui.SceneSettingsDock);
        ui.TanksDock->raise();
        Log::log(QStringLiteral("Could not locate default.layout"), Log::Warning);
    }
}

void MainWindow::saveLayout()
{
    QSettings layout(userLayoutPath(), QSettings::IniFormat);
    layout.setValue(WindowStateKey, saveState(0));
    layout.sync();
    Log::log(QStringLiteral("Saved window layout"), Log::Info);
    showOk(false, this, tr("Saved window layout"));
}

void MainWindow::loadDefaultLayout()
{
    if (QFile::exists(defaultLayoutPath()))
        restoreLayout(*this, defaultLayoutPath());
    ui.armorDock->hide();
    showOk(false, this, tr("Restored default layout"));
}

void MainWindow::toggleDock(QDockWidget* dock)
{
    const bool tabbed = !tabifiedDockWidgets(dock).isEmpty();
    const bool visible = dock->property(Ferrox::VisibilityProperty).toBool();
    if (tabbed && !visible) {
        // Behind another tab: bring it to the front.
        dock->raise();
        return;
    }
    dock->toggleViewAction()->trigger();
    if (!visible)
        dock->raise();
}

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    if (!isFullScreen()) {
        for (const DockEntry& entry : dockEntries()) {
            if (event->key() != entry.shortcut)
                continue;
            if (entry.shortcut == Qt::Key_F11 || event->modifiers() == Qt::ShiftModifier)
                toggleDock(entry.dock);
        }
    }
    if (event->key() == Qt::Key_Escape)
        ui.actionFullscreen->setChecked(false);
    const bool alt = event->modifiers() & Qt::AltModifier;
    if (alt && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        ui.actionFullscreen->setChecked(true);
    QWidget::keyPressEvent(event);
}

void MainWindow::toggleAllDocks(bool hide)
{
    if (!hide) {
        restoreState(hideDocksState);
        return;
    }
    hideDocksState = saveState();
    for (QDockWidget* dock :
         {static_cast<QDockWidget*>(ui.TanksDock), static_cast<QDockWidget*>(ui.TankOptionsDock),
          static_cast<QDockWidget*>(ui.CamoDock), static_cast<QDockWidget*>(ui.SceneSettingsDock),
          static_cast<QDockWidget*>(ui.CameraDock), static_cast<QDockWidget*>(ui.LogViewDock),
          static_cast<QDockWidget*>(ui.armorInspectionDock)})
        dock->hide();
}

void MainWindow::toggleFullscreen(bool on)
{
    if (on) {
        fullscreenState = saveState();
        statusBar()->hide();
        menuBar()->hide();
        docksHiddenBeforeFullscreen = ui.actionHide_all_Widgets->isChecked();
        if (!docksHiddenBeforeFullscreen)
            ui.actionHide_all_Widgets->setChecked(true);
        ui.MainToolBar->hide();
        ui.WidgetToolBar->hide();
        showFullScreen();
        return;
    }
    showMaximized();
    statusBar()->show();
    menuBar()->show();
    if (!docksHiddenBeforeFullscreen)
        ui.actionHide_all_Widgets->setChecked(false);
    restoreState(fullscreenState);
}

void MainWindow::updateLogWidget()
{
    const Log* log = Log::instance();
    if (!log)
        return;
    ui.LogAllText->setPlainText(log->allText);
    ui.LogErrorText->setPlainText(log->text(Log::Error));
    ui.LogWarningText->setPlainText(log->text(Log::Warning));
    for (QTextEdit* text : {ui.LogAllText, ui.LogErrorText, ui.LogWarningText})
        text->verticalScrollBar()->setValue(text->verticalScrollBar()->maximum());
}

// ---------------------------------------------------------------- later work

void MainWindow::aboutQt()
{
    QMessageBox::aboutQt(this, QString());
}

void MainWindow::aboutViewer()
{
    // The box reads the driver's facts from the context current when it is
    // made: the viewport's.
    const GlContextScope viewport;
    AboutViewerWidget about(this, Qt::WindowTitleHint | Qt::WindowSystemMenuHint);
    about.exec();
}

QString MainWindow::userGuidePath()
{
    return QFileInfo(QLatin1String(Ferrox::UserGuideFile)).absoluteFilePath();
}

void MainWindow::aboutHelp()
{
    const QString guide = userGuidePath();
    if (!QFile::exists(guide)) {
        Log::log(QStringLiteral("Could not locate the user guide: ") + guide, Log::Warning);
        showOk(true, this,
               tr("Could not locate the user guide: ") + QDir::toNativeSeparators(guide));
        return;
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(guide));
}

void MainWindow::showPreferences()
{
    Settings* settings = Settings::instance();
    if (!settings)
        return;
    Preferences dialog(this, Qt::WindowTitleHint | Qt::WindowSystemMenuHint);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const bool restart = dialog.applyTo(*settings);
    setDockOptions(settings->verticalTabs ? dockOptions() | QMainWindow::VerticalTabs
                                          : dockOptions() & ~QMainWindow::VerticalTabs);

    if (!settings->validateGavrelPath(settings->gavrelPath)) {
        const QString message =
            tr("Gavrel path does not appear to be valid. Please check Preferences again.");
        Log::log(message, Log::Warning);
        showOk(true, this, message);
    }
    if (restart)
        showOk(false, this, tr("Application requires restart for settings to take effect."));
}

// --- Screenshots ----------------------------------------------------------

namespace {
// The frame as drawn, with its alpha channel only when the user wants it.
QImage grabViewport(RenderWidget* widget)
{
    const Settings* settings = Settings::instance();
    const QImage frame = widget->grabFramebuffer();
    return settings && settings->screenshotAlpha ? frame
                                                 : frame.convertToFormat(QImage::Format_RGB32);
}
} // namespace

void MainWindow::takeScreenshot()
{
    QGuiApplication::clipboard()->setImage(grabViewport(renderWidget), QClipboard::Clipboard);
    // Full-screen, a box would cover the picture the user is looking at.
    if (!isFullScreen())
        showOk(false, this, tr("Copied image to clipboard."));
}

void MainWindow::takeScreenshotFile()
{
    const QImage image = grabViewport(renderWidget);
    const Settings* settings = Settings::instance();
    const TankLoader* loader = TankLoader::instance();
    const QString file = Screenshots::fileName(
        settings ? settings->screenshotPath : QString(), loader ? loader->name : QString(),
        settings && settings->screenshotTimeStamp, QTime::currentTime());
    Log::log(QStringLiteral("Saving screenshot: ") + file, Log::Info);
    QString error;
    if (Screenshots::save(image, file, -1, &error)) {
        if (!isFullScreen())
            showOk(false, this, tr("Image saved ok."));
        return;
    }
    Log::log(QStringLiteral("Failed to save screenshot: ") + file + QStringLiteral(": ") + error,
             Log::Warning);
    if (!isFullScreen())
        showOk(true, this, tr("Failed to save screenshot."));
}

void MainWindow::openScreenshotDir()
{
    const Settings* settings = Settings::instance();
    QDesktopServices::openUrl(QUrl::fromLocalFile(QDir::toNativeSeparators(
        (settings ? settings->screenshotPath : QString()) + QDir::separator())));
}

void MainWindow::showScreenshot()
{
    {
        ScreenShotUI dialog(this, renderWidget);
        dialog.exec();
    }
    renderWidget->paused = false;
}

// --- End of screenshots ---------------------------------------------------

void MainWindow::showVisualEditor()
{
    visualEditor->show();
    visualEditor->raise();
    visualEditor->activateWindow();
}

void MainWindow::updateCheck()
{
    showOk(false, this, tr("Auto Update has been disabled"));
}

// ---------------------------------------------------------------- camouflage

void MainWindow::connectCamouflage()
{
    CamoLoader* camo = CamoLoader::instance();
    if (!camo)
        return;
    ui.listView_2->follow({ui.camoLabel0, ui.camoLabel1, ui.camoLabel2, ui.camoLabel3});
    // A vehicle of another nation starts again in summer.
    connect(camo, &CamoLoader::summerChosen, ui.SummerRadioBtn,
            [this] { ui.SummerRadioBtn->setChecked(true); });
}

void MainWindow::toggleCamoEnable(bool disable)
{
    if (CamoLoader* camo = CamoLoader::instance())
        camo->enabled = !disable;
}

void MainWindow::toggleCamo()
{
    CamoList* patterns = ui.listView_2->patterns();
    if (!patterns)
        return;
    if (ui.WinterRadioBtn->isChecked())
        patterns->setSeason(QStringLiteral("winter"));
    else if (ui.SummerRadioBtn->isChecked())
        patterns->setSeason(QStringLiteral("summer"));
    else if (ui.DesertRadioBtn->isChecked())
        patterns->setSeason(QStringLiteral("desert"));
}

void MainWindow::exportCamoPattern()
{
    ::exportCamoPattern();
}

void MainWindow::exportCamoBake()
{
    // The bake draws with the viewport's context, the program's only one.
    renderWidget->withContext([] { ::exportCamoBake(); });
}

void MainWindow::exportGltf()
{
    TankLoader* loader = TankLoader::instance();
    const Settings* settings = Settings::instance();
    const QString title = QLatin1String(Ferrox::ApplicationName);
    if (!loader || !loader->loaded || !settings) {
        informationBox(this, title, tr("Load a vehicle first."), QMessageBox::Ok);
        return;
    }
    // The vehicle's folder in the mod folder, made if need be; never the
    // game folder.
    QString folder = QDir::homePath();
    if (!settings->modPath.isEmpty()) {
        const QString vehicleFolder = ModDirectory::forTank(loader->name).path();
        if (QFileInfo(vehicleFolder).isDir() || ModDirectory::makePath(vehicleFolder))
            folder = vehicleFolder;
    }
    const QString states[] = {QStringLiteral("intact"), QStringLiteral("destroyed"),
                              QStringLiteral("collision")};
    const int state = loader->armourMode ? loader->armourModel : loader->damageMode;
    const QString suggested = QDir(folder).filePath(
        QFileInfo(loader->vehicleFilePath).completeBaseName() + QLatin1Char('_') +
        states[qBound(0, state, 2)] + QStringLiteral(".glb"));
    QString path = chooseSaveFile(this, tr("Export glTF"), suggested,
                                  tr("glTF binary (*.glb);;glTF with its textures beside it "
                                     "(*.gltf)"),
                                  {});
    if (path.isEmpty())
        return;
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix != QLatin1String("glb") && suffix != QLatin1String("gltf"))
        path += QStringLiteral(".glb");
    if (isInsideFolder(path, settings->gavrelPath)) {
        warningBox(this, title, tr("Ferrox never writes into the game folder."), QMessageBox::Ok,
                   QMessageBox::Ok);
        return;
    }
    QString error;
    const bool written =
        renderWidget->withContext([&] { return exportVehicleGltf(*loader, path, &error); });
    if (!written) {
        Log::log(QStringLiteral("glTF export failed: ") + error, Log::Warning);
        warningBox(this, title,
                   tr("The glTF file could not be written.") + QLatin1Char('\n') + error,
                   QMessageBox::Ok, QMessageBox::Ok);
        return;
    }
    Log::log(QStringLiteral("glTF written: ") + path, Log::Info);
    showStatusMessage(tr("glTF written: ") + QDir::toNativeSeparators(path), 0);
}

// ---------------------------------------------------------------- scene

void MainWindow::changeViewportColor()
{
    QColorDialog dialog(renderWidget->viewportColor, this);
    QColor color = renderWidget->viewportColor;
    if (dialog.exec() == QDialog::Accepted)
        color = dialog.currentColor();
    renderWidget->setViewportColor(color);
}

void MainWindow::setViewportLabelColor(QColor color)
{
    color.setAlphaF(1.0f);
    ui.ViewportColorLabel->setPalette(QPalette(color));
    ui.ViewportColorLabel->setAutoFillBackground(true);
}

void MainWindow::ambientLightChanged(int value)
{
    ui.AmbientLightValue->setNum(value);
}

void MainWindow::reloadScene()
{
    if (!renderWidget->initialised)
        return;
    showStatusMessage(tr("Reloading Scene."), 0);
    Log::log(QStringLiteral("Reloading Scene."), Log::Info);
    emit reloadSceneItems();
}

void MainWindow::applySceneSettings()
{
    const Settings* settings = Settings::instance();
    if (!settings)
        return;
    ui.AmbientLightSlider->setValue(settings->ambientLight);
    renderWidget->changeAmbientLight();
    // The boxes stand under "Hide Elements": checked means hidden.
    ui.TankInfoCheckBox->setChecked(!settings->showTankInfo);
    ui.RenderStatsCheckBox->setChecked(!settings->showRenderInfo);
    ui.GridCheckBox->setChecked(!settings->showGrid);
    ui.HangarCheckBox->setChecked(!settings->showHangar);
    renderWidget->setViewportColor(settings->viewportColor);
    if (settings->sceneSet == QLatin1String("basic"))
        ui.BasicHangarRadioBtn->setChecked(true);
    if (settings->lighting == QLatin1String("bumpmap"))
        (settings->showShadows ? ui.BumpMapRadioBtn2 : ui.BumpMapRadioBtn)->setChecked(true);
    else if (settings->lighting == QLatin1String("disabled"))
        ui.NoLightingRadioBtn->setChecked(true);
    // A box already in the wanted state sends no toggled(): hand the
    // viewport the whole state once.
    renderWidget->showGarage(ui.HangarCheckBox->isChecked());
    renderWidget->toggleText(ui.TankInfoCheckBox->isChecked());
    renderWidget->toggleRenderInfo(ui.RenderStatsCheckBox->isChecked());
    renderWidget->toggleGarage(ui.PremiumHangarRadioBtn->isChecked());
    toggleMaterial(true);
    QMainWindow::DockOptions options = AnimatedDocks | AllowNestedDocks | AllowTabbedDocks;
    if (settings->verticalTabs)
        options |= VerticalTabs;
    setDockOptions(options);
}

void MainWindow::saveSceneSettings()
{
    Settings* settings = Settings::instance();
    if (!settings)
        return;
    settings->showShadows = ui.BumpMapRadioBtn2->isChecked();
    settings->showTankInfo = !ui.TankInfoCheckBox->isChecked();
    settings->showGrid = !ui.GridCheckBox->isChecked();
    settings->showRenderInfo = !ui.RenderStatsCheckBox->isChecked();
    settings->showHangar = !ui.HangarCheckBox->isChecked();
    settings->ambientLight = ui.AmbientLightSlider->value();
    settings->viewportColor = renderWidget->viewportColor;
    settings->sceneSet =
        ui.BasicHangarRadioBtn->isChecked() ? QStringLiteral("basic") : QStringLiteral("premium");
    settings->lighting =
        ui.NoLightingRadioBtn->isChecked() ? QStringLiteral("disabled") : QStringLiteral("bumpmap");
    settings->save();
    showOk(false, this, tr("Settings saved."));
}

void MainWindow::toggleMaterial(bool)
{
    if (!renderWidget->initialised)
        return;
    int mode = 0;
    if (ui.NoLightingRadioBtn->isChecked())
        mode = 1;
    if (Settings* settings = Settings::instance())
        settings->showShadows = ui.BumpMapRadioBtn2->isChecked();
    if (MaterialLoader* materials = MaterialLoader::instance())
        materials->lightingMode = mode;
}

void MainWindow::toggleDamagedMode(bool)
{
    int model = Intact;
    if (ui.DamagedBtn->isChecked())
        model = Destroyed;
    else if (ui.CollisionBtn->isChecked())
        model = Collision;
    ui.armorDock->setVisible(model == Collision);
    if (TankLoader* loader = TankLoader::instance()) {
        loader->damageMode = model;
        loader->showVisualText();
    }
}

void MainWindow::setDrawStyle(QAction* active, bool wireframe, bool solidWire)
{
    if (TankLoader* loader = TankLoader::instance()) {
        loader->wireframe = wireframe;
        loader->solidWire = solidWire;
    }
    for (QAction* action :
         {ui.actionSolid_Mode, ui.actionWireframe_mode, ui.actionSolid_Wireframe_mode}) {
        action->setCheckable(action == active);
        action->setChecked(action == active);
    }
}

void MainWindow::toggleSolidMode()
{
    setDrawStyle(ui.actionSolid_Mode, false, false);
}

void MainWindow::toggleWireframeMode()
{
    setDrawStyle(ui.actionWireframe_mode, true, false);
}

void MainWindow::toggleSolidWireMode()
{
    setDrawStyle(ui.actionSolid_Wireframe_mode, false, true);
}

void MainWindow::toggleTextureLocation(bool modFolder)
{
    TankLoader* loader = TankLoader::instance();
    if (!loader)
        return;
    loader->texturesFromArchives = !modFolder;
    if (loader->loaded)
        renderWidget->withContext([loader] { loader->reload(); });
}

void MainWindow::toggleGridTexture(bool defaultTexture)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->gridTexture = !defaultTexture;
}

void MainWindow::toggleHideChassis(bool hide)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->hideChassis = hide;
}

void MainWindow::toggleHideHull(bool hide)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->hideHull = hide;
}

void MainWindow::toggleHideTurret(bool hide)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->hideTurret = hide;
}

void MainWindow::toggleHideGun(bool hide)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->hideGun = hide;
}

// ---------------------------------------------------------------- tank list

void MainWindow::showTankNames(QSqlQuery* query)
{
    QStringList names;
    while (query && query->next())
        names.append(query->value(Database::TranslatedNameColumn).toString());
    delete query;
    QAbstractItemModel* old = ui.mTankListView->model();
    ui.mTankListView->setModel(new QStringListModel(names, this));
    delete old;
}

void MainWindow::updateTankList()
{
    const Database* database = Database::instance();
    if (!database)
        return;
    const QSignalBlocker nations(ui.NationCombo), categories(ui.CatergoryCombo),
        tiers(ui.TierCombo);
    ui.NationCombo->clear();
    ui.CatergoryCombo->clear();
    ui.TierCombo->clear();
    ui.NationCombo->addItems(database->nations);
    ui.CatergoryCombo->addItems(database->categories);
    ui.TierCombo->addItems(database->tiers);
    showTankNames(database->query(ui.NationCombo->currentText(), ui.CatergoryCombo->currentText(),
                                  ui.TierCombo->currentText()));
}

void MainWindow::updateTankList(QString text)
{
    if (const Database* database = Database::instance())
        showTankNames(database->filter(
            ui.NationCombo->currentText(), ui.CatergoryCombo->currentText(),
            ui.TierCombo->currentText(), QLatin1Char('%') + text + QLatin1Char('%')));
}

void MainWindow::tankFilterChanged()
{
    updateTankList(ui.tankFilter->text());
}

void MainWindow::loadTank()
{
    renderWidget->overlay.dirty = true;
    renderWidget->rayLines.clear();
    ui.armorResultsText->clear();
    const QVariant name = ui.mTankListView->currentIndex().data(Qt::DisplayRole);
    if (!name.isValid()) {
        showOk(true, this, commonMessages ? commonMessages->selectTank : QString());
        return;
    }
    TankLoader* loader = TankLoader::instance();
    if (!loader || !renderWidget->withContext([&] { return loader->load(name.toString()); })) {
        statusBar()->showMessage(tr("Failed to load tank: ") + name.toString());
        showOk(true, this, tr("Failed to load tank: ") + name.toString());
        return;
    }
    // The turret stands at heading 0 after a load, within the front arc.
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    const Gun* gun = chooser ? chooser->currentGun() : nullptr;
    if (gun && anyNonZero(gun->front))
        ui.gunRotationSpin->setRange(-gun->front[1], -gun->front[0]);
}

void MainWindow::tankOptionsChanged()
{
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    if (!chooser)
        return;
    ui.turretComboBox->clear();
    ui.gunComboBox->clear();
    // Copied: the boxes' signals reload turret and gun, which may change the list.
    const QVector<Turret> turrets = chooser->turrets;
    for (const Turret& turret : turrets)
        ui.turretComboBox->addItem(turret.name);
    if (!turrets.isEmpty())
        turretListChanged(turrets.first().name);
    refillShellChoice();
}

void MainWindow::refillShellChoice()
{
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    const Turret* turret = chooser ? chooser->currentTurret() : nullptr;
    const Gun* gun = turret ? turret->gun(chooser->currentGunName) : nullptr;
    if (shellChoice)
        shellChoice->setShells(gun ? gun->shells : QVector<Shell>());
}

void MainWindow::turretListChanged(QString name)
{
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    if (!chooser)
        return;
    ui.gunComboBox->clear();
    const QVector<Turret> turrets = chooser->turrets;
    for (const Turret& turret : turrets) {
        if (turret.name != name)
            continue;
        for (const Gun& gun : turret.guns)
            ui.gunComboBox->addItem(gun.name);
    }
}

void MainWindow::changeTurret(QString name)
{
    TankLoader* loader = TankLoader::instance();
    if (loader && loader->loaded && !name.isEmpty())
        renderWidget->withContext([&] { loader->changeTurret(name); });
    refillShellChoice();
}

void MainWindow::changeGun(QString name)
{
    TankLoader* loader = TankLoader::instance();
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    if (!loader || !loader->loaded || !chooser || !chooser->turretHasGun(name))
        return;
    const QString turret = ui.turretComboBox->currentText();
    if (!turret.isEmpty() && !name.isEmpty())
        renderWidget->withContext([&] { loader->loadTurretGun(turret, name); });
    refillShellChoice();
}

// ---------------------------------------------------------------- rotation

void MainWindow::tankRotate(double angle)
{
    if (angle > 180) {
        ui.tankRotationSpin->setValue(-179);
        return;
    }
    if (angle < -180) {
        ui.tankRotationSpin->setValue(179);
        return;
    }
    if (TankLoader* loader = TankLoader::instance())
        loader->setTankRotation(float(angle));
}

void MainWindow::turretRotate(double angle)
{
    if (angle > 180) {
        ui.turretRotationSpin->setValue(-179);
        return;
    }
    if (angle < -180) {
        ui.turretRotationSpin->setValue(179);
        return;
    }
    if (TankLoader* loader = TankLoader::instance())
        loader->setTurretRotation(float(angle));
    const TurretGunChooser* chooser = TurretGunChooser::instance();
    const Gun* gun = chooser ? chooser->currentGun() : nullptr;
    if (!gun)
        return;
    QDoubleSpinBox* pitch = ui.gunRotationSpin;
    pitch->setRange(gun->pitchMin, gun->pitchMax);
    const int heading = int(std::trunc(angle));
    const auto applyArc = [pitch](const Vector3& arc) {
        pitch->setRange(-arc[1], -arc[0]);
        if (pitch->value() < pitch->minimum())
            pitch->setValue(pitch->minimum());
    };
    if (anyNonZero(gun->back)) {
        // The back arc is centred on 180: headings from -180 to 0 count on
        // from 180 to 360.
        const int rear = heading >= -180 && heading <= 0 ? heading + 360 : heading;
        if (rear >= int(std::trunc(180 - gun->back[2])) &&
            rear <= int(std::trunc(180 + gun->back[2])))
            applyArc(gun->back);
    }
    if (anyNonZero(gun->front) && heading >= int(std::trunc(-gun->front[2])) &&
        heading <= int(std::trunc(gun->front[2])))
        applyArc(gun->front);
}

void MainWindow::gunRotate(double angle)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->setGunRotation(float(angle));
}

void MainWindow::tankRotateReset()
{
    ui.tankRotationSpin->setValue(0.0);
}

void MainWindow::turretRotateReset()
{
    ui.turretRotationSpin->setValue(0.0);
}

void MainWindow::gunRotateReset()
{
    ui.gunRotationSpin->setValue(0.0);
}

// ---------------------------------------------------------------- recent tanks

void MainWindow::loadRecentList()
{
    if (!QFile::exists(recentListPath()))
        return;
    QSettings list(recentListPath(), QSettings::IniFormat);
    recentTanks = list.value(RecentTanksKey).toStringList();
}

void MainWindow::saveRecentList() const
{
    if (recentTanks.isEmpty())
        return;
    QSettings list(recentListPath(), QSettings::IniFormat);
    list.setValue(RecentTanksKey, recentTanks);
}

void MainWindow::refreshRecentActions()
{
    while (recentTanks.size() > RecentCount)
        recentTanks.removeLast();
    for (int i = 0; i < RecentCount; ++i) {
        QAction* action = recentActions[i];
        const bool used = i < recentTanks.size();
        action->setText(used ? recentTanks[i] : QString());
        action->setData(used ? recentTanks[i] : QString());
        action->setVisible(used);
    }
}

void MainWindow::addTankRecent(QString tank)
{
    recentTanks.removeAll(tank);
    recentTanks.prepend(tank);
    refreshRecentActions();
}

void MainWindow::_loadTankFromRecent()
{
    const auto* action = qobject_cast<QAction*>(sender());
    if (!action)
        return;
    const QString name = action->data().toString();
    ui.tankFilter->clear();
    QAbstractItemView* list = ui.mTankListView;
    if (list->currentIndex().data(Qt::DisplayRole).toString() == name) {
        loadTank();
        return;
    }
    const QModelIndexList hits = list->model()->match(list->model()->index(0, 0), Qt::DisplayRole,
                                                      name, 1, Qt::MatchStartsWith | Qt::MatchWrap);
    if (hits.isEmpty()) {
        Log::log(QStringLiteral("Could not find tank: ") + name, Log::Warning);
        showOk(true, this, tr("Could not find tank: ") + name);
        return;
    }
    list->setCurrentIndex(hits.first());
    loadTank();
}

// ---------------------------------------------------------------- armour

void MainWindow::toggleArmorInspector(bool val)
{
    emit armorModeToggled(val);
    ui.UndamagedBtn->setChecked(true);
    for (QRadioButton* button : {ui.UndamagedBtn, ui.DamagedBtn, ui.CollisionBtn})
        button->setEnabled(!val);
    ui.armorDock->setVisible(val && ui.CollisionBtn_2->isChecked());
}

void MainWindow::toggleArmorInspectorMesh(bool val)
{
    if (TankLoader* loader = TankLoader::instance())
        loader->armourModel = val ? Collision : Intact;
    ui.armorDock->setVisible(val);
}

void MainWindow::armorAmmoChange(int index)
{
    const bool chemical = index == 2 || index == 3;
    ui.shellNormalBox->setValue(chemical ? 0.0 : 2.0);
}

void MainWindow::armorCalibreChange(double)
{
    emitShellParamaters();
}

void MainWindow::armorNormChange(double)
{
    emitShellParamaters();
}

void MainWindow::emitShellParamaters()
{
    ShellParamaters shell;
    shell.calibre = float(ui.shellSizeBox->value());
    shell.normalization = float(ui.shellNormalBox->value());
    shell.type = ui.shellCombo->currentIndex();
    if (shellChoice)
        shellChoice->complete(shell);
    emit shellParamatersChanged(shell);
}

void MainWindow::connectArmorCollisionState()
{
    if (Physics* physics = Physics::instance())
        connect(this, &MainWindow::shellParamatersChanged, physics, &Physics::setShellParamaters);
    CollisionArmor* armor = CollisionArmor::instance();
    if (!armor)
        return;
    armor->tablesChanged = [this](QStandardItemModel* regular, QStandardItemModel* spaced) {
        showArmorTable(ui.armorTableView, regular);
        showArmorTable(ui.spacedArmorTableView, spaced);
    };
    connect(ui.spacedArmorCheckbox, &QCheckBox::toggled, armor,
            [armor](bool hide) { armor->hideSpacedArmor = hide; });
}

void MainWindow::showArmorTable(QTableView* table, QStandardItemModel* model)
{
    if (table->model() == model)
        return;
    // A view leaves the selection model of its old model to its caller.
    QItemSelectionModel* old = table->selectionModel();
    table->setModel(model);
    delete old;
    // A list of thicknesses in their colours: no column title, no row numbers.
    table->horizontalHeader()->hide();
    table->verticalHeader()->hide();
    table->resizeRowsToContents();
}

void MainWindow::regularArmorClicked(QModelIndex index)
{
    CollisionArmor* armor = CollisionArmor::instance();
    if (armor && !armor->toggleRegularSelection(index.data(Qt::DisplayRole).toFloat()))
        ui.armorTableView->clearSelection();
}

void MainWindow::spacedArmorClicked(QModelIndex index)
{
    CollisionArmor* armor = CollisionArmor::instance();
    if (armor && !armor->toggleSpacedSelection(index.data(Qt::DisplayRole).toFloat()))
        ui.spacedArmorTableView->clearSelection();
}
