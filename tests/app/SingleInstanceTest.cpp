// One copy at a time, with real copies of the program on the virtual card:
// a second start ends at once and leaves the first running, a marker left
// by a killed copy does not stop the next start, and copies started
// together leave exactly one running.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <memory>
#include <vector>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

#include "tests/support/TestEnvironment.h"

namespace {

constexpr int kStartMs = 60000;

class SingleInstance : public ::testing::Test {
protected:
    SingleInstance() : runtime_(QString::fromStdString(testing_support::makeTempFolder("runtime")))
    {
        ::chmod(runtime_.toLocal8Bit().constData(), 0700);
        environment_ = QProcessEnvironment::systemEnvironment();
        environment_.insert("QT_QPA_PLATFORM", "offscreen");
        environment_.insert("WAVELARK_AUDIO", "loopback");
        environment_.insert("XDG_RUNTIME_DIR", runtime_);
    }

    ~SingleInstance() override
    {
        for (auto& copy : copies_) {
            copy->kill();
            copy->waitForFinished();
        }
    }

    QProcess& startCopy()
    {
        copies_.push_back(std::make_unique<QProcess>());
        QProcess& copy = *copies_.back();
        copy.setProcessEnvironment(environment_);
        copy.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        copy.start(WAVELARK_PROGRAM, {});
        EXPECT_TRUE(copy.waitForStarted(kStartMs));
        return copy;
    }

    // Waits until a copy holds the marker (it listens on it).
    bool markerHeld()
    {
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < kStartMs) {
            if (!QDir(runtime_).entryList({"*.instance"}, QDir::System).isEmpty()) return true;
            QThread::msleep(50);
        }
        return false;
    }

    static bool endsByItself(QProcess& copy)
    {
        return copy.waitForFinished(kStartMs) && copy.exitStatus() == QProcess::NormalExit &&
               copy.exitCode() == 0;
    }

    // Still running after a second more: it did not end after starting.
    static bool keepsRunning(QProcess& copy)
    {
        return !copy.waitForFinished(1000) && copy.state() == QProcess::Running;
    }

    bool settingsWritten() const
    {
        return QFileInfo::exists(environment_.value("XDG_CONFIG_HOME") + "/Marlo/Wavelark.conf");
    }

    QString runtime_;
    QProcessEnvironment environment_;
    std::vector<std::unique_ptr<QProcess>> copies_;
};

TEST_F(SingleInstance, ASecondStartEndsAndLeavesTheFirstRunning)
{
    QProcess& first = startCopy();
    ASSERT_TRUE(markerHeld());
    QProcess& second = startCopy();
    EXPECT_TRUE(endsByItself(second));
    EXPECT_TRUE(keepsRunning(first));
    EXPECT_FALSE(settingsWritten()) << "the second copy stores nothing";
}

TEST_F(SingleInstance, AMarkerLeftByAKilledCopyDoesNotStopTheNextStart)
{
    QProcess& crashed = startCopy();
    ASSERT_TRUE(markerHeld());
    crashed.kill();
    crashed.waitForFinished();
    ASSERT_FALSE(QDir(runtime_).entryList({"*.instance"}, QDir::System).isEmpty())
        << "the killed copy's marker stays behind";

    QProcess& next = startCopy();
    EXPECT_TRUE(keepsRunning(next));
    QProcess& another = startCopy();
    EXPECT_TRUE(endsByItself(another)) << "the new holder answers";
    EXPECT_TRUE(keepsRunning(next));
}

TEST_F(SingleInstance, CopiesStartedTogetherLeaveExactlyOneRunning)
{
    std::vector<QProcess*> started;
    for (int i = 0; i < 3; ++i) started.push_back(&startCopy());
    int ended = 0;
    QElapsedTimer timer;
    timer.start();
    while (ended < 2 && timer.elapsed() < kStartMs) {
        ended = 0;
        for (QProcess* copy : started) ended += copy->waitForFinished(20) || copy->state() == QProcess::NotRunning;
    }
    for (QProcess* copy : started)
        if (copy->state() == QProcess::NotRunning) EXPECT_EQ(copy->exitCode(), 0);
    EXPECT_EQ(ended, 2);
    int running = 0;
    for (QProcess* copy : started) running += copy->state() == QProcess::Running;
    EXPECT_EQ(running, 1);
}

}  // namespace
