#include "base/Convert.h"

#include <cfloat>
#include <limits>

#include "base/RuntimeError.h"

namespace rt {

namespace {

template <class Int>
Int roundedInto(double x)
{
    const double r = roundHalfEven(x);
    // The negated test also catches NaN.
    if (!(r >= static_cast<double>(std::numeric_limits<Int>::min()) &&
          r <= static_cast<double>(std::numeric_limits<Int>::max())))
        raise(kErrOverflow);
    return static_cast<Int>(r);
}

}  // namespace

std::int16_t toInt16(double x) { return roundedInto<std::int16_t>(x); }

std::int32_t toInt32(double x) { return roundedInto<std::int32_t>(x); }

float toSingle(double x)
{
    if (std::isnan(x)) return static_cast<float>(x);
    const float f = static_cast<float>(x);
    if (std::isinf(f) && !std::isinf(x)) raise(kErrOverflow);
    return f;
}

std::int32_t intDiv(double a, double b)
{
    const std::int32_t numerator = toInt32(a);
    const std::int32_t denominator = toInt32(b);
    if (denominator == 0) raise(kErrDivisionByZero);
    if (numerator == std::numeric_limits<std::int32_t>::min() && denominator == -1)
        raise(kErrOverflow);
    return numerator / denominator;
}

}  // namespace rt
