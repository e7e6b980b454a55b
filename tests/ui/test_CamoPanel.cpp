// The "Camo" panel of the window on the sample installation: season and row
// follow the vehicle's nation, and the exports run from their buttons. What
// a picked pattern and edited colours look like is checked against the
// tool's frame in test_WindowFrames.

#include "WindowFixture.h"

#include "CamoList.h"
#include "CamoListUI.h"
#include "CamoLoader.h"
#include "RenderWidget.h"
#include "Settings.h"

#include <QDir>
#include <QDirIterator>

namespace {
void showCamoDock(MainWindow& window)
{
    window.ui.CamoDock->show();
    window.ui.CamoDock->raise();
    QCoreApplication::processEvents();
    window.ui.listView_2->doItemsLayout();
}

void clickRow(CamoListUI* list, int row)
{
    const QRect cell = list->visualRect(list->model()->index(row, 0));
    ASSERT_FALSE(cell.isEmpty()) << "row " << row;
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
}

QColor swatch(const MainWindow& window, int channel)
{
    const QLabel* labels[] = {window.ui.camoLabel0, window.ui.camoLabel1, window.ui.camoLabel2,
                              window.ui.camoLabel3};
    return labels[channel]->palette().color(QPalette::Window);
}
} // namespace

TEST_F(WindowTest, SameNationKeepsSeasonAndRowAnotherReturnsToSummer)
{
    runWindow([](MainWindow& window) {
        loadByName(window, QStringLiteral("Talon"));
        showCamoDock(window);
        CamoListUI* list = window.ui.listView_2;
        QTest::mouseClick(window.ui.WinterRadioBtn, Qt::LeftButton);
        EXPECT_EQ(list->patterns()->season, "winter");
        window.ui.listView_2->doItemsLayout();
        clickRow(list, 1);

        const struct
        {
            const char* tank;
            QRadioButton* season;
            int row;
            const char* texture;
        } loads[] = {
            {"Kestrel's Wrath", window.ui.WinterRadioBtn, 1,
             "vehicles/camouflage/ardenia/Winter_02.dds"},
            {"Kestrel", window.ui.SummerRadioBtn, 0, "vehicles/camouflage/borvia/Summer_01.dds"},
        };
        for (const auto& load : loads) {
            SCOPED_TRACE(load.tank);
            loadByName(window, QString::fromUtf8(load.tank));
            EXPECT_TRUE(load.season->isChecked());
            EXPECT_EQ(list->currentIndex().row(), load.row);
            EXPECT_EQ(CamoLoader::instance()->texture, load.texture);
            EXPECT_EQ(list->model()->rowCount(), 2);
        }
        EXPECT_EQ(list->patterns()->season, "summer");
    });
}

TEST_F(WindowTest, CamoExportButtonsCheckFirstThenWriteUnderTheModFolder)
{
    runWindow([this](MainWindow& window) {
        const QString mod = root.dataDirectory() + QStringLiteral("/mod");
        Settings::instance()->modPath = mod;
        window.ui.pushButton_10->click();
        ASSERT_EQ(boxes.boxes.size(), 1);
        EXPECT_EQ(boxes.boxes.last().text, "You must load a tank first.");

        loadByName(window, QStringLiteral("Kestrel"));
        window.ui.pushButton_15->click();
        EXPECT_EQ(boxes.boxes.last().text, "You must enable camouflage first.");

        window.ui.radioButton_12->click();
        window.ui.pushButton_10->click();
        EXPECT_EQ(boxes.boxes.last().text, "Export completed.");
        EXPECT_TRUE(QFile::exists(mod + "/vehicles/camouflage/borvia/Summer_01.dds"));

        window.ui.pushButton_15->click();
        EXPECT_EQ(boxes.boxes.last().text, "Camouflage bake export complete.");
        QStringList baked;
        for (QDirIterator files(mod + "/vehicles", {"*.dds"}, QDir::Files,
                                QDirIterator::Subdirectories);
             files.hasNext();)
            baked.append(files.next());
        // The pattern itself and at least one baked texture.
        EXPECT_GE(baked.size(), 2) << baked.join(' ').toStdString();
        // The viewport goes on drawing after the bake's own target.
        EXPECT_FALSE(window.renderWidget->grabFramebuffer().isNull());
    });
}
