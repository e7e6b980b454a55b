// A new user's first vehicle: pick a nation, type part of a name, press
// Enter, and the vehicle stands in the viewport.

#include "WindowFixture.h"

#include "RenderWidget.h"

TEST_F(WindowTest, NationNameAndEnterPutTheVehicleInTheViewport)
{
    runWindow([](MainWindow& window) {
        const QImage empty = window.renderWidget->grabFramebuffer();
        QComboBox* nations = window.ui.NationCombo;
        nations->setCurrentIndex(nations->findText(QStringLiteral("Ardenia")));
        QTest::keyClicks(window.ui.tankFilter, QStringLiteral("alo"));
        ASSERT_EQ(listedNames(window), QStringList{QStringLiteral("Talon")});
        window.ui.mTankListView->setFocus();
        QTest::keyClick(window.ui.mTankListView, Qt::Key_Down);
        QTest::keyClick(window.ui.mTankListView, Qt::Key_Return);
        EXPECT_EQ(window.statusBar()->currentMessage().indexOf(QStringLiteral("Talon loaded in: ")),
                  0);

        const QImage shown = window.renderWidget->grabFramebuffer();
        const int area = empty.width() * empty.height() / 9;
        // The vehicle covers a good part of the middle of the view.
        if (changedPixels(empty, shown) < area / 20) {
            saveFailedImage(empty, QStringLiteral("empty"));
            saveFailedImage(shown, QStringLiteral("shown"));
            ADD_FAILURE() << changedPixels(empty, shown) << " of " << area << " pixels changed";
        }
    });
}
