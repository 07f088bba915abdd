#include "engine/modWaveInOut.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "engine/SynthKernels.h"
#include "engine/modLog10.h"
#include "platform/GlobalMemory.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

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
    std::int16_t currentHdr = 0;        // the output header last loaded; 0: none yet
    std::int16_t burstPeriod = 0;       // ms
    std::int16_t invert = 0;            // +1, -1; 0 counts as +1
    std::string shape;
    std::int16_t sweepSteps = 0;
    mm::WAVEFORMATEX waveInFormat;
    mm::WAVEFORMATEX waveOutFormat;
    mm::WAVEOUTCAPSA waveOutCaps;       // the last record device discovery read
    mm::WAVEINCAPSA waveInCaps;
    std::uint64_t randomCounter = 0;    // the noise source's position
};

GeneratorState gState;

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
    rt::Trap trap(kModule, "mWaveOutMakeOneFrequency", bError);
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
    rt::Trap trap(kModule, "mlWaveOutMakeOneSweep", bError);
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
    rt::Trap trap(kModule, "glWaveOutMakeSweep", bError);
    const auto leaveOnError = [&](rt::Trap& t) {
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
    rt::Trap trap(kModule, "glWaveOutMake", bError);
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

// ---- Playback -------------------------------------------------------------------

namespace {

// Each output header owns a block this big: room for the longest buffer a
// make gives (2,099,999 samples).
constexpr std::int32_t kOutputBlockBytes = 4200000;
// A header this long or longer is never waited for. A fresh header still
// has its whole block as its length, so the first play after opening never
// waits.
constexpr mm::DWORD kNeverWaitedBytes = 2100000;
// The loop count that stands for "for ever"; the wait counts it as 5 passes.
constexpr std::int32_t kLoopForever = 2000000000;
constexpr double kForeverLoopsWaited = 5;
// Shown when the input delivers less than a pass in time.
constexpr const char* kNoInputData = "No data arrived from the wave input device";
// How long the input may take beyond one pass of the output.
constexpr double kInputGraceMs = 2000;
// Noise is shown by its first few samples only.
constexpr std::int32_t kNoiseShown = 200;

enum class Direction { Out, In };

// The warning box of a failed wave call: the platform's text for the code,
// titled with the module and the procedure; sets the error flag.
void mShowWaveError(Direction direction, mm::MMRESULT result, std::string_view procedure,
                    ErrorFlag& bError)
{
    const std::string text = direction == Direction::Out ? msWaveOutGetErrorText(result, bError)
                                                         : msWaveInGetErrorText(result, bError);
    bError = kTrue;
    host::msgBox(text, host::kExclamation, std::string(kModule) + "." + std::string(procedure));
}

// True when the call succeeded; otherwise its box is shown, the error flag
// set and the procedure leaves.
bool mbWaveOk(rt::Trap& trap, mm::MMRESULT result, Direction direction, ErrorFlag& bError,
              const char* title = nullptr)
{
    if (result == mm::MMSYSERR_NOERROR) return true;
    mShowWaveError(direction, result, title != nullptr ? title : trap.procedure(), bError);
    trap.leave();
    return false;
}

void leaveOnError(rt::Trap& trap, ErrorFlag& bError)
{
    if (bError) trap.leave();
}

// A record asks for a recording when it reaches index 1 (the window parks
// its record at 0..0 between bursts).
bool mbHasElements(const rt::SampleArray& anRecord)
{
    return !anRecord.empty() && anRecord.ubound() >= 1;
}

// A floating-point quotient with the run-time's failures.
double mfQuotient(double numerator, double denominator)
{
    if (denominator == 0.0) rt::raise(numerator == 0.0 ? rt::kErrOverflow : rt::kErrDivisionByZero);
    return numerator / denominator;
}

// Milliseconds since `start` on the tick count, across its wrap.
double mfElapsedMs(std::uint32_t start)
{
    return static_cast<double>(static_cast<std::uint32_t>(host::tickCount() - start));
}

mm::HWAVEOUT outputHandle() { return static_cast<mm::HWAVEOUT>(gState.waveOutHandle); }
mm::HWAVEIN inputHandle() { return static_cast<mm::HWAVEIN>(gState.waveInHandle); }

bool mbHeldByDevice(const mm::WAVEHDR& tHdr)
{
    return (mm::headerFlags(tHdr) & mm::WHDR_INQUEUE) != 0;
}

void mWaveOutOpenPrepare(std::int16_t nCount, ErrorFlag& bError);
void mWaveIOMakeBufferSetHdr(std::int32_t lSize, mm::WAVEHDR& tHdr, ErrorFlag& bError);
void mWaveOutLoadSetHdr(ErrorFlag& bError);
void mWaveOutUpdate(std::int32_t lLoops, Bool16 bReset, rt::SampleArray& anRecord,
                    ErrorFlag& bError);
void mWaveOutUnPrepareFree(rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError);
void mWaveInUnPrepareFree(rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError);

// The made signal as the window shows it: noise by its start, a tone by one
// cycle and a sample.
void mTrimForDisplay(Bool16 bTrimForDisplay, rt::SampleArray& anSamples)
{
    if (anSamples.empty()) return;
    const std::int32_t length = anSamples.size();
    if (gState.shape == "Noise") {
        if (length > kNoiseShown) anSamples.redimPreserve(kNoiseShown);
        return;
    }
    if (!bTrimForDisplay || gState.frequency2 != 0) return;
    const std::int32_t n =
        rt::intDiv(gState.waveOutInfo.sampleRate, rt::roundHalfEven(gState.frequency1));
    if (n + 1.0 <= length)
        anSamples.redimPreserve(n + 1);
    else if (n == length)
        anSamples.redimPreserve(n);
}

void mWaveOutOpenPrepare(std::int16_t nCount, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutOpenPrepare", bError);
    trap.step([&] {
        // A burst fired while a tone plays reopens the output: the one open
        // is closed first, so its headers are never redimensioned under it.
        if (gState.waveOutHandle == 0) return;
        gWaveOutClose(kTrue, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        mm::HWAVEOUT handle = 0;
        if (!mbWaveOk(trap, mm::waveOutOpen(&handle, static_cast<mm::UINT>(gState.waveOutDeviceId),
                                            &gState.waveOutFormat, 0, 0, mm::CALLBACK_NULL),
                      Direction::Out, bError))
            return;
        gState.waveOutHandle = static_cast<std::int32_t>(handle);
    });
    trap.step([&] { gState.waveOutHdr.redim(1, nCount); });
    for (std::int16_t i = 1; i <= nCount && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = gState.waveOutHdr.at(i);
            mWaveIOMakeBufferSetHdr(kOutputBlockBytes, header, bError);
            if (bError) {
                trap.leave();
                return;
            }
            mbWaveOk(trap, mm::waveOutPrepareHeader(outputHandle(), &header, sizeof header),
                     Direction::Out, bError);
        });
    }
}

void mWaveIOMakeBufferSetHdr(std::int32_t lSize, mm::WAVEHDR& tHdr, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveIOMakeBufferSetHdr", bError);
    trap.step([&] {
        if (lSize < 0) return;
        void* data = mm::GlobalLock(mm::GlobalAlloc(mm::GHND, static_cast<std::size_t>(lSize)));
        if (data != nullptr) gWaveIOSetHdr(static_cast<char*>(data), lSize, tHdr);
    });
}

void mWaveOutLoadSetHdr(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutLoadSetHdr", bError);
    trap.step([&] {
        // A closed output has no header memory to load into.
        if (gState.waveOutHandle == 0) return;
        const std::span<const std::int16_t> samples = gState.samples.settled();
        const std::int32_t bytes = rt::toInt32(gState.waveOutFormat.wBitsPerSample / 8.0 *
                                               static_cast<double>(samples.size()));
        mm::WAVEHDR& header = gState.waveOutHdr.at(gState.currentHdr);
        if (bytes < 0 || static_cast<std::size_t>(bytes) > mm::GlobalSize(header.lpData))
            rt::raise(rt::kErrOutOfMemory);
        const std::size_t copied = std::min(static_cast<std::size_t>(bytes), samples.size_bytes());
        // The header may be playing ("SetHdr"): the device is held off while
        // its data and length change.
        mbWaveOk(trap, mm::waveOutRewriteHeader(outputHandle(), &header, sizeof header, [&] {
                     header.dwBufferLength = static_cast<mm::DWORD>(bytes);
                     if (copied > 0) std::memcpy(header.lpData, samples.data(), copied);
                 }),
                 Direction::Out, bError);
    });
}

void mWaveOutUpdate(std::int32_t lLoops, Bool16 bReset, rt::SampleArray& anRecord,
                    ErrorFlag& bError)
{
    std::int32_t lBytes = 0;
    rt::Trap trap(kModule, "mWaveOutUpdate", bError);
    trap.step([&] { gState.currentHdr = gState.currentHdr == 2 ? 1 : gState.currentHdr + 1; });
    trap.step([&] {
        // The header about to be refilled finishes first (its answer is not
        // needed). One the device still holds after that, a fresh long
        // buffer that was never waited for, is taken back by a reset: a
        // header being played is never refilled.
        mbWaveOutDoneHdrPtr(gState.currentHdr, bError);
        leaveOnError(trap, bError);
        if (!trap.leaving() && mbHeldByDevice(gState.waveOutHdr.at(gState.currentHdr)))
            mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
    });
    trap.step([&] {
        mWaveOutLoadSetHdr(bError);
        leaveOnError(trap, bError);
    });
    // The header playing now finishes its pass and the new one follows it.
    trap.step([&] { mbWaveOk(trap, mm::waveOutBreakLoop(outputHandle()), Direction::Out, bError); });
    trap.step([&] {
        if (bReset) mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
    });
    trap.step([&] {
        if (lLoops < 1) lLoops = kLoopForever;
    });
    trap.step([&] {
        if (!mbHasElements(anRecord)) return;
        lBytes = rt::toInt32(gState.waveInInfo.bits / 8.0 * anRecord.size());
        gWaveInRecordOpen(gState.waveInInfo.sampleRate, gState.waveInInfo.bits, lBytes, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        gWaveOutPlay(lLoops, gState.currentHdr, gState.currentHdr, toBool16(lBytes >= 1), bError);
        if (!bError) return;
        // Nothing plays: an input opened for it is not left waiting.
        ErrorFlag closing = kFalse;
        if (lBytes >= 1) gWaveInClose(closing);
        trap.leave();
    });
    trap.step([&] {
        if (mbHasElements(anRecord)) gWaveInRecordStop(lBytes, anRecord, bError);
    });
}

void mWaveOutUnPrepareFree(rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutUnPrepareFree", bError);
    for (std::int32_t i = atHdr.lbound(); i <= atHdr.ubound() && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = atHdr.at(i);
            if (!mbWaveOk(trap, mm::waveOutUnprepareHeader(outputHandle(), &header, sizeof header),
                          Direction::Out, bError))
                return;
            mm::GlobalFree(header.lpData);
            header.lpData = nullptr;
            header.dwBufferLength = 0;
        });
    }
}

}  // namespace

void gWaveOutChange(const std::string& sAction, std::int32_t lLoops, Bool16 bReset,
                    Bool16 bTrimForDisplay, rt::SampleArray& anSamples,
                    rt::SampleArray& anRecord, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveOutChange", bError);
    trap.step([&] { anSamples.erase(); });
    trap.step([&] {
        if (sAction == "Make")
            glWaveOutMake(anSamples, bError);
        else if (sAction == "Open")
            glWaveOutOpenPrepMakeUpdate(lLoops, anSamples, anRecord, bError);
        else if (sAction == "SetHdr")
            gWaveOutMakeLoadSetHdr(anSamples, bError);
        else
            gWaveOutMakeUpdate(lLoops, bReset, anSamples, anRecord, bError);
    });
    // A signal made before a device failure is still shown.
    trap.step([&] { mTrimForDisplay(bTrimForDisplay, anSamples); });
}

std::int32_t glWaveOutOpenPrepMakeUpdate(std::int32_t lLoops, rt::SampleArray& anSamples,
                                         rt::SampleArray& anRecord, ErrorFlag& bError)
{
    std::int32_t lSampleRate = 0;
    rt::Trap trap(kModule, "glWaveOutOpenPrepMakeUpdate", bError);
    trap.step([&] {
        lSampleRate = glWaveOutMakeSetFormatEx(16, anSamples, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        mWaveOutOpenPrepare(2, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        if (!mbHasElements(anRecord)) return;
        // The record spans one pass of the signal at the input's rate.
        const double length =
            mfQuotient(gState.waveInInfo.sampleRate, lSampleRate) * anSamples.size();
        anRecord.redim(1, rt::toInt32(length));
    });
    trap.step([&] { mWaveOutUpdate(lLoops, kTrue, anRecord, bError); });
    return lSampleRate;
}

void gWaveOutMakeUpdate(std::int32_t lLoops, Bool16 bReset, rt::SampleArray& anSamples,
                        rt::SampleArray& anRecord, ErrorFlag& bError)
{
    std::int32_t lOpenRate = 0;
    std::int32_t lMadeRate = 0;
    rt::Trap trap(kModule, "gWaveOutMakeUpdate", bError);
    trap.step([&] {
        lOpenRate = static_cast<std::int32_t>(gState.waveOutFormat.nSamplesPerSec);
        lMadeRate = glWaveOutMake(anSamples, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        // A closed output (after a close that left the format behind) is
        // opened as a new rate would be.
        if (lMadeRate == lOpenRate && gState.waveOutHandle != 0) {
            mWaveOutUpdate(lLoops, bReset, anRecord, bError);
            return;
        }
        gWaveOutClose(kTrue, bError);
        if (bError) {
            trap.leave();
            return;
        }
        glWaveOutOpenPrepMakeUpdate(lLoops, anSamples, anRecord, bError);
    });
}

void gWaveOutMakeLoadSetHdr(rt::SampleArray& anSamples, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveOutMakeLoadSetHdr", bError);
    trap.step([&] {
        glWaveOutMake(anSamples, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] { mWaveOutLoadSetHdr(bError); });
}

void gWaveIOSetHdr(char* lpData, std::int32_t lLength, mm::WAVEHDR& tHdr)
{
    tHdr.lpData = lpData;
    tHdr.dwBufferLength = static_cast<mm::DWORD>(lLength);
    tHdr.dwBytesRecorded = 0;
    tHdr.dwUser = 0;
    mm::headerSetFlags(tHdr, 0, ~mm::DWORD{0});
    tHdr.dwLoops = 0;
    tHdr.lpNext = nullptr;
    tHdr.reserved = 0;
}

void gWaveOutPlay(std::int32_t lLoops, std::int16_t nFirst, std::int16_t nLast,
                  Bool16 bStartRecording, ErrorFlag& bError)
{
    // Every failure here is titled as the recording's, as it always was.
    constexpr const char* kTitle = "gWaveInRecordOpen";
    rt::Trap trap(kModule, "gWaveOutPlay", bError);
    for (std::int32_t i = nFirst; i <= nLast && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = gState.waveOutHdr.at(i);
            mm::DWORD loopFlags = 0;
            if (i == nFirst) loopFlags |= mm::WHDR_BEGINLOOP;
            if (i == nLast) loopFlags |= mm::WHDR_ENDLOOP;
            mm::headerSetFlags(header, loopFlags, (mm::WHDR_BEGINLOOP | mm::WHDR_ENDLOOP) & ~loopFlags);
            header.dwLoops = i == nFirst ? static_cast<mm::DWORD>(lLoops) : 0;
            if (!mbWaveOk(trap, mm::waveOutWrite(outputHandle(), &header, sizeof header),
                          Direction::Out, bError, kTitle))
                return;
            if (bStartRecording)
                mbWaveOk(trap, mm::waveInStart(inputHandle()), Direction::In, bError, kTitle);
        });
    }
}

Bool16 gbWaveOutDone(ErrorFlag& bError)
{
    Bool16 bDone = kFalse;
    rt::Trap trap(kModule, "gbWaveOutDone", bError);
    trap.step([&] { bDone = mbWaveOutDoneHdrPtr(gState.currentHdr, bError); });
    return bDone;
}

Bool16 mbWaveOutDoneHdrPtr(std::int16_t nHdr, ErrorFlag& bError)
{
    Bool16 bDone = kFalse;
    rt::Trap trap(kModule, "mbWaveOutDoneHdrPtr", bError);
    trap.step([&] {
        const mm::WAVEHDR& header = gState.waveOutHdr.at(nHdr);
        if (header.dwBufferLength >= kNeverWaitedBytes) return;
        const double loops =
            header.dwLoops == static_cast<mm::DWORD>(kLoopForever) ? kForeverLoopsWaited
                                                                   : header.dwLoops;
        const double bytesPerSample = gState.waveOutFormat.wBitsPerSample / 8.0;
        // Half a pass and a second per loop: the factor 2 is part of the rule.
        const double budgetMs =
            (mfQuotient(header.dwBufferLength,
                        bytesPerSample * 2 * gState.waveOutFormat.nSamplesPerSec) +
             1) *
            loops * 1000;
        const std::uint32_t start = host::tickCount();
        while (!(mm::headerFlags(header) & mm::WHDR_DONE) && mfElapsedMs(start) <= budgetMs)
            host::sleep(1);
        bDone = toBool16(mm::headerFlags(header) & mm::WHDR_DONE);
    });
    return bDone;
}

void gWaveOutClose(Bool16 bReset, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveOutClose", bError);
    trap.step([&] {
        if (gState.waveOutHandle == 0) trap.leave();
    });
    trap.step([&] { mbWaveOk(trap, mm::waveOutBreakLoop(outputHandle()), Direction::Out, bError); });
    trap.step([&] {
        if (bReset) {
            mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
        } else if (gState.currentHdr >= 1) {
            gbWaveOutDone(bError);
            leaveOnError(trap, bError);
        }
    });
    trap.step([&] {
        // Past the budget whatever still plays is stopped, so that the
        // headers can go and the device closes.
        const bool held = std::any_of(gState.waveOutHdr.begin(), gState.waveOutHdr.end(),
                                      [](const mm::WAVEHDR& header) { return mbHeldByDevice(header); });
        if (held) mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
    });
    trap.step([&] {
        mWaveOutUnPrepareFree(gState.waveOutHdr, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] { mbWaveOk(trap, mm::waveOutClose(outputHandle()), Direction::Out, bError); });
    gState.waveOutHandle = 0;
}

namespace {

// The text of an error code from one of the two lookups, cut at its NUL.
template <class Lookup>
std::string msErrorText(Lookup lookup, mm::MMRESULT lError, ErrorFlag& bError)
{
    constexpr mm::UINT kTextRoom = 200;
    char text[kTextRoom] = {};
    if (lookup(lError, text, kTextRoom) != mm::MMSYSERR_NOERROR) {
        bError = kTrue;
        return {};
    }
    return std::string(text, strnlen(text, kTextRoom));
}

}  // namespace

std::string msWaveOutGetErrorText(mm::MMRESULT lError, ErrorFlag& bError)
{
    return msErrorText(mm::waveOutGetErrorTextA, lError, bError);
}

std::string msWaveInGetErrorText(mm::MMRESULT lError, ErrorFlag& bError)
{
    return msErrorText(mm::waveInGetErrorTextA, lError, bError);
}

// ---- Capture ------------------------------------------------------------------------

void gWaveInOpenPrepare(std::int16_t nCount, std::int32_t lSampleRate, std::int16_t nBits,
                        std::int32_t lBytes, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveInOpenPrepare", bError);
    trap.step([&] {
        // An input left open by a failed measurement is closed first.
        if (gState.waveInHandle == 0) return;
        gWaveInClose(bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        mWaveIOSetFormatEx(lSampleRate, nBits, gState.waveInFormat, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] {
        mm::HWAVEIN handle = 0;
        if (!mbWaveOk(trap, mm::waveInOpen(&handle, static_cast<mm::UINT>(gState.waveInDeviceId),
                                           &gState.waveInFormat, 0, 0, mm::CALLBACK_NULL),
                      Direction::In, bError))
            return;
        gState.waveInHandle = static_cast<std::int32_t>(handle);
    });
    trap.step([&] { gState.waveInHdr.redim(1, nCount); });
    for (std::int16_t i = 1; i <= nCount && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = gState.waveInHdr.at(i);
            mWaveIOMakeBufferSetHdr(lBytes, header, bError);
            if (bError) {
                trap.leave();
                return;
            }
            mbWaveOk(trap, mm::waveInPrepareHeader(inputHandle(), &header, sizeof header),
                     Direction::In, bError);
        });
    }
}

void gWaveInRecordOpen(std::int32_t lSampleRate, std::int16_t nBits, std::int32_t lBytes,
                       ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveInRecordOpen", bError);
    trap.step([&] {
        gWaveInOpenPrepare(2, lSampleRate, nBits, lBytes, bError);
        leaveOnError(trap, bError);
    });
    for (std::int16_t i = 1; i <= 2 && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = gState.waveInHdr.at(i);
            mbWaveOk(trap, mm::waveInAddBuffer(inputHandle(), &header, sizeof header),
                     Direction::In, bError);
        });
    }
}

namespace {

// One pass of the current output header, in milliseconds; 0 when nothing
// is open.
double mfOutputPassMs()
{
    const mm::DWORD bytesPerSecond = gState.waveOutFormat.nAvgBytesPerSec;
    if (gState.waveOutHandle == 0 || bytesPerSecond == 0 || gState.currentHdr < 1 ||
        gState.currentHdr > gState.waveOutHdr.ubound())
        return 0;
    return gState.waveOutHdr.at(gState.currentHdr).dwBufferLength * 1000.0 / bytesPerSecond;
}

}  // namespace

void gWaveInRecordStop(std::int32_t lBytes, rt::SampleArray& anRecord, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveInRecordStop", bError);
    trap.step([&] {
        // Bounded: an input that never delivers must not hold the program.
        const mm::WAVEHDR& first = gState.waveInHdr.at(1);
        const mm::DWORD wanted = static_cast<mm::DWORD>(std::max(lBytes, 0));
        const double budgetMs = mfOutputPassMs() + kInputGraceMs;
        const std::uint32_t start = host::tickCount();
        while (mm::headerBytesRecorded(first) < wanted &&
               !(mm::headerFlags(first) & mm::WHDR_DONE) && mfElapsedMs(start) <= budgetMs)
            host::sleep(1);
        if (mm::headerBytesRecorded(first) >= wanted) return;
        ErrorFlag closing = kFalse;
        gWaveInClose(closing);
        bError = kTrue;
        host::msgBox(kNoInputData, host::kExclamation, std::string(kModule) + ".gWaveInRecordStop");
        trap.leave();
    });
    trap.step([&] {
        const mm::MMRESULT result = mm::waveInStop(inputHandle());
        if (result == mm::MMSYSERR_NOERROR) return;
        // The output lookup gives this text, as it always has.
        mShowWaveError(Direction::Out, result, trap.procedure(), bError);
        ErrorFlag closing = kFalse;
        gWaveInClose(closing);
        trap.leave();
    });
    trap.step([&] {
        if (lBytes <= 0) return;
        const std::int64_t room = (static_cast<std::int64_t>(anRecord.ubound()) - 1 + 1) * 2;
        if (lBytes > room) rt::raise(rt::kErrSubscript);
        std::memcpy(&anRecord.at(1), gState.waveInHdr.at(1).lpData, static_cast<std::size_t>(lBytes));
    });
    trap.step([&] { gWaveInClose(bError); });
}

namespace {

void mWaveInUnPrepareFree(rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveInUnPrepareFree", bError);
    for (std::int32_t i = atHdr.lbound(); i <= atHdr.ubound() && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = atHdr.at(i);
            if (!mbWaveOk(trap, mm::waveInUnprepareHeader(inputHandle(), &header, sizeof header),
                          Direction::In, bError))
                return;
            mm::GlobalFree(header.lpData);
            header.lpData = nullptr;
            header.dwBufferLength = 0;
        });
    }
}

}  // namespace

void gWaveInClose(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveInClose", bError);
    trap.step([&] {
        if (gState.waveInHandle == 0) trap.leave();
    });
    trap.step([&] { mbWaveOk(trap, mm::waveInReset(inputHandle()), Direction::In, bError); });
    trap.step([&] {
        mWaveInUnPrepareFree(gState.waveInHdr, bError);
        leaveOnError(trap, bError);
    });
    trap.step([&] { mbWaveOk(trap, mm::waveInClose(inputHandle()), Direction::In, bError); });
    gState.waveInHandle = 0;
}

// ---- Device discovery -----------------------------------------------------------------

namespace {

// A device's format as its capabilities suggest it.
struct DeviceFormat {
    std::int32_t sampleRate = 0;
    std::int16_t bits = 0;
    std::int16_t channels = 0;
};

// The format rule. dwFormats is compared as a signed number, as the rule
// was written; a name holding "Audigy" gets that card's own rates.
DeviceFormat mFormatFromCaps(const std::string& sName, mm::DWORD dwFormats, Direction direction)
{
    const auto formats = static_cast<std::int32_t>(dwFormats);
    const auto stereoIf = [&](std::int32_t a, std::int32_t b) -> std::int16_t {
        return (formats & a) || (formats & b) ? 2 : 1;
    };
    if (sName.find("Audigy") != std::string::npos)
        return direction == Direction::Out ? DeviceFormat{96000, 24, 2} : DeviceFormat{48000, 16, 2};
    if (formats >= 256) return {44100, static_cast<std::int16_t>(formats < 513 ? 8 : 16), stereoIf(0x800, 0x200)};
    if (formats >= 16) return {22050, static_cast<std::int16_t>(formats >= 33 ? 16 : 8), stereoIf(0x80, 0x20)};
    if (formats < 1) return {44100, 16, 1};
    return {11025, static_cast<std::int16_t>(formats < 3 ? 8 : 16), stereoIf(8, 2)};
}

// "major.minor" of a driver version; the divisor is 255, as designed.
std::string msDriverVersion(mm::MMVERSION version)
{
    const auto value = static_cast<std::int32_t>(version);
    return std::to_string(value / 255) + "." + std::to_string(value % 255);
}

std::string msDeviceName(const char (&szPname)[mm::MAXPNAMELEN])
{
    return std::string(szPname, strnlen(szPname, mm::MAXPNAMELEN));
}

bool mbIsModem(const std::string& sName)
{
    std::string upper = sName;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return upper.find("MODEM") != std::string::npos;
}

// Ids above 32767 (PCI and USB makers) keep the bits a 16-bit Integer holds.
std::int16_t mnId(mm::WORD id) { return static_cast<std::int16_t>(id); }

bool mbSupports(mm::DWORD support, mm::DWORD bit) { return (support & bit) != 0; }

void mWaveOutGloballyInitCaps(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutGloballyInitCaps", bError);
    trap.step([&] {
        const mm::WAVEOUTCAPSA& caps = gState.waveOutCaps;
        WaveOutDeviceInfo& info = gState.waveOutInfo;
        info.manufacturerId = mnId(caps.wMid);
        info.productId = mnId(caps.wPid);
        info.driverVersion = msDriverVersion(caps.vDriverVersion);
        info.name = msDeviceName(caps.szPname);
        info.noFormats = toBool16(static_cast<std::int32_t>(caps.dwFormats) < 1);
        const DeviceFormat format = mFormatFromCaps(info.name, caps.dwFormats, Direction::Out);
        info.sampleRate = format.sampleRate;
        info.frequencyMax = format.sampleRate > 80000
                                ? 40000.0f
                                : rt::toSingle(std::floor(format.sampleRate * 0.45351475));
        info.frequencyMaxNonSine = rt::toSingle(info.frequencyMax * 0.1);
        info.bits = format.bits;
        info.channels = format.channels;
        info.deviceChannels = mnId(caps.wReserved1);
        info.supportsLRVolume = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_LRVOLUME));
        info.supportsPitch = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_PITCH));
        info.supportsPlaybackRate = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_PLAYBACKRATE));
        info.supportsSync = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_SYNC));
        info.supportsVolume = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_VOLUME));
        info.supportsSampleAccurate =
            toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_SAMPLEACCURATE));
    });
}

void mWaveInGloballyInitCaps(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveInGloballyInitCaps", bError);
    trap.step([&] {
        const mm::WAVEINCAPSA& caps = gState.waveInCaps;
        WaveInDeviceInfo& info = gState.waveInInfo;
        info.manufacturerId = mnId(caps.wMid);
        info.productId = mnId(caps.wPid);
        info.driverVersion = msDriverVersion(caps.vDriverVersion);
        info.name = msDeviceName(caps.szPname);
        info.noFormats = toBool16(static_cast<std::int32_t>(caps.dwFormats) < 1);
        const DeviceFormat format = mFormatFromCaps(info.name, caps.dwFormats, Direction::In);
        info.sampleRate = format.sampleRate;
        info.bits = format.bits;
        info.channels = format.channels;
        info.deviceChannels = mnId(caps.wReserved1);
    });
}

// The device search both directions share: the first device whose
// capabilities read and whose name is not a modem's, while no read failed.
template <class Caps, class Count, class Read, class Fill, class ErrorText>
Bool16 mbDeviceThere(const char* procedure, const char* notFound, Caps& caps,
                     std::int32_t& deviceId, Count count, Read read, Fill fill,
                     ErrorText errorText, ErrorFlag& bError)
{
    Bool16 bThere = kFalse;
    std::string sText;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] {
        const mm::UINT devices = count();
        if (devices == 0) {
            sText = notFound;
            return;
        }
        for (mm::UINT id = 0; id < devices; ++id) {
            const mm::MMRESULT result = read(id, &caps, static_cast<mm::UINT>(sizeof caps));
            if (result != mm::MMSYSERR_NOERROR) {
                sText = errorText(result, bError);
                bError = kTrue;
                continue;
            }
            fill(bError);
            if (!mbIsModem(msDeviceName(caps.szPname)) && !bError) {
                deviceId = static_cast<std::int32_t>(id);
                bThere = kTrue;
                return;
            }
        }
    });
    trap.step([&] {
        if (!sText.empty()) host::msgBox(sText, host::kCritical, gsProgNameVersion);
    });
    return bThere;
}

}  // namespace

Bool16 gbWaveOutThere(ErrorFlag& bError)
{
    return mbDeviceThere("gbWaveOutThere", "Wave device not found", gState.waveOutCaps,
                         gState.waveOutDeviceId, mm::waveOutGetNumDevs, mm::waveOutGetDevCapsA,
                         mWaveOutGloballyInitCaps, msWaveOutGetErrorText, bError);
}

Bool16 gbWaveInThere(ErrorFlag& bError)
{
    return mbDeviceThere("gbWaveInThere", "Wave Input device not found", gState.waveInCaps,
                         gState.waveInDeviceId, mm::waveInGetNumDevs, mm::waveInGetDevCapsA,
                         mWaveInGloballyInitCaps, msWaveInGetErrorText, bError);
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

WaveIOState gWaveIOStateForTests()
{
    return {gState.waveOutHandle, gState.waveInHandle, gState.waveOutDeviceId,
            gState.waveInDeviceId, gState.currentHdr};
}

const mm::WAVEHDR& gWaveOutHdrForTests(std::int16_t nHdr) { return gState.waveOutHdr.at(nHdr); }

void gWaveOutResetForTests()
{
    // Nothing may still play from the headers the fresh state drops.
    ErrorFlag closing = kFalse;
    gWaveInClose(closing);
    gWaveOutClose(kTrue, closing);
    gState = GeneratorState{};
    gExactSamplesOnly = false;
}

void gWaveOutUseExactSamplesForTests(Bool16 bExact) { gExactSamplesOnly = bExact != kFalse; }
