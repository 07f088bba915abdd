#include "entry/modFormatNumber.h"

#include <algorithm>
#include <cmath>

#include "base/NumberText.h"
#include "base/Trap.h"
#include "entry/modGetLocaleInfo.h"

namespace {

// The length of the fraction's locale-independent text: a blank, the point
// and the digits (" .05" is 4), or 2 for " 0". Worked in float, as the rule's
// numbers are.
std::size_t fractionTextLength(float value)
{
    const float fraction = std::fabs(value - std::trunc(value));
    return rt::strNumber(fraction).size();
}

}  // namespace

std::string gsFormatNumber(float ifMax, float ifMin, float ifResolution, ErrorFlag& bError)
{
    std::string pattern;
    rt::Trap trap("modFormatNumber", "gsFormatNumber", bError);
    std::string decimalChar;
    trap.step([&] { decimalChar = gsGetLocaleInfoUserDecimalChar(bError); });
    trap.step([&] {
        const std::size_t length = std::max({fractionTextLength(ifMax), fractionTextLength(ifMin),
                                             fractionTextLength(ifResolution)});
        if (length > 2) pattern = "0" + decimalChar + std::string(length - 2, '0');
    });
    return pattern;
}
