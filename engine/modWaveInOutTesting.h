#pragma once
// The signal engine as tests, the benchmark and the measurement tools see it:
// its private procedures that only they call, and the module's state to read
// and reset. The program itself never includes this.
#include <cstdint>
#include <span>
#include <string>

#include "engine/modWaveInOutState.h"

// Private procedures of the synthesis (described where they are defined).
void mWaveOutMakeOneFrequency(float fFrequency, std::int32_t lSampleRate, std::int32_t lPtrStart,
                              std::int32_t lPtrEnd, float& fPhase, ErrorFlag& bError);
std::int32_t mlPtrEndInTolerance(std::int32_t lSampleRate, float fFrequency, float fTolerance,
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
    Bool16 preciseLoop = kFalse;
};
WaveOutGenerator gWaveOutGeneratorForTests();
// The engine's buffer as it stands (element 0 is sample 1).
std::span<const std::int16_t> gWaveOutBufferForTests();
const mm::WAVEFORMATEX& gWaveOutFormatForTests();
// The playback and capture side of the state.
struct WaveIOState {
    std::int32_t waveOutHandle = 0;
    std::int32_t waveInHandle = 0;
    std::int32_t waveOutDeviceId = 0;
    std::int32_t waveInDeviceId = 0;
    std::int16_t currentHdr = 0;
};
WaveIOState gWaveIOStateForTests();
// Output header nHdr (1 or 2) as it stands.
const mm::WAVEHDR& gWaveOutHdrForTests(std::int16_t nHdr);
// Closes what is open, then puts the generator state, the device records and
// the buffer back to their state at program start.
void gWaveOutResetForTests();
// True makes every sample come from the plain per-sample formulas instead of
// the vectorised blocks (which must give the same bits).
void gWaveOutUseExactSamplesForTests(Bool16 bExact);
