#include "entry/modControl.h"

#include <cmath>

#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "entry/modFormatNumber.h"
#include "platform/Control.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "modControl";

}  // namespace

Bool16 gbCtrlTextValidNumber(const std::string& Text, ErrorFlag& bError)
{
    Bool16 valid = kFalse;
    rt::Trap trap(kModule, "gbCtrlTextValidNumber", bError);
    trap.step([&] {
        try {
            rt::toSingleUser(Text);
            valid = kTrue;
        } catch (const rt::RuntimeError&) {
            valid = kFalse;  // not a number, or beyond the float range
        }
    });
    return valid;
}

namespace {

// The leave-check of both kinds of box; a whole-numbered one also refuses a
// fraction, with the same range message as a value out of range.
Bool16 ctrlTxtError(const char* procedure, bool whole, float ifMax, float ifMin,
                    float ifResolution, Bool16 bZeroRefused, const std::string& Unit,
                    const std::string& Title, ui::Control& TextBox, ErrorFlag& bError)
{
    Bool16 inError = kFalse;
    std::string message;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] {
        const std::string maxText = rt::strNumber(ifMax);
        const std::string minText = rt::strNumber(ifMin);
        if (ifMin > ifMax) {
            message = "Error ifMin (" + minText + ") > ifMax(" + maxText + ")";
            return;
        }
        const std::string text = TextBox.text();
        const bool isNumber = gbCtrlTextValidNumber(text, bError) != kFalse;
        const float value = isNumber ? rt::toSingleUser(text) : 0.0f;
        const bool zeroAllowed = value != 0 || !bZeroRefused;
        const bool kindAllowed = !whole || value == std::trunc(value);
        if (zeroAllowed && isNumber && kindAllowed && ifMin <= value && value <= ifMax) {
            const std::string pattern = gsFormatNumber(ifMax, ifMin, ifResolution, bError);
            const std::string formatted = rt::formatNumber(value, pattern);
            if (text != formatted) TextBox.setText(formatted);
            return;
        }
        message = zeroAllowed ? "In the range " + minText + " to " + maxText : "Non-zero value";
        if (!Unit.empty()) message += " (" + Unit + ")";
        message += " please!";
        inError = kTrue;
    });
    trap.step([&] {
        if (!bError && !message.empty()) host::msgBox(message, host::kExclamation + host::kOkOnly, Title);
        if (inError) gbGSetFocus(TextBox);
    });
    return inError;
}

}  // namespace

Bool16 gbCtrlTxtError(float ifMax, float ifMin, float ifResolution, Bool16 bZeroRefused,
                      const std::string& Unit, const std::string& Title, ui::Control& TextBox,
                      ErrorFlag& bError)
{
    return ctrlTxtError("gbCtrlTxtError", false, ifMax, ifMin, ifResolution, bZeroRefused, Unit,
                        Title, TextBox, bError);
}

Bool16 gbCtrlTxtErrorWhole(float ifMax, float ifMin, float ifResolution, Bool16 bZeroRefused,
                           const std::string& Unit, const std::string& Title,
                           ui::Control& TextBox, ErrorFlag& bError)
{
    return ctrlTxtError("gbCtrlTxtErrorWhole", true, ifMax, ifMin, ifResolution, bZeroRefused,
                        Unit, Title, TextBox, bError);
}
