#include "MainWindow.h"

#include "Constants.h"
#include "MaterialLoader.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "StartupError.h"
#include "StatusMessages.h"
#include "VehicleScene.h"

#include <QCoreApplication>
#include <QIcon>
#include <QStatusBar>

MainWindow* mainWindow = nullptr;

MainWindow::MainWindow(QWidget* parent, Qt::WindowFlags flags) : QMainWindow(parent, flags)
{
    mainWindow = this;
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(QLatin1String(Ferrox::ApplicationName) + QLatin1Char(' ') +
                   QLatin1String(Ferrox::ApplicationVersion));
    setWindowIcon(QIcon(QStringLiteral(":/icons/ferrox_ico_128.png")));
    resize(928, 1066);
    statusBar()->setObjectName(QStringLiteral("statusbar"));
    renderWidget = new RenderWidget(this);
    renderWidget->setObjectName(QStringLiteral("RenderWidget"));
    installVehicleLoader(*renderWidget);
    setCentralWidget(renderWidget);
    applySceneSettings();
    setStatusMessageSink(
        [this](const QString& text, int timeoutMs) { statusBar()->showMessage(text, timeoutMs); });
}

MainWindow::~MainWindow()
{
    if (mainWindow == this) {
        mainWindow = nullptr;
        setStatusMessageSink({});
    }
}

void MainWindow::initialiseViewport()
{
    // QOpenGLWidget starts its GL when it is first shown with a size; the
    // show normally does it at once, queued layout events may delay it.
    if (!renderWidget->isValid())
        QCoreApplication::processEvents();
    if (!renderWidget->isValid())
        reportStartupError(QStringLiteral("OpenGL 3.2 is required."));
    // The material loader exists only once the viewport's GL has started.
    applySceneSettings();
}

void MainWindow::applySceneSettings()
{
    const Settings* settings = Settings::instance();
    if (!settings)
        return;
    // The scene check boxes say "hide", hence the negations.
    renderWidget->showGarage(!settings->showHangar);
    renderWidget->showGrid(!settings->showGrid);
    renderWidget->toggleText(!settings->showTankInfo);
    renderWidget->toggleRenderInfo(!settings->showRenderInfo);
    renderWidget->toggleGarage(settings->sceneSet != QLatin1String("basic"));
    if (MaterialLoader* materials = MaterialLoader::instance())
        materials->lightingMode = settings->lighting == QLatin1String("disabled") ? 1 : 0;
}
