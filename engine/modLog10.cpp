#include "engine/modLog10.h"

#include <cmath>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"

float gfLog10(float fIn, ErrorFlag& bError)
{
    float result = 0;
    rt::Trap trap("modLog10", "gfLog10", bError);
    trap.step([&] {
        if (fIn <= 0)
            rt::raise(rt::kErrInvalidCall, "fIn(" + rt::userText(fIn) + ") <= 0");
        // The natural logarithms of the double-precision run-time, divided.
        result = rt::toSingle(std::log(static_cast<double>(fIn)) / std::log(10.0));
    });
    return result;
}
