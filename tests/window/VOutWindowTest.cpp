// Calibrating the output from the System page on the virtual card: what the
// card plays before and after is measured, the readings are answered as a
// user with a voltmeter answers them.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <QDate>
#include <QTabWidget>
#include <QTest>

#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "mixer/modMixer.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/SignalMeasure.h"
#include "tests/window/LoadedWindow.h"

namespace {

namespace loopback = mm::loopback;

constexpr double kRate = 44100;
constexpr const char* kNotSuitable = "Sorry - your soundboard is not suitable for calibration";

std::string text(const ui::TextBox* box) { return box->control().text(); }

// The volts an "Ou&t  1.23 (V) " caption shows; -1 when it shows none.
double voltsOf(const std::string& caption)
{
    const std::string head = "Ou&t  ";
    const std::string tail = " (V) ";
    if (caption.size() <= head.size() + tail.size() || caption.rfind(head, 0) != 0 ||
        caption.compare(caption.size() - tail.size(), tail.size(), tail) != 0)
        return -1;
    return std::stod(caption.substr(head.size(), caption.size() - head.size() - tail.size()));
}

struct Heard {
    double frequency;
    double crest;  // peak / RMS: 1.41 for a sine, 1.73 for a triangle
    double rms;
};

class VoltsWindow : public LoadedWindow {
protected:
    // A 440 Hz triangle playing: unlike the calibration's 1000 Hz sine.
    void playTriangle()
    {
        window.optTriangle->setValue(true);
        window.txtFrequency1->control().setText("440");
        window.chkMute->setValue(0);
        settle();
        ASSERT_EQ(window.chkMute->value(), 0);
    }

    Heard listen()
    {
        host.sleep(50);
        loopback::startTap();
        host.sleep(300);
        std::vector<std::int16_t> heard;
        for (const auto& segment : loopback::takeTap())
            heard.insert(heard.end(), segment.samples.begin(), segment.samples.end());
        if (heard.empty()) return {0, 0, 0};
        const double rms = testing_support::rmsOf(heard.data(), heard.size());
        return {testing_support::measureFrequency(heard.data(), heard.size(), kRate),
                testing_support::peakOf(heard.data(), heard.size()) / rms, rms};
    }

    std::string caption() const { return window.lblOutLevel->control().text(); }

    void calibrate()
    {
        window.tabTab->setCurrentIndex(3);
        QTest::mouseClick(window.cmdVOutCalibrate, Qt::LeftButton);
        settle();
    }

    // The master level the output bar asks for.
    std::uint16_t barLevel() const
    {
        return static_cast<std::uint16_t>(glMixerLevelOfBar(window.vsbOutLevel->Value()));
    }
};

TEST_F(VoltsWindow, AWholeCalibrationFillsTheSystemPageAndGivesTheUserTheirSignalBack)
{
    playTriangle();
    const Heard before = listen();
    ASSERT_NEAR(before.frequency, 440, 1);
    std::string captionWhileMeasuring;
    host.onBox = [&](const auto&) { captionWhileMeasuring = caption(); };
    answers = {"2", "1.97", "0.5"};

    calibrate();

    ASSERT_EQ(asked.size(), 3u) << boxTexts();
    EXPECT_EQ(captionWhileMeasuring, "Ou&t") << "no volts while the level is the measurement's";
    EXPECT_EQ(text(window.txtVOutMax), "2");
    EXPECT_EQ(text(window.txtVOut2), "0.5");
    EXPECT_EQ(text(window.txtVOutIdent),
              gWaveOutInfo().name + " " + QDate::currentDate().toString(Qt::ISODate).toStdString());
    EXPECT_EQ(window.chkMute->value(), 0);
    EXPECT_EQ(loopback::levels().master.load(), barLevel());
    const Heard after = listen();
    EXPECT_NEAR(after.frequency, 440, 1) << "the window's signal plays again";
    EXPECT_NEAR(after.crest, 1.73, 0.05) << "as a triangle";
    EXPECT_NEAR(after.rms / before.rms, 1, 0.02) << "at the level it had";

    // The Out label reads volts and follows the bar: 8192 is level 49150,
    // the first reading's; 16384 the third's; the bottom is silence.
    EXPECT_NEAR(voltsOf(caption()), 2.0, 0.005) << caption();
    window.vsbOutLevel->setValue(16384);
    settle();
    EXPECT_NEAR(voltsOf(caption()), 0.5, 0.005) << caption();
    window.vsbOutLevel->setValue(kLevelBarBottom);
    settle();
    EXPECT_EQ(voltsOf(caption()), 0) << caption();
    EXPECT_EQ(host.boxes.size(), 1u) << boxTexts();
}

// Cancelled at the meter box (0) or with no answer to reading 1, 2 or 3:
// nothing of the user's changes, and the earlier calibration still shows.
class CancelledCalibration : public VoltsWindow, public ::testing::WithParamInterface<int> {
protected:
    CancelledCalibration()
    {
        stored.insert(stored.end(),
                      {{"txtVOutMax", "3"}, {"txtVOut2", "1"}, {"txtVOutIdent", "Bench amp 7"}});
    }
};

TEST_P(CancelledCalibration, LeavesTheBoxesTheSignalTheLevelAndMuteAsTheyWere)
{
    const int step = GetParam();
    playTriangle();
    const std::string captionBefore = caption();
    ASSERT_NEAR(voltsOf(captionBefore), 3.0, 0.005) << captionBefore;
    const Heard before = listen();
    if (step == 0) host.answers = {host::kResultCancel};
    const std::vector<std::string> readings = {"2", "1.97"};
    answers.assign(readings.begin(), readings.begin() + std::max(0, step - 1));

    calibrate();

    EXPECT_EQ(asked.size(), static_cast<std::size_t>(step));
    EXPECT_EQ(text(window.txtVOutMax), "3");
    EXPECT_EQ(text(window.txtVOut2), "1");
    EXPECT_EQ(text(window.txtVOutIdent), "Bench amp 7");
    EXPECT_EQ(caption(), captionBefore);
    EXPECT_EQ(window.chkMute->value(), 0);
    EXPECT_EQ(loopback::levels().master.load(), barLevel());
    const Heard after = listen();
    EXPECT_NEAR(after.frequency, 440, 1);
    EXPECT_NEAR(after.crest, 1.73, 0.05);
    EXPECT_NEAR(after.rms / before.rms, 1, 0.02);
}

INSTANTIATE_TEST_SUITE_P(AtEachStep, CancelledCalibration, ::testing::Values(0, 1, 2, 3));

TEST_F(VoltsWindow, ACardWhoseOutputIgnoresTheLevelClearsTheCalibrationAndStaysMuted)
{
    window.txtVOutMax->control().setText("3");
    window.txtVOut2->control().setText("1");
    window.txtVOutIdent->control().setText("Bench amp 7");
    answers = {"2", "2"};

    calibrate();

    ASSERT_EQ(host.boxes.size(), 2u) << boxTexts();
    EXPECT_EQ(host.boxes[1].text, kNotSuitable);
    EXPECT_EQ(text(window.txtVOutMax), "0");
    EXPECT_EQ(text(window.txtVOut2), "0");
    EXPECT_EQ(text(window.txtVOutIdent), "Bench amp 7") << "no calibration to name";
    EXPECT_EQ(caption(), "Ou&t");
    EXPECT_EQ(window.chkMute->value(), 1);
    EXPECT_EQ(loopback::levels().master.load(), barLevel());
    EXPECT_EQ(listen().rms, 0) << "muted, nothing plays after the measuring sine";
}

// ---- The System page's boxes ---------------------------------------------------

class SystemPage : public VoltsWindow {
protected:
    void SetUp() override
    {
        VoltsWindow::SetUp();
        window.tabTab->setCurrentIndex(3);
        settle();
    }

    void typeInto(ui::TextBox* box, const char* typed)
    {
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, typed);
        settle();
    }

    void leave(ui::TextBox* box)
    {
        QTest::keyClick(box, Qt::Key_Tab);
        settle();
    }
};

TEST_F(SystemPage, OutOfRuleEntriesAreRefusedOnLeavingAndKeepTheFocus)
{
    typeInto(window.txtVOutMax, "150");
    EXPECT_EQ(caption(), "Ou&t") << "150 V is no usable calibration";
    leave(window.txtVOutMax);
    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    EXPECT_EQ(host.boxes[0].text, "In the range  0 to  99 please!");
    EXPECT_EQ(QApplication::focusWidget(), window.txtVOutMax);

    typeInto(window.txtVOutMax, "4");
    leave(window.txtVOutMax);
    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    // VOut2 may not reach VOutMax's 4 V; the box it is typed in says so.
    typeInto(window.txtVOut2, "5");
    leave(window.txtVOut2);
    ASSERT_EQ(host.boxes.size(), 2u) << boxTexts();
    EXPECT_EQ(host.boxes[1].text, "In the range  0 to  4 please!");
    EXPECT_EQ(QApplication::focusWidget(), window.txtVOut2);
    typeInto(window.txtVOut2, "1x");
    EXPECT_EQ(text(window.txtVOut2), "1") << "the real key filter keeps letters out";
}

TEST_F(SystemPage, TypedAndSteppedValuesShowInVoltsAtOnce)
{
    typeInto(window.txtVOutMax, "4.49");
    typeInto(window.txtVOut2, "1");
    EXPECT_NEAR(voltsOf(caption()), 4.49, 0.005) << caption();
    window.txtVOutMax->setFocus();
    QTest::keyClick(window.txtVOutMax, Qt::Key_Up);
    settle();
    EXPECT_EQ(text(window.txtVOutMax), "4.50");
    EXPECT_NEAR(voltsOf(caption()), 4.5, 0.005) << caption();
    // Stepping VOut2 stops at VOutMax; equal, they are no calibration.
    window.txtVOut2->setFocus();
    QTest::keyClick(window.txtVOut2, Qt::Key_PageUp, Qt::ControlModifier);
    settle();
    EXPECT_EQ(text(window.txtVOut2), "4.50");
    EXPECT_EQ(caption(), "Ou&t");
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

}  // namespace
