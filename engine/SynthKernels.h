#pragma once
// The signal engine's per-sample arithmetic: the phase accumulator, the four
// shapes and the noise source, each in two forms, and the shapes of a
// precise loop.
//  - The exact form computes one sample with the run-time's rules (32-bit
//    float where the generator works in Single, double where a Long meets a
//    Single, round half to even, run-time errors for division by zero and
//    overflow). It is the definition of every sample.
//  - The block form computes many samples at once, vectorised. It gives the
//    same bits as the exact form or says that it could not (a sine that lies
//    too close to a rounding boundary, a triangle that would fail); the caller
//    then recomputes that block with the exact form.
// Only modWaveInOut uses this file.
#include <cmath>
#include <cstdint>

#include "base/RuntimeError.h"
#include "engine/ToneLoop.h"

namespace synth {

// 2*pi and pi as the generator's 32-bit constants, and 2*pi as the double of
// the mark angle.
inline constexpr float kTwoPi = 6.2831855f;
inline constexpr float kPi = 3.1415927f;
inline constexpr double kMarkTwoPi = 6.2831854820251465;
inline constexpr std::int16_t kFullScale = 32767;

// Float and double division with the run-time's failures: x / 0 is "Division
// by zero", 0 / 0 is "Overflow", and so is a quotient beyond the type's range.
inline float divide(float a, float b)
{
    if (b == 0) rt::raise(a == 0 ? rt::kErrOverflow : rt::kErrDivisionByZero);
    const float q = a / b;
    if (std::isinf(q) && !std::isinf(a)) rt::raise(rt::kErrOverflow);
    return q;
}
inline double divide(double a, double b)
{
    if (b == 0) rt::raise(a == 0 ? rt::kErrOverflow : rt::kErrDivisionByZero);
    const double q = a / b;
    if (std::isinf(q) && !std::isinf(a)) rt::raise(rt::kErrOverflow);
    return q;
}

// Int(x) of a float: the largest whole number not above x (the conversion
// is the quick way for the usual non-negative values, with the same result).
inline float floorOf(float x)
{
    return x >= 0.0f && x < 8388608.0f ? static_cast<float>(static_cast<std::int32_t>(x))
                                       : std::floor(x);
}

// Samples per cycle (rate / frequency, a double quotient kept as a float) and
// the phase step per sample (2*pi / samples per cycle, in float).
struct PhaseStep {
    float samplesPerCycle = 0;
    float step = 0;
};
PhaseStep phaseStep(std::int32_t sampleRate, float frequency);

// One sample's phase advance: one step, then at most one wrap.
inline float nextPhase(float phase, float step)
{
    phase = phase + step;
    if (phase >= kTwoPi) phase = phase - kTwoPi;
    return phase;
}

// Advances the phase count times, storing every new phase; returns the last.
float phaseRun(float* phases, std::int32_t count, float phase, float step);

// The parameters of the shapes that depend on the percentage and the invert
// factor, worked out once per segment.
struct ShapeParams {
    double sineAmp = kFullScale;  // invert factor x 32767
    float ampF = kFullScale;      // the same, as the float the triangle uses
    std::int16_t amp = kFullScale;
    float mark = 0;               // percent x 2*pi / 100
    float half = 0;               // mark / 2
    float fall = 0;               // (2*pi - mark) / 2
    float riseEnd = 0;            // 2*pi - half
};
ShapeParams shapeParams(std::int16_t invertFactor, std::int32_t percent);

// Exact samples.
std::int16_t sineSample(float phase, const ShapeParams& p);
std::int16_t triangleSample(float phase, const ShapeParams& p);
inline std::int16_t markSpaceSample(float phase, const ShapeParams& p)
{
    return phase <= p.mark ? p.amp : static_cast<std::int16_t>(-p.amp);
}

// Block samples: true when all count samples are exact, false when the block
// must be recomputed with the exact form.
bool sineBlock(const float* phases, std::int16_t* out, std::int32_t count, const ShapeParams& p);
bool triangleBlock(const float* phases, std::int16_t* out, std::int32_t count,
                   const ShapeParams& p);
void markSpaceBlock(const float* phases, std::int16_t* out, std::int32_t count,
                    const ShapeParams& p);

// ---- Precise loops ----------------------------------------------------------
// A precise loop (ToneLoop.h) needs no phase accumulator: sample i (from 1)
// lies at position (cycles x i) mod length of the loop's length positions,
// which is the phase 2*pi x position / length without any rounding, and the
// shapes are worked out in double from that position. The same two forms:
// the exact one defines every sample, and a block hands back what it could
// get wrong, as above.

struct LoopParams {
    std::int32_t step = 0;       // positions advanced per sample: cycles mod length
    std::int32_t length = 1;
    double amp = kFullScale;     // invert factor x 32767
    double phaseScale = 0;       // radian per position: 2*pi / length
    // The triangle in positions: it rises from 0 to amp over [0, half],
    // falls through 0 at centre to -amp at riseEnd and rises back to 0.
    double half = 0;             // percent x length / 200
    double centre = 0;           // length / 2
    double fall = 0;             // centre - half
    double riseEnd = 0;          // length - half
    std::int32_t markEnd = 0;    // the mark's last position: percent x length / 100, down
};
LoopParams loopParams(std::int16_t invertFactor, std::int32_t percent, const ToneLoop& loop);

// Advances the position count times, storing every new one; returns the last.
std::int32_t positionRun(std::int32_t* positions, std::int32_t count, std::int32_t position,
                         const LoopParams& p);

// Exact samples at a position.
std::int16_t sineSample(std::int32_t position, const LoopParams& p);
std::int16_t triangleSample(std::int32_t position, const LoopParams& p);
inline std::int16_t markSpaceSample(std::int32_t position, const LoopParams& p)
{
    const auto amp = static_cast<std::int16_t>(p.amp);
    return position <= p.markEnd ? amp : static_cast<std::int16_t>(-amp);
}

// Block samples at positions, as above.
bool sineBlock(const std::int32_t* positions, std::int16_t* out, std::int32_t count,
               const LoopParams& p);
bool triangleBlock(const std::int32_t* positions, std::int16_t* out, std::int32_t count,
                   const LoopParams& p);
void markSpaceBlock(const std::int32_t* positions, std::int16_t* out, std::int32_t count,
                    const LoopParams& p);

// The sine's block form without the exactness check: the polynomial value of
// sin(phase) it rounds. Tests measure its error against the library sine.
double fastSine(float phase);
// How far amp x the polynomial sine may lie from amp x the library sine.
inline constexpr double kSineRoundingMargin = 1e-9;

// Uniform whole numbers low..high from a counter-based generator: draw i is
// a 64-bit mix of counter + i, mapped by multiply-shift with rejection, so a
// block of draws gives the same numbers as one draw after the other.
// The range may span at most 2^31 numbers.
struct UniformRange {
    std::int32_t low = 0;
    std::uint32_t span = 1;       // high - low + 1
    std::uint32_t threshold = 0;  // products below it are rejected
};
UniformRange uniformRange(std::int32_t low, std::int32_t high);
std::int32_t randomInRange(std::uint64_t& counter, const UniformRange& range);
void randomBlock(std::uint64_t& counter, const UniformRange& range, std::int16_t* out,
                 std::int32_t count);

}  // namespace synth
