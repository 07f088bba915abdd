// The status bar's words in each state the window can be in, and a lost
// output told with nobody touching the window, on the virtual card.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTabWidget>
#include <QTest>

#include "base/Trap.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "platform/Colours.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"
#include "window/frmWavelark.h"

namespace {

using Clock = testing_support::VirtualCardSession::Clock;

constexpr const char* kDevice = "  |  Wavelark Virtual Card, 44100 Hz";
constexpr const char* kNoDriver = "There is no driver installed on your system.";

class StatusWindow : public ::testing::Test {
protected:
    explicit StatusWindow(Clock clock = Clock::Simulated) : card(host, clock) {}

    void SetUp() override
    {
        // A first run: 440 Hz, which no loop of whole cycles plays exactly.
        gInstallErrorHandler();
        window.Form_Load();
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        ASSERT_TRUE(host.boxes.empty());
    }
    void TearDown() override
    {
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);
        gWaveInClose(error);
        gWaveOutSetPreciseLoop(kFalse);
        rt::setErrorReporter(nullptr);
    }

    std::string status() const { return window.lblStatus->text().toStdString(); }

    void setField(ui::TextBox* box, const char* text) { box->control().setText(text); }

    void unmute()
    {
        window.chkMute->setValue(0);
        ASSERT_EQ(window.lblOutLevel->foreColor(), ui::kColourGreen);
    }

    std::string logText() const
    {
        std::ifstream log(gsErrorLogFileName(), std::ios::binary);
        std::stringstream content;
        content << log.rdbuf();
        return content.str();
    }

    static std::size_t count(const std::string& text, const std::string& part)
    {
        std::size_t found = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
            ++found;
        return found;
    }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card;
    frmWavelark window;
};

// ---- What plays, in words -------------------------------------------------------

TEST_F(StatusWindow, AToneIsToldByTheFrequencyItReallyPlaysAndItsShape)
{
    EXPECT_EQ(status(), std::string("Muted") + kDevice) << "the window starts muted";
    unmute();
    // 440 Hz has no whole number of samples a cycle: its loop plays a little
    // higher, and the status says how much. 1000 Hz is played exactly.
    EXPECT_EQ(status(), std::string("Playing 440.022 Hz sine") + kDevice);
    setField(window.txtFrequency1, "1000");
    EXPECT_EQ(status(), std::string("Playing 1000 Hz sine") + kDevice);
    setField(window.txtFrequency1, "440");
    window.optTriangle->setValue(true);
    setField(window.txtPercent, "25");
    EXPECT_EQ(status(), std::string("Playing 440.022 Hz triangle 25 %") + kDevice);
    window.chkInvert->setValue(1);
    EXPECT_EQ(status(), std::string("Playing 440.022 Hz triangle 25 %, inverted") + kDevice);
    window.chkInvert->setValue(0);

    // A precise loop plays what was asked, and the status says it plainly.
    gWaveOutSetPreciseLoop(kTrue);
    window.mnuWaveSine->trigger();
    EXPECT_EQ(status(), std::string("Playing 440 Hz sine") + kDevice);
    gWaveOutSetPreciseLoop(kFalse);

    window.mnuWaveSquare->trigger();
    EXPECT_EQ(status(), std::string("Playing 440.022 Hz square") + kDevice);
    window.mnuWaveSawtooth->trigger();
    EXPECT_EQ(status(), std::string("Playing 440.022 Hz sawtooth") + kDevice);
    window.optNoise->setValue(true);
    EXPECT_EQ(status(), std::string("Playing noise") + kDevice);

    window.chkMute->setValue(1);
    EXPECT_EQ(status(), std::string("Muted") + kDevice);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(StatusWindow, ASweepIsToldByItsEndsLawAndDuration)
{
    setField(window.txtFrequency1, "100");
    setField(window.txtFrequency2, "10000");
    window.optSweepLog->setValue(true);
    window.chkSweep->setValue(1);
    unmute();
    EXPECT_EQ(status(), std::string("Sweeping 100 Hz to 10000 Hz, log, 5 s") + kDevice);
    window.chkSweepBi->setValue(1);
    window.optSweepLin->setValue(true);
    EXPECT_EQ(status(), std::string("Sweeping 100 Hz to 10000 Hz, lin, 5 s, both ways") + kDevice);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(StatusWindow, BurstsSayTheirPeriodAndAMeasuredOneSaysItRecords)
{
    window.tabTab->setCurrentIndex(1);
    setField(window.txtBurstPeriod, "100");
    window.chkBurstAuto->setValue(1);
    EXPECT_EQ(status(), std::string("Bursts every 100 ms, 2 cycles of 440 Hz sine") + kDevice);
    window.chkBurstAuto->setValue(0);
    EXPECT_EQ(status(), std::string("Muted") + kDevice);

    // What the status said while the engine waited for the recording.
    std::string duringBurst;
    host.sleepListeners.push_back([&](std::uint32_t) { duringBurst = status(); });
    window.chkBurstMeasure->setValue(1);
    window.cmdBurstFire->click();
    EXPECT_EQ(duringBurst, std::string("Recording...") + kDevice);
    EXPECT_EQ(status(), std::string("Muted") + kDevice) << "told again once the burst is over";

    window.chkBurstMeasure->setValue(0);
    window.cmdBurstFire->click();
    EXPECT_EQ(duringBurst, std::string("Firing a burst...") + kDevice);
    EXPECT_TRUE(host.boxes.empty());
}

// ---- A lost output, on the card's own clock ------------------------------------------

class LostOutput : public StatusWindow {
protected:
    LostOutput() : StatusWindow(Clock::Real) {}

    // Waits with the event loop running and nothing touched; the time it took.
    qint64 msUntilLost()
    {
        QElapsedTimer clock;
        clock.start();
        const bool told = QTest::qWaitFor([&] { return status().starts_with("Output lost: "); }, 3000);
        return told ? clock.elapsed() : -1;
    }
};

TEST_F(LostOutput, IsToldWithinASecondOnceInTheLogAndPlaysAgainOnceTheDeviceIsBack)
{
    unmute();
    QTest::qWait(100);
    mm::loopback::vanish();
    const qint64 ms = msUntilLost();
    ASSERT_GE(ms, 0) << status();
    EXPECT_LT(ms, 1000);
    EXPECT_EQ(status(), std::string("Output lost: ") + kNoDriver + kDevice);
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
    QTest::qWait(700);
    EXPECT_TRUE(host.boxes.empty()) << "a lost device is no program error";
    EXPECT_EQ(count(logText(), std::string("Warning: Output lost: ") + kNoDriver), 1u);

    // A change while the device is still gone is the user's own: one box,
    // and the status says nothing plays.
    setField(window.txtFrequency1, "1000");
    EXPECT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(status(), std::string("Stopped: change a setting to play") + kDevice);

    mm::loopback::reappear();
    setField(window.txtFrequency1, "2000");
    EXPECT_EQ(status(), std::string("Playing 2000 Hz sine") + kDevice);
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourGreen);

    // Lost again, it is told again; Mute set and cleared plays once it is back.
    mm::loopback::vanish();
    ASSERT_GE(msUntilLost(), 0);
    window.chkMute->setValue(1);
    EXPECT_EQ(status(), std::string("Muted") + kDevice);
    mm::loopback::reappear();
    window.chkMute->setValue(0);
    EXPECT_EQ(status(), std::string("Playing 2000 Hz sine") + kDevice);
    QTest::qWait(400);
    EXPECT_EQ(status(), std::string("Playing 2000 Hz sine") + kDevice) << "and stays so";
    EXPECT_EQ(count(logText(), "Warning: Output lost: "), 2u);
    EXPECT_EQ(host.boxes.size(), 1u);
}

}  // namespace
