#pragma once
// Wave output and input on ALSA. Device 0 is ALSA's "default" PCM when it
// opens, then one device per card that has a PCM of that direction. What a
// device can do is probed from the PCM itself; a feeder thread per open
// output writes 16-bit mono at the opened rate, a capture thread per open
// input reads it.
namespace mm::backend {
class WaveBackend;
}

namespace mm::alsa {

backend::WaveBackend& backend();

}  // namespace mm::alsa
