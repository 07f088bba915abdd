#pragma once
// What the virtual card is made of: its devices, latency, accepted rates and
// the faults it plays, its clock and a tap on what its output played. The
// program's card keeps the defaults below and the real clock; the testing
// controls (VirtualCardTesting.h) change them for tests and the measurement
// tool.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/WaveApi.h"

namespace mm::loopback {

// A device as the card lists it.
struct DeviceTraits {
    std::string name = "Wavelark Virtual Card";
    DWORD formats = 0x000FFFFF;  // every standard format
    WORD channels = 2;
    DWORD support = WAVECAPS_VOLUME | WAVECAPS_LRVOLUME | WAVECAPS_SAMPLEACCURATE;
    WORD mid = 0;
    WORD pid = 0;
    MMVERSION driverVersion = 0x0100;
    // What reading this device's capabilities returns (a failing read).
    MMRESULT capsResult = MMSYSERR_NOERROR;
};

struct CardSetup {
    std::vector<DeviceTraits> outputs{DeviceTraits{}};
    std::vector<DeviceTraits> inputs{DeviceTraits{}};
    std::uint32_t latencyMs = 20;
    // Opening at a rate outside lowestRate..highestRate fails with
    // WAVERR_BADFORMAT.
    DWORD lowestRate = 1000;
    DWORD highestRate = 384000;

    // Faults: opens and writes refused with these codes (0 accepts).
    MMRESULT refuseOutputOpen = MMSYSERR_NOERROR;
    MMRESULT refuseInputOpen = MMSYSERR_NOERROR;
    MMRESULT failWrites = MMSYSERR_NOERROR;
    // The input opens and starts but never delivers a sample.
    bool silentInput = false;
    // What the input hears of the output, beside the mixer's level: -1 an
    // inverting stage, 0 a broken cable (samples of silence), 0.5 -6 dB.
    double inputGain = 1;
    // The card is gone: open streams fail with MMSYSERR_NODRIVER at the next
    // clock step (their queued headers are marked done), and the device
    // lists are empty.
    bool vanished = false;
};

// Reads or changes the setup under the card's lock. Change the devices,
// latency and rates only while nothing is open; faults take effect at once.
void withCardSetup(const std::function<void(CardSetup&)>& use);

// Back to the default setup, the real clock, no tap and unity levels.
// Call with nothing open.
void restartCard();

// Simulated time (call with nothing open): the card stands still until
// advance() moves its clock on by that many milliseconds.
void useSimulatedTime();
bool simulatedTime();
void advance(std::uint32_t milliseconds);

// What the output played (after the mixer gains), one segment per opening
// of the output, at the rate it was opened with.
struct TapSegment {
    DWORD rate = 0;
    std::vector<std::int16_t> samples;
};
// Starts recording what the output plays; takeTap() hands it over and stops.
void startTap();
std::vector<TapSegment> takeTap();

}  // namespace mm::loopback
