#include "entry/modKeyDown.h"

#include "base/NumberText.h"
#include "base/Trap.h"
#include "entry/modControl.h"
#include "entry/modFormatNumber.h"
#include "entry/modKeyMouseIncrement.h"
#include "platform/HostServices.h"
#include "platform/KeyCodes.h"

std::string gsKeyDown(std::int16_t KeyCode, std::int16_t Shift, const std::string& Text,
                      float Max, float Min, float Resolution, ErrorFlag& bError)
{
    std::string result = Text;
    rt::Trap trap("modKeyDown", "gsKeyDown", bError);
    trap.step([&] {
        const bool page = KeyCode == ui::kKeyPageUp || KeyCode == ui::kKeyPageDown;
        const bool up = KeyCode == ui::kKeyUp || KeyCode == ui::kKeyPageUp;
        const bool down = KeyCode == ui::kKeyDown || KeyCode == ui::kKeyPageDown;
        const bool shift = (Shift & ui::kShiftMask) != 0;
        const bool ctrl = (Shift & ui::kCtrlMask) != 0;
        const bool home = KeyCode == ui::kKeyHome && (shift || ctrl);
        const bool end = KeyCode == ui::kKeyEnd && (shift || ctrl);
        if (!up && !down && !home && !end) return;

        if (!gbCtrlTextValidNumber(Text, bError)) {
            // The first press on a broken field shows the far limit, in the
            // user's form so that the next press steps on from it.
            result = rt::userText((end || up) ? Min : Max);
            return;
        }
        float step = gfKeyMouseIncrement(Max, Min, Resolution, bError);
        if (shift) step *= 10;
        if (ctrl) step *= 100;
        if (page) step *= 10;

        float value = rt::toSingleUser(Text);
        const bool movesDown = down || end;
        if ((movesDown && value == Min) || (!movesDown && value == Max)) {
            host::beep();
        } else if (home) {
            value = Max;
        } else if (end) {
            value = Min;
        } else if (up) {
            value += step;
        } else {
            value -= step;
        }
        if (value < Min) value = Min;
        if (value > Max) value = Max;
        result = rt::formatNumber(value, gsFormatNumber(Max, Min, Resolution, bError));
    });
    return result;
}
