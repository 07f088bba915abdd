// The window through ALSA against the private sound server of scripts/test:
// a frequency typed into the real text box comes back from the null sink's
// monitor.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

#include "base/Trap.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "platform/Colours.h"
#include "platform/WaveApi.h"
#include "services/modErrorHandler.h"
#include "tests/bench/DoomedServer.h"
#include "tests/bench/Recorder.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "window/frmWavelark.h"

namespace {

using namespace testing_support;

class WindowBench : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::getenv("WAVELARK_PULSE_PID") == nullptr)
            GTEST_SKIP() << "needs the private sound server that scripts/test starts";
        ASSERT_EQ(mm::waveBackendName(), "alsa");
        gInstallErrorHandler();
        window.Form_Load();
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        ASSERT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
    }
    void TearDown() override
    {
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);
        rt::setErrorReporter(nullptr);
    }

    ScriptedHost host;  // real time
    frmWavelark window;
};

TEST_F(WindowBench, AFrequencyTypedIntoTheBoxIsWhatComesBack)
{
    window.chkMute->setFocus();
    QTest::keyClick(window.chkMute, Qt::Key_Space);
    ASSERT_EQ(window.chkMute->value(), 0);

    window.txtFrequency1->setFocus();
    window.txtFrequency1->selectAll();
    QTest::keyClicks(window.txtFrequency1, "2500");
    ASSERT_EQ(window.txtFrequency1->text(), "2500");

    Recorder recorder(1.0);
    ASSERT_TRUE(recorder.ok());
    const std::vector<std::int16_t> heard = recorder.take();
    ASSERT_FALSE(heard.empty()) << "the recording did not come";
    // The last half second: the server's latency has long passed.
    const std::int16_t* steady = heard.data() + heard.size() / 2;
    const std::size_t length = heard.size() / 2;
    EXPECT_NEAR(measureFrequency(steady, length, kRecorderRate), 2500.0, 1.0);
    EXPECT_GT(peakOf(steady, length), 16000);
    EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
}

// The window plays through a server of the test's own, which then dies or
// stops while nobody touches the window.
class LostServerBench : public WindowBench {
protected:
    void SetUp() override
    {
        WindowBench::SetUp();
        if (IsSkipped()) return;
        ASSERT_TRUE(server.playThrough()) << "a second private server could not be started";
        window.chkMute->setValue(0);
        ASSERT_TRUE(window.lblStatus->text().startsWith("Playing ")) << window.lblStatus->text().toStdString();
        QTest::qWait(300);
    }
    void TearDown() override
    {
        server.resume();
        WindowBench::TearDown();
    }

    // How long the status took to say the output is lost, the event loop
    // running; -1 when it did not within 3 s.
    qint64 msUntilToldLost(const char* how)
    {
        QElapsedTimer clock;
        clock.start();
        const bool told = QTest::qWaitFor(
            [&] { return window.lblStatus->text().startsWith("Output lost: "); }, 3000);
        const qint64 ms = told ? clock.elapsed() : -1;
        std::cout << "output lost (" << how << ") told after " << ms << " ms: "
                  << window.lblStatus->text().toStdString() << "\n";
        return ms;
    }

    DoomedServer server;
};

TEST_F(LostServerBench, AKilledServerIsToldWithinASecondWithoutABox)
{
    server.kill();
    const qint64 ms = msUntilToldLost("server killed");
    EXPECT_GE(ms, 0);
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
    EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
}

TEST_F(LostServerBench, AStoppedServerIsToldWithinASecondWithoutABox)
{
    server.stop();
    const qint64 ms = msUntilToldLost("server stopped");
    EXPECT_GE(ms, 0);
    EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
}

}  // namespace
