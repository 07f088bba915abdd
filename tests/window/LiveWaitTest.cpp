// The window stays alive while the engine waits: it paints and runs its
// timers, holds user input until the wait is over, keeps what timers start
// out of the engine, and drops the key repeats that piled up meanwhile.
// Input reaches the window as the window system hands it over, queued.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <qpa/qwindowsysteminterface.h>

#include "base/Array.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "engine/modWaveInOut.h"
#include "entry/modControl.h"
#include "entry/modKeyDown.h"
#include "entry/modKeyMouseIncrement.h"
#include "platform/qt/LiveWait.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"
#include "window/frmWavelark.h"

namespace {

// The scripted host with the program's sleep: the window lives through the
// engine's polls, on the scripted clock (real, or simulated with the card).
class LiveHost : public testing_support::ScriptedHost {
public:
    void sleep(std::uint32_t milliseconds) override
    {
        liveWait_.sleep(milliseconds, [this](std::uint32_t ms) { ScriptedHost::sleep(ms); });
    }

private:
    host::LiveWait liveWait_;
};

// What the window system does: queue a key for the window, stamped with
// the time it happened.
void queueKey(QWidget* window, std::uint32_t time, QEvent::Type type, int key, bool autoRepeat)
{
    QWindowSystemInterface::handleKeyEvent<QWindowSystemInterface::AsynchronousDelivery>(
        window->windowHandle(), time, type, key, Qt::NoModifier, QString(), autoRepeat);
}

// Runs the event loop until nothing is left to do.
void settle()
{
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
}

class LiveWaitTest : public ::testing::Test {
protected:
    void showWithFocusOn(ui::TextBox* box)
    {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        box->setFocus();
        settle();
        ASSERT_TRUE(box->hasFocus());
    }

    LiveHost host;
    frmWavelark window;
};

// ---- The window during a wait (real time, a plain poll like the engine's) --

class WindowDuringAWait : public LiveWaitTest {
protected:
    // Polls for `ms` as the engine's waits do.
    void wait(std::uint32_t ms)
    {
        const std::uint32_t start = host::tickCount();
        while (host::tickCount() - start < ms) host::sleep(1);
    }
};

TEST_F(WindowDuringAWait, PaintsAndRunsTimersButHoldsUserInputUntilItEnds)
{
    showWithFocusOn(window.txtFrequency1);
    int keysInWait = 0;
    int keysAfter = 0;
    window.txtFrequency1->KeyDown = [&](std::int16_t&, std::int16_t) {
        ++(host::waitUnderway() ? keysInWait : keysAfter);
    };
    int ticksInWait = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (!host::waitUnderway()) return;
        ++ticksInWait;
        window.picPolarity->refresh();
    });
    timer.start(5);
    int paintsInWait = 0;
    struct PaintCounter : QObject {
        int* count;
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Paint && host::waitUnderway()) ++*count;
            return false;
        }
    } painter;
    painter.count = &paintsInWait;
    window.picPolarity->installEventFilter(&painter);

    queueKey(&window, host::tickCount(), QEvent::KeyPress, Qt::Key_Up, false);
    queueKey(&window, host::tickCount(), QEvent::KeyRelease, Qt::Key_Up, false);
    wait(300);
    EXPECT_GE(ticksInWait, 2) << "timers run during a wait";
    EXPECT_GE(paintsInWait, 1) << "the window repaints during a wait";
    EXPECT_EQ(keysInWait + keysAfter, 0) << "the key waits for the end of the wait";
    settle();
    EXPECT_EQ(keysInWait, 0);
    EXPECT_EQ(keysAfter, 1) << "and then arrives";
}

TEST_F(WindowDuringAWait, WhatTimersStartWaitsForTheEndOfTheWait)
{
    showWithFocusOn(window.txtFrequency1);
    // The up-down's arrow held from before the wait: its repeats fall due
    // during the wait and must not step (a step runs Change, and Change may
    // re-enter the engine).
    window.updPercent->resize(18, 24);
    const std::int32_t before = window.updPercent->value();
    QTest::mousePress(window.updPercent, Qt::LeftButton, {}, QPoint(9, 3));
    ASSERT_EQ(window.updPercent->value(), before + 1);
    int changesInWait = 0;
    window.updPercent->Change = [&] { changesInWait += host::waitUnderway() ? 1 : 0; };
    // A focus change asked for during the wait (as a text box's deferred
    // focus is), and the window system's close button, which Qt counts as
    // user input.
    bool focusMovedInWait = false;
    QTimer::singleShot(0, [&] { window.chkMute->control().setFocus(); });
    QTimer probe;
    QObject::connect(&probe, &QTimer::timeout, [&] {
        if (host::waitUnderway() && window.focusWidget() == window.chkMute)
            focusMovedInWait = true;
    });
    probe.start(5);
    QWindowSystemInterface::handleCloseEvent<QWindowSystemInterface::AsynchronousDelivery>(
        window.windowHandle());

    wait(700);  // past the first repeat (400 ms) and several more (60 ms)
    EXPECT_EQ(changesInWait, 0);
    EXPECT_EQ(window.updPercent->value(), before + 1) << "no repeat stepped during the wait";
    EXPECT_FALSE(focusMovedInWait);
    EXPECT_TRUE(window.isVisible()) << "the close waits for the end of the wait, or the window"
                                        " would shut down in the middle of it";

    QTest::mouseRelease(window.updPercent, Qt::LeftButton, {}, QPoint(9, 3));
    settle();
    EXPECT_EQ(window.focusWidget(), window.chkMute) << "the focus moved once the wait was over";
    EXPECT_FALSE(window.isVisible()) << "and the window closed";
}

// ---- A sweep changed from a text box on the virtual card (simulated time) --

class SweepFromATextBox : public LiveWaitTest {
protected:
    static constexpr float kSweepTo = 2000;
    static constexpr float kDurationS = 5;
    static constexpr std::int16_t kSteps = 10;

    void SetUp() override
    {
        gInstallErrorHandler();
        ErrorFlag error = kFalse;
        ASSERT_EQ(gbWaveOutThere(error), kTrue);
        ASSERT_EQ(error, kFalse);
        wireFrequencyBox();
        showWithFocusOn(box());
    }
    void TearDown() override
    {
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);
        rt::setErrorReporter(nullptr);
    }

    ui::TextBox* box() { return window.txtFrequency1; }

    // A 5 s sweep from f1 to 2 kHz, remade and swapped in with "Change"
    // (or opened); the pass's length in ms.
    double playSweepFrom(float f1, const std::string& action)
    {
        ErrorFlag error = kFalse;
        gWaveOutSetFrequency1SweepBurst(f1, kSweepTo, kDurationS, kFalse, kFalse, kSteps, 0, 0,
                                        error);
        rt::SampleArray samples;
        rt::SampleArray noRecord;
        const std::int32_t rate = gWaveOutInfo().sampleRate;
        gWaveOutChange(action, 0, kFalse, kFalse, samples, noRecord, error);
        EXPECT_EQ(error, kFalse);
        return samples.size() * 1000.0 / rate;
    }

    // txtFrequency1 as the window's handlers will drive it: arrow keys step
    // the number, key-up ends the press, every change of a valid number
    // remakes the playing sweep from it.
    void wireFrequencyBox()
    {
        box()->KeyDown = [this](std::int16_t& code, std::int16_t shift) {
            ErrorFlag error = kFalse;
            const std::string text = box()->control().text();
            const std::string stepped = gsKeyDown(code, shift, text, 20000, 10, 0.1f, error);
            if (stepped != text) box()->control().setText(stepped);
        };
        box()->KeyUp = [this](std::int16_t&, std::int16_t) {
            gKeyMouseIncrementEnd();
            released = true;
        };
        box()->Change = [this] {
            ErrorFlag error = kFalse;
            const std::string text = box()->control().text();
            if (!gbCtrlTextValidNumber(text, error)) return;
            if (host::waitUnderway()) ++reentries;
            ++changes;
            passMs = playSweepFrom(rt::toSingleUser(text), "Change");
        };
    }

    int changes = 0;
    int reentries = 0;
    bool released = false;
    double passMs = 0;
    testing_support::VirtualCardSession card{host};
};

TEST_F(SweepFromATextBox, AKeyHeldForASecondGivesTheWindowBackWithinOnePassOfLettingGo)
{
    ASSERT_EQ(box()->control().text(), "1000");
    playSweepFrom(1000, "Open");
    // A first change swaps in the idle buffer at once; from now on every
    // change waits for the pass under way to end.
    playSweepFrom(1000, "Change");
    changes = 0;

    // The user presses Up and holds it for a second: the keyboard repeats
    // from half a second on, every 33 ms, while the first press's change
    // waits for the pass. The window system queues all of it.
    const std::uint32_t pressed = host::tickCount();
    const std::uint32_t letGo = pressed + 1000;
    std::uint32_t nextRepeat = pressed + 500;
    bool releaseQueued = false;
    host.sleepListeners.push_back([&](std::uint32_t) {
        const std::uint32_t now = host::tickCount();
        for (; nextRepeat < letGo && nextRepeat <= now; nextRepeat += 33) {
            queueKey(&window, nextRepeat, QEvent::KeyRelease, Qt::Key_Up, true);
            queueKey(&window, nextRepeat, QEvent::KeyPress, Qt::Key_Up, true);
        }
        if (!releaseQueued && now >= letGo) {
            queueKey(&window, letGo, QEvent::KeyRelease, Qt::Key_Up, false);
            releaseQueued = true;
        }
    });
    queueKey(&window, pressed, QEvent::KeyPress, Qt::Key_Up, false);
    while (!released) QCoreApplication::processEvents();
    settle();

    ASSERT_TRUE(releaseQueued);
    const std::uint32_t windowBack = host::tickCount();
    EXPECT_GT(passMs, 4900);
    EXPECT_LE(windowBack - letGo, passMs) << "held for " << windowBack - letGo << " ms after";
    EXPECT_EQ(changes, 1) << "the repeats queued during the wait made no further changes";
    EXPECT_EQ(reentries, 0);
    EXPECT_EQ(box()->control().text(), "1000.1");
    EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().text;
}

}  // namespace
