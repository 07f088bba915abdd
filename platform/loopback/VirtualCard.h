#pragma once
// The virtual sound card: an in-process back end with one output and one
// input that hears the output after a fixed latency, resampled when the two
// rates differ. It keeps time from elapsed time, in one of two modes:
//  - real time (the default): a clock thread follows the steady clock and
//    moves the samples about once a millisecond;
//  - simulated time: nothing moves until advance() is called, normally from
//    the test host's sleep, so every poll of the program advances the card
//    by exactly the time it slept (deterministic and fast).
//
// The levels below are the card's mixer: master and wave gains on the way
// out, the microphone gain on the way in. The mixer calls drive them; they
// start at unity.
//
// Everything else in this header is for tests only: device lists and
// capabilities, injected faults, the time mode and a tap on what the output
// played. Change the configuration only while nothing is open.
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/WaveApi.h"

namespace mm::backend {
class WaveBackend;
}

namespace mm::loopback {

// The back end the wave calls use when the virtual card is chosen.
backend::WaveBackend& backend();

// ----------------------------------------------------------------- mixer

// Levels from 0 to 65535 (65535 = unity) and mutes.
struct Levels {
    std::atomic<std::uint16_t> master{65535};
    std::atomic<std::uint16_t> wave{65535};
    std::atomic<std::uint16_t> mic{65535};
    std::atomic<bool> masterMute{false};
    std::atomic<bool> waveMute{false};
    std::atomic<bool> micMute{false};
};
Levels& levels();

// The master law: 60 dB over the range, logarithmic (65535 -> 0 dB,
// 32768 -> about -30 dB, 0 -> -60 dB).
double masterGain(std::uint16_t level);
// Wave and microphone: proportional to the level.
double linearGain(std::uint16_t level);

// ------------------------------------------------------------------ tests

// A device as the card lists it.
struct DeviceSpec {
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

// What the output played (after the mixer gains), one segment per opening
// of the output, at the rate it was opened with.
struct TapSegment {
    DWORD rate = 0;
    std::vector<std::int16_t> samples;
};

// Back to the defaults: one output and one input device named as above, a
// latency of 20 ms, rates 1,000..384,000, unity levels, no faults, real time,
// no tap, the standard mixer (VirtualMixer.h). Call with nothing open.
void reset();

void setOutputDevices(std::vector<DeviceSpec> devices);
void setInputDevices(std::vector<DeviceSpec> devices);

void setLatencyMs(std::uint32_t milliseconds);
std::uint32_t latencyMs();
// Opening at a rate outside lowest..highest fails with WAVERR_BADFORMAT.
void setRateRange(DWORD lowest, DWORD highest);

// Faults. An open or a write refused with the code given (0 accepts again).
void refuseOutputOpen(MMRESULT code);
void refuseInputOpen(MMRESULT code);
void failWrites(MMRESULT code);
// The input opens and starts but never delivers a sample.
void silenceInput(bool silent);
// The card disappears: open streams fail with MMSYSERR_NODRIVER at the next
// clock step (their queued headers are marked done), and the device lists
// (its mixer's too) are empty until reset().
void vanish();

// Switches to simulated time (call with nothing open); advance() then moves
// the card's clock on by that many milliseconds.
void useSimulatedTime();
bool simulatedTime();
void advance(std::uint32_t milliseconds);

// Starts recording what the output plays; takeTap() hands it over and stops.
void startTap();
std::vector<TapSegment> takeTap();

}  // namespace mm::loopback
