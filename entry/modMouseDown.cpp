#include "entry/modMouseDown.h"

#include "base/Convert.h"
#include "base/Trap.h"
#include "entry/modKeyMouseIncrement.h"
#include "platform/Control.h"
#include "platform/HostServices.h"
#include "platform/KeyCodes.h"

void gMouseDownInit(std::int16_t Button, ui::UpDownControl& UpDown, ErrorFlag& bError)
{
    rt::Trap trap("modMouseDown", "gMouseDownInit", bError);
    trap.step([&] {
        SteppingState& state = gSteppingState();
        state.lastButton = Button;
        state.lastValue = UpDown.value();
        UpDown.setIncrement(1);
    });
}

void gMouseDown(std::int16_t Button, ui::UpDownControl& UpDown, ErrorFlag& bError)
{
    rt::Trap trap("modMouseDown", "gMouseDown", bError);
    trap.step([&] {
        if (Button != ui::kLeftButton) return;
        SteppingState& state = gSteppingState();
        if (UpDown.value() == state.lastValue) {
            host::beep();
            return;
        }
        state.lastValue = UpDown.value();
        const float step = gfKeyMouseIncrement(static_cast<float>(UpDown.max()),
                                               static_cast<float>(UpDown.min()), 1, bError);
        UpDown.setIncrement(rt::toInt32(step));
    });
}
