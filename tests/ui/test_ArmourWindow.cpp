// The armour inspection in the window on the sample installation: a shot
// in armour mode, the armour tables of the loaded vehicle and the armour
// model choices.

#include "WindowFixture.h"

#include "CollisionArmor.h"
#include "Physics.h"
#include "RenderWidget.h"
#include "TankLoader.h"
#include "ToolRunner.h"
#include "WeakSpotDisplay.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QProgressBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>

namespace {
// What the report names after each "Material: ", in order.
QStringList reportedMaterials(const MainWindow& window)
{
    QStringList names;
    for (const QString& line : window.ui.armorResultsText->toPlainText().split('\n'))
        if (line.startsWith(QStringLiteral("Material: ")))
            names.append(line.mid(10));
    return names;
}

// A shot at a point of the viewport, after a frame as the user sees one:
// the frame brings the projection to the viewport's present size. The move
// goes to the viewport itself: QTest::mouseMove would move the display's one
// pointer, which test processes sharing the display move as well.
void ctrlClick(RenderWidget* viewport, const QPoint& at)
{
    viewport->grabFramebuffer();
    QMouseEvent move(QEvent::MouseMove, at, viewport->mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    QTest::mouseClick(viewport, Qt::LeftButton, Qt::ControlModifier, at);
}
} // namespace

TEST_F(WindowTest, ArmourModeShotReportsThePlatesUnderTheCursor)
{
    runWindow([](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        RenderWidget* viewport = window.renderWidget;
        const QPoint centre = viewport->rect().center();
        // Outside armour mode a Ctrl + click fires nothing.
        ctrlClick(viewport, centre);
        EXPECT_TRUE(window.ui.armorResultsText->toPlainText().isEmpty());

        window.ui.armorInspectEnable->setChecked(true);
        EXPECT_TRUE(TankLoader::instance()->armourMode);
        EXPECT_TRUE(viewport->armorMode);
        window.ui.shellSizeBox->setValue(120);
        EXPECT_FLOAT_EQ(Physics::instance()->shell.calibre, 120);

        ctrlClick(viewport, centre);
        const QStringList plates = reportedMaterials(window);
        ASSERT_FALSE(plates.isEmpty());
        EXPECT_NE(plates.first(), QStringLiteral("Missed"));
        // Each reported plate is a material of the vehicle's armour table.
        const CollisionArmor* armor = CollisionArmor::instance();
        QStringList known;
        for (const auto* list : {&armor->chassisArmor, &armor->hullArmor})
            for (const ArmorValue* value : *list)
                known.append(value->name);
        for (const auto* list : {&armor->turretArmor, &armor->gunArmor})
            for (const OwnedArmorValue* value : *list)
                known.append(value->name);
        for (const QString& plate : plates)
            EXPECT_TRUE(known.contains(plate)) << plate.toStdString();
        EXPECT_TRUE(
            window.ui.armorResultsText->toPlainText().contains(QStringLiteral("mm effective")));

        // Beside the vehicle the shell meets nothing.
        ctrlClick(viewport, {3, 3});
        EXPECT_EQ(reportedMaterials(window), QStringList{QStringLiteral("Missed")});

        // Armour mode picks its own model and locks the damage choice.
        EXPECT_FALSE(window.ui.CollisionBtn->isEnabled());
        window.ui.CollisionBtn_2->click();
        EXPECT_EQ(TankLoader::instance()->armourModel, int(Collision));
        EXPECT_TRUE(window.ui.armorDock->isVisible());
        window.ui.UndamagedBtn_2->click();
        EXPECT_EQ(TankLoader::instance()->armourModel, int(Intact));
        EXPECT_FALSE(window.ui.armorDock->isVisible());
        window.ui.armorInspectEnable->setChecked(false);
        EXPECT_FALSE(viewport->armorMode);
        EXPECT_TRUE(window.ui.CollisionBtn->isEnabled());
    });
}

TEST_F(WindowTest, CollisionStateShowsTheArmourTablesAndASecondClickClears)
{
    runWindow([](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        window.ui.CollisionBtn->click();
        ASSERT_TRUE(window.ui.armorDock->isVisible());
        CollisionArmor* armor = CollisionArmor::instance();
        QTableView* regular = window.ui.armorTableView;
        ASSERT_EQ(regular->model(), armor->regularModel);
        ASSERT_EQ(window.ui.spacedArmorTableView->model(), armor->spacedModel);
        ASSERT_GT(regular->model()->rowCount(), 1);
        // No headers, rows as high as their text: as a view of the same
        // table fitted to its contents shows it.
        for (QTableView* table : {regular, window.ui.spacedArmorTableView}) {
            EXPECT_TRUE(table->horizontalHeader()->isHidden());
            EXPECT_TRUE(table->verticalHeader()->isHidden());
            QTableView fitted;
            fitted.setFont(table->font());
            fitted.setModel(table->model());
            fitted.horizontalHeader()->hide();
            fitted.verticalHeader()->hide();
            fitted.resizeRowsToContents();
            for (int row = 0; row < table->model()->rowCount(); ++row)
                EXPECT_EQ(table->rowHeight(row), fitted.rowHeight(row)) << row;
        }

        const QModelIndex cell = regular->model()->index(1, 0);
        auto click = [&] {
            QTest::mouseClick(regular->viewport(), Qt::LeftButton, {},
                              regular->visualRect(cell).center());
        };
        click();
        EXPECT_TRUE(armor->regularSelected);
        EXPECT_FLOAT_EQ(armor->selectedRegular, cell.data().toFloat());
        EXPECT_TRUE(regular->selectionModel()->isSelected(cell));
        EXPECT_FALSE(armor->spacedSelected);
        click();
        EXPECT_FALSE(armor->regularSelected);
        EXPECT_FLOAT_EQ(armor->selectedRegular, -1);
        EXPECT_FALSE(regular->selectionModel()->hasSelection());

        window.ui.spacedArmorCheckbox->click();
        EXPECT_TRUE(armor->hideSpacedArmor);

        // Another turret reads the armour anew: the views show the new tables.
        const int turrets = window.ui.turretComboBox->count();
        ASSERT_GT(turrets, 1);
        QStandardItemModel* before = armor->regularModel;
        window.ui.turretComboBox->setCurrentIndex(turrets - 1);
        EXPECT_NE(armor->regularModel, before);
        EXPECT_EQ(regular->model(), armor->regularModel);
        window.ui.UndamagedBtn->click();
        EXPECT_FALSE(window.ui.armorDock->isVisible());
    });
}

// The "Shell:" box offers the fitted gun's shells and sets the shell boxes;
// the penetration that reaches the ray follows the shell and the distance.
TEST_F(WindowTest, TheShellBoxOffersTheFittedGunsShells)
{
    runWindow([](MainWindow& window) {
        QComboBox* box = window.ui.shellChoiceBox;
        const auto listed = [box] {
            QStringList names;
            for (int i = 0; i < box->count(); ++i)
                names.append(box->itemText(i));
            return names;
        };
        EXPECT_EQ(listed(), QStringList{"Custom"});
        loadByName(window, QStringLiteral("Proving Ground"));
        EXPECT_EQ(listed(), (QStringList{"88 mm AP", "88 mm HEAT", "88 mm HE", "Custom"}));
        EXPECT_EQ(box->currentText(), "Custom");
        EXPECT_EQ(box->itemData(0, Qt::ToolTipRole).toString(),
                  "ARMOR_PIERCING, 88 mm; penetration 140 mm at 100 m, 120 mm at 500 m");

        const ShellParamaters& shell = Physics::instance()->shell;
        EXPECT_FLOAT_EQ(shell.penetration, 0); // the custom shell has none yet
        struct Case
        {
            int entry, distance;
            int type;
            float normalization, penetration, loss;
        };
        const Case cases[] = {{1, 100, 3, 0, 180, 0.05f},
                              {0, 100, 0, 2, 140, 0},
                              {0, 500, 0, 2, 120, 0},
                              {2, 300, 2, 0, 44, 0},
                              {0, 300, 0, 2, 130, 0}};
        for (const Case& c : cases) {
            box->setCurrentIndex(c.entry);
            window.ui.shellDistanceBox->setValue(c.distance);
            SCOPED_TRACE(box->currentText().toStdString());
            EXPECT_EQ(window.ui.shellCombo->currentIndex(), c.type);
            EXPECT_FLOAT_EQ(shell.type, c.type);
            EXPECT_FLOAT_EQ(shell.calibre, 88);
            EXPECT_FLOAT_EQ(shell.normalization, c.normalization);
            EXPECT_FLOAT_EQ(shell.penetration, c.penetration);
            EXPECT_FLOAT_EQ(shell.lossPerDecimetre, c.loss);
            EXPECT_FALSE(window.ui.shellPenetrationBox->isEnabled());
        }
        box->setCurrentIndex(3);
        EXPECT_TRUE(window.ui.shellPenetrationBox->isEnabled());
        window.ui.shellPenetrationBox->setValue(150);
        EXPECT_FLOAT_EQ(shell.penetration, 150);

        // A gun without shots leaves the custom shell alone; the chosen
        // game shell stays chosen over a gun change that keeps it.
        loadByName(window, QStringLiteral("Kestrel"));
        EXPECT_EQ(listed(), (QStringList{"45 mm AP", "45 mm HE", "Custom"}));
        box->setCurrentIndex(1);
        EXPECT_FLOAT_EQ(shell.penetration, 23);
        window.ui.gunComboBox->setCurrentIndex(1);
        EXPECT_EQ(listed(), QStringList{"Custom"});
        EXPECT_FLOAT_EQ(shell.penetration, 150);
    });
}

// The window's weak-spot map is the tool's for the same view, and the frame
// shows it over the vehicle. An orthographic camera looks straight at the
// proving ground's plates; its target has one decimal, as the camera dock
// keeps it.
TEST_F(WindowTest, TheWeakSpotMapIsTheToolsAndCoversTheFrame)
{
    QTemporaryDir dir;
    const QString camera = dir.filePath("front.Camera");
    QFile file(camera);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<Camera><Type>1</Type><Target>0 1.4 0</Target><Rotation>0 0 0</Rotation>"
               "<Zoom>10</Zoom><Fov>55</Fov></Camera>");
    file.close();
    runWindow([&](MainWindow& window) {
        loadByName(window, QStringLiteral("Proving Ground"));
        window.ui.armorInspectEnable->setChecked(true);
        window.ui.shellChoiceBox->setCurrentIndex(0); // 88 mm AP
        RenderWidget* viewport = window.renderWidget;
        ASSERT_TRUE(viewport->controls.loadView(camera));
        viewport->grabFramebuffer();
        const QSize size(viewport->frame.viewWidth, viewport->frame.viewHeight);

        QSignalSpy finished(&window.weakSpots->job, &WeakSpotJob::finished);
        window.ui.weakSpotsCheckbox->setChecked(true);
        EXPECT_FALSE(window.ui.weakSpotsProgress->isHidden());
        ASSERT_TRUE(finished.wait(120000));
        EXPECT_TRUE(window.ui.weakSpotsProgress->isHidden());
        const QImage map = window.weakSpots->map();
        ASSERT_EQ(map.size(), size);

        const QString out = dir.filePath("tool.png");
        const ToolResult tool =
            runTool({"weakspots", QStringLiteral(FERROX_SAMPLE_GAME_DIR), "Proving Ground",
                     "--shell", "88 mm AP", "--camera", camera, "--size",
                     QStringLiteral("%1x%2").arg(size.width()).arg(size.height()), "--out", out});
        ASSERT_EQ(tool.exitCode, 0) << tool.err.toStdString();
        const QImage fromTool = QImage(out).convertToFormat(QImage::Format_ARGB32);
        EXPECT_TRUE(fromTool == map.convertToFormat(QImage::Format_ARGB32))
            << saveFailedImage(map, "window").toStdString() << " "
            << saveFailedImage(fromTool, "tool").toStdString();

        // The 45 degree plate in its hand-computed colour (chance 0.547) and a
        // ricochet plate in red, in the map and in the frame over it.
        const QImage frame = viewport->grabFramebuffer().convertToFormat(QImage::Format_RGB32);
        for (const QColor& plate : {QColor(231, 255, 0), QColor(255, 0, 0)}) {
            QPoint found(-1, -1);
            for (int y = 0; y < map.height() && found.x() < 0; ++y)
                for (int x = 0; x < map.width() && found.x() < 0; ++x)
                    if (map.pixel(x, y) == plate.rgba())
                        found = {x, y};
            ASSERT_GE(found.x(), 0) << plate.name().toStdString() << " "
                                    << saveFailedImage(map, "window").toStdString();
            // Inside the plate, away from its edge.
            const QPoint at = found + QPoint(3, 3);
            EXPECT_EQ(map.pixelColor(at), plate);
            const QColor seen = frame.pixelColor(at);
            EXPECT_LE(std::abs(seen.red() - plate.red()) + std::abs(seen.green() - plate.green()) +
                          seen.blue(),
                      3)
                << seen.name().toStdString() << " for " << plate.name().toStdString() << " "
                << saveFailedImage(frame, "frame").toStdString();
        }

        // Off again: the frame shows no map.
        window.ui.weakSpotsCheckbox->setChecked(false);
        EXPECT_TRUE(viewport->frame.scene.imageLayer.image().isNull());
    });
}
