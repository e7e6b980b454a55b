// What the viewport shows after each of a user's actions, against the frame
// ferrox-tool renders of the same state off-screen (FrameOracle).

#include "DialogAnswer.h"
#include "FrameOracle.h"
#include "WindowFixture.h"

#include "CamoList.h"
#include "CamoListUI.h"
#include "FileDialogs.h"
#include "Preferences.h"
#include "RenderWidget.h"
#include "ToolRunner.h"
#include "ui_Preferences.h"

#include <QDockWidget>
#include <QScrollArea>
#include <QTemporaryDir>

namespace {

const QString Talon = QStringLiteral("Talon");

// The overlay's text is the window's own; the tool draws none.
void hideOverlay(MainWindow& window)
{
    window.ui.TankInfoCheckBox->setChecked(true);
    window.ui.RenderStatsCheckBox->setChecked(true);
}

QModelIndex rowOf(MainWindow& window, const QString& name)
{
    QAbstractItemView* list = window.ui.mTankListView;
    const int row = int(listedTankNames(window).indexOf(name));
    const QModelIndex index = row < 0 ? QModelIndex() : list->model()->index(row, 0);
    list->scrollTo(index);
    return index;
}

void clickRow(MainWindow& window, const QModelIndex& index)
{
    QAbstractItemView* list = window.ui.mTankListView;
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(index).center());
}

// The four ways a user loads a vehicle from the list.
enum class LoadWay
{
    DoubleClick,
    Enter,
    LoadButton,
    Recent
};

void loadThrough(MainWindow& window, const QString& name, LoadWay way)
{
    QAbstractItemView* list = window.ui.mTankListView;
    if (way == LoadWay::Recent) {
        for (QAction* action : window.ui.menuRecent_Tanks->actions())
            if (action->data().toString() == name) {
                action->trigger();
                return;
            }
        ADD_FAILURE() << name.toStdString() << " is not on the recent list";
        return;
    }
    const QModelIndex index = rowOf(window, name);
    ASSERT_TRUE(index.isValid()) << name.toStdString();
    clickRow(window, index);
    switch (way) {
    case LoadWay::DoubleClick:
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(index).center());
        break;
    case LoadWay::Enter:
        QTest::keyClick(list, Qt::Key_Return);
        break;
    default:
        QTest::mouseClick(window.ui.pushButton, Qt::LeftButton);
        break;
    }
}

void typeValue(QAbstractSpinBox* box, double value)
{
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, QString::number(value));
    QTest::keyClick(box, Qt::Key_Return);
}

// A control in a dock is pressed as the user reaches it: its dock shown,
// the control scrolled into view and pressed with the space bar.
void click(QAbstractButton* button)
{
    for (QWidget* up = button->parentWidget(); up; up = up->parentWidget()) {
        if (auto* dock = qobject_cast<QDockWidget*>(up))
            dock->show();
        if (auto* area = qobject_cast<QScrollArea*>(up))
            area->ensureWidgetVisible(button);
    }
    QCoreApplication::processEvents();
    // The space bar presses a focused button wherever its window stands.
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
}

// The vehicles the tool assembles; the others must fail in the window too.
bool toolAssembles(const QString& name)
{
    return runTool({QStringLiteral("tank"), SampleGame, name}).exitCode == 0;
}

} // namespace

class WindowFrameTest : public WindowTest
{
protected:
    WindowFrameTest() { writeToolSceneSettings(); }
};

// A new user's first vehicle: a nation, part of a name, into the list and
// Enter.
TEST_F(WindowFrameTest, NationNameAndEnterPutTheVehicleInTheViewport)
{
    runWindow([](MainWindow& window) {
        hideOverlay(window);
        QComboBox* nations = window.ui.NationCombo;
        nations->setCurrentIndex(nations->findText(QStringLiteral("Ardenia")));
        QTest::keyClicks(window.ui.tankFilter, QStringLiteral("alo"));
        ASSERT_EQ(listedTankNames(window), QStringList{Talon});
        window.ui.mTankListView->setFocus();
        QTest::keyClick(window.ui.mTankListView, Qt::Key_Down);
        QTest::keyClick(window.ui.mTankListView, Qt::Key_Return);
        EXPECT_EQ(window.statusBar()->currentMessage().indexOf(QStringLiteral("Talon loaded in: ")),
                  0);
        EXPECT_SAME_FRAME(window, Talon, QStringList(), "new-user");
    });
}

TEST_F(WindowFrameTest, EveryVehicleLoadedFromTheListShowsAsTheToolDrawsIt)
{
    runWindow([this](MainWindow& window) {
        hideOverlay(window);
        const QStringList names = listedNames(window);
        ASSERT_FALSE(names.isEmpty());
        const LoadWay ways[] = {LoadWay::DoubleClick, LoadWay::Enter, LoadWay::LoadButton};
        int loaded = 0;
        QStringList recent;
        for (const QString& name : names) {
            SCOPED_TRACE(name.toStdString());
            const bool assembles = toolAssembles(name);
            const int boxesBefore = int(boxes.boxes.size());
            loadThrough(window, name, ways[loaded % 3]);
            if (!assembles) {
                EXPECT_GT(int(boxes.boxes.size()), boxesBefore) << "no message for a failure";
                continue;
            }
            EXPECT_EQ(int(boxes.boxes.size()), boxesBefore);
            EXPECT_SAME_FRAME(window, name, QStringList(), QStringLiteral("load-") + name);
            recent.append(name);
            ++loaded;
        }
        EXPECT_EQ(loaded, names.size()) << "the sample's vehicles all assemble";
        // The vehicle loaded before the last, again, from the recent list.
        ASSERT_GE(recent.size(), 2);
        const QString before = recent[recent.size() - 2];
        loadThrough(window, before, LoadWay::Recent);
        EXPECT_SAME_FRAME(window, before, QStringList(), QStringLiteral("recent"));
    });
}

TEST_F(WindowFrameTest, TurretAndGunBoxesAndSpinBoxesPoseTheVehicle)
{
    runWindow([](MainWindow& window) {
        hideOverlay(window);
        loadThrough(window, Talon, LoadWay::Enter);
        // The second turret with its second gun.
        QComboBox* turrets = window.ui.turretComboBox;
        QComboBox* guns = window.ui.gunComboBox;
        ASSERT_GE(turrets->count(), 2);
        turrets->setFocus();
        QTest::keyClick(turrets, Qt::Key_Down);
        ASSERT_GE(guns->count(), 2);
        guns->setFocus();
        QTest::keyClick(guns, Qt::Key_Down);
        const QStringList fitting{QStringLiteral("--turret"), turrets->currentText(),
                                  QStringLiteral("--gun"), guns->currentText()};
        EXPECT_SAME_FRAME(window, Talon, fitting, "fitting");

        typeValue(window.ui.tankRotationSpin, 30);
        typeValue(window.ui.turretRotationSpin, -45);
        typeValue(window.ui.gunRotationSpin, 4);
        const QString pitch = QString::number(window.ui.gunRotationSpin->value());
        const QStringList turned =
            fitting + QStringList{"--yaw", "30", "--turret-yaw", "-45", "--gun-pitch", pitch};
        EXPECT_SAME_FRAME(window, Talon, turned, "turned");
    });
}

TEST_F(WindowFrameTest, StatesHiddenPartsDrawStylesAndTexturesShowAsTheToolDrawsThem)
{
    runWindow([](MainWindow& window) {
        hideOverlay(window);
        loadThrough(window, Talon, LoadWay::DoubleClick);
        Ui::MainWindow& ui = window.ui;
        click(ui.DamagedBtn);
        EXPECT_SAME_FRAME(window, Talon, (QStringList{"--state", "destroyed"}), "destroyed");
        click(ui.CollisionBtn);
        EXPECT_SAME_FRAME(window, Talon, (QStringList{"--state", "collision"}), "collision");
        click(ui.UndamagedBtn);

        const struct
        {
            QCheckBox* box;
            const char* part;
        } hides[] = {{ui.checkBox_4, "chassis"},
                     {ui.checkBox_5, "hull"},
                     {ui.checkBox_6, "turret"},
                     {ui.checkBox_7, "gun"}};
        for (const auto& hide : hides) {
            click(hide.box);
            EXPECT_SAME_FRAME(window, Talon, (QStringList{"--hide", hide.part}),
                              QStringLiteral("hide-") + hide.part);
            click(hide.box);
        }

        const struct
        {
            QAction* action;
            const char* style;
        } styles[] = {{ui.actionWireframe_mode, "wire"},
                      {ui.actionSolid_Wireframe_mode, "solid-wire"},
                      {ui.actionSolid_Mode, "solid"}};
        for (const auto& style : styles) {
            style.action->trigger();
            EXPECT_SAME_FRAME(window, Talon, (QStringList{"--draw", style.style}),
                              QStringLiteral("style-") + style.style);
        }

        click(ui.radioButton_25);
        EXPECT_SAME_FRAME(window, Talon, QStringList{"--grid-texture"}, "grid-texture");
        click(ui.radioButton_24);
        // The textures read again, from the mod folder first or from the archives.
        for (QRadioButton* location : {ui.radioButton_8, ui.radioButton_9}) {
            click(location);
            EXPECT_SAME_FRAME(window, Talon,
                              (QStringList{"--mod", WindowTest::Game + QStringLiteral("-mod")}),
                              location->objectName());
        }
    });
}

TEST_F(WindowFrameTest, PickedPatternAndEditedColoursShowAsTheToolDrawsThem)
{
    runWindow([](MainWindow& window) {
        hideOverlay(window);
        loadThrough(window, Talon, LoadWay::Enter);
        window.ui.CamoDock->show();
        window.ui.CamoDock->raise();
        QCoreApplication::processEvents();
        CamoListUI* list = window.ui.listView_2;
        list->doItemsLayout();
        click(window.ui.radioButton_12);
        const QRect second = list->visualRect(list->model()->index(1, 0));
        ASSERT_FALSE(second.isEmpty());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, second.center());
        EXPECT_SAME_FRAME(window, Talon, (QStringList{"--camo", "summer:1"}), "pattern");

        // The colour dialog's answers, given straight to the list.
        const QStringList colours{"#ffff0000", "#ff00ff00", "#ff0000ff", "#ffffffff"};
        for (int channel = 0; channel < CamoListUI::Channels; ++channel)
            list->patterns()->setColor(channel, QColor(colours[channel]));
        EXPECT_SAME_FRAME(window, Talon,
                          (QStringList{"--camo", "summer:1", "--camo-colours", colours.join(',')}),
                          "colours");

        click(window.ui.radioButton_13);
        EXPECT_SAME_FRAME(window, Talon, QStringList(), "camouflage-off");
    });
}

TEST_F(WindowFrameTest, ArmourShotIsDrawnAndGoesWithTheNextVehicle)
{
    runWindow([](MainWindow& window) {
        hideOverlay(window);
        loadThrough(window, Talon, LoadWay::Enter);
        click(window.ui.armorInspectEnable);
        ASSERT_TRUE(window.renderWidget->armorMode);
        RenderWidget& view = *window.renderWidget;
        Vector3 from{};
        Vector3 to{};
        const auto fire = view.rayFired;
        view.rayFired = [&](const Vector3& eye, const Vector3& far) {
            from = eye;
            to = far;
            fire(eye, far);
        };
        // Ctrl + click a little below the middle, where the hull stands.
        const QPoint aim(view.width() / 2, view.height() * 11 / 20);
        QMouseEvent move(QEvent::MouseMove, aim, view.mapToGlobal(aim), Qt::NoButton, {}, {});
        QCoreApplication::sendEvent(&view, &move);
        QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, aim);
        view.rayFired = fire;
        const auto triple = [](const Vector3& v) {
            return QStringLiteral("%1,%2,%3")
                .arg(v[0], 0, 'g', 9)
                .arg(v[1], 0, 'g', 9)
                .arg(v[2], 0, 'g', 9);
        };
        ASSERT_FALSE(window.ui.armorResultsText->toPlainText().isEmpty());
        EXPECT_SAME_FRAME(window, Talon,
                          (QStringList{"--ray", triple(from) + QLatin1Char(':') + triple(to)}),
                          "shot");

        const QString next = QStringLiteral("Kestrel");
        loadThrough(window, next, LoadWay::Enter);
        EXPECT_SAME_FRAME(window, next, QStringList(), "next-vehicle");
    });
}

TEST_F(WindowFrameTest, ScreenshotAndReloadedSceneShowTheSameVehicle)
{
    QTemporaryDir scratch;
    const QString shot = scratch.filePath(QStringLiteral("shot.png"));
    setFileDialogHandler([shot](const FileDialogRequest&) { return shot; });
    DialogAnswer screenshot(QStringLiteral("ScreenShotUI"), true, [](QDialog& dialog) {
        dialog.findChild<QSpinBox*>(QStringLiteral("widthSpinBox"))->setValue(640);
        dialog.findChild<QSpinBox*>(QStringLiteral("heightSpinBox"))->setValue(480);
    });
    runWindow([&](MainWindow& window) {
        hideOverlay(window);
        loadThrough(window, Talon, LoadWay::Enter);
        const QString camera = scratch.filePath(QStringLiteral("view.Camera"));
        ASSERT_TRUE(window.renderWidget->controls.saveView(camera));
        window.ui.actionScreenShotForm->trigger();
        const QString expected = scratch.filePath(QStringLiteral("tool.png"));
        ASSERT_EQ(runTool({QStringLiteral("render"), SampleGame, Talon, QStringLiteral("--out"),
                           expected, QStringLiteral("--size"), QStringLiteral("640x480"),
                           QStringLiteral("--camera"), camera})
                      .exitCode,
                  0);
        EXPECT_TRUE(FrameOracle::sameImage(QImage(shot), QImage(expected), "screenshot"));

        window.ui.actionReload_Scene->trigger();
        EXPECT_SAME_FRAME(window, Talon, QStringList(), "reloaded");
    });
    setFileDialogHandler({});
}

// A game path changed in Preferences: the archives reopen, the table and the
// garages load again from the slot, and a vehicle then loaded shows as the
// tool draws it from the new folder.
TEST_F(WindowFrameTest, AGamePathAppliedInPreferencesShowsItsVehicle)
{
    const QString other = root.filePath(QStringLiteral("other-game"));
    ASSERT_TRUE(QFile::link(Game, other));
    DialogAnswer preferences(QStringLiteral("PreferencesDialog"), true, [&other](QDialog& dialog) {
        static_cast<Preferences&>(dialog).ui->GavrelPathTxt->setText(other);
    });
    runWindow([&](MainWindow& window) {
        hideOverlay(window);
        loadThrough(window, Talon, LoadWay::Enter);
        window.ui.actionPreferences->trigger();
        ASSERT_EQ(preferences.shown, 1);
        loadThrough(window, Talon, LoadWay::DoubleClick);
        EXPECT_TRUE(FrameOracle::sameFrame(window, Talon, QStringList(), "other-game", other));
    });
}
