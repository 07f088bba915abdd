#include "entry/modKeyPressAscii.h"

#include "base/Trap.h"
#include "entry/modGetLocaleInfo.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "modKeyPressAscii";

constexpr std::int16_t kBackspace = 8;
constexpr std::int16_t kEnter = 13;
constexpr std::int16_t kMinus = 45;
constexpr std::int16_t kDigit0 = 48;
constexpr std::int16_t kDigit9 = 57;

std::int16_t refuse()
{
    host::beep();
    return 0;
}

}  // namespace

std::int16_t gnKeyPressAsciiInteger(std::int16_t KeyAscii, ErrorFlag& bError)
{
    std::int16_t result = 0;
    rt::Trap trap(kModule, "gnKeyPressAsciiInteger", bError);
    trap.step([&] {
        const bool accepted = KeyAscii == kBackspace || KeyAscii == kEnter || KeyAscii == kMinus ||
                              (KeyAscii >= kDigit0 && KeyAscii <= kDigit9);
        result = accepted ? KeyAscii : refuse();
    });
    return result;
}

std::int16_t gnKeyPressAsciiReal(std::int16_t KeyAscii, const std::string& Text,
                                 ErrorFlag& bError)
{
    std::int16_t result = 0;
    rt::Trap trap(kModule, "gnKeyPressAsciiReal", bError);
    std::string decimalChar;
    trap.step([&] { decimalChar = gsGetLocaleInfoUserDecimalChar(bError); });
    trap.step([&] {
        const std::int16_t decimalCode = gnGAscii(decimalChar);
        const bool candidate = KeyAscii == kBackspace || KeyAscii == kMinus ||
                               KeyAscii == decimalCode || KeyAscii >= kDigit0 || KeyAscii == kEnter;
        if (!candidate || KeyAscii > kDigit9) {
            result = refuse();
        } else if (KeyAscii == decimalCode && !decimalChar.empty() &&
                   Text.find(decimalChar) != std::string::npos) {
            result = refuse();
        } else if (KeyAscii == kMinus && Text.find('-') != std::string::npos) {
            result = refuse();
        } else {
            result = KeyAscii;
        }
    });
    return result;
}
