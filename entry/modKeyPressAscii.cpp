#include "entry/modKeyPressAscii.h"

#include "base/Trap.h"
#include "entry/modGetLocaleInfo.h"
#include "platform/HostServices.h"
#include "platform/KeyCodes.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "modKeyPressAscii";

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
        const bool accepted = KeyAscii == ui::kAsciiBackspace || KeyAscii == ui::kAsciiEnter ||
                              ui::isEditingShortcut(KeyAscii) || KeyAscii == '-' ||
                              (KeyAscii >= '0' && KeyAscii <= '9');
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
        const bool candidate = KeyAscii == ui::kAsciiBackspace || KeyAscii == '-' ||
                               KeyAscii == decimalCode || KeyAscii >= '0' ||
                               KeyAscii == ui::kAsciiEnter;
        if (ui::isEditingShortcut(KeyAscii)) {
            result = KeyAscii;  // a paste is judged by the Change handler and the leave-check
        } else if (!candidate || KeyAscii > '9') {
            result = refuse();
        } else if (KeyAscii == decimalCode && !decimalChar.empty() &&
                   Text.find(decimalChar) != std::string::npos) {
            result = refuse();
        } else if (KeyAscii == '-' && Text.find('-') != std::string::npos) {
            result = refuse();
        } else {
            result = KeyAscii;
        }
    });
    return result;
}
