#pragma once
// Test controls of the virtual card: its device lists and capabilities,
// latency, accepted rates and injected faults, each in one call, plus the
// clock and tap of VirtualCardSetup.h and the mixer controls of
// VirtualMixerTesting.h. Part of the testing library (tests and the
// measurement tool), never of the program.
#include <cstdint>
#include <vector>

#include "platform/loopback/VirtualCard.h"
#include "platform/loopback/VirtualCardSetup.h"
#include "platform/loopback/VirtualMixerTesting.h"

namespace mm::loopback {

// Back to the defaults, the card (restartCard) and its mixers
// (resetMixers). Call with nothing open.
void reset();

// Call these with nothing open.
void setOutputDevices(std::vector<DeviceTraits> devices);
void setInputDevices(std::vector<DeviceTraits> devices);
void setLatencyMs(std::uint32_t milliseconds);
std::uint32_t latencyMs();
void setRateRange(DWORD lowest, DWORD highest);

// Faults, at once: an open or a write refused with the code given (0
// accepts again), an input that never delivers, a card (and its mixers)
// gone until reset().
void refuseOutputOpen(MMRESULT code);
void refuseInputOpen(MMRESULT code);
void failWrites(MMRESULT code);
void silenceInput(bool silent);
// What the input hears of the output: -1 inverted, 0 silence (delivered as
// samples, unlike silenceInput), 1 as played (the default). The delay is
// the latency.
void setInputGain(double gain);
void vanish();
// The vanished card and its mixers back, as a device plugged in again or a
// sound server restarted: what was open when it went stays lost, what is
// opened now works.
void reappear();

}  // namespace mm::loopback
