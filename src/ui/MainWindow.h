#pragma once

#include "ShellParamaters.h"
#include "ui_MainWindow.h"

#include <QAction>
#include <QByteArray>
#include <QMainWindow>
#include <QModelIndex>
#include <QStringList>

class QDockWidget;
class QSqlQuery;
class QStandardItemModel;
class RenderWidget;
class ShellChoice;
class WeakSpotDisplay;
class TankLoader;
class UpdateCheck;
class VisualEditWidget;

// The program's only top-level window: menus, the two tool bars, the
// docks around the viewport, the window layout on disk, full-screen mode
// and the dock keys. The form is public: the status bar, the armour report
// and the camouflage panel are written from outside by object name.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static constexpr int RecentCount = 5;

    explicit MainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~MainWindow() override;

    // Makes sure the viewport's GL start-up has run, so that its failures
    // are known before the event loop. A viewport whose context cannot be
    // made reports the missing OpenGL as a start-up error.
    void initialiseViewport();

    // Public: the docks and the tank list hand their keys on to it.
    void keyPressEvent(QKeyEvent* event) override;

    // The user's saved layout and the shipped one.
    static QString userLayoutPath();
    static QString defaultLayoutPath();
    static QString recentListPath();
    // The HTML user guide that Help opens, beside the program's data.
    static QString userGuidePath();

    Ui::MainWindow ui;
    RenderWidget* renderWidget = nullptr;
    QAction* saveLayoutAction = nullptr;
    QAction* loadDefaultLayoutAction = nullptr;
    QByteArray hideDocksState;
    QByteArray fullscreenState;
    QAction* recentActions[RecentCount] = {};
    QStringList recentTanks;
    bool docksHiddenBeforeFullscreen = false;
    // Lives as long as the window; the member can't share the slot's name.
    UpdateCheck* updateChecker = nullptr;
    // The one visual editor, made hidden with the window.
    VisualEditWidget* visualEditor = nullptr;
    // The armour inspector's "Shell:" box and its distance.
    ShellChoice* shellChoice = nullptr;
    // The "Weak spots" switch and the map it shows.
    WeakSpotDisplay* weakSpots = nullptr;

signals:
    void reloadSceneItems();
    void armorModeToggled(bool);
    void shellParamatersChanged(ShellParamaters);

public slots:
    void aboutQt();
    void aboutViewer();
    void aboutHelp();
    void showPreferences();
    void updateLogWidget();
    void changeViewportColor();
    void setViewportLabelColor(QColor color);
    void saveSceneSettings();
    void ambientLightChanged(int value);
    void toggleDamagedMode(bool);
    void toggleMaterial(bool);
    void saveLayout();
    void loadDefaultLayout();
    void updateTankList();
    void updateTankList(QString text);
    void tankFilterChanged();
    void loadTank();
    void tankOptionsChanged();
    void turretListChanged(QString name);
    void toggleSolidMode();
    void toggleWireframeMode();
    void toggleSolidWireMode();
    void toggleAllDocks(bool hide);
    void toggleTextureLocation(bool modFolder);
    void toggleGridTexture(bool defaultTexture);
    void toggleHideChassis(bool hide);
    void toggleHideHull(bool hide);
    void toggleHideTurret(bool hide);
    void toggleHideGun(bool hide);
    void toggleCamoEnable(bool disable);
    void toggleCamo();
    void reloadScene();
    void takeScreenshot();
    void takeScreenshotFile();
    void openScreenshotDir();
    void showScreenshot();
    void tankRotate(double angle);
    void turretRotate(double angle);
    void gunRotate(double angle);
    void tankRotateReset();
    void turretRotateReset();
    void gunRotateReset();
    void exportCamoPattern();
    void exportCamoBake();
    // File > "Export glTF...": the vehicle as shown, to a file the user
    // picks (the vehicle's folder in the mod folder first).
    void exportGltf();
    void regularArmorClicked(QModelIndex index);
    void spacedArmorClicked(QModelIndex index);
    void showVisualEditor();
    void updateCheck();
    void changeTurret(QString name);
    void changeGun(QString name);
    void addTankRecent(QString tank);
    void toggleFullscreen(bool on);
    void toggleArmorInspector(bool val);
    void toggleArmorInspectorMesh(bool val);
    void armorAmmoChange(int index);
    void armorCalibreChange(double);
    void armorNormChange(double);
    void _loadTankFromRecent();

private:
    struct DockEntry
    {
        QDockWidget* dock;
        const char* key;
        const char* icon;
        int shortcut; // with Shift, or alone for a function key
    };

    QList<DockEntry> dockEntries() const;
    void buildWindowMenu();
    void restoreStartLayout();
    void toggleDock(QDockWidget* dock);
    void connectCameraBoxes();
    void connectTankLoader(TankLoader& loader);
    void connectCamouflage();
    void connectArmorCollisionState();
    void applySceneSettings();
    void showTankNames(QSqlQuery* query);
    void setDrawStyle(QAction* active, bool wireframe, bool solidWire);
    void emitShellParamaters();
    void refillShellChoice();
    void refreshRecentActions();
    void loadRecentList();
    void saveRecentList() const;
    static void showArmorTable(QTableView* table, QStandardItemModel* model);
    void setSpinRange(QDoubleSpinBox* spin, float minimum, float maximum);
    QList<QAction*> windowActions() const;
};

// The one main window, set by its constructor and cleared by its destructor.
extern MainWindow* mainWindow;
