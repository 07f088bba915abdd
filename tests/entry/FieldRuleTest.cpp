// The rule set of a numeric field: key filters, the number test, the
// leave-check and its messages, display formats and the tokenizer.
#include <gtest/gtest.h>

#include <string>

#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "entry/modControl.h"
#include "entry/modFormatNumber.h"
#include "entry/modKeyPressAscii.h"
#include "entry/modStringParse.h"
#include "platform/KeyCodes.h"
#include "services/modGeneral.h"
#include "tests/support/FakeControls.h"
#include "tests/support/ScriptedHost.h"

namespace {

using testing_support::FakeTextBox;

// Types each character of `keys` through the filter; returns what got
// through (the text a box would hold) and counts the beeps in the host.
std::string typeReal(const std::string& keys)
{
    std::string text;
    for (const char key : keys) {
        ErrorFlag bError = kFalse;
        const std::int16_t kept = gnKeyPressAsciiReal(key, text, bError);
        EXPECT_FALSE(bError);
        if (kept != 0) text += static_cast<char>(kept);
    }
    return text;
}

std::string typeInteger(const std::string& keys)
{
    std::string text;
    for (const char key : keys) {
        ErrorFlag bError = kFalse;
        const std::int16_t kept = gnKeyPressAsciiInteger(key, bError);
        if (kept != 0) text += static_cast<char>(kept);
    }
    return text;
}

TEST(KeyFilters, WholeNumberedFieldsPassDigitsMinusAndEditingKeysOnly)
{
    testing_support::ScriptedHost host;
    EXPECT_EQ(typeInteger("--5"), "--5");  // caught when the box is left
    EXPECT_EQ(host.beeps, 0);
    EXPECT_EQ(typeInteger("1.5a ,"), "15");
    EXPECT_EQ(host.beeps, 4);
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gnKeyPressAsciiInteger(8, bError), 8);
    EXPECT_EQ(gnKeyPressAsciiInteger(13, bError), 13);
}

TEST(KeyFilters, TheClipboardAndEditingShortcutsPassBothFiltersOtherControlCharactersDoNot)
{
    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    for (char letter : {'A', 'C', 'V', 'X', 'Y', 'Z'}) {
        const std::int16_t code = ui::asciiCtrl(letter);
        EXPECT_EQ(gnKeyPressAsciiInteger(code, bError), code) << "Ctrl+" << letter;
        EXPECT_EQ(gnKeyPressAsciiReal(code, "1.5-", bError), code) << "Ctrl+" << letter;
    }
    EXPECT_EQ(host.beeps, 0);
    for (std::int16_t other : {ui::asciiCtrl('B'), ui::asciiCtrl('W'), std::int16_t{9}, std::int16_t{27}}) {
        EXPECT_EQ(gnKeyPressAsciiInteger(other, bError), 0) << other;
        EXPECT_EQ(gnKeyPressAsciiReal(other, "", bError), 0) << other;
    }
    EXPECT_EQ(host.beeps, 8);
    EXPECT_FALSE(bError);
}

TEST(KeyFilters, RealFieldsTakeOneDecimalCharacterAndOneMinus)
{
    testing_support::ScriptedHost host;
    EXPECT_EQ(typeReal("-1.2.5-"), "-1.25");
    EXPECT_EQ(host.beeps, 2);
    EXPECT_EQ(typeReal("1,5e:x"), "15");
    EXPECT_EQ(host.beeps, 6);
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gnKeyPressAsciiReal(8, "1.2", bError), 8);
    EXPECT_EQ(gnKeyPressAsciiReal(13, "1.2", bError), 13);
    EXPECT_EQ(host.beeps, 6);
    EXPECT_TRUE(host.boxes.empty());
}

TEST(KeyFilters, ACommaLocaleTakesTheCommaInsteadOfTheFullStopReadAtEveryKey)
{
    testing_support::ScriptedHost host;
    EXPECT_EQ(typeReal("1."), "1.");
    host.decimalChar = ",";
    EXPECT_EQ(typeReal("1.2,5,"), "12,5");
    EXPECT_EQ(host.beeps, 2);
}

TEST(KeyFilters, AnUnreadableLocaleLeavesNoDecimalCharacter)
{
    testing_support::ScriptedHost host;
    host.decimalChar.reset();
    EXPECT_EQ(typeReal("2.5"), "25");
    ASSERT_FALSE(host.boxes.empty());
    EXPECT_EQ(host.boxes[0].text, "Error occurred with GetLocaleInfo");
    EXPECT_EQ(host.boxes[0].title, "modGetLocaleInfo.msGetLocaleInfoUser");
    EXPECT_EQ(host.boxes[0].style, 48);
}

TEST(ValidNumber, ReadsUserFormNumbersOfFloatRangeOnly)
{
    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    for (const char* number : {"3", "-2.5", " .5", "1e9", "1E-3", "0"})
        EXPECT_TRUE(gbCtrlTextValidNumber(number, bError)) << number;
    for (const char* junk : {"", "-", ".", ",", "12abc", "1e", "1.2.3", "--5", "1e39", "1,5"})
        EXPECT_FALSE(gbCtrlTextValidNumber(junk, bError)) << junk;
    host.decimalChar = ",";
    EXPECT_TRUE(gbCtrlTextValidNumber("1,5", bError));
    EXPECT_FALSE(gbCtrlTextValidNumber("1.5", bError));
    EXPECT_FALSE(bError);
}

// The burst-cycles rule: max 10, min 0.25, resolution 0.05, "Cycles".
struct CyclesField {
    FakeTextBox box;
    ErrorFlag bError = kFalse;
    explicit CyclesField(std::string text) : box(std::move(text)) {}
    bool leave(Bool16 zeroRefused = kFalse, const char* unit = "Cycles")
    {
        return gbCtrlTxtError(10, 0.25f, 0.05f, zeroRefused, unit, "Wavelark v1.0.0", box, bError);
    }
};

TEST(LeaveCheck, OutOfRangeTextsGetTheRangeMessageWithTwoBlankLayout)
{
    for (const char* text : {"0.1", "10.05", "", "1e9", "12abc", "-", ",", "--5"}) {
        testing_support::ScriptedHost host;
        CyclesField field(text);
        EXPECT_TRUE(field.leave()) << text;
        ASSERT_EQ(host.boxes.size(), 1u) << text;
        EXPECT_EQ(host.boxes[0].text, "In the range  .25 to  10 (Cycles) please!");
        EXPECT_EQ(host.boxes[0].style, 48);
        EXPECT_EQ(host.boxes[0].title, "Wavelark v1.0.0");
        EXPECT_EQ(field.box.focusCount, 1) << "the focus goes back to the box";
        EXPECT_EQ(field.box.text(), text) << "a bad text is left for the user to mend";
        EXPECT_FALSE(field.bError);
    }
}

TEST(LeaveCheck, GoodValuesAreRewrittenInTheFieldsFormat)
{
    testing_support::ScriptedHost host;
    CyclesField three("3");
    EXPECT_FALSE(three.leave());
    EXPECT_EQ(three.box.text(), "3.00");
    CyclesField limits[] = {CyclesField("0.25"), CyclesField("10"), CyclesField(" 2.5")};
    for (auto& field : limits) EXPECT_FALSE(field.leave());
    EXPECT_EQ(limits[0].box.text(), "0.25");
    EXPECT_EQ(limits[1].box.text(), "10.00");
    EXPECT_EQ(limits[2].box.text(), "2.50");
    EXPECT_TRUE(host.boxes.empty());

    FakeTextBox seven("7");
    ErrorFlag bError = kFalse;
    EXPECT_FALSE(gbCtrlTxtErrorWhole(2000, 1, 1, kFalse, "mS", "t", seven, bError));
    EXPECT_EQ(seven.setTextCount, 0) << "a whole-numbered field keeps 7 as it is";
    EXPECT_EQ(seven.focusCount, 0);
}

TEST(LeaveCheck, AWholeNumberedFieldRefusesAFractionWithTheRangeMessage)
{
    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    FakeTextBox fraction("12.5");
    EXPECT_TRUE(gbCtrlTxtErrorWhole(2000, 9, 1, kFalse, "mS", "Wavelark v1.0.0", fraction, bError));
    EXPECT_EQ(fraction.text(), "12.5") << "the text stays for the user to correct";
    EXPECT_EQ(fraction.focusCount, 1);
    FakeTextBox whole("12.0"), outside("8");
    EXPECT_FALSE(gbCtrlTxtErrorWhole(2000, 9, 1, kFalse, "mS", "t", whole, bError));
    EXPECT_EQ(whole.text(), "12");
    EXPECT_TRUE(gbCtrlTxtErrorWhole(2000, 9, 1, kFalse, "mS", "t", outside, bError));
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "In the range  9 to  2000 (mS) please!");
    EXPECT_EQ(host.boxes[0].title, "Wavelark v1.0.0");
    EXPECT_EQ(host.boxes[1].text, host.boxes[0].text);

    FakeTextBox real("12.5");
    EXPECT_FALSE(gbCtrlTxtError(2000, 9, 1, kFalse, "mS", "t", real, bError))
        << "a real field with a resolution of 1 keeps its fraction";
    EXPECT_FALSE(bError);
}

TEST(LeaveCheck, ACommaLocaleFormatsWithTheComma)
{
    testing_support::ScriptedHost host;
    host.decimalChar = ",";
    CyclesField three("3");
    EXPECT_FALSE(three.leave());
    EXPECT_EQ(three.box.text(), "3,00");
    CyclesField pointed("2.5");
    EXPECT_TRUE(pointed.leave());
    EXPECT_EQ(host.boxes.at(0).text, "In the range  .25 to  10 (Cycles) please!");
}

TEST(LeaveCheck, ARefusedZeroAsksForANonZeroValue)
{
    testing_support::ScriptedHost host;
    FakeTextBox zero("0");
    FakeTextBox empty("");
    FakeTextBox negative("-1");
    ErrorFlag bError = kFalse;
    EXPECT_TRUE(gbCtrlTxtError(5, -5, 0.01f, kTrue, "V", "t", zero, bError));
    EXPECT_TRUE(gbCtrlTxtError(5, -5, 0.01f, kTrue, "", "t", empty, bError));
    EXPECT_FALSE(gbCtrlTxtError(5, -5, 0.01f, kTrue, "V", "t", negative, bError));
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].text, "Non-zero value (V) please!");
    EXPECT_EQ(host.boxes[1].text, "Non-zero value please!");
    EXPECT_EQ(negative.text(), "-1.00");
}

TEST(LeaveCheck, ABrokenRuleIsReportedWithoutHoldingTheFocus)
{
    testing_support::ScriptedHost host;
    FakeTextBox box("3");
    ErrorFlag bError = kFalse;
    EXPECT_FALSE(gbCtrlTxtError(1, 5, 1, kFalse, "", "t", box, bError));
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Error ifMin ( 5) > ifMax( 1)");
    EXPECT_EQ(box.focusCount, 0);
}

TEST(LeaveCheck, NoMessageOnceTheErrorFlagIsSet)
{
    testing_support::ScriptedHost host;
    CyclesField field("99");
    field.bError = kTrue;
    EXPECT_TRUE(field.leave());
    EXPECT_TRUE(host.boxes.empty());
}

TEST(Formats, PatternDecimalsFollowTheMostPreciseNumberOfTheRule)
{
    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gsFormatNumber(10, 0.25f, 0.05f, bError), "0.00");
    EXPECT_EQ(gsFormatNumber(5, 0.2f, 0.1f, bError), "0.0");
    EXPECT_EQ(gsFormatNumber(2000, 1, 1, bError), "");
    EXPECT_EQ(gsFormatNumber(-2.25f, -10, 1, bError), "0.00");
    host.decimalChar = ",";
    EXPECT_EQ(gsFormatNumber(10, 0.25f, 0.05f, bError), "0,00");
    EXPECT_FALSE(bError);
}

TEST(Formats, VoltPatternsHaveThreeSteps)
{
    ErrorFlag bError = kFalse;
    EXPECT_EQ(gsGFormat(10, bError), "0.0");
    EXPECT_EQ(gsGFormat(9.99f, bError), "0.00");
    EXPECT_EQ(gsGFormat(0.05f, bError), "0.00");
    EXPECT_EQ(gsGFormat(0.049f, bError), "0.000");
    EXPECT_EQ(gsGFormat(-1, bError), "0.000");
}

TEST(Formats, PatternFormattingRoundsTheShownDigitsHalfAwayFromZero)
{
    EXPECT_EQ(rt::formatNumber(3.0f, "0.00", "."), "3.00");
    EXPECT_EQ(rt::formatNumber(2.345f, "0.00", "."), "2.35");  // 2.3449999 as a float
    EXPECT_EQ(rt::formatNumber(0.125f, "0.00", "."), "0.13");
    EXPECT_EQ(rt::formatNumber(-2.5f, "0", "."), "-3");
    EXPECT_EQ(rt::formatNumber(9.999f, "0.00", "."), "10.00");
    EXPECT_EQ(rt::formatNumber(-0.001f, "0.00", "."), "0.00");
    EXPECT_EQ(rt::formatNumber(0.5f, ".00", "."), ".50");
    EXPECT_EQ(rt::formatNumber(7.0f, "000", "."), "007");
    EXPECT_EQ(rt::formatNumber(1e9f, "0.0", "."), "1000000000.0");
    EXPECT_EQ(rt::formatNumber(0.1f + 0.2f, "0.0000000", "."), "0.3000000");
    EXPECT_EQ(rt::formatNumber(0.00012345f, "0.000", "."), "0.000");
    // Stepping adds floats: 10.1 + 0.2 + 0.4 shows as it reads.
    EXPECT_EQ(rt::formatNumber(10.1f + 0.2f + 0.4f, "0.0", "."), "10.7");
}

TEST(Formats, PatternFormattingUsesTheUsersDecimalCharacter)
{
    EXPECT_EQ(rt::formatNumber(3.0f, "0,00", ","), "3,00");
    EXPECT_EQ(rt::formatNumber(3.25f, "0.0", ","), "3,3");
    EXPECT_EQ(rt::formatNumber(0.5f, "", ","), "0,5");
    EXPECT_EQ(rt::formatNumber(2.5, "0.00", "."), "2.50");
    EXPECT_THROW(rt::formatNumber(3.0f, "0,00", "."), rt::RuntimeError);
    EXPECT_THROW(rt::formatNumber(3.0f, "#.##", "."), rt::RuntimeError);
}

TEST(Tokenizer, TakesTokensUpToTheFirstDelimiterFound)
{
    ErrorFlag bError = kFalse;
    std::int16_t start = 1;
    EXPECT_EQ(gsStringParse("ab,cd", ",", start, bError), "ab");
    EXPECT_EQ(start, 4);
    EXPECT_EQ(gsStringParse("ab,cd", ",", start, bError), "") << "no delimiter left";
    EXPECT_EQ(start, 4);
    start = 6;
    EXPECT_EQ(gsStringParse("ab,cd", ",", start, bError), std::string(1, '\0'));
    EXPECT_EQ(start, 6);
    EXPECT_FALSE(bError);
}

TEST(Tokenizer, DelimitersAreTriedInTurnAndSkippedAsAWhole)
{
    ErrorFlag bError = kFalse;
    std::int16_t start = 0;
    const std::string lines = "one\r\ntwo\r\n";
    EXPECT_EQ(gsStringParse(lines, "\r\n", start, bError), "one");
    EXPECT_EQ(gsStringParse(lines, "\r\n", start, bError), "two");
    EXPECT_EQ(gsStringParse(lines, "\r\n", start, bError), std::string(1, '\0'));

    // ";" is found, so it ends the token although "," stands earlier.
    start = 1;
    EXPECT_EQ(gsStringParse("a,b;c", ";,", start, bError), "a,b");
    EXPECT_EQ(start, 6);

    // A name cut at its first NUL.
    const std::string name("Speakers\0\0\0\0", 12);
    start = 1;
    EXPECT_EQ(gsStringParse(name, std::string(1, '\0'), start, bError), "Speakers");
}

}  // namespace
