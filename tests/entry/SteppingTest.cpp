// Stepping numeric fields with keys and spin controls, and loading spin controls.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/NumberText.h"
#include "entry/modKeyDown.h"
#include "entry/modKeyMouseIncrement.h"
#include "entry/modMouseDown.h"
#include "entry/modUpDownSet.h"
#include "platform/KeyCodes.h"
#include "tests/support/FakeControls.h"
#include "tests/support/ScriptedHost.h"

namespace {

using testing_support::RecordingUpDown;
using ui::kCtrlMask;
using ui::kKeyDown;
using ui::kKeyEnd;
using ui::kKeyHome;
using ui::kKeyPageDown;
using ui::kKeyPageUp;
using ui::kKeyUp;
using ui::kShiftMask;

class Stepping : public ::testing::Test {
protected:
    void SetUp() override { gKeyMouseIncrementEnd(); }
    void TearDown() override { gKeyMouseIncrementEnd(); }

    // Presses a key on a box holding `text` under the rule; the box's new text.
    std::string press(std::int16_t key, std::int16_t shift, const std::string& text, float max,
                      float min, float resolution)
    {
        ErrorFlag bError = kFalse;
        std::string result = gsKeyDown(key, shift, text, max, min, resolution, bError);
        EXPECT_FALSE(bError);
        return result;
    }

    testing_support::ScriptedHost host;
};

TEST_F(Stepping, TheStepStopsGrowingOnceItReachesATwentiethOfTheRange)
{
    ErrorFlag bError = kFalse;
    std::vector<float> steps;
    for (int i = 0; i < 17; ++i) steps.push_back(gfKeyMouseIncrement(2000, 0, 1, bError));
    const std::vector<float> expected = {1,  2,  4,  7,  11, 16, 22, 29, 37,
                                         46, 56, 67, 79, 92, 106, 106, 106};
    EXPECT_EQ(steps, expected);
    EXPECT_FLOAT_EQ(gSteppingState().range, 2000);
}

TEST_F(Stepping, ShiftCtrlAndPageMultiplyTheStep)
{
    EXPECT_EQ(press(kKeyUp, kShiftMask, "5", 2000, 1, 1), "15");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(press(kKeyPageUp, kCtrlMask, "5", 2000, 1, 1), "1005");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(press(kKeyPageDown, 0, "50", 2000, 1, 1), "40");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(press(kKeyPageDown, kShiftMask | kCtrlMask, "100000", 1e6f, 0, 1), "90000");
    EXPECT_EQ(host.beeps, 0);
}

TEST_F(Stepping, StepsStopOnTheLimitsAndBeepAgainstThem)
{
    EXPECT_EQ(press(kKeyUp, kShiftMask, "9.5", 10, 0.25f, 0.05f), "10.00") << "stops on the maximum";
    EXPECT_EQ(host.beeps, 0);
    EXPECT_EQ(press(kKeyUp, 0, "10", 10, 0.25f, 0.05f), "10.00") << "reformatted at the maximum";
    EXPECT_EQ(host.beeps, 1);
    EXPECT_EQ(press(kKeyPageDown, 0, "0.25", 10, 0.25f, 0.05f), "0.25");
    EXPECT_EQ(host.beeps, 2);
    EXPECT_EQ(press(kKeyEnd, kCtrlMask, "0.25", 10, 0.25f, 0.05f), "0.25");
    EXPECT_EQ(host.beeps, 3);
    EXPECT_EQ(press(kKeyDown, 0, "0.3", 10, 0.25f, 0.05f), "0.25") << "stops on the minimum";
    EXPECT_EQ(host.beeps, 3);
}

TEST_F(Stepping, HomeAndEndJumpOnlyWithShiftOrCtrl)
{
    EXPECT_EQ(press(kKeyHome, kShiftMask, "3", 10, 0.25f, 0.05f), "10.00");
    EXPECT_EQ(press(kKeyEnd, kCtrlMask, "3", 10, 0.25f, 0.05f), "0.25");
    EXPECT_EQ(press(kKeyHome, 0, "3", 10, 0.25f, 0.05f), "3");
    EXPECT_EQ(press(kKeyEnd, 0, "3", 10, 0.25f, 0.05f), "3");
    EXPECT_EQ(press(ui::kKeyLeft, kShiftMask, "3", 10, 0.25f, 0.05f), "3");
    EXPECT_EQ(host.beeps, 0);
}

TEST_F(Stepping, ANonNumberShowsTheLimitOppositeTheKey)
{
    EXPECT_EQ(press(kKeyUp, 0, "abc", 10, 0.25f, 0.05f), "0.25");
    EXPECT_EQ(press(kKeyDown, 0, "", 10, 0.25f, 0.05f), "10");
    EXPECT_EQ(press(kKeyEnd, kShiftMask, "-", 10, 0.25f, 0.05f), "0.25");
    EXPECT_EQ(press(kKeyHome, kCtrlMask, ",", 10, -3, 1), "10");
    EXPECT_EQ(press(kKeyUp, 0, "x", 10, -3, 1), "-3");
    EXPECT_EQ(host.beeps, 0);
    EXPECT_FALSE(gSteppingState().stepping) << "a broken field does not start a press";
}

TEST_F(Stepping, ACommaLocaleStepsAndFormatsWithTheComma)
{
    host.decimalChar = ",";
    EXPECT_EQ(press(kKeyUp, 0, "2,5", 10, 0.25f, 0.05f), "2,55");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(press(kKeyUp, kShiftMask, "3", 10, 0.25f, 0.05f), "3,50");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(press(kKeyUp, 0, "2.5", 10, 0.25f, 0.05f), "0,25") << "2.5 is not a number here";
}

TEST_F(Stepping, AnEmptiedFieldStepsOnFromItsLimitInEveryLocale)
{
    for (const char* decimalChar : {".", ","}) {
        host.decimalChar = decimalChar;
        std::string text = "";
        for (const char* expected : {"0#25", "0#30", "0#40"}) {
            text = press(kKeyUp, 0, text, 10, 0.25f, 0.05f);
            std::string want = expected;
            want[1] = decimalChar[0];
            EXPECT_EQ(text, want) << "decimal character " << decimalChar;
        }
        gKeyMouseIncrementEnd();
        EXPECT_EQ(press(kKeyDown, 0, "x", 2000, 0.5f, 0.1f), "2000");
        EXPECT_EQ(press(kKeyDown, 0, "2000", 2000, 0.5f, 0.1f), std::string("1999") + decimalChar + "9");
        gKeyMouseIncrementEnd();
    }
}

TEST_F(Stepping, OtherButtonsDoNotStepTheSpin)
{
    RecordingUpDown spin;
    spin.preset(100, 0, 2000);
    spin.setIncrement(25);
    ErrorFlag bError = kFalse;
    gMouseDownInit(2, spin, bError);
    EXPECT_EQ(spin.increment(), 1) << "every press starts at 1";
    spin.setValue(101);
    spin.calls.clear();
    gMouseDown(2, spin, bError);
    gMouseDown(2, spin, bError);
    EXPECT_TRUE(spin.calls.empty());
    EXPECT_EQ(host.beeps, 0);
}

TEST_F(Stepping, UpDownSetRefusesAValueOutsideTheLimits)
{
    RecordingUpDown spin;
    ErrorFlag bError = kFalse;
    gUpDownSet(12, 10, 0, 1, spin, bError);
    EXPECT_TRUE(bError);
    bError = kFalse;
    gUpDownSet(-1, 10, 0, 1, spin, bError);
    EXPECT_TRUE(bError);
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "Value (12) > Max (10)");
    EXPECT_EQ(host.boxes[1].text, "Value (-1) < Min (0)");
    EXPECT_EQ(host.boxes[0].title, "modUpDownSet.gUpDownSet");
    EXPECT_EQ(host.boxes[0].style, 48);
    EXPECT_TRUE(spin.calls.empty()) << "nothing changes";
}

TEST_F(Stepping, UpDownSetNeverLeavesTheValueOutsideTheLimits)
{
    RecordingUpDown shrinking;
    shrinking.preset(50, 0, 100);
    ErrorFlag bError = kFalse;
    gUpDownSet(30, 40, 0, 1, shrinking, bError);
    EXPECT_EQ(shrinking.calls,
              (std::vector<std::string>{"Min=0", "Value=30", "Max=40", "Increment=1"}));

    RecordingUpDown growing;
    growing.preset(50, 0, 100);
    gUpDownSet(150, 200, 10, 5, growing, bError);
    EXPECT_EQ(growing.calls,
              (std::vector<std::string>{"Min=10", "Max=200", "Value=150", "Increment=5"}));

    // A control that could not take the new minimum before its new maximum
    // is given it again.
    RecordingUpDown raised;
    raised.preset(5, 0, 10);
    gUpDownSet(25, 30, 20, 1, raised, bError);
    EXPECT_EQ(raised.calls, (std::vector<std::string>{"Min=20", "Max=30", "Value=25", "Min=20",
                                                      "Increment=1"}));
    EXPECT_EQ(raised.min(), 20);
    EXPECT_FALSE(bError);
    EXPECT_TRUE(host.boxes.empty());
}

}  // namespace
