#pragma once
// The program's own output level on ALSA: every feeder multiplies what it
// writes by it. The mixer uses it as the wave-output source of a card whose
// mixer has no PCM element (as per-application volume works on current
// desktops). Level 0..65535 maps linearly onto 0..1; 65535 and no mute (the
// start) leave the samples untouched.
#include <atomic>
#include <cstdint>

namespace mm::alsa {

struct StreamGain {
    std::atomic<std::uint16_t> level{65535};
    std::atomic<bool> mute{false};
};

StreamGain& streamGain();

}  // namespace mm::alsa
