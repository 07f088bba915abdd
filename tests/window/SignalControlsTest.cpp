// The window's controls played on the virtual card in simulated time: what
// the card plays is measured, not which procedures ran.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/QtConversions.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "engine/modWaveInOut.h"
#include "entry/modGetLocaleInfo.h"
#include "entry/modKeyMouseIncrement.h"
#include "platform/Colours.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/VirtualCardSession.h"
#include "tests/window/LoadedWindow.h"
#include "window/frmWavelark.h"

namespace {

using testing_support::measureFrequency;
using testing_support::peakOf;
using testing_support::rmsOf;

constexpr double kRate = 44100;  // the virtual card's output rate

// A stretch of what the card played: from `fromMs` for `lengthMs` (a
// negative start counts back from the end).
std::vector<std::int16_t> stretch(const std::vector<std::int16_t>& played, double fromMs,
                                  double lengthMs)
{
    const auto count = static_cast<std::ptrdiff_t>(played.size());
    std::ptrdiff_t from = static_cast<std::ptrdiff_t>(fromMs * kRate / 1000);
    if (from < 0) from += count;
    from = std::clamp<std::ptrdiff_t>(from, 0, count);
    const std::ptrdiff_t to =
        std::min(count, from + static_cast<std::ptrdiff_t>(lengthMs * kRate / 1000));
    return {played.begin() + from, played.begin() + to};
}

double frequencyOf(const std::vector<std::int16_t>& s)
{
    return measureFrequency(s.data(), s.size(), kRate);
}

// The largest step between neighbouring samples: a gap or a jump in the
// middle of a cycle shows as a step far above a tone's own slope.
int largestStep(const std::vector<std::int16_t>& s)
{
    int largest = 0;
    for (std::size_t i = 1; i < s.size(); ++i) largest = std::max(largest, std::abs(s[i] - s[i - 1]));
    return largest;
}

// Where bursts start: the first loud sample after at least `quiet` silent ones.
std::vector<std::size_t> burstStarts(const std::vector<std::int16_t>& s, std::size_t quiet)
{
    std::vector<std::size_t> starts;
    std::size_t silent = quiet;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (std::abs(static_cast<int>(s[i])) > 1000) {
            if (silent >= quiet) starts.push_back(i);
            silent = 0;
        } else {
            ++silent;
        }
    }
    return starts;
}

int pixelsOf(const QImage& image, std::int32_t colour)
{
    const QRgb wanted = ui::toQColor(colour).rgb();
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) count += image.pixel(x, y) == wanted ? 1 : 0;
    return count;
}

class SignalWindow : public LoadedWindow {
protected:
    void SetUp() override
    {
        // The built-in frequency and period rather than the first run's, at
        // full output level.
        stored = {{"txtFrequency1", "1000"}, {"txtBurstPeriod", "100"}};
        LoadedWindow::SetUp();
        ASSERT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed) << "start-up made the signal";
        mm::loopback::startTap();
    }
    void TearDown() override
    {
        ErrorFlag error = kFalse;
        gWaveInClose(error);
        LoadedWindow::TearDown();
    }

    // The card plays on for `ms` milliseconds.
    void play(std::uint32_t ms) { host.sleep(ms); }

    // Everything the card played since the tap started, joined, and a new
    // tap started.
    std::vector<std::int16_t> played()
    {
        std::vector<std::int16_t> all;
        for (const auto& segment : mm::loopback::takeTap())
            all.insert(all.end(), segment.samples.begin(), segment.samples.end());
        mm::loopback::startTap();
        return all;
    }

    void typeInto(ui::TextBox* box, const char* text)
    {
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, text);
        settle();
    }

    void unmute()
    {
        window.chkMute->setFocus();
        QTest::keyClick(window.chkMute, Qt::Key_Space);
        settle();
        ASSERT_EQ(window.chkMute->value(), 0);
    }

    void showBurstPage() { window.tabTab->setCurrentIndex(1); }
};

// ---- Frequency 1 and Mute --------------------------------------------------------

TEST_F(SignalWindow, ATypedFrequencyFollowsThePlayingPassWithoutAGapAndAnEmptyBoxKeepsIt)
{
    unmute();
    play(100);
    typeInto(window.txtFrequency1, "2000");
    play(200);
    window.txtFrequency1->selectAll();
    QTest::keyClick(window.txtFrequency1, Qt::Key_Backspace);
    ASSERT_EQ(window.txtFrequency1->text(), "");
    play(200);

    const auto heard = played();
    EXPECT_NEAR(frequencyOf(stretch(heard, 10, 80)), 1000, 1);
    EXPECT_NEAR(frequencyOf(stretch(heard, -350, 150)), 2000, 1);
    EXPECT_NEAR(frequencyOf(stretch(heard, -150, 150)), 2000, 1) << "the empty box changed nothing";
    // Full level throughout, and each signal took over at the end of a whole
    // pass: no step beyond a 2 kHz sine's own slope.
    EXPECT_LT(largestStep(heard), 9500);
    EXPECT_GT(peakOf(stretch(heard, -20, 20).data(), 882), 32000);
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourGreen);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

// A frequency copied from a data sheet is pasted, in the full-stop and the
// comma locale alike: junk changes nothing and is held at the leave-check,
// a number plays at once; an emptied box steps on from its limit.
TEST_F(SignalWindow, PastedFrequenciesPlayOnlyOnceTheyAreNumbersInBothLocales)
{
    unmute();
    for (const char* point : {".", ","}) {
        host.decimalChar = point;
        const QString decimal = QString::fromLatin1(point);
        window.txtFrequency1->control().setText("1000");
        settle();
        played();

        QApplication::clipboard()->setText("12abc");
        window.txtFrequency1->setFocus();
        QTest::keyClick(window.txtFrequency1, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window.txtFrequency1, Qt::Key_V, Qt::ControlModifier);
        ASSERT_EQ(window.txtFrequency1->text(), "12abc") << point;
        play(150);
        EXPECT_NEAR(frequencyOf(stretch(played(), -100, 100)), 1000, 1) << "junk changes nothing";
        QTest::keyClick(window.txtFrequency1, Qt::Key_Tab);
        settle();
        ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
        EXPECT_EQ(host.boxes[0].text.rfind("In the range  10 to ", 0), 0u) << boxTexts();
        EXPECT_EQ(QApplication::focusWidget(), window.txtFrequency1) << "the box keeps the focus";
        host.boxes.clear();

        QApplication::clipboard()->setText("1234" + decimal + "5");
        QTest::keyClick(window.txtFrequency1, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window.txtFrequency1, Qt::Key_V, Qt::ControlModifier);
        settle();
        play(300);
        EXPECT_NEAR(frequencyOf(stretch(played(), -150, 150)), 1234.5, 0.5) << point;
        EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourGreen);

        window.txtFrequency1->selectAll();
        QTest::keyClick(window.txtFrequency1, Qt::Key_Backspace);
        QTest::keyClick(window.txtFrequency1, Qt::Key_Up);
        QTest::keyClick(window.txtFrequency1, Qt::Key_Up);
        gKeyMouseIncrementEnd();
        settle();
        const QString stepped = window.txtFrequency1->text();
        EXPECT_TRUE(stepped.startsWith("10" + decimal)) << stepped.toStdString();
        EXPECT_GT(stepped.mid(3).toDouble(), 0) << "the second Up stepped on from the limit";
        EXPECT_TRUE(host.boxes.empty()) << boxTexts();
    }
}

// The key filter keeps the decimal character out of a whole-number box; a
// pasted fraction stays as pasted (never rounded under the user's eyes by
// the box's up-down) and is refused on leaving.
TEST_F(SignalWindow, AFractionPastedIntoTheBurstPeriodIsRefusedInBothLocales)
{
    showBurstPage();
    for (const char* point : {".", ","}) {
        host.decimalChar = point;
        const std::string fraction = std::string("12") + point + "7";
        window.txtBurstPeriod->control().setText("100");
        window.txtBurstPeriod->setFocus();
        QApplication::clipboard()->setText(QString::fromStdString(fraction));
        QTest::keyClick(window.txtBurstPeriod, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(window.txtBurstPeriod, Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(window.txtBurstPeriod->text().toStdString(), fraction);
        EXPECT_EQ(window.updBurstPeriod->value(), 100);
        QTest::keyClick(window.txtBurstPeriod, Qt::Key_Tab);
        settle();
        ASSERT_EQ(host.boxes.size(), 1u) << fraction << boxTexts();
        EXPECT_EQ(host.boxes[0].text.rfind("In the range  ", 0), 0u) << boxTexts();
        EXPECT_EQ(QApplication::focusWidget(), window.txtBurstPeriod);
        host.boxes.clear();
    }
}

TEST_F(SignalWindow, MutedChangesOnlyMakeTheSignalAndUnmutingPlaysIt)
{
    typeInto(window.txtFrequency1, "2000");
    play(200);
    EXPECT_TRUE(played().empty()) << "the output stays closed while muted";
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
    EXPECT_GT(pixelsOf(window.picPolarity->image(), ui::kColourRed), 50) << "the made signal drawn red";

    unmute();
    play(100);
    EXPECT_NEAR(frequencyOf(stretch(played(), 10, 80)), 2000, 1);
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourGreen);
    EXPECT_GT(pixelsOf(window.picPolarity->image(), ui::kColourGreen), 50);

    QTest::keyClick(window.chkMute, Qt::Key_Space);
    play(100);
    EXPECT_TRUE(played().empty()) << "Mute closes the output";
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
}

// ---- Shapes and the Wave menu ----------------------------------------------------

TEST_F(SignalWindow, SquareAndSawtoothFromTheWaveMenuPlayAndGreyOutTheirItem)
{
    unmute();
    window.mnuWaveSquare->trigger();
    settle();
    EXPECT_TRUE(window.optMarkSpace->value());
    EXPECT_EQ(window.txtPercent->text(), "50");
    EXPECT_FALSE(window.mnuWaveSquare->isEnabled());
    EXPECT_TRUE(window.mnuWaveSine->isEnabled());
    EXPECT_TRUE(window.mnuWaveSawtooth->isEnabled());
    play(100);
    auto heard = stretch(played(), -50, 50);
    EXPECT_NEAR(rmsOf(heard.data(), heard.size()), 32767, 200) << "a square sits at full scale";
    EXPECT_NEAR(frequencyOf(heard), 1000, 1);

    window.mnuWaveSawtooth->trigger();
    settle();
    EXPECT_TRUE(window.optTriangle->value());
    EXPECT_EQ(window.txtPercent->text(), "0");
    EXPECT_FALSE(window.mnuWaveSawtooth->isEnabled());
    EXPECT_TRUE(window.mnuWaveSquare->isEnabled());
    EXPECT_TRUE(window.mnuWaveTriangle->isEnabled());
    play(100);
    heard = stretch(played(), -50, 50);
    // A ramp spends equal time at every level: its RMS is a third of full
    // scale's square root.
    EXPECT_NEAR(rmsOf(heard.data(), heard.size()) / 32767, 0.577, 0.01);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SignalWindow, MarkSpaceNeverReachesNoughtOrAHundredPercent)
{
    window.mnuWaveSawtooth->trigger();  // triangle at 0 %
    window.optMarkSpace->setValue(true);
    EXPECT_EQ(window.txtPercent->text(), "1");
    EXPECT_EQ(window.updPercent->min(), 1);
    EXPECT_EQ(window.updPercent->max(), 99);

    window.optTriangle->setValue(true);
    EXPECT_EQ(window.updPercent->max(), 100);
    window.txtPercent->control().setText("100");
    window.optMarkSpace->setValue(true);
    EXPECT_EQ(window.txtPercent->text(), "99");
    EXPECT_EQ(window.updPercent->value(), 99);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SignalWindow, AFrequencyAboveTheNonSineLimitSwitchesATriangleToSine)
{
    unmute();
    window.optTriangle->setValue(true);
    typeInto(window.txtFrequency1, "5000");  // above a tenth of 20 kHz
    EXPECT_TRUE(window.optSine->value());
    EXPECT_FALSE(window.optTriangle->isEnabled());
    EXPECT_FALSE(window.optMarkSpace->isEnabled());
    EXPECT_FALSE(window.txtPercent->isEnabled());
    play(100);
    const auto heard = stretch(played(), -50, 50);
    EXPECT_NEAR(frequencyOf(heard), 5000, 2);
    EXPECT_NEAR(rmsOf(heard.data(), heard.size()) / 32767, 0.707, 0.01) << "a sine";

    typeInto(window.txtFrequency1, "1500");
    EXPECT_TRUE(window.optTriangle->isEnabled());
    EXPECT_TRUE(window.optMarkSpace->isEnabled());
    // The Wave menu brings a too-high frequency down to the limit first.
    typeInto(window.txtFrequency1, "3000");
    window.mnuWaveSquare->trigger();
    EXPECT_EQ(window.txtFrequency1->text(), "2000");
    EXPECT_TRUE(window.optMarkSpace->value());
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SignalWindow, NoiseClearsAndDisablesTheSweepFrequencyOneAndInvert)
{
    window.chkSweep->setValue(1);
    window.optNoise->setValue(true);
    EXPECT_EQ(window.chkSweep->value(), 0);
    for (QWidget* control : std::initializer_list<QWidget*>{
             window.chkSweep, window.txtFrequency1, window.chkInvert, window.txtFrequency2,
             window.cmdBurstFire, window.chkBurstAuto, window.txtPercent})
        EXPECT_FALSE(control->isEnabled()) << control->objectName().toStdString();

    unmute();
    play(200);
    const auto heard = played();
    EXPECT_GT(rmsOf(heard.data(), heard.size()), 15000) << "noise plays";

    window.optSine->setValue(true);
    for (QWidget* control : std::initializer_list<QWidget*>{
             window.chkSweep, window.txtFrequency1, window.chkInvert, window.cmdBurstFire})
        EXPECT_TRUE(control->isEnabled()) << control->objectName().toStdString();
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SignalWindow, InvertTurnsTheToneOverWithoutAGap)
{
    unmute();
    play(50);
    window.chkInvert->setValue(1);
    play(50);
    const auto heard = played();
    // A sine starts rising; inverted, it starts falling.
    const auto quarterAfterStart = [&](std::size_t start) { return heard[start + 11]; };
    EXPECT_GT(quarterAfterStart(0), 30000);
    EXPECT_LT(heard[heard.size() - 441 + 11], -30000);
    EXPECT_LT(largestStep(heard), 5000);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SignalWindow, AColourChosenForThePlotIsUsedAtOnceAndACancelKeepsTheOldOne)
{
    const auto answerColourDialog = [](const QColor& colour, bool accept) {
        QTimer::singleShot(0, [colour, accept] {
            auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->setCurrentColor(colour);
            accept ? dialog->accept() : dialog->reject();
        });
    };
    answerColourDialog(Qt::blue, true);
    QTest::mouseClick(window.picPolarity, Qt::LeftButton);
    EXPECT_EQ(window.picPolarity->backColor(), 0xFF0000) << "blue, red in the low byte";
    const QImage& plot = window.picPolarity->image();
    EXPECT_GT(pixelsOf(plot, 0xFF0000), plot.width() * plot.height() / 2) << "the new background";
    EXPECT_GT(pixelsOf(plot, ui::kColourRed), 50) << "and the made signal drawn again on it";

    answerColourDialog(Qt::green, false);
    QTest::mouseClick(window.picPolarity, Qt::LeftButton);
    EXPECT_EQ(window.picPolarity->backColor(), 0xFF0000);
}

// ---- Sweeps --------------------------------------------------------------------------

class SweepWindow : public SignalWindow {
protected:
    // A 1 s sweep from 100 Hz to 1 kHz, played for `ms`.
    std::vector<std::int16_t> sweep(bool logarithmic, bool bidirectional, std::uint32_t ms)
    {
        window.txtFrequency1->control().setText("100");
        window.txtFrequency2->control().setText("1000");
        window.txtSweepDuration->control().setText("1");
        (logarithmic ? window.optSweepLog : window.optSweepLin)->setValue(true);
        window.chkSweepBi->setValue(bidirectional ? 1 : 0);
        window.chkSweep->setValue(1);
        EXPECT_EQ(window.tabTab->currentIndex(), 0) << "the Sweep page comes forward";
        played();
        unmute();
        play(ms);
        return played();
    }
};

TEST_F(SweepWindow, ALinearSweepPlaysItsStepsAndLoops)
{
    // Each of the 600 steps is 74.5 samples long, so a pass lasts 1014 ms.
    const auto heard = sweep(false, false, 1500);
    EXPECT_NEAR(frequencyOf(stretch(heard, 0, 60)), 127, 15);
    EXPECT_NEAR(frequencyOf(stretch(heard, 480, 40)), 545, 30) << "halfway: the middle frequency";
    EXPECT_NEAR(frequencyOf(stretch(heard, 950, 40)), 961, 40);
    EXPECT_NEAR(frequencyOf(stretch(heard, 1020, 60)), 133, 20) << "the sweep loops";
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SweepWindow, ALogarithmicSweepIsAtTheGeometricMiddleHalfway)
{
    const auto heard = sweep(true, false, 600);
    EXPECT_NEAR(frequencyOf(stretch(heard, 480, 40)), 312, 25);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SweepWindow, ABidirectionalSweepReturnsToTheStart)
{
    const auto heard = sweep(false, true, 2100);
    EXPECT_NEAR(frequencyOf(stretch(heard, 980, 60)), 985, 30) << "the top halfway through";
    EXPECT_NEAR(frequencyOf(stretch(heard, 1950, 60)), 115, 30) << "back down at the end";
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

// ---- Bursts ----------------------------------------------------------------------------

TEST_F(SignalWindow, AutomaticBurstsPlayOnePerPeriodAndGreyOutWhatCannotGoWithThem)
{
    showBurstPage();
    window.chkBurstAuto->setValue(1);
    EXPECT_EQ(window.tabTab->currentIndex(), 1);
    for (QWidget* control : std::initializer_list<QWidget*>{
             window.cmdBurstFire, window.chkBurstMeasure, window.chkSweep, window.chkMute,
             window.optNoise, window.txtFrequency2, window.txtSweepDuration, window.chkSweepBi})
        EXPECT_FALSE(control->isEnabled()) << control->objectName().toStdString();
    play(1000);

    // Two cycles of 1 kHz every 100 ms, silence between, although Mute is on.
    const auto heard = played();
    const auto starts = burstStarts(heard, 1000);
    ASSERT_GE(starts.size(), 9u);
    for (std::size_t k = 1; k < starts.size(); ++k) EXPECT_EQ(starts[k] - starts[k - 1], 4410u);
    const auto burst = stretch(heard, starts[1] * 1000.0 / kRate, 100);
    EXPECT_GT(peakOf(burst.data(), 88), 32000) << "two cycles at full level";
    EXPECT_EQ(peakOf(burst.data() + 88, burst.size() - 88), 0) << "silence after two cycles";

    window.chkBurstAuto->setValue(0);
    for (QWidget* control : std::initializer_list<QWidget*>{
             window.cmdBurstFire, window.chkBurstMeasure, window.chkSweep, window.chkMute,
             window.optNoise})
        EXPECT_TRUE(control->isEnabled()) << control->objectName().toStdString();
    play(300);
    EXPECT_LE(played().size(), 4410u) << "the period under way ends, then nothing plays";
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST_F(SignalWindow, AMeasuredBurstIsRecordedAndDrawnInYellow)
{
    showBurstPage();
    window.chkBurstMeasure->setValue(1);
    QTest::mouseClick(window.cmdBurstFire, Qt::LeftButton);
    settle();
    EXPECT_TRUE(window.isEnabled());
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
    EXPECT_EQ(window.lblInLevel->foreColor(), ui::kColourYellow);
    EXPECT_GT(pixelsOf(window.picPolarity->image(), ui::kColourYellow), 50);
    EXPECT_EQ(pixelsOf(window.picPolarity->image(), ui::kColourRed), 0) << "over a cleared plot";
    EXPECT_EQ(burstStarts(played(), 1000).size(), 1u) << "one burst played";
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();

    // Unmeasured, the input label goes back to its usual colour.
    window.chkBurstMeasure->setValue(0);
    window.cmdBurstFire->click();
    EXPECT_EQ(window.lblInLevel->foreColor(), ui::kColourButtonText);
    EXPECT_TRUE(window.isEnabled());
}

TEST_F(SignalWindow, TooFewCyclesChangeNothingAndLeavingSaysTheRangeOnce)
{
    showBurstPage();
    window.chkBurstAuto->setValue(1);
    typeInto(window.txtBurstCycles, "0.1");
    played();
    play(500);
    const auto heard = played();
    const auto starts = burstStarts(heard, 1000);
    ASSERT_GE(starts.size(), 2u);
    EXPECT_NEAR(static_cast<double>(heard.size() - std::count(heard.begin(), heard.end(), 0)) /
                    starts.size(),
                88, 3)
        << "still two cycles a burst";

    QTest::keyClick(window.txtBurstCycles, Qt::Key_Tab);
    settle();
    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    EXPECT_EQ(host.boxes[0].text, "In the range  .25 to  10 (Cycles) please!");
    EXPECT_EQ(QApplication::focusWidget(), window.txtBurstCycles);
}

TEST_F(SignalWindow, MoreCyclesRaiseThePeriodMinimumBeforeTheBurstIsRemade)
{
    showBurstPage();
    window.txtBurstPeriod->control().setText("5");  // 2 cycles of 1 kHz need 4 ms
    ASSERT_EQ(window.updBurstPeriod->value(), 5);
    window.chkBurstAuto->setValue(1);
    window.txtBurstCycles->control().setText("10");
    EXPECT_EQ(window.updBurstPeriod->min(), 20);
    EXPECT_EQ(window.txtBurstPeriod->text(), "20");
    played();
    play(200);
    const auto starts = burstStarts(played(), 100);
    ASSERT_GE(starts.size(), 5u);
    EXPECT_EQ(starts[2] - starts[1], 882u) << "bursts 20 ms apart";
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

// ---- Failures leave the window usable ----------------------------------------------

TEST_F(SignalWindow, APeriodBeyondSixteenBitsIsReportedAndTheWindowEnabledAgain)
{
    showBurstPage();
    window.updBurstPeriod->setMax(40000);
    window.updBurstPeriod->setValue(40000);  // as a stored setting can bring it
    window.cmdBurstFire->click();
    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    EXPECT_NE(host.boxes[0].text.find("Overflow"), std::string::npos) << boxTexts();
    EXPECT_TRUE(window.isEnabled());
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed);
}

TEST_F(SignalWindow, AnInputThatNeverDeliversEndsTheMeasurementWithABoxAndAnEnabledWindow)
{
    showBurstPage();
    window.chkBurstMeasure->setValue(1);
    mm::loopback::silenceInput(true);
    bool enabledDuringBox = true;
    host.onBox = [&](const auto&) { enabledDuringBox = window.isEnabled(); };
    window.cmdBurstFire->click();
    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    EXPECT_FALSE(enabledDuringBox) << "the burst holds the window";
    EXPECT_TRUE(window.isEnabled());
    EXPECT_NE(window.lblInLevel->foreColor(), ui::kColourYellow);
}

TEST_F(SignalWindow, ADeviceVanishingUnderASweepWarnsOnceAndTheNextChangeReopens)
{
    window.txtFrequency2->control().setText("1000");
    window.chkSweep->setValue(1);
    unmute();
    play(200);
    mm::loopback::vanish();
    play(50);
    window.txtFrequency1->control().setText("2000");
    ASSERT_EQ(host.boxes.size(), 1u) << boxTexts();
    EXPECT_TRUE(window.isEnabled());
    EXPECT_EQ(window.lblOutLevel->foreColor(), ui::kColourRed) << "the output was closed";

    mm::loopback::withCardSetup([](mm::loopback::CardSetup& setup) { setup.vanished = false; });
    window.chkSweep->setValue(0);
    played();
    play(100);
    EXPECT_NEAR(frequencyOf(stretch(played(), -50, 50)), 2000, 1);
    EXPECT_EQ(host.boxes.size(), 1u) << boxTexts();
}

}  // namespace
