#pragma once
// Test controls of the virtual card's mixers: lay them out (lines, controls,
// names, none at all), refuse openings, fail reads and writes of a control,
// make them disappear, and log every value written. Part of the testing
// library, never of the program.
#include <string>
#include <vector>

#include "platform/loopback/VirtualMixer.h"
#include "platform/loopback/VirtualMixerSetup.h"

namespace mm::loopback {

// The card's mixers, mixer 0 first (none: no mixer at all).
void setMixers(std::vector<MixerLayout> mixers);

// The next `times` openings refused (every one by default), or reading or
// writing the control of that name failing ("" for every control), with
// the code given (0 clears it).
void refuseMixerOpen(MMRESULT code, unsigned times = kEveryOpening);
void failMixerReads(const std::string& controlName, MMRESULT code);
void failMixerWrites(const std::string& controlName, MMRESULT code);
// The mixers disappear until resetMixers().
void vanishMixers();

// Starts an empty log of every value written; mixerWrites() reads it.
void logMixerWrites();
std::vector<MixerWrite> mixerWrites();

// Back to the standard mixer with no faults and no log.
void resetMixers();

}  // namespace mm::loopback
