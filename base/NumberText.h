#pragma once
// Numbers as text, two ways.
//  - The locale-independent form (strNumber): a leading blank before a
//    non-negative number, "-" before a negative one, no leading zero before
//    the point (one half is " .5"), a full stop as decimal point. A float is
//    shown to 7 significant digits, a double to 15.
//  - The user's form (userText): no leading blank, the leading zero kept,
//    and the user's regional decimal character.
// Text to number (parseUserNumber, toSingleUser, toDoubleUser) reads the
// user's form and fails on anything that is not a number, empty text included.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace rt {

std::string strNumber(double value);
std::string strNumber(float value);
template <class Int, std::enable_if_t<std::is_integral_v<Int>, int> = 0>
std::string strNumber(Int value)
{
    return strNumber(static_cast<double>(value));
}

// The shortest text of a value in the user's form ("0.5", "44.1", "1E+20").
std::string userText(double value, std::string_view decimalChar);
std::string userText(float value, std::string_view decimalChar);
// The same with the user's current decimal character.
std::string userText(double value);
std::string userText(float value);

// Formats a value with a display pattern of "0" digits and at most one
// decimal placeholder (the given decimal character, or a full stop): the
// zeros before it are the least number of integer digits, those after it the
// number of decimals; the text uses the given decimal character. The value is
// first taken to its significant digits (7 for a float, 15 for a double) and
// then rounded half away from zero, so 2.345 with "0.00" gives "2.35". An
// empty pattern gives the shortest text (userText). Error 5 "Invalid
// procedure call" for any other pattern character, 6 "Overflow" for a value
// that is not finite.
std::string formatNumber(double value, std::string_view pattern, std::string_view decimalChar);
std::string formatNumber(float value, std::string_view pattern, std::string_view decimalChar);
// The same with the user's current decimal character.
std::string formatNumber(double value, std::string_view pattern);
std::string formatNumber(float value, std::string_view pattern);

// Parses a number written with the given decimal character: optional blanks
// around, an optional sign, digits with at most one decimal character (at
// least one digit in all), an optional exponent (E or D, optional sign,
// digits). Anything else, empty text included, gives no value.
std::optional<double> parseNumber(std::string_view text, std::string_view decimalChar);
// The same with the user's current decimal character.
std::optional<double> parseUserNumber(std::string_view text);

// Text to a 32-bit float / double in the user's form; error 13 "Type
// mismatch" when the text is not a number, 6 "Overflow" beyond the range.
float toSingleUser(std::string_view text);
double toDoubleUser(std::string_view text);
// Text to a 32-bit integer in the user's form, rounded half to even ("37.6"
// gives 38); error 13 or 6 as above.
std::int32_t toInt32User(std::string_view text);

// Booleans as the settings store them: "True" and "False" (read in any
// case), or a number read in the user's form, non-zero being true; error 13
// "Type mismatch" for anything else.
bool toBooleanUser(std::string_view text);
std::string booleanText(bool value);

// Where the user's decimal character comes from. The host installs its
// locale reader at start; until then it is a full stop.
using DecimalCharSource = std::string (*)();
void setDecimalCharSource(DecimalCharSource source);
std::string userDecimalChar();

}  // namespace rt
