#pragma once
// The sound back ends, one entry each: the name WAVELARK_AUDIO calls it by,
// its wave part and its mixer part. The table is the only place that knows
// the concrete back ends; the wave and mixer calls ask it for the one in use.
//
// WAVELARK_AUDIO is read once, at the first call: a back end's name (case
// does not matter) chooses it; unset, "auto" or an unknown name takes the
// first back end in table order that offers a wave device, and the last one
// when none does.
#include <span>
#include <string_view>

namespace mm::backend {

class MixerBackend;
class WaveBackend;

struct SoundBackend {
    const char* name;
    WaveBackend& (*wave)();
    MixerBackend& (*mixer)();
};

// The back ends in the order "auto" tries them: ALSA, then the virtual card.
std::span<const SoundBackend> soundBackends();

// The choice for a WAVELARK_AUDIO value from a table (not empty).
const SoundBackend& chooseSoundBackend(std::string_view setting, std::span<const SoundBackend> table);

// The back end chosen at the first call; it serves the whole run.
const SoundBackend& activeSoundBackend();

}  // namespace mm::backend
