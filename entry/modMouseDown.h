#pragma once
// Accelerated stepping of a spin control held down with the mouse: the
// control repeats by itself while its arrow is held, and each repeat makes
// its Increment grow as a held key's step does.
#include <cstdint>

#include "base/Types.h"

namespace ui {
class UpDownControl;
}

// The spin control's mouse-down: remembers the button and the value, and
// starts the press at an Increment of 1.
void gMouseDownInit(std::int16_t Button, ui::UpDownControl& UpDown, ErrorFlag& bError);

// The spin control's change, given the button of the last mouse-down: with
// the left button, a value that did not move (the control stands at a limit)
// beeps; otherwise the Increment becomes the grown step, a whole number.
void gMouseDown(std::int16_t Button, ui::UpDownControl& UpDown, ErrorFlag& bError);
