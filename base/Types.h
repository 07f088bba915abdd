#pragma once
// The program's fixed-width value types.
#include <cstdint>

// A 16-bit Boolean: True is -1 (all bits set), False is 0, also when stored.
using Bool16 = std::int16_t;
inline constexpr Bool16 kTrue = -1;
inline constexpr Bool16 kFalse = 0;

// Turns a C++ truth value into the program's 16-bit Boolean.
constexpr Bool16 toBool16(bool b) { return b ? kTrue : kFalse; }

// The error flag every procedure takes last: set to kTrue when the procedure
// gave up after reporting; callers test it and skip their dependent steps.
using ErrorFlag = Bool16;
