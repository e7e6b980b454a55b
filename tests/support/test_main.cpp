// Test entry for suites that need a QApplication (widgets, boxes, fonts).
// They run under Xvfb in CI.
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
