// The per-user instance marker between copies of the program, here as two
// markers on one path: exactly one holds it, the other reaches it, and a
// marker left by a crashed copy is taken over.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>

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

// What a copy that crashed leaves: the socket's file, with nobody listening.
void leaveDeadMarker(const QString& path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.toLocal8Bit().constData(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    ::close(fd);
    ASSERT_TRUE(QFileInfo::exists(path));
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

TEST(InstanceMarker, AMarkerLeftByACrashedCopyIsTakenOver)
{
    const QString path = markerPath();
    leaveDeadMarker(path);
    host::InstanceMarker next(path);
    EXPECT_TRUE(next.claim());
    host::InstanceMarker later(path);
    EXPECT_FALSE(later.claim()) << "the new holder answers";
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
