// The tank controls of the window on the sample installation: list and
// filters, loading, recent tanks, turret and gun, limits, rotations, draw
// styles, model and lighting and scene settings.

#include "WindowFixture.h"

#include "Database.h"
#include "Log.h"
#include "MaterialLoader.h"
#include "RenderWidget.h"
#include "Settings.h"
#include "TankLoader.h"
#include "TurretGunChooser.h"

#include <QSettings>
#include <QStatusBar>

namespace {
QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

QStringList items(const QComboBox* box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts.append(box->itemText(i));
    return texts;
}
} // namespace

TEST_F(WindowTest, TankListFollowsTheFilterBoxesAndText)
{
    runWindow([](MainWindow& window) {
        EXPECT_EQ(listedNames(window).size(), 26);
        // Nation, category, tier, filter text; the vehicles listed.
        using Case = std::tuple<const char*, const char*, const char*, const char*, QStringList>;
        const Case cases[] = {
            // clang-format off
            {"Borvia", nullptr, nullptr, "", {"Hornet", "Kestrel", "Marauder", "Prototype",
                                              "Sentinel", "Training Hauler", "Škorpion"}},
            {"Borvia", "Light Tanks", nullptr, "", {"Kestrel", "Training Hauler"}},
            {nullptr, nullptr, nullptr, "kest", {"Kestrel", "Kestrel's Wrath"}},
            {nullptr, "Heavy Tanks", "10", "", {"Halberd"}},
            {nullptr, nullptr, nullptr, "no such", {}},
            // clang-format on
        };
        for (const auto& [nation, category, tier, text, expected] : cases) {
            SCOPED_TRACE(text);
            window.ui.tankFilter->clear();
            window.ui.NationCombo->setCurrentIndex(0);
            window.ui.CatergoryCombo->setCurrentIndex(0);
            window.ui.TierCombo->setCurrentIndex(0);
            if (nation)
                window.ui.NationCombo->setCurrentText(QString::fromUtf8(nation));
            if (category)
                window.ui.CatergoryCombo->setCurrentText(QString::fromUtf8(category));
            if (tier)
                window.ui.TierCombo->setCurrentText(QString::fromUtf8(tier));
            QTest::keyClicks(window.ui.tankFilter, QString::fromUtf8(text));
            EXPECT_EQ(sorted(listedNames(window)), expected);
        }
        // A change of nation keeps the filter text in force.
        window.ui.tankFilter->clear();
        window.ui.NationCombo->setCurrentText(QStringLiteral("Ardenia"));
        QTest::keyClicks(window.ui.tankFilter, QStringLiteral("al"));
        window.ui.NationCombo->setCurrentText(QStringLiteral("Caldera"));
        EXPECT_EQ(listedNames(window), QStringList{QStringLiteral("Halberd")});
    });
}

TEST_F(WindowTest, LoadsByEnterDoubleClickButtonAndRecentEntry)
{
    runWindow([this](MainWindow& window) {
        TankLoader* loader = TankLoader::instance();
        ASSERT_NE(loader, nullptr);
        QListView* list = window.ui.mTankListView;
        // Down or Tab from the filter box moves onto the list's first name.
        const auto fromFilter = [&](const char* name, Qt::Key into, Qt::Key load) {
            return [&window, name, into, load] {
                QTest::keyClicks(window.ui.tankFilter, QString::fromUtf8(name));
                QTest::keyClick(window.ui.tankFilter, into);
                ASSERT_EQ(window.focusWidget(), window.ui.mTankListView);
                QTest::keyClick(window.ui.mTankListView, load);
                window.ui.tankFilter->clear();
            };
        };
        const std::pair<const char*, std::function<void()>> ways[] = {
            {"Ironmoth", fromFilter("onmo", Qt::Key_Down, Qt::Key_Return)},
            {"Proving Ground", fromFilter("Provi", Qt::Key_Tab, Qt::Key_Enter)},
            {"Talon", [&] { QTest::keyClick(list, Qt::Key_Return); }},
            {"Kestrel", [&] { QTest::keyClick(list, Qt::Key_Enter); }},
            {"Wyvern",
             [&] {
                 const QRect row = list->visualRect(list->currentIndex());
                 QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row.center());
             }},
            {"Basilisk", [&] { QTest::mouseClick(window.ui.pushButton, Qt::LeftButton); }},
        };
        for (const auto& [name, press] : ways) {
            SCOPED_TRACE(name);
            ASSERT_TRUE(selectTank(window, QString::fromUtf8(name)));
            press();
            EXPECT_TRUE(loader->loaded);
            EXPECT_EQ(loader->name, QString::fromUtf8(name));
        }
        EXPECT_EQ(window.recentTanks,
                  (QStringList{"Basilisk", "Wyvern", "Kestrel", "Talon", "Proving Ground"}));
        // A right double click loads nothing.
        selectTank(window, QStringLiteral("Pike"));
        QTest::mouseDClick(list->viewport(), Qt::RightButton, {},
                           list->visualRect(list->currentIndex()).center());
        EXPECT_EQ(loader->name, QStringLiteral("Basilisk"));

        // A recent entry clears the filter text and finds its row.
        QTest::keyClicks(window.ui.tankFilter, QStringLiteral("Pike"));
        window.recentActions[1]->trigger();
        EXPECT_EQ(loader->name, QStringLiteral("Wyvern"));
        EXPECT_TRUE(window.ui.tankFilter->text().isEmpty());
        EXPECT_EQ(window.recentTanks.first(), QStringLiteral("Wyvern"));
        // ... unless the filter boxes exclude it.
        window.ui.NationCombo->setCurrentText(QStringLiteral("Caldera"));
        window.recentActions[3]->trigger();
        EXPECT_EQ(loader->name, QStringLiteral("Wyvern"));
        ASSERT_FALSE(boxes.boxes.isEmpty());
        EXPECT_EQ(boxes.boxes.last().text, QStringLiteral("Could not find tank: Talon"));
        EXPECT_EQ(boxes.boxes.last().icon, QMessageBox::Warning);

        // An empty list: nothing to load.
        QTest::keyClicks(window.ui.tankFilter, QStringLiteral("no such tank"));
        window.loadTank();
        EXPECT_EQ(boxes.boxes.last().text, QStringLiteral("You must select a tank."));
    });
    EXPECT_TRUE(logLines().contains(QStringLiteral("[ Warning ] Could not find tank: Talon")));
}

TEST_F(WindowTest, ReloadSceneAndADatabaseRebuildLoadTheVehicleAgain)
{
    runWindow([](MainWindow& window) {
        const auto loads = [] {
            return int(Log::instance()->allText.count(QStringLiteral("Loading Tank: Talon")));
        };
        const auto reloads = [] {
            return int(Log::instance()->allText.count(QStringLiteral("[ Info ] Reloading Scene.")));
        };
        loadByName(window, QStringLiteral("Talon"));
        const TurretGunChooser* chooser = TurretGunChooser::instance();
        ASSERT_EQ(chooser->turrets.size(), 2);
        window.ui.turretComboBox->setCurrentIndex(1);
        const QString turret = chooser->currentTurretName;
        const QString gun = chooser->currentGunName;
        ASSERT_EQ(turret, chooser->turrets[1].name);

        const std::pair<const char*, std::function<void()>> ways[] = {
            {"Reload Scene", [&] { window.ui.actionReload_Scene->trigger(); }},
            {"rebuild", [] { Database::instance()->rebuildDatabase(); }},
        };
        for (const auto& [way, reload] : ways) {
            SCOPED_TRACE(way);
            const int before = loads();
            const int reloadsBefore = reloads();
            reload();
            EXPECT_EQ(reloads(), reloadsBefore + 1);
            EXPECT_EQ(loads(), before + 1);
            EXPECT_TRUE(TankLoader::instance()->loaded);
            EXPECT_EQ(chooser->currentTurretName, turret);
            EXPECT_EQ(chooser->currentGunName, gun);
        }
    });
}

TEST_F(WindowTest, RecentListKeepsFiveNamesNewestFirstAcrossRuns)
{
    runWindow([](MainWindow& window) {
        for (const char* name : {"A", "B", "C", "D", "E", "F", "C"})
            window.addTankRecent(QString::fromUtf8(name));
        EXPECT_EQ(window.recentTanks, (QStringList{"C", "F", "E", "D", "B"}));
        QStringList shown;
        for (QAction* action : window.recentActions)
            if (action->isVisible())
                shown.append(action->text());
        EXPECT_EQ(shown, window.recentTanks);
    });
    const QString path = userFile(QStringLiteral("recent.list"));
    EXPECT_EQ(QSettings(path, QSettings::IniFormat).value("RecentTanks").toStringList(),
              (QStringList{"C", "F", "E", "D", "B"}));

    // Read back at start; an emptied list leaves the file as it was.
    runWindow([](MainWindow& window) {
        EXPECT_EQ(window.recentTanks.size(), 5);
        EXPECT_TRUE(window.recentActions[4]->isVisible());
        window.recentTanks.clear();
    });
    EXPECT_EQ(QSettings(path, QSettings::IniFormat).value("RecentTanks").toStringList().size(), 5);
}

TEST_F(WindowTest, TurretAndGunBoxesFollowLoadAndTurretChoice)
{
    runWindow([](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        const TurretGunChooser* chooser = TurretGunChooser::instance();
        ASSERT_EQ(chooser->turrets.size(), 2);
        const auto gunNames = [chooser](int turret) {
            QStringList names;
            for (const Gun& gun : chooser->turrets[turret].guns)
                names.append(gun.name);
            return names;
        };
        EXPECT_EQ(items(window.ui.turretComboBox),
                  (QStringList{chooser->turrets[0].name, chooser->turrets[1].name}));
        EXPECT_EQ(items(window.ui.gunComboBox), gunNames(0));
        EXPECT_TRUE(window.ui.turretRotationSpin->isEnabled());
        EXPECT_EQ(window.ui.turretRotationSpin->minimum(), -180);

        // The second gun of the first turret.
        window.ui.gunComboBox->setCurrentIndex(1);
        EXPECT_EQ(chooser->currentGunName, gunNames(0)[1]);
        // The other turret comes with its own first gun.
        window.ui.turretComboBox->setCurrentIndex(1);
        emit window.ui.turretComboBox->textActivated(window.ui.turretComboBox->currentText());
        EXPECT_EQ(chooser->currentTurretName, chooser->turrets[1].name);
        EXPECT_EQ(items(window.ui.gunComboBox), gunNames(1));
        EXPECT_EQ(chooser->currentGunName, gunNames(1)[0]);
    });
}

TEST_F(WindowTest, GunElevationFollowsTheFrontAndBackArcs)
{
    runWindow([](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        TurretGunChooser* chooser = TurretGunChooser::instance();
        Gun& gun = chooser->turrets[0].guns[0];
        chooser->currentTurretName = chooser->turrets[0].name;
        chooser->currentGunName = gun.name;
        gun.pitchMin = -8;
        gun.pitchMax = 20;
        gun.front = {-2, 10, 30};
        gun.back = {-4, 3, 45.5f};
        QDoubleSpinBox* pitch = window.ui.gunRotationSpin;
        // Turret heading, gun value before; the gun's range and value after.
        const std::tuple<double, double, double, double, double> cases[] = {
            {90, 15, -8, 20, 15},    // no arc: the gun's own limits
            {30, 15, -10, 2, 2},     // edge of the front arc; the range clamps
            {-30.9, -9, -10, 2, -8}, // truncated to -30; clamped by the gun's own range first
            {31, 15, -8, 20, 15},
            {180, -8, -3, 4, -3}, // back arc lifts the value to its minimum
            {-135, 0, -3, 4, 0},  // -135 counts as 225, inside 134.5..225.5
            {-134, 0, -8, 20, 0},
            {134, 0, -3, 4, 0}, // trunc(180 - 45.5) is 134: inside
            {133, 0, -8, 20, 0},
        };
        for (const auto& [heading, before, minimum, maximum, after] : cases) {
            SCOPED_TRACE(heading);
            pitch->setRange(-90, 90);
            pitch->setValue(before);
            window.turretRotate(heading);
            EXPECT_DOUBLE_EQ(pitch->minimum(), minimum);
            EXPECT_DOUBLE_EQ(pitch->maximum(), maximum);
            EXPECT_DOUBLE_EQ(pitch->value(), after);
        }
    });
}

TEST_F(WindowTest, RotationSpinBoxesWrapPastHalfATurn)
{
    runWindow([](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        window.ui.turretRotationSpin->setRange(-181, 181);
        for (QDoubleSpinBox* spin : {window.ui.tankRotationSpin, window.ui.turretRotationSpin}) {
            SCOPED_TRACE(spin->objectName().toStdString());
            const std::pair<double, double> cases[] = {
                {181, -179}, {-181, 179}, {180, 180}, {-180, -180}, {45.5, 45.5}};
            for (const auto& [typed, shown] : cases) {
                spin->setValue(typed);
                EXPECT_DOUBLE_EQ(spin->value(), shown);
            }
        }
        // The reset buttons: tank and turret on press, gun on release.
        QTest::mousePress(window.ui.tankRotationBtn, Qt::LeftButton);
        EXPECT_EQ(window.ui.tankRotationSpin->value(), 0);
        QTest::mouseRelease(window.ui.tankRotationBtn, Qt::LeftButton);
        window.ui.gunRotationSpin->setValue(5);
        QTest::mousePress(window.ui.gunRotationBtn, Qt::LeftButton);
        EXPECT_EQ(window.ui.gunRotationSpin->value(), 5);
        QTest::mouseRelease(window.ui.gunRotationBtn, Qt::LeftButton);
        EXPECT_EQ(window.ui.gunRotationSpin->value(), 0);
    });
}

TEST_F(WindowTest, DrawStyleModelAndLightingReachTheLoaders)
{
    runWindow([](MainWindow& window) {
        TankLoader* loader = TankLoader::instance();
        QAction* styles[] = {window.ui.actionSolid_Mode, window.ui.actionWireframe_mode,
                             window.ui.actionSolid_Wireframe_mode};
        // Action; wireframe and solidWire flags after it.
        const std::tuple<int, bool, bool> cases[] = {
            {1, true, false}, {2, false, true}, {2, false, true}, {0, false, false}};
        EXPECT_TRUE(styles[0]->isChecked());
        for (const auto& [active, wireframe, solidWire] : cases) {
            styles[active]->trigger();
            EXPECT_EQ(loader->wireframe, wireframe);
            EXPECT_EQ(loader->solidWire, solidWire);
            for (int i = 0; i < 3; ++i)
                EXPECT_EQ(styles[i]->isChecked(), i == active) << active << i;
        }

        // Model button; damage mode and whether the armour tables show.
        const std::tuple<QRadioButton*, int, bool> models[] = {
            {window.ui.DamagedBtn, 1, false},
            {window.ui.CollisionBtn, 2, true},
            {window.ui.UndamagedBtn, 0, false},
        };
        for (const auto& [button, mode, tables] : models) {
            button->click();
            EXPECT_EQ(loader->damageMode, mode);
            EXPECT_EQ(window.ui.armorDock->isVisible(), tables);
        }

        // Lighting button; material mode and shadows.
        const std::tuple<QRadioButton*, int, bool> lights[] = {
            {window.ui.NoLightingRadioBtn, 1, false},
            {window.ui.BumpMapRadioBtn2, 0, true},
            {window.ui.BumpMapRadioBtn, 0, false},
        };
        for (const auto& [button, mode, shadows] : lights) {
            button->click();
            EXPECT_EQ(MaterialLoader::instance()->lightingMode, mode);
            EXPECT_EQ(Settings::instance()->showShadows, shadows);
        }

        // Hide boxes and texture choices land in the loader's flags.
        window.ui.checkBox_6->click();
        window.ui.radioButton_25->click();
        EXPECT_TRUE(loader->hideTurret);
        EXPECT_TRUE(loader->gridTexture);
    });
}

TEST_F(WindowTest, SceneSettingsAreWrittenBackIntoTheSettingsFile)
{
    runWindow([this](MainWindow& window) {
        // Started from the file's defaults: the grid box says "hidden" for
        // a grid that isn't shown.
        EXPECT_EQ(window.ui.GridCheckBox->isChecked(), !Settings::instance()->showGrid);
        window.ui.AmbientLightSlider->setValue(77);
        EXPECT_EQ(window.ui.AmbientLightValue->text(), QStringLiteral("77"));
        window.ui.BasicHangarRadioBtn->click();
        window.ui.NoLightingRadioBtn->click();
        window.ui.HangarCheckBox->setChecked(true);
        window.ui.RenderStatsCheckBox->setChecked(false);
        window.renderWidget->setViewportColor(QColor(10, 20, 30));
        QTest::mousePress(window.ui.pushButton_2, Qt::LeftButton);
        QTest::mouseRelease(window.ui.pushButton_2, Qt::LeftButton);
        ASSERT_FALSE(boxes.boxes.isEmpty());
        EXPECT_EQ(boxes.boxes.last().text, QStringLiteral("Settings saved."));
    });
    Settings saved(userFile(QStringLiteral("settings.cfg")));
    saved.load();
    EXPECT_EQ(saved.ambientLight, 77);
    EXPECT_EQ(saved.sceneSet, QStringLiteral("basic"));
    EXPECT_EQ(saved.lighting, QStringLiteral("disabled"));
    EXPECT_FALSE(saved.showHangar);
    EXPECT_TRUE(saved.showRenderInfo);
    EXPECT_FALSE(saved.showShadows);
    EXPECT_EQ(saved.viewportColor.rgb(), QColor(10, 20, 30).rgb());
}
