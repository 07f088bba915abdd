// Main of the window tests: isolated user folders, a QApplication on Qt's
// offscreen platform (unless another one is asked for), gtest.
#include <gtest/gtest.h>

#include <cstdlib>

#include <QApplication>

#include "tests/support/TestEnvironment.h"

int main(int argc, char** argv)
{
    testing_support::isolateUserFolders();
#ifdef WAVELARK_TEST_ENVIRONMENT
    testing_support::setEnvironment(WAVELARK_TEST_ENVIRONMENT);  // see wavelark_add_test
#endif
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
