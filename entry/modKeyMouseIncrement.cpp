#include "entry/modKeyMouseIncrement.h"

#include "base/Convert.h"
#include "base/Trap.h"

namespace {

SteppingState gState;

}  // namespace

SteppingState& gSteppingState() { return gState; }

float gfKeyMouseIncrement(float Max, float Min, float Resolution, ErrorFlag& bError)
{
    float step = 0;
    rt::Trap trap("modKeyMouseIncrement", "gfKeyMouseIncrement", bError);
    trap.step([&] {
        if (!gState.stepping) {
            gState.repeatCount = 0;
            gState.increment = Resolution;
            gState.stepping = kTrue;
        } else {
            gState.range = Max - Min;
            const float limit = gState.range / 20;
            if (gState.increment < limit) {
                gState.repeatCount = rt::toInt32(static_cast<double>(gState.repeatCount) + 1);
                // Float plus float times a 32-bit count is worked in double,
                // then kept as a float.
                gState.increment = rt::toSingle(static_cast<double>(gState.increment) +
                                                static_cast<double>(Resolution) * gState.repeatCount);
            }
        }
        step = gState.increment;
    });
    return step;
}

void gKeyMouseIncrementEnd() { gState.stepping = kFalse; }
