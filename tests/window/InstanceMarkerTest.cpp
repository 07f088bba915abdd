// The per-user instance marker between copies of the program, here as two
// markers on one path: exactly one holds it and the other reaches it (real
// copies, stale markers and copies started together are in
// tests/app/SingleInstanceTest.cpp).
#include <gtest/gtest.h>

#include <memory>

#include <QApplication>
#include <QFileInfo>
#include <QMainWindow>
#include <QTest>

#include "platform/qt/InstanceMarker.h"
#include "tests/support/TestEnvironment.h"

namespace {

QString markerPath()
{
    return QString::fromStdString(testing_support::makeTempFolder("marker")) + "/Wavelark-test.instance";
}

TEST(InstanceMarker, TheFirstHoldsItAndALaterCopyBringsItsWindowForward)
{
    const QString path = markerPath();
    host::InstanceMarker first(path);
    EXPECT_TRUE(first.claim());
    EXPECT_TRUE(first.claim()) << "the answer is kept";

    QMainWindow window;
    window.showMinimized();
    QApplication::processEvents();
    ASSERT_TRUE(window.isMinimized());

    host::InstanceMarker second(path);
    EXPECT_FALSE(second.claim());
    EXPECT_TRUE(second.askHolderForward());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window.isMinimized(); }, 5000));
    EXPECT_TRUE(window.isVisible());
}

TEST(InstanceMarker, OnlyItsUserCanReachIt)
{
    const QString path = markerPath();
    host::InstanceMarker first(path);
    ASSERT_TRUE(first.claim());
    const QFileInfo socket(path);
    EXPECT_EQ(socket.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
              QFile::Permissions());
}

TEST(InstanceMarker, NobodyAnswersOnceTheHolderHasGone)
{
    const QString path = markerPath();
    auto first = std::make_unique<host::InstanceMarker>(path);
    ASSERT_TRUE(first->claim());
    host::InstanceMarker second(path);
    EXPECT_FALSE(second.claim());
    first.reset();
    EXPECT_FALSE(second.askHolderForward());
}

}  // namespace
