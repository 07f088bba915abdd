#pragma once
// The program's own output level on ALSA: every feeder multiplies what it
// writes by it. The mixer uses it as the wave-output source of a card whose
// mixer has no PCM element (as per-application volume works on current
// desktops). Level 0..65535 maps linearly onto 0..1; 65535 and no mute (the
// start) leave the samples untouched.
#include <atomic>
#include <cstdint>
#include <span>

namespace mm::alsa {

struct StreamGain {
    std::atomic<std::uint16_t> level{65535};
    std::atomic<bool> mute{false};
};

StreamGain& streamGain();

// Multiplies samples about to be written by the present level (nothing to
// do at full level).
void applyStreamGain(std::span<std::int16_t> samples);

}  // namespace mm::alsa
