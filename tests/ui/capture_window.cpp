// Pictures and files made by the running window under Xvfb, for the
// repository: the shipped default layout and the README's screenshot.
//   capture_window --layout FILE      the window state the program ships
//   capture_window --screenshot FILE  the window with a vehicle loaded
//   capture_window --weakspots FILE   the same with the weak-spot map shown

#include "FerroxMain.h"
#include "MainWindow.h"
#include "MessageBoxRecorder.h"
#include "RenderWidget.h"
#include "TestRoot.h"
#include "WeakSpotDisplay.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QSettings>
#include <QStringListModel>
#include <QTimer>

#include <cstdio>
#include <functional>

namespace {
// The right-hand column in two groups of tabs, each few enough that their
// titles show whole at the docks' width: the vehicle above, the scene below.
void designLayout(MainWindow& window)
{
    Ui::MainWindow& ui = window.ui;
    const QList<QDockWidget*> column{ui.TanksDock, ui.TankOptionsDock, ui.SceneSettingsDock,
                                     ui.CameraDock, ui.CamoDock};
    for (QDockWidget* dock : column)
        window.removeDockWidget(dock);
    window.addDockWidget(Qt::RightDockWidgetArea, ui.TanksDock, Qt::Vertical);
    window.addDockWidget(Qt::RightDockWidgetArea, ui.SceneSettingsDock, Qt::Vertical);
    window.tabifyDockWidget(ui.TanksDock, ui.TankOptionsDock);
    window.tabifyDockWidget(ui.SceneSettingsDock, ui.CameraDock);
    window.tabifyDockWidget(ui.CameraDock, ui.CamoDock);
    for (QDockWidget* dock : column)
        dock->show();
    window.resizeDocks({ui.TanksDock, ui.SceneSettingsDock}, {620, 380}, Qt::Vertical);
    ui.LogViewDock->hide();
    ui.armorInspectionDock->hide();
    ui.TanksDock->raise();
    ui.SceneSettingsDock->raise();
}

void showVehicle(MainWindow& window)
{
    auto* model = qobject_cast<QStringListModel*>(window.ui.mTankListView->model());
    const int row = model ? int(model->stringList().indexOf(QStringLiteral("Talon"))) : -1;
    if (row < 0)
        return;
    window.ui.mTankListView->setCurrentIndex(model->index(row, 0));
    window.loadTank();
    window.ui.TankOptionsDock->raise();
    window.ui.tankRotationSpin->setValue(-25);
    window.ui.turretRotationSpin->setValue(-20);
    window.ui.gunRotationSpin->setValue(5);
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const QString mode = QString::fromLocal8Bit(argv[1]);
    const QString out = QDir::current().absoluteFilePath(QString::fromLocal8Bit(argv[2]));
    TestRoot root;
    QFile::remove(root.dataDirectory() + QStringLiteral("/default.layout"));
    const QByteArray game = FERROX_SAMPLE_GAME_DIR;
    root.writeFile(QStringLiteral("data/settings.cfg"),
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Settings><Paths><GavrelPath>" +
                       game + "</GavrelPath><ModPath>" + game +
                       "-mod</ModPath></Paths><RendererSystems><Renderer><ShaderDir>../data/"
                       "shaders/glsl150</ShaderDir></Renderer></RendererSystems>"
                       "<RendererCommon><TextureFilter>Anisotropic 4x</TextureFilter>"
                       "<MSAA>4x</MSAA><ShadowMap>2048</ShadowMap>"
                       "<ShadowMapSamples>8</ShadowMapSamples><VSync>1</VSync></RendererCommon>"
                       // A new user's scene, with shadows.
                       "<SceneSettings><ViewportColor>128 128 128 255</ViewportColor>"
                       "<AmbientLight>127</AmbientLight><ShowHangar>true</ShowHangar>"
                       "<ShowGrid>false</ShowGrid><ShowTankInfo>true</ShowTankInfo>"
                       "<ShowShadows>true</ShowShadows><SceneSet>premium</SceneSet>"
                       "<Lighting>bumpmap</Lighting></SceneSettings></Settings>\n");
    MessageBoxRecorder boxes;
    bool written = false;
    StartOptions options;
    options.applicationDirectory = root.binDirectory();
    options.onStarted = [&](MainWindow& window) {
        designLayout(window);
        if (mode == QLatin1String("--layout")) {
            QSettings layout(out, QSettings::IniFormat);
            layout.setValue(QStringLiteral("windowState"), window.saveState(0));
            layout.sync();
            written = layout.status() == QSettings::NoError;
        } else {
            window.showNormal();
            window.resize(1280, 800);
            showVehicle(window);
            // Lay out at the new size and let the viewport draw once.
            QCoreApplication::processEvents();
            window.renderWidget->grabFramebuffer();
            if (mode == QLatin1String("--weakspots")) {
                window.ui.armorInspectEnable->setChecked(true);
                window.ui.shellChoiceBox->setCurrentIndex(0);
                window.renderWidget->grabFramebuffer();
                QEventLoop wait;
                QObject::connect(&window.weakSpots->job, &WeakSpotJob::finished, &wait,
                                 &QEventLoop::quit);
                window.ui.weakSpotsCheckbox->setChecked(true);
                wait.exec();
                window.renderWidget->grabFramebuffer();
            }
            written = window.grab().save(out);
        }
        QTimer::singleShot(0, &window, &QWidget::close);
    };
    int programArgc = 1;
    char* programArgv[] = {argv[0], nullptr};
    runFerrox(programArgc, programArgv, options);
    std::printf("%s %s\n", written ? "wrote" : "failed to write", qPrintable(out));
    return written ? 0 : 1;
}
