#pragma once
// Loading a spin control's limits and value in an order that never leaves
// its value outside its limits.
#include <cstdint>

#include "base/Types.h"

namespace ui {
class UpDownControl;
}

// Sets Min, then Max and Value (Value first when the new Max is below the
// control's present value), then Min again if the control did not keep it,
// then Increment. A Value outside Min..Max is refused with "Value (v) > Max
// (m)" or "Value (v) < Min (m)", the error flag is set and nothing changes.
void gUpDownSet(std::int32_t Value, std::int32_t Max, std::int32_t Min, std::int32_t Increment,
                ui::UpDownControl& UpDown, ErrorFlag& bError);
