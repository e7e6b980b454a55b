#pragma once

#include <QMainWindow>

// The program's main window. For now a frame with a status bar; the
// viewport, docks and tools move in as they are built.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~MainWindow() override;
};

// The one main window, set by its constructor and cleared by its destructor.
extern MainWindow* mainWindow;
