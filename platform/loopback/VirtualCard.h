#pragma once
// The virtual sound card: an in-process back end with one output and one
// input that hears the output after a fixed latency, resampled when the two
// rates differ. It keeps time from the steady clock: a clock thread moves
// the samples about once a millisecond while a stream is open.
//
// The levels below are the card's mixer: master and wave gains on the way
// out, the microphone gain on the way in. The mixer calls drive them; they
// start at unity.
//
// What the card is made of (devices, latency, rates, simulated time) is in
// VirtualCardSetup.h; tests change it through VirtualCardTesting.h.
#include <atomic>
#include <cstdint>

namespace mm::backend {
class WaveBackend;
}

namespace mm::loopback {

// The back end the wave calls use when the virtual card is chosen.
backend::WaveBackend& backend();

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

}  // namespace mm::loopback
