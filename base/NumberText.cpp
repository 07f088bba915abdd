#include "base/NumberText.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

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

void setDecimalCharSource(DecimalCharSource source)
{
    gDecimalCharSource = source ? source : &fullStop;
}

std::string userDecimalChar() { return gDecimalCharSource(); }

}  // namespace rt
