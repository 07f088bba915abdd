#include "engine/modWaveInOut.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <source_location>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "engine/SynthKernels.h"
#include "engine/modLog10.h"
#include "platform/HostServices.h"

namespace {

constexpr const char* kModule = "modWaveInOut";

// Every make starts from a buffer of this many samples and cuts it to the
// length it made.
constexpr std::int32_t kDimension = 2099999;
// Noise is always this long.
constexpr std::int32_t kNoiseLength = 262399;
constexpr float kFrequencyMin = 10;
// How close (radian) a continuous tone's last cycle must end to a sample.
constexpr float kEndTolerance = 0.005f;
// A sweep is written at this many samples per hertz of its highest frequency.
constexpr float kSweepRatePerHertz = 80;
// Samples per pass of the phase accumulator before the shape is worked out.
constexpr std::int32_t kBlock = 512;

// ---- The sample buffer --------------------------------------------------------

// The engine's sample buffer, indexed from 1. A make dimensions it to
// kDimension samples, all zero, and then cuts it to the few hundred or
// thousand it made. Clearing 4.2 MB for that would cost more than the make
// itself, so the zeros are kept lazily: samples past valid_ read as 0
// whatever the memory holds, memory from dirty_ on is known to hold zeros,
// and the part in between is cleared only when the samples are handed out
// (settle). The memory is allocated once, zeroed by the system, and grows
// only for a burst period longer than the dimension.
class SampleStore {
public:
    std::int32_t upper() const
    {
        if (!dimensioned_) rt::raise(rt::kErrSubscript);
        return size_;
    }

    // ReDim 1..upper: every sample 0.
    void redimZero(std::int32_t upper)
    {
        checkUpper(upper);
        reserve(upper);
        size_ = upper;
        valid_ = 0;
        dimensioned_ = true;
    }
    // ReDim Preserve 1..upper: samples kept, new ones 0.
    void redimPreserve(std::int32_t upper)
    {
        checkUpper(upper);
        reserve(upper);
        size_ = upper;
        valid_ = std::min(valid_, upper);
        dimensioned_ = true;
    }

    std::int16_t get(std::int32_t index) const
    {
        checkIndex(index);
        return index <= valid_ ? memory_[index - 1] : std::int16_t{0};
    }
    void set(std::int32_t index, std::int16_t value)
    {
        checkIndex(index);
        extendValidTo(index - 1);
        dirty_ = std::max(dirty_, index);
        memory_[index - 1] = value;
        valid_ = std::max(valid_, index);
    }

    // Memory for samples index..index + count - 1 (all within the dimension),
    // to be written in order; endWrite(last) then declares 1..last valid.
    std::int16_t* beginWrite(std::int32_t index, std::int32_t count)
    {
        checkIndex(index);
        checkIndex(index + count - 1);
        extendValidTo(index - 1);
        dirty_ = std::max(dirty_, index + count - 1);
        return memory_.get() + (index - 1);
    }
    void endWrite(std::int32_t last) { valid_ = std::max(valid_, last); }

    // The samples 1..upper, with the zeros they should hold in memory.
    std::span<const std::int16_t> settled()
    {
        if (!dimensioned_) return {};
        zeroRange(valid_, size_);
        valid_ = size_;
        return {memory_.get(), static_cast<std::size_t>(size_)};
    }

private:
    struct FreeMemory {
        void operator()(std::int16_t* p) const { std::free(p); }
    };

    static void checkUpper(std::int32_t upper)
    {
        if (upper < 1) rt::raise(rt::kErrSubscript);
    }
    void checkIndex(std::int32_t index) const
    {
        if (!dimensioned_ || index < 1 || index > size_) rt::raise(rt::kErrSubscript);
    }

    void reserve(std::int32_t count)
    {
        if (count <= capacity_) return;
        const std::int32_t capacity = std::max(count, kDimension);
        auto* fresh = static_cast<std::int16_t*>(std::calloc(capacity, sizeof(std::int16_t)));
        if (fresh == nullptr) throw std::bad_alloc();
        if (memory_) std::memcpy(fresh, memory_.get(), static_cast<std::size_t>(valid_) * 2);
        memory_.reset(fresh);
        capacity_ = capacity;
        dirty_ = valid_;
    }

    // Clears memory elements from..to - 1 (0-based) where they may be dirty.
    void zeroRange(std::int32_t from, std::int32_t to)
    {
        const std::int32_t end = std::min(to, dirty_);
        if (from >= end) return;
        std::memset(memory_.get() + from, 0, static_cast<std::size_t>(end - from) * 2);
        if (end == dirty_) dirty_ = from;
    }
    // Samples valid_ + 1..last become valid zeros.
    void extendValidTo(std::int32_t last)
    {
        if (last <= valid_) return;
        zeroRange(valid_, last);
        valid_ = last;
    }

    std::unique_ptr<std::int16_t[], FreeMemory> memory_;
    std::int32_t capacity_ = 0;
    std::int32_t size_ = 0;
    std::int32_t valid_ = 0;
    std::int32_t dirty_ = 0;
    bool dimensioned_ = false;
};

// ---- The generator state ----------------------------------------------------

struct GeneratorState {
    WaveOutDeviceInfo waveOutInfo;
    WaveInDeviceInfo waveInInfo;
    SampleStore samples;
    rt::Array<mm::WAVEHDR> waveOutHdr;  // 1-based, used by playback
    rt::Array<mm::WAVEHDR> waveInHdr;   // 1-based, used by capture
    Bool16 bidirectional = kFalse;
    Bool16 logarithmic = kFalse;
    float burstCycles = 0;              // <= 0: continuous
    float frequency1 = 0;               // Hz; 0 gives silence
    float frequency2 = 0;               // Hz; 0: no sweep
    float duration = 0;                 // s, of a sweep
    std::int32_t waveInDeviceId = 0;
    std::int32_t waveInHandle = 0;      // 0 when closed
    std::int32_t waveOutDeviceId = 0;
    std::int32_t waveOutHandle = 0;     // 0 when closed
    std::int32_t percent = 0;
    std::int16_t currentHdr = 1;        // the output header last loaded
    std::int16_t burstPeriod = 0;       // ms
    std::int16_t invert = 0;            // +1, -1; 0 counts as +1
    std::string shape;
    std::int16_t sweepSteps = 0;
    mm::WAVEFORMATEX waveInFormat;
    mm::WAVEFORMATEX waveOutFormat;
    std::uint64_t randomCounter = 0;    // the noise source's position
};

GeneratorState gState;

// A trap that is made only when a step fails, for the procedures a make runs
// thousands of times (the segment writer runs once per sweep step): making a
// Trap costs its two names, and a make should cost only its samples. A
// failure is handed to the trap made then, with the same answers: Retry runs
// the failed step again, Ignore goes on, Abort sets the flag and leaves.
class LazyTrap {
public:
    LazyTrap(const char* procedure, ErrorFlag& bError) : procedure_(procedure), error_(bError) {}

    template <class Body>
    bool step(Body&& body, std::source_location where = std::source_location::current())
    {
        if (trap_) return trap_->step(body, where);
        if (leaving_) return false;
        try {
            body();
            return true;
        } catch (...) {
            const std::exception_ptr failure = std::current_exception();
            trap_.emplace(kModule, procedure_, error_);
            bool replayed = false;
            return trap_->step(
                [&] {
                    if (!replayed) {
                        replayed = true;
                        std::rethrow_exception(failure);
                    }
                    body();
                },
                where);
        }
    }
    bool leaving() const { return trap_ ? trap_->leaving() : leaving_; }
    void leave()
    {
        if (trap_) trap_->leave();
        leaving_ = true;
    }

private:
    const char* procedure_;
    ErrorFlag& error_;
    std::optional<rt::Trap> trap_;
    bool leaving_ = false;
};

// Tests switch the vectorised blocks off to compare them with the plain formulas.
bool gExactSamplesOnly = false;

}  // namespace

WaveOutDeviceInfo& gWaveOutInfo() { return gState.waveOutInfo; }
WaveInDeviceInfo& gWaveInInfo() { return gState.waveInInfo; }

void gWaveOutSetShape(const std::string& sShape) { gState.shape = sShape; }

void gWaveOutSetPercent(std::int16_t nPercent) { gState.percent = nPercent; }

void gWaveOutSetInvert(Bool16 bInvert) { gState.invert = bInvert ? -1 : 1; }

void gWaveOutSetFrequency1SweepBurst(float fFrequency1, float fFrequency2, float fDuration,
                                     Bool16 bLogarithmic, Bool16 bBidirectional,
                                     std::int16_t nSteps, float fBurstCycles,
                                     std::int32_t lBurstPeriod, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveOutSetFrequency1SweepBurst", bError);
    trap.step([&] {
        if (!gbWaveOutFrequencyInRange(fFrequency1, kTrue, bError) || bError) trap.leave();
    });
    trap.step([&] { gState.frequency1 = fFrequency1; });
    trap.step([&] {
        if (fFrequency2 != 0 && (!gbWaveOutFrequencyInRange(fFrequency2, kTrue, bError) || bError))
            trap.leave();
    });
    trap.step([&] {
        gState.frequency2 = fFrequency2;
        gState.duration = fDuration;
        gState.bidirectional = bBidirectional;
        gState.logarithmic = bLogarithmic;
        gState.sweepSteps = nSteps;
        gState.burstCycles = fBurstCycles;
        gState.burstPeriod = rt::toInt16(lBurstPeriod);
    });
}

Bool16 gbWaveOutFrequencyInRange(float fFrequency, Bool16 bShowMessage, ErrorFlag& bError)
{
    Bool16 inRange = kFalse;
    rt::Trap trap(kModule, "gbWaveOutFrequencyInRange", bError);
    trap.step([&] {
        const float maximum = gState.waveOutInfo.frequencyMax;
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
        if (bError) trap.leave();
    });
    trap.step([&] { mWaveIOSetFormatEx(lSampleRate, nBits, gState.waveOutFormat, bError); });
    return lSampleRate;
}

// ---- Synthesis ------------------------------------------------------------------

namespace {

enum class Shape { Sine, Triangle, MarkSpace, Noise };

Shape shapeOf(const std::string& text)
{
    if (text == "Triangle") return Shape::Triangle;
    if (text == "MarkSpace") return Shape::MarkSpace;
    if (text == "Noise") return Shape::Noise;
    return Shape::Sine;
}

// The shape of one block of phases; false when the block must be recomputed
// with the exact formulas.
bool blockSamples(Shape shape, const synth::ShapeParams& params, const float* phases,
                  std::int16_t* out, std::int32_t count)
{
    switch (shape) {
    case Shape::Triangle: return synth::triangleBlock(phases, out, count, params);
    case Shape::MarkSpace: synth::markSpaceBlock(phases, out, count, params); return true;
    default: return synth::sineBlock(phases, out, count, params);
    }
}

std::int16_t exactSample(Shape shape, const synth::ShapeParams& params, float phase)
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
    float phases[kBlock];
    while (next <= last) {
        const std::int32_t first = next;
        const std::int32_t count = std::min(kBlock, last - first + 1);
        const float startPhase = phase;
        const float endPhase = synth::phaseRun(phases, count, startPhase, step);
        std::int16_t* out = gState.samples.beginWrite(first, count);
        if (gExactSamplesOnly || !blockSamples(shape, params, phases, out, count)) {
            for (std::int32_t j = 0; j < count; ++j) {
                try {
                    out[j] = exactSample(shape, params, phases[j]);
                } catch (...) {
                    gState.samples.endWrite(first + j - 1);
                    next = first + j;
                    phase = j == 0 ? startPhase : phases[j - 1];
                    throw;
                }
            }
        }
        gState.samples.endWrite(first + count - 1);
        next = first + count;
        phase = endPhase;
    }
}

}  // namespace

void mWaveOutMakeOneFrequency(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                              std::int32_t lPtrEnd, float& fPhase, ErrorFlag& bError)
{
    LazyTrap trap("mWaveOutMakeOneFrequency", bError);
    synth::PhaseStep step;
    synth::ShapeParams params;
    Shape shape = Shape::Sine;
    std::int32_t next = lPtrStart;
    std::int32_t last = 0;
    trap.step([&] { step = synth::phaseStep(lSampleRate, fFrequency); });
    trap.step([&] {
        if (gState.invert == 0) gState.invert = 1;
        params = synth::shapeParams(gState.invert, gState.percent);
        shape = shapeOf(gState.shape);
    });
    // A write past the buffer's dimension ends the segment.
    trap.step([&] { last = std::min(lPtrEnd, gState.samples.upper()); });
    while (next <= last && !trap.leaving()) {
        bool written = false;
        trap.step([&] {
            writeSegment(shape, params, step.step, next, last, fPhase);
            written = true;
        });
        if (!written && !trap.leaving()) {
            // Ignored: the failing sample stays 0 and the next one follows.
            fPhase = synth::nextPhase(fPhase, step.step);
            if (next >= 1) gState.samples.set(next, 0);
            ++next;
        }
    }
}

std::int32_t mlPtrEndInTolerance(std::int32_t lSampleRate, float fFrequency, float fTolerance,
                                 ErrorFlag& bError)
{
    std::int32_t result = 0;
    synth::PhaseStep step;
    std::int16_t n = 1;
    float target = 0;
    float a = 0;
    float b = 0;
    LazyTrap trap("mlPtrEndInTolerance", bError);
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

std::int32_t mlPtrEndNearest(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                             std::int32_t lPtrEnd, float fPhase, ErrorFlag& bError)
{
    std::int32_t result = 0;
    LazyTrap trap("mlPtrEndNearest", bError);
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

std::int16_t gnRandomInteger(std::int16_t nLow, std::int16_t nHigh)
{
    return static_cast<std::int16_t>(
        synth::randomInRange(gState.randomCounter, synth::uniformRange(nLow, nHigh)));
}

std::int32_t mlWaveOutMakeOneSweep(Bool16 bUp, std::int32_t lSampleRate, float fStep,
                                   float fSamplesPerStep, std::int32_t lPtrStart, float& fPhase,
                                   ErrorFlag& bError)
{
    std::int32_t lPtr = lPtrStart;
    std::int32_t lEnd = lPtrStart - 1;
    std::int32_t i = 1;
    LazyTrap trap("mlWaveOutMakeOneSweep", bError);
    trap.step([&] {
        const std::int32_t steps = gState.sweepSteps;
        for (; i <= steps - 1; ++i) {
            const std::int32_t m = (bUp ? i : steps - i) - 1;
            // step x m is a float product; 10 ^ it is a double.
            const float stepsUp = fStep * static_cast<float>(m);
            const float frequency =
                gState.logarithmic
                    ? rt::toSingle(gState.frequency1 * std::pow(10.0, static_cast<double>(stepsUp)))
                    : gState.frequency1 + stepsUp;
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

std::int32_t glWaveOutMakeSweep(std::int32_t lSampleRate, ErrorFlag& bError)
{
    std::int32_t lEnd = 0;
    float fStep = 0;
    float fSamplesPerStep = 0;
    float fPhase = 0;
    LazyTrap trap("glWaveOutMakeSweep", bError);
    const auto leaveOnError = [&](LazyTrap& t) {
        if (bError) t.leave();
    };
    trap.step([&] {
        const std::int16_t steps = gState.sweepSteps;
        if (gState.logarithmic) {
            const float decades =
                gfLog10(synth::divide(gState.frequency2, gState.frequency1), bError);
            if (bError) {
                trap.leave();
                return;
            }
            // One step fewer than the linear law divides by: kept as designed.
            fStep = synth::divide(decades, static_cast<float>(rt::toInt16(steps - 1.0)));
        } else {
            fStep = synth::divide(gState.frequency2 - gState.frequency1, static_cast<float>(steps));
        }
    });
    trap.step([&] {
        const double samples = static_cast<double>(gState.duration) * lSampleRate;
        fSamplesPerStep =
            rt::toSingle(synth::divide(samples, static_cast<double>(gState.sweepSteps)));
    });
    trap.step([&] {
        lEnd = mlWaveOutMakeOneSweep(kTrue, lSampleRate, fStep, fSamplesPerStep, 1, fPhase, bError);
        leaveOnError(trap);
    });
    trap.step([&] {
        if (!gState.bidirectional) return;
        lEnd = mlWaveOutMakeOneSweep(kFalse, lSampleRate, fStep, fSamplesPerStep,
                                     rt::toInt32(lEnd + 1.0), fPhase, bError);
        leaveOnError(trap);
    });
    trap.step([&] {
        // The closing segment ends on a whole cycle, so the sweep loops cleanly.
        const std::int32_t start = rt::toInt32(lEnd + 1.0);
        const std::int32_t provisionalEnd =
            rt::toInt32(fSamplesPerStep + static_cast<double>(start));
        const float frequency =
            gState.bidirectional ? gState.frequency1 + fStep : gState.frequency2;
        const std::int32_t end =
            mlPtrEndNearest(frequency, lSampleRate, start, provisionalEnd, fPhase, bError);
        if (bError) {
            trap.leave();
            return;
        }
        mWaveOutMakeOneFrequency(frequency, lSampleRate, start, end, fPhase, bError);
        lEnd = end;
        leaveOnError(trap);
    });
    trap.step([&] {
        while (gState.samples.get(lEnd) > 0) --lEnd;
    });
    return lEnd;
}

namespace {

void copyOut(rt::SampleArray& anSamples)
{
    const std::span<const std::int16_t> samples = gState.samples.settled();
    anSamples.redim(1, 0);
    anSamples.items().assign(samples.begin(), samples.end());
}

void makeNoise()
{
    std::int16_t* out = gState.samples.beginWrite(1, kNoiseLength);
    synth::randomBlock(gState.randomCounter, synth::uniformRange(-32767, 32767), out, kNoiseLength);
    gState.samples.endWrite(kNoiseLength);
}

}  // namespace

std::int32_t glWaveOutMake(rt::SampleArray& anSamples, ErrorFlag& bError)
{
    std::int32_t lSampleRate = 0;
    std::int32_t lLength = 0;
    bool silence = false;
    bool burst = false;
    LazyTrap trap("glWaveOutMake", bError);
    trap.step([&] {
        lSampleRate = gState.waveOutInfo.sampleRate;
        silence = gState.frequency1 == 0;
        // Silence keeps the length of the last signal.
        lLength = silence ? gState.samples.upper() : kDimension;
        gState.samples.redimZero(lLength);
    });
    trap.step([&] {
        if (silence) return;
        const float frequency1 = gState.frequency1;
        if (shapeOf(gState.shape) == Shape::Noise) {
            makeNoise();
            lLength = kNoiseLength;
            return;
        }
        if (gState.frequency2 != 0) {
            const float highest = std::max(frequency1, gState.frequency2);
            lSampleRate = std::min(rt::toInt32(kSweepRatePerHertz * highest),
                                   gState.waveOutInfo.sampleRate);
            lLength = glWaveOutMakeSweep(lSampleRate, bError);
            if (bError) trap.leave();
            return;
        }
        burst = gState.burstCycles > 0;
        if (burst) {
            const double samples = static_cast<double>(gState.burstCycles) * lSampleRate;
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
        if (bError) trap.leave();
    });
    trap.step([&] {
        if (!burst) return;
        // The last sample of the cycles is silenced, then silence fills the period.
        gState.samples.set(lLength, 0);
        const std::int32_t periodSamples =
            rt::toInt32(static_cast<double>(gState.burstPeriod) * lSampleRate);
        lLength = rt::intDiv(periodSamples, 1000);
    });
    trap.step([&] {
        gState.samples.redimPreserve(lLength);
        copyOut(anSamples);
    });
    return lSampleRate;
}

// ---- Exposed for tests --------------------------------------------------------

WaveOutGenerator gWaveOutGeneratorForTests()
{
    WaveOutGenerator view;
    view.shape = gState.shape;
    view.percent = gState.percent;
    view.invert = gState.invert;
    view.frequency1 = gState.frequency1;
    view.frequency2 = gState.frequency2;
    view.duration = gState.duration;
    view.logarithmic = gState.logarithmic;
    view.bidirectional = gState.bidirectional;
    view.sweepSteps = gState.sweepSteps;
    view.burstCycles = gState.burstCycles;
    view.burstPeriod = gState.burstPeriod;
    return view;
}

std::span<const std::int16_t> gWaveOutBufferForTests() { return gState.samples.settled(); }

const mm::WAVEFORMATEX& gWaveOutFormatForTests() { return gState.waveOutFormat; }

void gWaveOutResetForTests()
{
    gState = GeneratorState{};
    gExactSamplesOnly = false;
}

void gWaveOutUseExactSamplesForTests(Bool16 bExact) { gExactSamplesOnly = bExact != kFalse; }
