// The armour inspection in the window on the sample installation: a shot
// in armour mode, the armour tables of the loaded vehicle and the armour
// model choices.

#include "WindowFixture.h"

#include "CollisionArmor.h"
#include "Physics.h"
#include "RenderWidget.h"
#include "TankLoader.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QStandardItemModel>

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
