// A new user's first vehicle: pick a nation, type part of a name, press
// Enter, and the vehicle stands in the viewport.

#include "WindowFixture.h"

#include "ImageCheck.h"
#include "RenderWidget.h"

namespace {
// Pixels of the middle third that differ clearly between the two images.
int changedPixels(const QImage& before, const QImage& after)
{
    int changed = 0;
    for (int y = before.height() / 3; y < 2 * before.height() / 3; ++y)
        for (int x = before.width() / 3; x < 2 * before.width() / 3; ++x)
            changed += sameColour(before.pixel(x, y), QColor(after.pixel(x, y)), 8) ? 0 : 1;
    return changed;
}
} // namespace

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
