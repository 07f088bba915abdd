#include "entry/modUpDownSet.h"

#include <string>

#include "base/Trap.h"
#include "platform/Control.h"
#include "platform/HostServices.h"

void gUpDownSet(std::int32_t Value, std::int32_t Max, std::int32_t Min, std::int32_t Increment,
                ui::UpDownControl& UpDown, ErrorFlag& bError)
{
    rt::Trap trap("modUpDownSet", "gUpDownSet", bError);
    trap.step([&] {
        if (Value < Min || Value > Max) {
            std::string message = "Value (" + std::to_string(Value) + ") ";
            message += Value > Max ? "> Max (" + std::to_string(Max) + ")"
                                   : "< Min (" + std::to_string(Min) + ")";
            host::msgBox(message, host::kExclamation, "modUpDownSet.gUpDownSet");
            bError = kTrue;
            trap.leave();
            return;
        }
        UpDown.setMin(Min);
        if (Max < UpDown.value()) {
            UpDown.setValue(Value);
            UpDown.setMax(Max);
        } else {
            UpDown.setMax(Max);
            UpDown.setValue(Value);
        }
        if (UpDown.min() != Min) UpDown.setMin(Min);
        UpDown.setIncrement(Increment);
    });
}
