#pragma once
// Stepping a numeric text box with the keys: Up / Down by the current step,
// Page Up / Page Down by ten steps, Shift x10 and Ctrl x100 on top; Shift or
// Ctrl with Home / End jump to the maximum / minimum.
#include <cstdint>
#include <string>

#include "base/Types.h"

// The box's new text after the key: the stepped value kept within Min..Max
// in the field's format, or Text itself for any other key (plain Home and
// End included). A step against the limit already reached beeps. A text
// that is not a number becomes the limit on the far side of the direction
// pressed (Up and End give the minimum, Down and Home the maximum), in the
// user's form ("0,25" with a comma locale), so stepping goes on from it.
std::string gsKeyDown(std::int16_t KeyCode, std::int16_t Shift, const std::string& Text,
                      float Max, float Min, float Resolution, ErrorFlag& bError);
