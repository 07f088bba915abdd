#include "services/modControlsEnable.h"

#include "base/Trap.h"
#include "platform/Forms.h"
#include "services/modFormPtr.h"

void gControlsEnable(const std::string& sFormName, Bool16 bEnable, ErrorFlag& bError)
{
    rt::Trap trap("modControlsEnable", "gControlsEnable", bError);
    trap.step([&] {
        const std::int16_t index = gnFormPtr(sFormName, bError);
        if (bError || index < 0) return;
        for (ui::Control* control : ui::openForms()[index]->controls()) {
            const std::string type = control->typeName();
            if (type == "CommonDialog") continue;
            if (type == "Menu" && control->text() == "-") continue;
            control->setEnabled(bEnable != kFalse);
        }
    });
}
