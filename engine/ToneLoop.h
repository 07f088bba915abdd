#pragma once
// The precise loop of a continuous tone: a whole number of cycles in a whole
// number of samples, cycles / length being the best rational approximation
// of frequency / rate that is short enough to play and close enough to hear
// as the frequency set. The samples are then worked out from that exact
// ratio, so the loop joins without a jump whatever its length.
#include <cstdint>

namespace synth {

struct ToneLoop {
    std::int32_t cycles = 0;
    std::int32_t length = 0;  // samples
};

// How far a precise loop may be from the frequency set: the phase it gains
// or loses over one pass (radian), and the played frequency's relative error.
inline constexpr double kLoopPhaseError = 1e-5;
inline constexpr double kLoopFrequencyError = 1e-6;

// The shortest loop of at most maxLength samples whose cycles / length lies
// within both errors of fFrequency / lSampleRate (the float's exact value);
// the closest one within maxLength when none does. "Overflow" when no loop
// of a whole cycle fits (a frequency below about rate / maxLength, or one
// whose ratio to the rate has no 64-bit fraction); "Invalid procedure call"
// for a frequency or rate that is not positive. The loop found never needs
// more than 1,000,000 samples above rate / 1,000,000 Hz: the last convergent
// shorter than that misses by less than 1e-6 of a cycle, within both errors.
ToneLoop preciseToneLoop(std::int32_t lSampleRate, float fFrequency, std::int32_t maxLength);

}  // namespace synth
