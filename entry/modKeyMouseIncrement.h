#pragma once
// The one stepping state of the process, shared by every numeric box and
// spin control: a single press steps by one resolution, and while the key
// or arrow is held each step grows by one more resolution than the last
// (1, 2, 4, 7, 11 ... resolutions) until it reaches a twentieth of the
// field's range. Key-up and mouse-up end the press.
#include <cstdint>

#include "base/Types.h"

struct SteppingState {
    Bool16 stepping = kFalse;     // a key or spin arrow is held
    float range = 0;              // maximum - minimum of the field stepped
    float increment = 0;          // the current step
    std::int32_t repeatCount = 0; // times the step has grown in this press
    std::int16_t lastButton = 0;  // button of the last mouse-down on a spin control
    std::int32_t lastValue = 0;   // spin value at the last mouse-down or change
};

// The process-wide stepping state (read by the spin-control procedures and tests).
SteppingState& gSteppingState();

// The step to use now for a field with the given rule.
float gfKeyMouseIncrement(float Max, float Min, float Resolution, ErrorFlag& bError);

// Ends the press: the key-up handler of every stepped box and the mouse-up
// handler of every spin control call this, so the next press starts again
// at one resolution.
void gKeyMouseIncrementEnd();
