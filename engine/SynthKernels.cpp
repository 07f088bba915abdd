#include "engine/SynthKernels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "base/Convert.h"

// The block loops are written so that the compiler vectorises them; on x86-64
// each is built for three instruction sets and the best one the processor has
// is chosen when the program starts. Not under ThreadSanitizer, whose
// instrumentation of the choosing code runs before the sanitizer is ready.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define SYNTH_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define SYNTH_CLONES
#endif
#define SYNTH_INLINE inline __attribute__((always_inline))

// The vector types below are only passed between inlined functions.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace synth {

namespace {

constexpr double kPiD = 3.141592653589793;

// sin(u) for 0 <= u <= pi/2: u + u^3 * P(u^2), P fitted at Chebyshev nodes.
// Its largest distance from the library sine over every float phase is
// below 1e-15.
SYNTH_INLINE double sinePolynomial(double u)
{
    const double u2 = u * u;
    double p = -7.4080525188903044e-13;
    p = p * u2 + 1.6050972041397525e-10;
    p = p * u2 + -2.5051972914745604e-08;
    p = p * u2 + 2.7557318055573081e-06;
    p = p * u2 + -0.00019841269836468075;
    p = p * u2 + 0.0083333333333259294;
    p = p * u2 + -0.16666666666666649;
    return u + u * u2 * p;
}

// sin(x) for 0 <= x < 2*pi: with t = x - pi, sin(x) = -sign(t) * sin(|t|),
// and sin(|t|) = sin(pi - |t|) brings the argument into 0..pi/2. Both
// subtractions are exact for these arguments.
SYNTH_INLINE double reducedSine(double x)
{
    const double t = x - kPiD;
    const double at = std::fabs(t);
    const double mirrored = kPiD - at;
    const double u = at < mirrored ? at : mirrored;
    const double s = sinePolynomial(u);
    return t < 0 ? s : -s;
}

}  // namespace

PhaseStep phaseStep(std::int32_t sampleRate, float frequency)
{
    PhaseStep result;
    result.samplesPerCycle =
        rt::toSingle(divide(static_cast<double>(sampleRate), static_cast<double>(frequency)));
    result.step = divide(kTwoPi, result.samplesPerCycle);
    return result;
}

float phaseRun(float* phases, std::int32_t count, float phase, float step)
{
    for (std::int32_t i = 0; i < count; ++i) {
        phase = nextPhase(phase, step);
        phases[i] = phase;
    }
    return phase;
}

ShapeParams shapeParams(std::int16_t invertFactor, std::int32_t percent)
{
    ShapeParams p;
    p.amp = static_cast<std::int16_t>(invertFactor * kFullScale);
    p.sineAmp = p.amp;
    p.ampF = p.amp;
    p.mark = rt::toSingle(percent * kMarkTwoPi / 100);
    p.half = divide(p.mark, 2.0f);
    p.fall = divide(kTwoPi - p.mark, 2.0f);
    p.riseEnd = kTwoPi - p.half;
    return p;
}

std::int16_t sineSample(float phase, const ShapeParams& p)
{
    return rt::toInt16(p.sineAmp * std::sin(static_cast<double>(phase)));
}

std::int16_t triangleSample(float phase, const ShapeParams& p)
{
    float value;
    if (phase <= p.half)
        // Without a rise (a sawtooth) this is phase 0, which lies on the
        // jump itself: its sample is the jump's middle.
        value = p.half == 0 ? 0.0f : divide(phase * p.ampF, p.half);
    else if (phase <= p.riseEnd)
        value = divide((kPi - phase) * p.ampF, p.fall);
    else
        value = divide((phase - kTwoPi) * p.ampF, p.half);
    return rt::toInt16(value);
}

double fastSine(float phase) { return reducedSine(phase); }

LoopParams loopParams(std::int16_t invertFactor, std::int32_t percent, const ToneLoop& loop)
{
    LoopParams p;
    p.length = loop.length;
    p.step = loop.cycles % loop.length;
    p.amp = static_cast<std::int16_t>(invertFactor * kFullScale);
    p.phaseScale = 2 * kPiD / loop.length;
    const double share = static_cast<double>(percent) * loop.length;  // exact
    p.half = share / 200;
    p.centre = loop.length / 2.0;
    p.fall = p.centre - p.half;
    p.riseEnd = loop.length - p.half;
    // share / 100 is exact when it is whole, so the floor never errs.
    p.markEnd = static_cast<std::int32_t>(std::floor(share / 100));
    return p;
}

std::int32_t positionRun(std::int32_t* positions, std::int32_t count, std::int32_t position,
                         const LoopParams& p)
{
    for (std::int32_t i = 0; i < count; ++i) {
        position += p.step;
        if (position >= p.length) position -= p.length;
        positions[i] = position;
    }
    return position;
}

std::int16_t sineSample(std::int32_t position, const LoopParams& p)
{
    return rt::toInt16(p.amp * std::sin(position * p.phaseScale));
}

std::int16_t triangleSample(std::int32_t position, const LoopParams& p)
{
    const double k = position;
    double value;
    if (k <= p.half)
        value = p.half == 0 ? 0.0 : (k * p.amp) / p.half;  // a sawtooth's jump: its middle
    else if (k <= p.riseEnd)
        value = ((p.centre - k) * p.amp) / p.fall;
    else
        value = ((k - p.length) * p.amp) / p.half;
    return rt::toInt16(value);
}

// ---- Blocks ---------------------------------------------------------------------
// Several samples at a time in the compiler's vector types, which each build
// maps onto its widest registers: eight lanes for the sine and the triangle
// (whose selects the compiler handles well at that width), sixteen for the
// mark/space. The operations are those of the exact forms, so
// every lane gives the same bits.

namespace {

using F8 = float __attribute__((vector_size(32)));
using D8 = double __attribute__((vector_size(64)));
using L8 = std::int64_t __attribute__((vector_size(64)));
using I8 = std::int32_t __attribute__((vector_size(32)));
using S8 = std::int16_t __attribute__((vector_size(16)));
using F16 = float __attribute__((vector_size(64)));
using I16 = std::int32_t __attribute__((vector_size(64)));
using S16 = std::int16_t __attribute__((vector_size(32)));

constexpr std::int64_t kAbsMask = 0x7FFFFFFFFFFFFFFF;
// Adding and taking off 1.5 x 2^52 (2^23 for a float) rounds to a whole
// number, a half to the even one, for magnitudes below 2^51 (2^22).
constexpr double kRoundD = 6755399441055744.0;
constexpr float kRoundF = 12582912.0f;
// Farthest a sine may lie from the nearest whole number and still round the
// same way with the library sine.
constexpr double kSineClear = 0.5 - kSineRoundingMargin;

SYNTH_INLINE D8 absD(D8 x) { return reinterpret_cast<D8>(reinterpret_cast<L8>(x) & kAbsMask); }

// The shapes as functors over a group of phases. Each keeps, lane by lane,
// how near it came to failing (with selects and arithmetic only: the compiler
// keeps these in vector registers, where integer masks would be taken apart
// lane by lane); ok() tells whether every sample of the block can be used. A
// value that is not finite turns `probe` (a sum of value - value) into NaN
// for good. The parameters are copied in, so that storing samples cannot
// change them as far as the compiler knows.
struct SineGroup {
    static constexpr int kLanes = 8;
    using Phases = F8;
    using Samples = S8;

    double amp;
    D8 worst = {};  // the largest distance from a whole number met
    D8 probe = {};

    SYNTH_INLINE S8 operator()(F8 phases) { return sineOf(__builtin_convertvector(phases, D8)); }

    SYNTH_INLINE S8 sineOf(D8 x)
    {
        const D8 t = x - kPiD;
        const D8 at = absD(t);
        const D8 mirrored = kPiD - at;
        const D8 u = at < mirrored ? at : mirrored;
        const D8 u2 = u * u;
        D8 p = u2 * -7.4080525188903044e-13 + 1.6050972041397525e-10;
        p = p * u2 + -2.5051972914745604e-08;
        p = p * u2 + 2.7557318055573081e-06;
        p = p * u2 + -0.00019841269836468075;
        p = p * u2 + 0.0083333333333259294;
        p = p * u2 + -0.16666666666666649;
        const D8 s = u + u * u2 * p;
        const D8 y = amp * (t < 0 ? s : -s);
        const D8 r = (y + kRoundD) - kRoundD;
        const D8 distance = absD(y - r);
        worst = distance <= worst ? worst : distance;
        probe = probe + (y - y);
        return __builtin_convertvector(__builtin_convertvector(r, I8), S8);
    }
    bool ok() const
    {
        for (int j = 0; j < kLanes; ++j)
            if (!(worst[j] <= kSineClear && probe[j] == 0)) return false;
        return true;
    }
};

// The triangle over eight lanes of phases (float, or a precise loop's
// positions in double), with the exact forms' operations. `centre` is where
// the fall crosses 0 and `cycle` the phase of a whole cycle.
template <class Value, class Mask, class Scalar, Scalar kRound>
struct TriangleLanes {
    static constexpr int kLanes = 8;
    using Samples = S8;

    Scalar amp, half, fall, riseEnd, centre, cycle;
    Value lowest = {};  // the smallest and largest quotients met
    Value highest = {};
    Value probe = {};

    SYNTH_INLINE S8 samplesAt(Value phase)
    {
        // Each branch's operand is chosen first and then multiplied: the
        // multiplication that branch makes.
        const Mask rising = phase <= half;
        const Mask falling = phase <= riseEnd;
        const Value later = falling ? centre - phase : phase - cycle;
        const Value operand = rising ? phase : later;
        const Value halves = Value{} + half;
        const Value denominator = rising ? halves : (falling ? Value{} + fall : halves);
        Value q = (operand * amp) / denominator;
        if (half == 0) q = rising ? Value{} : q;  // a sawtooth's jump, as in the exact forms
        lowest = q >= lowest ? lowest : q;
        highest = q <= highest ? highest : q;
        probe = probe + (q - q);
        const Value r = (q + kRound) - kRound;
        return __builtin_convertvector(__builtin_convertvector(r, I8), S8);
    }
    // Every quotient rounds to a 16-bit whole number.
    bool ok() const
    {
        for (int j = 0; j < kLanes; ++j)
            if (!(lowest[j] >= Scalar(-32768.5) && highest[j] < Scalar(32767.5) && probe[j] == 0))
                return false;
        return true;
    }
};

struct TriangleGroup : TriangleLanes<F8, I8, float, kRoundF> {
    using Phases = F8;

    explicit TriangleGroup(const ShapeParams& p)
        : TriangleLanes{p.ampF, p.half, p.fall, p.riseEnd, kPi, kTwoPi}
    {
    }

    SYNTH_INLINE S8 operator()(F8 phase) { return samplesAt(phase); }
};

// A precise loop's sine at its positions.
struct LoopSineGroup : SineGroup {
    using Phases = I8;

    double phaseScale;

    explicit LoopSineGroup(const LoopParams& p) : SineGroup{p.amp}, phaseScale(p.phaseScale) {}

    SYNTH_INLINE S8 operator()(I8 positions)
    {
        return sineOf(__builtin_convertvector(positions, D8) * phaseScale);
    }
};

// A precise loop's triangle at its positions, in double.
struct LoopTriangleGroup : TriangleLanes<D8, L8, double, kRoundD> {
    using Phases = I8;

    explicit LoopTriangleGroup(const LoopParams& p)
        : TriangleLanes{p.amp, p.half, p.fall, p.riseEnd, p.centre, static_cast<double>(p.length)}
    {
    }

    SYNTH_INLINE S8 operator()(I8 positions)
    {
        return samplesAt(__builtin_convertvector(positions, D8));
    }
};

struct MarkSpaceGroup {
    static constexpr int kLanes = 16;
    using Phases = F16;
    using Samples = S16;

    float mark;
    std::int32_t amp;

    explicit MarkSpaceGroup(const ShapeParams& p) : mark(p.mark), amp(p.amp) {}

    SYNTH_INLINE S16 operator()(F16 phase)
    {
        const I16 value = phase <= mark ? I16{} + amp : I16{} - amp;
        return __builtin_convertvector(value, S16);
    }
    bool ok() const { return true; }
};

struct LoopMarkSpaceGroup {
    static constexpr int kLanes = 16;
    using Phases = I16;
    using Samples = S16;

    std::int32_t markEnd;
    std::int32_t amp;

    explicit LoopMarkSpaceGroup(const LoopParams& p)
        : markEnd(p.markEnd), amp(static_cast<std::int32_t>(p.amp))
    {
    }

    SYNTH_INLINE S16 operator()(I16 positions)
    {
        const I16 value = positions <= markEnd ? I16{} + amp : I16{} - amp;
        return __builtin_convertvector(value, S16);
    }
    bool ok() const { return true; }
};

// Runs `shape` over count phases, a group at a time, and tells whether every
// sample can be used.
template <class Shape, class Phase>
SYNTH_INLINE bool groups(const Phase* phases, std::int16_t* out, std::int32_t count, Shape& shape)
{
    constexpr int kLanes = Shape::kLanes;
    using Phases = typename Shape::Phases;
    using Samples = typename Shape::Samples;
    std::int32_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        Phases group;
        std::memcpy(&group, phases + i, sizeof group);
        const Samples samples = shape(group);
        std::memcpy(out + i, &samples, sizeof samples);
    }
    if (i < count) {
        // The last group is filled up with copies of its last phase, which
        // cannot fail unless that one does.
        const std::int32_t rest = count - i;
        Phase lanes[kLanes];
        for (std::int32_t j = 0; j < kLanes; ++j) lanes[j] = phases[i + std::min(j, rest - 1)];
        Phases group;
        std::memcpy(&group, lanes, sizeof group);
        const Samples samples = shape(group);
        std::int16_t values[kLanes];
        std::memcpy(values, &samples, sizeof values);
        std::memcpy(out + i, values, static_cast<std::size_t>(rest) * sizeof(std::int16_t));
    }
    return shape.ok();
}

}  // namespace

SYNTH_CLONES
bool sineBlock(const float* phases, std::int16_t* out, std::int32_t count, const ShapeParams& p)
{
    SineGroup shape{p.sineAmp};
    return groups(phases, out, count, shape);
}

SYNTH_CLONES
bool triangleBlock(const float* phases, std::int16_t* out, std::int32_t count,
                   const ShapeParams& p)
{
    TriangleGroup shape(p);
    return groups(phases, out, count, shape);
}

SYNTH_CLONES
void markSpaceBlock(const float* phases, std::int16_t* out, std::int32_t count,
                    const ShapeParams& p)
{
    MarkSpaceGroup shape(p);
    groups(phases, out, count, shape);
}

SYNTH_CLONES
bool sineBlock(const std::int32_t* positions, std::int16_t* out, std::int32_t count,
               const LoopParams& p)
{
    LoopSineGroup shape(p);
    return groups(positions, out, count, shape);
}

SYNTH_CLONES
bool triangleBlock(const std::int32_t* positions, std::int16_t* out, std::int32_t count,
                   const LoopParams& p)
{
    LoopTriangleGroup shape(p);
    return groups(positions, out, count, shape);
}

SYNTH_CLONES
void markSpaceBlock(const std::int32_t* positions, std::int16_t* out, std::int32_t count,
                    const LoopParams& p)
{
    LoopMarkSpaceGroup shape(p);
    groups(positions, out, count, shape);
}

namespace {

// splitmix64's output function of the counter.
SYNTH_INLINE std::uint64_t mix(std::uint64_t counter)
{
    std::uint64_t z = counter * 0x9E3779B97F4A7C15ull;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

}  // namespace

UniformRange uniformRange(std::int32_t low, std::int32_t high)
{
    if (high < low) std::swap(low, high);
    UniformRange range;
    range.low = low;
    range.span = static_cast<std::uint32_t>(static_cast<std::int64_t>(high) - low + 1);
    range.threshold = (0u - range.span) % range.span;
    return range;
}

std::int32_t randomInRange(std::uint64_t& counter, const UniformRange& range)
{
    for (;;) {
        const std::uint64_t product = (mix(++counter) >> 32) * range.span;
        if (static_cast<std::uint32_t>(product) >= range.threshold)
            return range.low + static_cast<std::int32_t>(product >> 32);
    }
}

SYNTH_CLONES
void randomBlock(std::uint64_t& counter, const UniformRange& range, std::int16_t* out,
                 std::int32_t count)
{
    const std::uint64_t first = counter;
    int rejected = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint64_t product = (mix(first + 1 + static_cast<std::uint64_t>(i)) >> 32) *
                                      range.span;
        rejected |= static_cast<int>(static_cast<std::uint32_t>(product) < range.threshold);
        out[i] = static_cast<std::int16_t>(range.low + static_cast<std::int32_t>(product >> 32));
    }
    if (rejected == 0) {
        counter = first + static_cast<std::uint64_t>(count);
        return;
    }
    // A rejected draw shifts every later one: draw the block one by one.
    for (std::int32_t i = 0; i < count; ++i)
        out[i] = static_cast<std::int16_t>(randomInRange(counter, range));
}

}  // namespace synth
