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

// Where the user's decimal character comes from. The host installs its
// locale reader at start; until then it is a full stop.
using DecimalCharSource = std::string (*)();
void setDecimalCharSource(DecimalCharSource source);
std::string userDecimalChar();

}  // namespace rt
