#include "base/NumberText.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/Convert.h"
#include "base/RuntimeError.h"

namespace rt {

namespace {

std::string fullStop() { return "."; }

DecimalCharSource gDecimalCharSource = &fullStop;

// "%.*G" is locale-independent only for the point, so it is swapped in by hand.
std::string significantDigits(double value, int digits)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*G", digits, value);
    std::string text(buffer);
    for (char& c : text)
        if (c == ',') c = '.';
    return text;
}

std::string locallyIndependent(double value, int digits)
{
    if (value == 0) return " 0";  // also minus zero
    std::string text = significantDigits(value, digits);
    const bool negative = text[0] == '-';
    std::string magnitude = negative ? text.substr(1) : text;
    if (magnitude.size() > 1 && magnitude[0] == '0' && magnitude[1] == '.')
        magnitude.erase(0, 1);
    return (negative ? "-" : " ") + magnitude;
}

std::string withDecimalChar(std::string text, std::string_view decimalChar)
{
    const auto point = text.find('.');
    if (point != std::string::npos) text.replace(point, 1, decimalChar);
    return text;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

struct Pattern {
    int integerDigits = 0;
    int decimals = 0;
};

Pattern readPattern(std::string_view pattern, std::string_view decimalChar)
{
    Pattern read;
    bool pointSeen = false;
    std::size_t i = 0;
    while (i < pattern.size()) {
        if (pattern[i] == '0') {
            ++(pointSeen ? read.decimals : read.integerDigits);
            ++i;
        } else if (!pointSeen && !decimalChar.empty() && pattern.substr(i).starts_with(decimalChar)) {
            pointSeen = true;
            i += decimalChar.size();
        } else if (!pointSeen && pattern[i] == '.') {
            pointSeen = true;
            ++i;
        } else {
            raise(kErrInvalidCall);
        }
    }
    return read;
}

// Adds one unit in the last place of a string of decimal digits; true when
// the carry runs out of the front (999 -> 000).
bool incrementDigits(std::string& digits)
{
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (*it != '9') {
            ++*it;
            return false;
        }
        *it = '0';
    }
    return true;
}

// |value| to `significant` digits, then rounded half away from zero to
// `decimals` places; returns the integer digits (leading zeros removed) and
// the decimal digits.
std::pair<std::string, std::string> fixedDigits(double value, int significant, int decimals)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*e", significant - 1, std::fabs(value));
    const std::string text(buffer);  // d.ddddde+XX
    const auto e = text.find('e');
    std::string digits = text.substr(0, 1) + text.substr(2, e - 2);
    const int exponent = std::atoi(text.c_str() + e + 1);

    std::string all;
    std::size_t point = 0;  // digits before the decimal point
    if (exponent >= 0) {
        all = digits;
        point = static_cast<std::size_t>(exponent) + 1;
    } else {
        all = std::string(static_cast<std::size_t>(-exponent), '0') + digits;
        point = 1;
    }
    const std::size_t kept = point + static_cast<std::size_t>(decimals);
    if (all.size() < kept + 1) all.append(kept + 1 - all.size(), '0');
    const bool roundUp = all[kept] >= '5';
    all.resize(kept);
    if (roundUp && incrementDigits(all)) {
        all.insert(all.begin(), '1');
        ++point;
    }
    std::string integer = all.substr(0, point);
    const auto firstNonZero = integer.find_first_not_of('0');
    integer = firstNonZero == std::string::npos ? std::string() : integer.substr(firstNonZero);
    return {integer, all.substr(point)};
}

std::string formatWithDigits(double value, int significant, std::string_view pattern,
                             std::string_view decimalChar)
{
    if (!std::isfinite(value)) raise(kErrOverflow);
    const Pattern read = readPattern(pattern, decimalChar);
    auto [integer, fraction] = fixedDigits(value, significant, read.decimals);
    const bool allZero = integer.empty() && fraction.find_first_not_of('0') == std::string::npos;
    if (static_cast<int>(integer.size()) < read.integerDigits)
        integer.insert(0, static_cast<std::size_t>(read.integerDigits) - integer.size(), '0');
    std::string text = (value < 0 && !allZero) ? "-" : "";
    text += integer;
    if (read.decimals > 0) {
        text += decimalChar;
        text += fraction;
    }
    return text;
}

}  // namespace

std::string strNumber(double value) { return locallyIndependent(value, 15); }
std::string strNumber(float value) { return locallyIndependent(value, 7); }

std::string userText(double value, std::string_view decimalChar)
{
    if (value == 0) return "0";
    return withDecimalChar(significantDigits(value, 15), decimalChar);
}

std::string userText(float value, std::string_view decimalChar)
{
    if (value == 0) return "0";
    return withDecimalChar(significantDigits(value, 7), decimalChar);
}

std::string userText(double value) { return userText(value, userDecimalChar()); }
std::string userText(float value) { return userText(value, userDecimalChar()); }

std::string formatNumber(double value, std::string_view pattern, std::string_view decimalChar)
{
    if (pattern.empty()) return userText(value, decimalChar);
    return formatWithDigits(value, 15, pattern, decimalChar);
}

std::string formatNumber(float value, std::string_view pattern, std::string_view decimalChar)
{
    if (pattern.empty()) return userText(value, decimalChar);
    return formatWithDigits(value, 7, pattern, decimalChar);
}

std::string formatNumber(double value, std::string_view pattern)
{
    return formatNumber(value, pattern, userDecimalChar());
}

std::string formatNumber(float value, std::string_view pattern)
{
    return formatNumber(value, pattern, userDecimalChar());
}

std::optional<double> parseNumber(std::string_view text, std::string_view decimalChar)
{
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);

    // Rebuild the number in the plain form std::from_chars reads.
    std::string plain;
    std::size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        if (text[i] == '-') plain += '-';
        ++i;
    }
    int digits = 0;
    bool pointSeen = false;
    while (i < text.size()) {
        if (isDigit(text[i])) {
            plain += text[i++];
            ++digits;
        } else if (!pointSeen && !decimalChar.empty() && text.substr(i).starts_with(decimalChar)) {
            plain += '.';
            i += decimalChar.size();
            pointSeen = true;
        } else {
            break;
        }
    }
    if (digits == 0) return std::nullopt;
    if (i < text.size() && std::strchr("eEdD", text[i]) != nullptr) {
        plain += 'e';
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) plain += text[i++];
        int exponentDigits = 0;
        while (i < text.size() && isDigit(text[i])) {
            plain += text[i++];
            ++exponentDigits;
        }
        if (exponentDigits == 0) return std::nullopt;
    }
    if (i != text.size()) return std::nullopt;

    double value = 0;
    const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (error == std::errc::result_out_of_range) {
        // Too large is an overflow of the double; too small is zero.
        const auto exponentAt = plain.find('e');
        if (exponentAt != std::string::npos && plain[exponentAt + 1] == '-') return 0.0;
        return std::nullopt;
    }
    if (error != std::errc() || end != plain.data() + plain.size()) return std::nullopt;
    return value;
}

std::optional<double> parseUserNumber(std::string_view text)
{
    return parseNumber(text, userDecimalChar());
}

double toDoubleUser(std::string_view text)
{
    const auto value = parseUserNumber(text);
    if (!value) raise(kErrTypeMismatch);
    return *value;
}

float toSingleUser(std::string_view text) { return toSingle(toDoubleUser(text)); }

std::int32_t toInt32User(std::string_view text) { return toInt32(toDoubleUser(text)); }

bool toBooleanUser(std::string_view text)
{
    const auto sameLetters = [&](std::string_view word) {
        if (text.size() != word.size()) return false;
        for (std::size_t i = 0; i < word.size(); ++i)
            if (std::tolower(static_cast<unsigned char>(text[i])) != word[i]) return false;
        return true;
    };
    if (sameLetters("true")) return true;
    if (sameLetters("false")) return false;
    return toDoubleUser(text) != 0;
}

std::string booleanText(bool value) { return value ? "True" : "False"; }

void setDecimalCharSource(DecimalCharSource source)
{
    gDecimalCharSource = source ? source : &fullStop;
}

std::string userDecimalChar() { return gDecimalCharSource(); }

}  // namespace rt
