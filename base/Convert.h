#pragma once
// Number conversions with the run-time's rules: whole-number conversions
// round half to even and fail with "Overflow" outside the target's range;
// integer division rounds both operands first; Int is the floor.
#include <cmath>
#include <cstdint>

namespace rt {

// Nearest whole number, a half going to the even neighbour (2.5 -> 2, 3.5 -> 4).
inline double roundHalfEven(double x) { return std::nearbyint(x); }

// To a 16-bit integer; error 6 "Overflow" outside -32768..32767 or for NaN.
std::int16_t toInt16(double x);
// To a 32-bit integer; error 6 "Overflow" outside the 32-bit range or for NaN.
std::int32_t toInt32(double x);
// To a 32-bit float (nearest); error 6 "Overflow" beyond the float range.
float toSingle(double x);

// Integer division a \ b: both operands rounded to 32-bit integers first, the
// quotient truncated toward zero. Error 11 "Division by zero" when b rounds to 0.
std::int32_t intDiv(double a, double b);

// Int(x): the largest whole number not above x (Int(-2.5) = -3).
inline double intFloor(double x) { return std::floor(x); }

}  // namespace rt
