// Number conversions and number text: the run-time's rounding, overflow and
// text rules at their edges.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"

namespace {

std::int32_t errorNumberOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const rt::RuntimeError& e) {
        return e.number();
    }
    return 0;
}

TEST(WholeNumberConversions, TiesGoToTheEvenNeighbour)
{
    EXPECT_EQ(rt::toInt16(0.5), 0);
    EXPECT_EQ(rt::toInt16(1.5), 2);
    EXPECT_EQ(rt::toInt16(2.5), 2);
    EXPECT_EQ(rt::toInt16(-0.5), 0);
    EXPECT_EQ(rt::toInt16(-1.5), -2);
    EXPECT_EQ(rt::toInt16(-2.5), -2);
    EXPECT_EQ(rt::toInt32(2147483646.5), 2147483646);
    EXPECT_EQ(rt::toInt16(2.4999999), 2);
    EXPECT_EQ(rt::toInt16(2.5000001), 3);
}

TEST(WholeNumberConversions, SixteenBitRangeEnds)
{
    EXPECT_EQ(rt::toInt16(32767), 32767);
    EXPECT_EQ(rt::toInt16(32767.4), 32767);
    EXPECT_EQ(rt::toInt16(-32768), -32768);
    EXPECT_EQ(rt::toInt16(-32768.5), -32768);  // the tie rounds to the even end
    EXPECT_EQ(errorNumberOf([] { rt::toInt16(32767.5); }), rt::kErrOverflow);
    EXPECT_EQ(errorNumberOf([] { rt::toInt16(32768); }), rt::kErrOverflow);
    EXPECT_EQ(errorNumberOf([] { rt::toInt16(-32769); }), rt::kErrOverflow);
    EXPECT_EQ(errorNumberOf([] { rt::toInt16(std::nan("")); }), rt::kErrOverflow);
}

TEST(WholeNumberConversions, ThirtyTwoBitRangeEnds)
{
    EXPECT_EQ(rt::toInt32(2147483647.0), 2147483647);
    EXPECT_EQ(rt::toInt32(-2147483648.0), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(errorNumberOf([] { rt::toInt32(2147483647.5); }), rt::kErrOverflow);
    EXPECT_EQ(errorNumberOf([] { rt::toInt32(-2147483649.0); }), rt::kErrOverflow);
    EXPECT_EQ(errorNumberOf([] { rt::toSingle(1e39); }), rt::kErrOverflow);
    EXPECT_EQ(rt::toSingle(1e-50), 0.0f);
}

TEST(IntegerDivision, RoundsBothOperandsThenTruncates)
{
    EXPECT_EQ(rt::intDiv(7.5, 2), 4);   // 8 \ 2
    EXPECT_EQ(rt::intDiv(6.5, 2), 3);   // 6 \ 2
    EXPECT_EQ(rt::intDiv(-7, 2), -3);   // toward zero
    EXPECT_EQ(rt::intDiv(44100, 1000), 44);
    EXPECT_EQ(rt::intDiv(100 * 44100.0, 1000), 4410);
    EXPECT_EQ(errorNumberOf([] { rt::intDiv(5, 0.4); }), rt::kErrDivisionByZero);
    EXPECT_EQ(errorNumberOf([] { rt::intDiv(-2147483648.0, -1); }), rt::kErrOverflow);
}

TEST(IntegerPart, IsTheFloor)
{
    EXPECT_EQ(rt::intFloor(2.7), 2);
    EXPECT_EQ(rt::intFloor(-2.5), -3);
    EXPECT_EQ(rt::intFloor(-3.0), -3);
}

TEST(LocaleIndependentText, LeadingBlankAndNoLeadingZero)
{
    EXPECT_EQ(rt::strNumber(0.5), " .5");
    EXPECT_EQ(rt::strNumber(-0.5), "-.5");
    EXPECT_EQ(rt::strNumber(0.0), " 0");
    EXPECT_EQ(rt::strNumber(-0.0), " 0");
    EXPECT_EQ(rt::strNumber(10), " 10");
    EXPECT_EQ(rt::strNumber(-32768), "-32768");
    EXPECT_EQ(rt::strNumber(0.25f), " .25");
    EXPECT_EQ(rt::strNumber(1234.5), " 1234.5");
}

TEST(LocaleIndependentText, SinglesShowSevenDigitsDoublesFifteen)
{
    EXPECT_EQ(rt::strNumber(0.1f), " .1");
    EXPECT_EQ(rt::strNumber(1.0f / 3.0f), " .3333333");
    EXPECT_EQ(rt::strNumber(1.0 / 3.0), " .333333333333333");
    EXPECT_EQ(rt::strNumber(6.2831855f), " 6.283185");
    EXPECT_EQ(rt::strNumber(20000.0f), " 20000");
    EXPECT_EQ(rt::strNumber(1e20), " 1E+20");
    EXPECT_EQ(rt::strNumber(0.00001), " 1E-05");
}

TEST(UserText, UsesTheGivenDecimalCharacterAndKeepsTheLeadingZero)
{
    EXPECT_EQ(rt::userText(0.5, ","), "0,5");
    EXPECT_EQ(rt::userText(44.1, "."), "44.1");
    EXPECT_EQ(rt::userText(-2.25f, ","), "-2,25");
    EXPECT_EQ(rt::userText(96.0, ","), "96");
    EXPECT_EQ(rt::userText(0.0, ","), "0");
}

TEST(TextToNumber, AcceptsWholeNumbersOnly)
{
    EXPECT_EQ(rt::parseNumber("12", "."), 12.0);
    EXPECT_EQ(rt::parseNumber("-1.5", "."), -1.5);
    EXPECT_EQ(rt::parseNumber(" 3 ", "."), 3.0);
    EXPECT_EQ(rt::parseNumber(".5", "."), 0.5);
    EXPECT_EQ(rt::parseNumber("5.", "."), 5.0);
    EXPECT_EQ(rt::parseNumber("+7", "."), 7.0);
    EXPECT_EQ(rt::parseNumber("1e9", "."), 1e9);
    EXPECT_EQ(rt::parseNumber("2.5E-3", "."), 0.0025);
}

TEST(TextToNumber, RefusesPartialNumbers)
{
    for (const char* text : {"", " ", "-", ".", "12abc", "1.2.3", "1e", "1e+", "+-1", "--5",
                             "1,5", "abc", "0x10", "1 2", "\t1"})
        EXPECT_FALSE(rt::parseNumber(text, ".").has_value()) << '"' << text << '"';
}

TEST(TextToNumber, CommaLocale)
{
    EXPECT_EQ(rt::parseNumber("1,5", ","), 1.5);
    EXPECT_EQ(rt::parseNumber("-0,25", ","), -0.25);
    EXPECT_FALSE(rt::parseNumber("1.5", ",").has_value());
    EXPECT_FALSE(rt::parseNumber(",", ",").has_value());
    EXPECT_FALSE(rt::parseNumber("1,2,3", ",").has_value());
}

TEST(TextToNumber, FailuresAreTypeMismatchAndOverflow)
{
    EXPECT_EQ(errorNumberOf([] { rt::toDoubleUser("12abc"); }), rt::kErrTypeMismatch);
    EXPECT_EQ(errorNumberOf([] { rt::toSingleUser(""); }), rt::kErrTypeMismatch);
    EXPECT_EQ(errorNumberOf([] { rt::toSingleUser("1e39"); }), rt::kErrOverflow);
}

}  // namespace
