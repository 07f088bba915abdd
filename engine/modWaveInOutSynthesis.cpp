// The signal engine's generator state and synthesis: the setters the main
// window calls, and the makers that turn the state into the sample buffer.
#include <algorithm>
#include <cmath>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "engine/SynthKernels.h"
#include "engine/ToneLoop.h"
#include "engine/modLog10.h"
#include "engine/modWaveInOutState.h"

using namespace waveio;

// The engine's state, which all four parts share.
waveio::EngineState waveio::gState;

namespace {

// Noise is always this long.
constexpr std::int32_t kNoiseLength = 262399;
constexpr float kFrequencyMin = 10;
// How close (radian) a continuous tone's last cycle must end to a sample.
constexpr float kEndTolerance = 0.005f;
// A sweep is written at this many samples per hertz of its highest frequency.
constexpr float kSweepRatePerHertz = 80;
// Samples per pass of the phase accumulator before the shape is worked out.
constexpr std::int32_t kBlock = 512;

// Any text but these three makes a sine.
Shape shapeOf(const std::string& text)
{
    if (text == "Triangle") return Shape::Triangle;
    if (text == "MarkSpace") return Shape::MarkSpace;
    if (text == "Noise") return Shape::Noise;
    return Shape::Sine;
}

}  // namespace

// ---- Generator state ---------------------------------------------------------------

void gWaveOutSetShape(const std::string& sShape)
{
    gState.generator.shapeText = sShape;
    gState.generator.shape = shapeOf(sShape);
}

void gWaveOutSetPercent(std::int16_t nPercent) { gState.generator.percent = nPercent; }

void gWaveOutSetInvert(Bool16 bInvert) { gState.generator.invert = bInvert ? -1 : 1; }

void gWaveOutSetPreciseLoop(Bool16 bPrecise) { gState.generator.preciseLoop = bPrecise != kFalse; }

void gWaveOutSetFrequency1SweepBurst(float fFrequency1, float fFrequency2, float fDuration,
                                     Bool16 bLogarithmic, Bool16 bBidirectional,
                                     std::int16_t nSteps, float fBurstCycles,
                                     std::int32_t lBurstPeriod, ErrorFlag& bError)
{
    Generator& generator = gState.generator;
    rt::Trap trap(kModule, "gWaveOutSetFrequency1SweepBurst", bError);
    trap.step([&] {
        if (!gbWaveOutFrequencyInRange(fFrequency1, kTrue, bError) || bError) trap.leave();
    });
    trap.step([&] { generator.frequency1 = fFrequency1; });
    trap.step([&] {
        if (fFrequency2 != 0 && (!gbWaveOutFrequencyInRange(fFrequency2, kTrue, bError) || bError))
            trap.leave();
    });
    trap.step([&] {
        generator.frequency2 = fFrequency2;
        generator.duration = fDuration;
        generator.bidirectional = bBidirectional;
        generator.logarithmic = bLogarithmic;
        generator.sweepSteps = nSteps;
        generator.burstCycles = fBurstCycles;
        generator.burstPeriod = rt::toInt16(lBurstPeriod);
    });
}

Bool16 gbWaveOutFrequencyInRange(float fFrequency, Bool16 bShowMessage, ErrorFlag& bError)
{
    Bool16 inRange = kFalse;
    rt::Trap trap(kModule, "gbWaveOutFrequencyInRange", bError);
    trap.step([&] {
        const float maximum = gState.devices.output.frequencyMax;
        inRange = toBool16(fFrequency >= kFrequencyMin && fFrequency <= maximum);
        if (inRange || !bShowMessage) return;
        host::msgBox("Frequency (" + rt::userText(fFrequency) + ") out of range (" +
                         std::to_string(static_cast<int>(kFrequencyMin)) + "-" +
                         rt::userText(maximum) + " (Hz))",
                     host::kExclamation, std::string(kModule) + ".gbWaveOutFrequencyInRange");
    });
    return inRange;
}

void mWaveIOSetFormatEx(std::int32_t lSampleRate, std::int16_t nBits, mm::WAVEFORMATEX& tFormat,
                        ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveIOSetFormatEx", bError);
    trap.step([&] {
        constexpr std::int16_t kChannels = 1;
        // channels x bits / 8 is a float quotient, kept as a whole number.
        const std::int16_t blockAlign = rt::toInt16(static_cast<float>(kChannels * nBits) / 8.0f);
        const std::int32_t bytesPerSecond =
            rt::toInt32(static_cast<double>(lSampleRate) * blockAlign);
        tFormat.wFormatTag = mm::WAVE_FORMAT_PCM;
        tFormat.nChannels = kChannels;
        tFormat.nSamplesPerSec = static_cast<mm::DWORD>(lSampleRate);
        tFormat.wBitsPerSample = static_cast<mm::WORD>(nBits);
        tFormat.nBlockAlign = static_cast<mm::WORD>(blockAlign);
        tFormat.nAvgBytesPerSec = static_cast<mm::DWORD>(bytesPerSecond);
        tFormat.cbSize = 0;
    });
}

std::int32_t glWaveOutMakeSetFormatEx(std::int16_t nBits, rt::SampleArray& anSamples,
                                      ErrorFlag& bError)
{
    std::int32_t lSampleRate = 0;
    rt::Trap trap(kModule, "glWaveOutMakeSetFormatEx", bError);
    trap.step([&] {
        lSampleRate = glWaveOutMake(anSamples, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mWaveIOSetFormatEx(lSampleRate, nBits, gState.output.format, bError); });
    return lSampleRate;
}

// ---- One frequency -------------------------------------------------------------------

namespace {

// The shape of one block of phases (float phases with ShapeParams, a precise
// loop's positions with LoopParams); false when the block must be recomputed
// with the exact formulas.
template <class Phase, class Params>
bool blockSamples(Shape shape, const Params& params, const Phase* phases, std::int16_t* out,
                  std::int32_t count)
{
    switch (shape) {
    case Shape::Triangle: return synth::triangleBlock(phases, out, count, params);
    case Shape::MarkSpace: synth::markSpaceBlock(phases, out, count, params); return true;
    default: return synth::sineBlock(phases, out, count, params);
    }
}

template <class Phase, class Params>
std::int16_t exactSample(Shape shape, const Params& params, Phase phase)
{
    switch (shape) {
    case Shape::Triangle: return synth::triangleSample(phase, params);
    case Shape::MarkSpace: return synth::markSpaceSample(phase, params);
    default: return synth::sineSample(phase, params);
    }
}

// Writes samples next..last, a block at a time: the phases first (the one
// sequential part), then the shape over the block. A sample that fails
// leaves next at its index and phase at the phase before it, so that a retry
// starts over from that sample.
void writeSegment(Shape shape, const synth::ShapeParams& params, float step, std::int32_t& next,
                  std::int32_t last, float& phase)
{
    if (next < 1) rt::raise(rt::kErrSubscript);
    SampleStore& samples = gState.generator.samples;
    const bool exactOnly = gState.generator.exactSamplesOnly;
    float phases[kBlock];
    while (next <= last) {
        const std::int32_t first = next;
        const std::int32_t count = std::min(kBlock, last - first + 1);
        const float startPhase = phase;
        const float endPhase = synth::phaseRun(phases, count, startPhase, step);
        std::int16_t* out = samples.beginWrite(first, count);
        if (exactOnly || !blockSamples(shape, params, phases, out, count)) {
            for (std::int32_t j = 0; j < count; ++j) {
                try {
                    out[j] = exactSample(shape, params, phases[j]);
                } catch (...) {
                    samples.endWrite(first + j - 1);
                    next = first + j;
                    phase = j == 0 ? startPhase : phases[j - 1];
                    throw;
                }
            }
        }
        samples.endWrite(first + count - 1);
        next = first + count;
        phase = endPhase;
    }
}

}  // namespace

// Writes indices lPtrStart..lPtrEnd of the engine's buffer with the current
// shape at fFrequency; fPhase carries the phase in and out, and the first
// sample is one step past the phase handed in. Writing stops at the end of
// the buffer's dimension.
void mWaveOutMakeOneFrequency(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                              std::int32_t lPtrEnd, float& fPhase, ErrorFlag& bError)
{
    Generator& generator = gState.generator;
    rt::Trap trap(kModule, "mWaveOutMakeOneFrequency", bError);
    synth::PhaseStep step;
    synth::ShapeParams params;
    std::int32_t next = lPtrStart;
    std::int32_t last = 0;
    trap.step([&] { step = synth::phaseStep(lSampleRate, fFrequency); });
    trap.step([&] {
        if (generator.invert == 0) generator.invert = 1;
        params = synth::shapeParams(generator.invert, generator.percent);
    });
    // A write past the buffer's dimension ends the segment.
    trap.step([&] { last = std::min(lPtrEnd, generator.samples.upper()); });
    while (next <= last && !trap.leaving()) {
        bool written = false;
        trap.step([&] {
            writeSegment(generator.shape, params, step.step, next, last, fPhase);
            written = true;
        });
        if (!written && !trap.leaving()) {
            // Ignored: the failing sample stays 0 and the next one follows.
            fPhase = synth::nextPhase(fPhase, step.step);
            if (next >= 1) generator.samples.set(next, 0);
            ++next;
        }
    }
}

// The length of a buffer of whole cycles whose end lies within fTolerance
// radian of a sample, searched over up to 32,767 cycles (more overflows).
std::int32_t mlPtrEndInTolerance(std::int32_t lSampleRate, float fFrequency, float fTolerance,
                                 ErrorFlag& bError)
{
    std::int32_t result = 0;
    synth::PhaseStep step;
    std::int16_t n = 1;
    float target = 0;
    float a = 0;
    float b = 0;
    rt::Trap trap(kModule, "mlPtrEndInTolerance", bError);
    trap.step([&] { step = synth::phaseStep(lSampleRate, fFrequency); });
    trap.step([&] {
        for (;;) {
            target = static_cast<float>(n) * synth::kTwoPi;
            // The phase at the last whole sample not past n cycles, and one later.
            a = synth::floorOf(static_cast<float>(n) * step.samplesPerCycle) * step.step;
            b = a + step.step;
            if (std::fabs(a - target) < fTolerance || std::fabs(b - target) < fTolerance) break;
            if (n == INT16_MAX) rt::raise(rt::kErrOverflow);  // the 16-bit count
            ++n;
        }
    });
    trap.step([&] {
        if (std::fabs(a - target) < fTolerance)
            result = rt::toInt32(synth::divide(a, step.step));
        else if (std::fabs(b - target) < fTolerance)
            result = rt::toInt32(synth::divide(b, step.step));
    });
    return result;
}

namespace {

// Writes the whole precise loop from index 1, a block at a time: the
// positions first, then the shape over the block.
void writeLoop(Shape shape, const synth::LoopParams& params)
{
    SampleStore& samples = gState.generator.samples;
    const bool exactOnly = gState.generator.exactSamplesOnly;
    std::int32_t positions[kBlock];
    std::int32_t position = 0;
    for (std::int32_t first = 1; first <= params.length; first += kBlock) {
        const std::int32_t count = std::min(kBlock, params.length - first + 1);
        position = synth::positionRun(positions, count, position, params);
        std::int16_t* out = samples.beginWrite(first, count);
        if (exactOnly || !blockSamples(shape, params, positions, out, count))
            for (std::int32_t j = 0; j < count; ++j)
                out[j] = exactSample(shape, params, positions[j]);
        samples.endWrite(first + count - 1);
    }
}

// Writes the continuous tone at fFrequency as a precise loop from index 1 of
// the engine's buffer and returns its length.
std::int32_t mlWaveOutMakePreciseLoop(std::int32_t lSampleRate, float fFrequency,
                                      ErrorFlag& bError)
{
    Generator& generator = gState.generator;
    synth::ToneLoop loop;
    rt::Trap trap(kModule, "mlWaveOutMakePreciseLoop", bError);
    trap.step(
        [&] { loop = synth::preciseToneLoop(lSampleRate, fFrequency, kDimension); });
    trap.step([&] {
        if (loop.length < 1) return;  // an ignored failure of the search
        if (generator.invert == 0) generator.invert = 1;
        writeLoop(generator.shape, synth::loopParams(generator.invert, generator.percent, loop));
    });
    return loop.length;
}

}  // namespace

std::int16_t gnRandomInteger(std::int16_t nLow, std::int16_t nHigh)
{
    return static_cast<std::int16_t>(
        synth::randomInRange(gState.generator.randomCounter, synth::uniformRange(nLow, nHigh)));
}

// ---- Sweep ----------------------------------------------------------------------------

namespace {

// The index at which a segment starting at lPtrStart with phase fPhase
// completes its next whole cycle after lPtrEnd.
std::int32_t mlPtrEndNearest(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                             std::int32_t lPtrEnd, float fPhase, ErrorFlag& bError)
{
    std::int32_t result = 0;
    rt::Trap trap(kModule, "mlPtrEndNearest", bError);
    trap.step([&] {
        const synth::PhaseStep step = synth::phaseStep(lSampleRate, fFrequency);
        const std::int32_t count = rt::toInt32(static_cast<double>(lPtrEnd) - lPtrStart + 1);
        const double twoPi = synth::kTwoPi;
        const double endPhase = fPhase + static_cast<double>(step.step) * count;
        const double boundary = (std::floor(synth::divide(endPhase, twoPi)) + 1) * twoPi;
        result = rt::toInt32(lPtrStart + synth::divide(boundary - fPhase, double{step.step}));
    });
    return result;
}

// One pass of the sweep's steps, up or down, from lPtrStart; returns the last
// index written (lPtrStart - 1 when there is no step).
std::int32_t mlWaveOutMakeOneSweep(Bool16 bUp, std::int32_t lSampleRate, float fStep,
                                   float fSamplesPerStep, std::int32_t lPtrStart, float& fPhase,
                                   ErrorFlag& bError)
{
    const Generator& generator = gState.generator;
    std::int32_t lPtr = lPtrStart;
    std::int32_t lEnd = lPtrStart - 1;
    std::int32_t i = 1;
    rt::Trap trap(kModule, "mlWaveOutMakeOneSweep", bError);
    trap.step([&] {
        const std::int32_t steps = generator.sweepSteps;
        for (; i <= steps - 1; ++i) {
            const std::int32_t m = (bUp ? i : steps - i) - 1;
            // step x m is a float product; 10 ^ it is a double.
            const float stepsUp = fStep * static_cast<float>(m);
            const float frequency =
                generator.logarithmic
                    ? rt::toSingle(generator.frequency1 * std::pow(10.0, static_cast<double>(stepsUp)))
                    : generator.frequency1 + stepsUp;
            const std::int32_t end = rt::toInt32(static_cast<double>(lPtr) + fSamplesPerStep);
            mWaveOutMakeOneFrequency(frequency, lSampleRate, lPtr, end, fPhase, bError);
            if (bError) {
                trap.leave();
                return;
            }
            lEnd = end;
            lPtr = end + 1;
        }
    });
    return lEnd;
}

}  // namespace

std::int32_t glWaveOutMakeSweep(std::int32_t lSampleRate, ErrorFlag& bError)
{
    const Generator& generator = gState.generator;
    std::int32_t lEnd = 0;
    float fStep = 0;
    float fSamplesPerStep = 0;
    float fPhase = 0;
    rt::Trap trap(kModule, "glWaveOutMakeSweep", bError);
    trap.step([&] {
        const std::int16_t steps = generator.sweepSteps;
        if (generator.logarithmic) {
            const float decades =
                gfLog10(synth::divide(generator.frequency2, generator.frequency1), bError);
            if (bError) {
                trap.leave();
                return;
            }
            // One step fewer than the linear law divides by: kept as designed.
            fStep = synth::divide(decades, static_cast<float>(rt::toInt16(steps - 1.0)));
        } else {
            fStep = synth::divide(generator.frequency2 - generator.frequency1,
                                  static_cast<float>(steps));
        }
    });
    trap.step([&] {
        const double samples = static_cast<double>(generator.duration) * lSampleRate;
        fSamplesPerStep =
            rt::toSingle(synth::divide(samples, static_cast<double>(generator.sweepSteps)));
    });
    trap.step([&] {
        lEnd = mlWaveOutMakeOneSweep(kTrue, lSampleRate, fStep, fSamplesPerStep, 1, fPhase, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        if (!generator.bidirectional) return;
        lEnd = mlWaveOutMakeOneSweep(kFalse, lSampleRate, fStep, fSamplesPerStep,
                                     rt::toInt32(lEnd + 1.0), fPhase, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        // The closing segment ends on a whole cycle, so the sweep loops cleanly.
        const std::int32_t start = rt::toInt32(lEnd + 1.0);
        const std::int32_t provisionalEnd =
            rt::toInt32(fSamplesPerStep + static_cast<double>(start));
        const float frequency =
            generator.bidirectional ? generator.frequency1 + fStep : generator.frequency2;
        const std::int32_t end =
            mlPtrEndNearest(frequency, lSampleRate, start, provisionalEnd, fPhase, bError);
        if (bError) {
            trap.leave();
            return;
        }
        mWaveOutMakeOneFrequency(frequency, lSampleRate, start, end, fPhase, bError);
        lEnd = end;
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        while (generator.samples.get(lEnd) > 0) --lEnd;
    });
    return lEnd;
}

// ---- The whole buffer ---------------------------------------------------------------

namespace {

void copyOut(rt::SampleArray& anSamples)
{
    const std::span<const std::int16_t> samples = gState.generator.samples.settled();
    anSamples.redim(1, 0);
    anSamples.items().assign(samples.begin(), samples.end());
}

// The frequency a buffer of lLength samples at lSampleRate plays, looped,
// when it holds whole cycles of fFrequency: their count is the nearest whole
// number, which both kinds of loop come far closer to than half a cycle.
double mfLoopFrequency(std::int32_t lSampleRate, float fFrequency, std::int32_t lLength)
{
    if (lLength < 1) return 0;  // an ignored failure left no loop
    const double cycles = std::round(static_cast<double>(lLength) * fFrequency / lSampleRate);
    return lSampleRate * cycles / lLength;
}

void makeNoise()
{
    Generator& generator = gState.generator;
    std::int16_t* out = generator.samples.beginWrite(1, kNoiseLength);
    synth::randomBlock(generator.randomCounter, synth::uniformRange(-32767, 32767), out,
                       kNoiseLength);
    generator.samples.endWrite(kNoiseLength);
}

}  // namespace

std::int32_t glWaveOutMake(rt::SampleArray& anSamples, ErrorFlag& bError)
{
    Generator& generator = gState.generator;
    const std::int32_t deviceRate = gState.devices.output.sampleRate;
    std::int32_t lSampleRate = 0;
    std::int32_t lLength = 0;
    bool silence = false;
    bool burst = false;
    bool tone = false;
    rt::Trap trap(kModule, "glWaveOutMake", bError);
    trap.step([&] {
        generator.playedFrequency = 0;
        generator.madeRate = 0;
        lSampleRate = deviceRate;
        silence = generator.frequency1 == 0;
        // Silence keeps the length of the last signal.
        lLength = silence ? generator.samples.upper() : kDimension;
        generator.samples.redimZero(lLength);
    });
    trap.step([&] {
        if (silence) return;
        const float frequency1 = generator.frequency1;
        if (generator.shape == Shape::Noise) {
            makeNoise();
            lLength = kNoiseLength;
            return;
        }
        if (generator.frequency2 != 0) {
            const float highest = std::max(frequency1, generator.frequency2);
            lSampleRate = std::min(rt::toInt32(kSweepRatePerHertz * highest), deviceRate);
            lLength = glWaveOutMakeSweep(lSampleRate, bError);
            trap.leaveOnError(bError);
            return;
        }
        burst = generator.burstCycles > 0;
        tone = !burst;
        if (tone && generator.preciseLoop) {
            lLength = mlWaveOutMakePreciseLoop(lSampleRate, frequency1, bError);
            trap.leaveOnError(bError);
            return;
        }
        if (burst) {
            const double samples = static_cast<double>(generator.burstCycles) * lSampleRate;
            lLength = rt::toInt32(synth::divide(samples, double{frequency1}));
        } else {
            lLength = mlPtrEndInTolerance(lSampleRate, frequency1, kEndTolerance, bError);
            if (bError) {
                trap.leave();
                return;
            }
        }
        float fPhase = 0;
        mWaveOutMakeOneFrequency(frequency1, lSampleRate, 1, lLength, fPhase, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        if (!burst) return;
        // The last sample of the cycles is silenced, then silence fills the period.
        generator.samples.set(lLength, 0);
        const std::int32_t periodSamples =
            rt::toInt32(static_cast<double>(generator.burstPeriod) * lSampleRate);
        lLength = rt::intDiv(periodSamples, 1000);
    });
    trap.step([&] {
        generator.samples.redimPreserve(lLength);
        copyOut(anSamples);
        generator.madeRate = lSampleRate;
        if (tone)
            generator.playedFrequency = mfLoopFrequency(lSampleRate, generator.frequency1, lLength);
    });
    return lSampleRate;
}

std::int32_t glWaveOutMadeSamples(std::int32_t lMax, rt::SampleArray& anSamples)
{
    anSamples.redim(1, 0);
    const Generator& generator = gState.generator;
    if (generator.madeRate == 0) return 0;
    const std::span<const std::int16_t> samples = gState.generator.samples.settled();
    const std::size_t count =
        lMax > 0 ? std::min(samples.size(), static_cast<std::size_t>(lMax)) : samples.size();
    anSamples.items().assign(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count));
    return generator.madeRate;
}

double gfWaveOutFrequencyPlayed() { return gState.generator.playedFrequency; }
