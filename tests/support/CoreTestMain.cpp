// Main of the core tests: isolated user folders, a QCoreApplication, gtest.
#include <gtest/gtest.h>

#include <QCoreApplication>

#include "tests/support/TestEnvironment.h"

int main(int argc, char** argv)
{
    testing_support::isolateUserFolders();
#ifdef WAVELARK_TEST_ENVIRONMENT
    testing_support::setEnvironment(WAVELARK_TEST_ENVIRONMENT);  // see wavelark_add_test
#endif
    QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
