// What a calibration shows: the volts at a level bar position, when a
// calibration is usable at all, the volt format, the boxes' stepping and
// leave-checks, and the text identifying a calibration.
#include <gtest/gtest.h>

#include <string>

#include <QDate>

#include "calibration/modVOut.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutTesting.h"
#include "entry/modKeyMouseIncrement.h"
#include "platform/HostServices.h"
#include "platform/KeyCodes.h"
#include "tests/support/FakeControls.h"
#include "tests/support/ScriptedHost.h"

namespace {

using testing_support::FakeTextBox;

class VOutDisplay : public ::testing::Test {
protected:
    void SetUp() override { gKeyMouseIncrementEnd(); }
    void TearDown() override { gKeyMouseIncrementEnd(); }

    std::string caption(std::int32_t bar, const std::string& voutMax, const std::string& vout2)
    {
        ErrorFlag bError = kFalse;
        std::string text = gsVOutLevelCaption(bar, voutMax, vout2, bError);
        EXPECT_FALSE(bError);
        return text;
    }

    float volts(std::int32_t step, float voutMax, float vout2)
    {
        ErrorFlag bError = kFalse;
        const float v = gfStep2VOut(step, voutMax, vout2, bError);
        EXPECT_FALSE(bError);
        return v;
    }

    testing_support::ScriptedHost host;
};

TEST_F(VOutDisplay, TheTwoReadingsFixTheVoltsAtEveryLevel)
{
    // Exactly the readings at the two calibration levels, a quarter between
    // them per 16383 steps further.
    EXPECT_FLOAT_EQ(volts(49151, 2.0f, 0.5f), 2.0f);
    EXPECT_FLOAT_EQ(volts(32768, 2.0f, 0.5f), 0.5f);
    EXPECT_FLOAT_EQ(volts(65534, 2.0f, 0.5f), 8.0f);
    EXPECT_FLOAT_EQ(volts(16385, 2.0f, 0.5f), 0.125f);
    // One step either side of them: just below.
    EXPECT_NEAR(volts(49150, 2.0f, 0.5f), 2.0f, 0.001f);
    EXPECT_LT(volts(49150, 2.0f, 0.5f), 2.0f);
    EXPECT_NEAR(volts(32766, 2.0f, 0.5f), 0.5f, 0.001f);
    EXPECT_LT(volts(32766, 2.0f, 0.5f), 0.5f);
    EXPECT_EQ(volts(0, 2.0f, 0.5f), 0.0f);

    // The bar runs 0 (loudest) to 32767; a bar step is two level steps.
    EXPECT_EQ(caption(8192, " 2", " .5"), "Ou&t  2.00 (V) ");
    EXPECT_EQ(caption(16384, " 2", " .5"), "Ou&t  0.50 (V) ");
    EXPECT_EQ(caption(32767, " 2", " .5"), "Ou&t  0.000 (V) ");
    EXPECT_EQ(caption(0, " 2", " .5"), "Ou&t  8.00 (V) ");
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(VOutDisplay, ACalibrationThatCannotBeUsedShowsNoVoltsAndNoError)
{
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gbVOutMaxValidActive(2.0f, 0.5f, bError), kTrue);
    EXPECT_EQ(gbVOutMaxValidActive(99.0f, 0.5f, bError), kTrue);
    EXPECT_EQ(gbVOutMaxValidActive(2.0f, 2.0f, bError), kFalse);
    EXPECT_EQ(gbVOutMaxValidActive(2.0f, 2.5f, bError), kFalse);
    EXPECT_EQ(gbVOutMaxValidActive(2.0f, 0.0f, bError), kFalse);
    EXPECT_EQ(gbVOutMaxValidActive(0.0f, -1.0f, bError), kFalse);
    EXPECT_EQ(gbVOutMaxValidActive(2.0f, -0.5f, bError), kFalse);
    EXPECT_EQ(gbVOutMaxValidActive(99.5f, 0.5f, bError), kFalse);
    EXPECT_FALSE(bError);

    // The label falls back to its plain caption; the logarithm of a ratio
    // that is not positive is never taken (it would report an error).
    for (const auto& [voutMax, vout2] : {std::pair{" 2", " 2"}, {" 2", " 2.5"}, {" 2", "0"},
                                         {"0", "0"}, {" 2", ""}, {"abc", " .5"}, {" 2", "-.5"}}) {
        SCOPED_TRACE(std::string(voutMax) + " / " + vout2);
        EXPECT_EQ(caption(8192, voutMax, vout2), "Ou&t");
    }
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(VOutDisplay, VoltsGetThreeDecimalsBelowAFiftiethAndOneFromTenUp)
{
    // One step below the reference level: just under VOutMax.
    EXPECT_EQ(caption(8192, "12.3", "3"), "Ou&t  12.3 (V) ");
    EXPECT_EQ(caption(8192, "1.23", ".3"), "Ou&t  1.23 (V) ");
    EXPECT_EQ(caption(8192, "0.012", "0.003"), "Ou&t  0.012 (V) ");

    // The boxes hold the user's form; what the calibration wrote is read too.
    host.decimalChar = ",";
    EXPECT_EQ(caption(8192, "1,23", "0,30"), "Ou&t  1,23 (V) ");
    EXPECT_EQ(caption(16384, " 2", " .5"), "Ou&t  0,50 (V) ");
}

TEST_F(VOutDisplay, TheBoxesStepAndCheckWithinTheirRules)
{
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gVOutMaxKeyDown(ui::kKeyUp, 0, "1.00", bError), "1.01");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(gVOutMaxKeyDown(ui::kKeyHome, ui::kShiftMask, "1.00", bError), "99.00");
    gKeyMouseIncrementEnd();
    // VOut2 goes no higher than the VOutMax of the moment.
    EXPECT_EQ(gVOut2KeyDown(ui::kKeyHome, ui::kCtrlMask, "0.20", " 1.5", bError), "1.50");
    gKeyMouseIncrementEnd();
    EXPECT_EQ(gVOut2KeyDown(ui::kKeyUp, 0, "1.50", "1.5", bError), "1.50");
    EXPECT_EQ(host.beeps, 1);
    EXPECT_FALSE(bError);

    FakeTextBox voutMax("100");
    EXPECT_EQ(gbVOutMaxValidate(kFalse, "Wavelark", voutMax, bError), kTrue);
    voutMax.setText("0");
    EXPECT_EQ(gbVOutMaxValidate(kTrue, "Wavelark", voutMax, bError), kTrue);
    voutMax.setText("2");
    EXPECT_EQ(gbVOutMaxValidate(kTrue, "Wavelark", voutMax, bError), kFalse);
    EXPECT_EQ(voutMax.text(), "2.00");

    FakeTextBox vout2("2.5");
    EXPECT_EQ(gbVOut2Validate("2.00", "Wavelark", vout2, bError), kTrue);
    vout2.setText("0");
    EXPECT_EQ(gbVOut2Validate("2.00", "Wavelark", vout2, bError), kFalse);
    EXPECT_EQ(vout2.text(), "0.00");
    EXPECT_FALSE(bError);

    ASSERT_EQ(host.boxes.size(), 3u);
    EXPECT_EQ(host.boxes[0].text, "In the range  0 to  99 please!");
    EXPECT_EQ(host.boxes[1].text, "Non-zero value please!");
    EXPECT_EQ(host.boxes[2].text, "In the range  0 to  2 please!");
    for (const auto& box : host.boxes) {
        EXPECT_EQ(box.title, "Wavelark");
        EXPECT_EQ(box.style, host::kExclamation);
    }
    EXPECT_EQ(voutMax.focusCount, 2);
    EXPECT_EQ(vout2.focusCount, 1);
}

TEST_F(VOutDisplay, TheIdentNamesTheOutputDeviceAndToday)
{
    gWaveOutResetForTests();
    gWaveOutInfo().name = "WavelarkNull";
    const QString before = QDate::currentDate().toString(Qt::ISODate);
    ErrorFlag bError = kFalse;
    const std::string ident = gsVOutIdent(bError);
    const QString after = QDate::currentDate().toString(Qt::ISODate);
    EXPECT_FALSE(bError);
    EXPECT_TRUE(ident == "WavelarkNull " + before.toStdString() ||
                ident == "WavelarkNull " + after.toStdString())
        << ident;
    EXPECT_EQ(before.size(), 10);  // 2026-11-23
    gWaveOutResetForTests();
}

}  // namespace
