#include "MainWindow.h"

#include "Constants.h"
#include "StatusMessages.h"

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
