#include "engine/ToneLoop.h"

#include <bit>
#include <cmath>
#include <numbers>

#include "base/RuntimeError.h"

namespace synth {

namespace {

// A ratio of whole numbers, both below 2^62.
struct Fraction {
    std::int64_t num = 0;
    std::int64_t den = 1;
};

constexpr int kFractionBits = 62;

// frequency / rate exactly: a float is a 24-bit whole number times a power
// of two.
Fraction exactRatio(std::int32_t rate, float frequency)
{
    int exponent = 0;
    const float mantissa = std::frexp(frequency, &exponent);
    std::int64_t num = static_cast<std::int64_t>(std::ldexp(mantissa, 24));
    int shift = exponent - 24;
    while (num % 2 == 0 && shift < 0) {
        num /= 2;
        ++shift;
    }
    std::int64_t den = rate;
    const auto bits = [](std::int64_t n) { return std::bit_width(static_cast<std::uint64_t>(n)); };
    if (shift >= 0) {
        if (bits(num) + shift > kFractionBits) rt::raise(rt::kErrOverflow);
        num <<= shift;
    } else {
        if (bits(den) - shift > kFractionBits) rt::raise(rt::kErrOverflow);
        den <<= -shift;
    }
    return {num, den};
}

// Whether cycles / length, missing num / den by residual / (length x den)
// (residual = |length x num - cycles x den|), is close enough.
bool withinErrors(std::int64_t residual, std::int64_t length, const Fraction& ratio)
{
    const double missed = static_cast<double>(residual);
    const bool phase = 2 * std::numbers::pi * missed < kLoopPhaseError * static_cast<double>(ratio.den);
    const bool frequency = missed < kLoopFrequencyError * static_cast<double>(length) *
                                        static_cast<double>(ratio.num);
    return phase && frequency;
}

}  // namespace

ToneLoop preciseToneLoop(std::int32_t lSampleRate, float fFrequency, std::int32_t maxLength)
{
    if (!(fFrequency > 0) || lSampleRate <= 0 || !(fFrequency < lSampleRate) || maxLength < 1)
        rt::raise(rt::kErrInvalidCall);
    const Fraction ratio = exactRatio(lSampleRate, fFrequency);
    // The convergents p/q of num/den, from its continued fraction: no
    // fraction with a smaller denominator comes closer, so the first one
    // that is close enough is the shortest loop. Euclid's remainder at the
    // step that gives a term is that convergent's |q x num - p x den|.
    std::int64_t pBefore = 0, qBefore = 1;  // the convergent before the last
    std::int64_t pLast = 1, qLast = 0;      // the last one
    ToneLoop best;
    std::int64_t dividend = ratio.num;
    std::int64_t divisor = ratio.den;
    while (divisor != 0) {
        const std::int64_t term = dividend / divisor;
        const std::int64_t remainder = dividend - term * divisor;
        if (qLast != 0 && term > (maxLength - qBefore) / qLast) break;  // longer than allowed
        const std::int64_t p = term * pLast + pBefore;
        const std::int64_t q = term * qLast + qBefore;
        if (p >= 1) {
            best = {static_cast<std::int32_t>(p), static_cast<std::int32_t>(q)};
            if (withinErrors(remainder, q, ratio)) break;
        }
        pBefore = pLast;
        qBefore = qLast;
        pLast = p;
        qLast = q;
        dividend = divisor;
        divisor = remainder;
    }
    if (best.cycles == 0) rt::raise(rt::kErrOverflow);
    return best;
}

}  // namespace synth
