#pragma once

#include <QMainWindow>

class RenderWidget;

// The program's main window: the viewport in the centre and a status bar;
// the docks and tools move in as they are built.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~MainWindow() override;

    // Makes sure the viewport's GL start-up has run once the window is shown,
    // so that its failures are known before the event loop. A viewport whose
    // context cannot be made reports the missing OpenGL as a start-up error.
    void initialiseViewport();
    // Shows or hides the backdrop, grid and overlay blocks, picks the garage
    // and the lighting mode as the scene settings say.
    void applySceneSettings();

    RenderWidget* renderWidget = nullptr;
};

// The one main window, set by its constructor and cleared by its destructor.
extern MainWindow* mainWindow;
