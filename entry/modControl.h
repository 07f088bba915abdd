#pragma once
// The checks of a numeric text box: whether its text is a number, and the
// check run when the box is left, which holds the user in the box until the
// text is a number inside the field's rule.
#include <string>

#include "base/Types.h"

namespace ui {
class Control;
}

// True when Text reads as a 32-bit float in the user's form (no range check).
Bool16 gbCtrlTextValidNumber(const std::string& Text, ErrorFlag& bError);

// The leave-check of a numeric box with the rule ifMax, ifMin, ifResolution
// (and a refused zero when bZeroRefused is true). A good value is rewritten
// in the field's format (3 becomes "3.00" for a resolution of 0.05) and gives
// False. A bad one shows "In the range <min> to <max> (<Unit>) please!" or
// "Non-zero value (<Unit>) please!" titled Title, puts the focus back on the
// box and gives True: the box's Validate answers "cancel" with it. A broken
// rule (ifMin above ifMax) is reported but does not hold the focus.
Bool16 gbCtrlTxtError(float ifMax, float ifMin, float ifResolution, Bool16 bZeroRefused,
                      const std::string& Unit, const std::string& Title, ui::Control& TextBox,
                      ErrorFlag& bError);

// The same check for a whole-numbered box: a fraction ("12.5") is refused
// with the same range message.
Bool16 gbCtrlTxtErrorWhole(float ifMax, float ifMin, float ifResolution, Bool16 bZeroRefused,
                           const std::string& Unit, const std::string& Title,
                           ui::Control& TextBox, ErrorFlag& bError);
