#pragma once
// The signal engine. One generator state, filled by the main window through
// the setters below, from which glWaveOutMake builds the 16-bit sample buffer
// that is played: one frequency as a whole number of cycles that loops
// without a click, a stepped sweep written at a reduced rate, a burst of
// cycles followed by silence, or noise.
#include <cstdint>
#include <span>
#include <string>

#include "base/Array.h"
#include "base/Types.h"
#include "platform/WaveApi.h"

// What the engine uses of the chosen output device. Filled from the device's
// capabilities at start-up.
struct WaveOutDeviceInfo {
    std::int16_t manufacturerId = 0;
    std::int16_t productId = 0;
    std::string driverVersion;
    std::string name;
    Bool16 noFormats = kFalse;             // the device reported no formats
    std::int32_t sampleRate = 0;           // samples/s
    float frequencyMax = 0;                // Hz, the highest frequency offered
    float frequencyMaxNonSine = 0;         // Hz, a tenth of it: limit of the other shapes
    std::int16_t bits = 0;
    std::int16_t channels = 0;
    std::int16_t deviceChannels = 0;       // the word after the channel count
    Bool16 supportsLRVolume = kFalse;
    Bool16 supportsPitch = kFalse;
    Bool16 supportsPlaybackRate = kFalse;
    Bool16 supportsSync = kFalse;
    Bool16 supportsVolume = kFalse;
    Bool16 supportsSampleAccurate = kFalse;
};

// What the engine uses of the chosen input device.
struct WaveInDeviceInfo {
    std::int16_t manufacturerId = 0;
    std::int16_t productId = 0;
    std::string driverVersion;
    std::string name;
    Bool16 noFormats = kFalse;
    std::int32_t sampleRate = 0;
    std::int16_t bits = 0;
    std::int16_t channels = 0;
    std::int16_t deviceChannels = 0;
};

// The device records of the generator state.
WaveOutDeviceInfo& gWaveOutInfo();
WaveInDeviceInfo& gWaveInInfo();

// ---- Generator state -------------------------------------------------------

// "Sine", "Triangle", "MarkSpace" or "Noise", stored as given; any other text
// makes a sine.
void gWaveOutSetShape(const std::string& sShape);
// The mark (mark/space) or rise (triangle) percentage of the cycle.
void gWaveOutSetPercent(std::int16_t nPercent);
// True inverts the signal (amplitude -32767).
void gWaveOutSetInvert(Bool16 bInvert);
// Stores the tone, sweep and burst settings. A frequency 1 out of range
// stores nothing; a frequency 2 (0 = no sweep) out of range stores only
// frequency 1. The burst period (ms) is kept as a 16-bit number.
void gWaveOutSetFrequency1SweepBurst(float fFrequency1, float fFrequency2, float fDuration,
                                     Bool16 bLogarithmic, Bool16 bBidirectional,
                                     std::int16_t nSteps, float fBurstCycles,
                                     std::int32_t lBurstPeriod, ErrorFlag& bError);
// True when 10 Hz <= fFrequency <= the output device's maximum frequency;
// otherwise, when asked, says so in a warning box.
Bool16 gbWaveOutFrequencyInRange(float fFrequency, Bool16 bShowMessage, ErrorFlag& bError);
// Makes the buffer (glWaveOutMake) and builds the output format for the rate
// it is to be played at and nBits; returns that rate.
std::int32_t glWaveOutMakeSetFormatEx(std::int16_t nBits, rt::SampleArray& anSamples,
                                      ErrorFlag& bError);

// ---- Synthesis ---------------------------------------------------------------

// Builds the engine's buffer from the generator state, hands out a copy
// (indexed from 1) and returns the sample rate to play it at: the device's,
// or a sweep's reduced rate. Frequency 1 = 0 gives silence of the previous
// length. On failure the engine's buffer keeps its full dimension.
std::int32_t glWaveOutMake(rt::SampleArray& anSamples, ErrorFlag& bError);
// Writes a whole sweep into the engine's buffer from index 1 at lSampleRate
// and returns its last index: steps up, down again when bidirectional, and a
// closing segment that ends on a whole cycle and on a sample <= 0.
std::int32_t glWaveOutMakeSweep(std::int32_t lSampleRate, ErrorFlag& bError);
// A whole number nLow..nHigh, uniformly drawn.
std::int16_t gnRandomInteger(std::int16_t nLow, std::int16_t nHigh);

// ---- Exposed for tests -------------------------------------------------------
// Private procedures of the engine, declared here so that tests can call them,
// and access to the module's state for the tests and the benchmark.

// A mono PCM format of lSampleRate and nBits into tFormat.
void mWaveIOSetFormatEx(std::int32_t lSampleRate, std::int16_t nBits, mm::WAVEFORMATEX& tFormat,
                        ErrorFlag& bError);
// Writes indices lPtrStart..lPtrEnd of the engine's buffer with the current
// shape at fFrequency; fPhase carries the phase in and out, and the first
// sample is one step past the phase handed in. Writing stops at the end of
// the buffer's dimension.
void mWaveOutMakeOneFrequency(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                              std::int32_t lPtrEnd, float& fPhase, ErrorFlag& bError);
// The length of a buffer of whole cycles whose end lies within fTolerance
// radian of a sample, searched over up to 32,767 cycles (more overflows).
std::int32_t mlPtrEndInTolerance(std::int32_t lSampleRate, float fFrequency, float fTolerance,
                                 ErrorFlag& bError);
// The index at which a segment starting at lPtrStart with phase fPhase
// completes its next whole cycle after lPtrEnd.
std::int32_t mlPtrEndNearest(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                             std::int32_t lPtrEnd, float fPhase, ErrorFlag& bError);
// One pass of the sweep's steps, up or down, from lPtrStart; returns the last
// index written (lPtrStart - 1 when there is no step).
std::int32_t mlWaveOutMakeOneSweep(Bool16 bUp, std::int32_t lSampleRate, float fStep,
                                   float fSamplesPerStep, std::int32_t lPtrStart, float& fPhase,
                                   ErrorFlag& bError);

// The settable part of the generator state.
struct WaveOutGenerator {
    std::string shape;
    std::int32_t percent = 0;
    std::int16_t invert = 0;
    float frequency1 = 0;
    float frequency2 = 0;
    float duration = 0;
    Bool16 logarithmic = kFalse;
    Bool16 bidirectional = kFalse;
    std::int16_t sweepSteps = 0;
    float burstCycles = 0;
    std::int16_t burstPeriod = 0;
};
WaveOutGenerator gWaveOutGeneratorForTests();
// The engine's buffer as it stands (element 0 is sample 1).
std::span<const std::int16_t> gWaveOutBufferForTests();
const mm::WAVEFORMATEX& gWaveOutFormatForTests();
// Puts the generator state, the device records and the buffer back to their
// state at program start.
void gWaveOutResetForTests();
// True makes every sample come from the plain per-sample formulas instead of
// the vectorised blocks (which must give the same bits).
void gWaveOutUseExactSamplesForTests(Bool16 bExact);
