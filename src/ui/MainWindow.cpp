#include "MainWindow.h"

#include "Constants.h"
#include "RenderWidget.h"
#include "StartupError.h"
#include "StatusMessages.h"

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
    setCentralWidget(renderWidget);
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
}
