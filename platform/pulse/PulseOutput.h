#pragma once
// The output of ALSA's `default` device when that device is the sound
// server's ALSA plugin: played through the server's own protocol instead.
// The plugin can only append to what the server holds, so a change is heard
// only once everything written before it has played; a short queue then
// keeps changes quick but needs frequent wake-ups and runs dry when the
// machine is loaded. The server's protocol lets a client write over what it
// holds but has not played, so this output keeps half a second queued (a
// loaded machine may hold its thread off 260 ms without a gap), is woken
// about four times a second, and on a change pulls the signal again from
// just past where the server is reading (PlayQueue::rewind) and writes it
// over the old.
#include <memory>

#include "platform/WaveBackend.h"

namespace mm::pulse {

// Whether ALSA's `default` PCM is the sound server's plugin (its
// configuration's type), whose server the native output then reaches: the
// plugin and the native client find the server the same way.
bool defaultPcmIsServer();

// Opens 16-bit mono at `rate` on the server's default sink, playing `queue`.
// The program waits for the opening as for an ALSA stream's; the result is
// ALSA's kind of error (0 or a negative error number).
int openOutput(unsigned rate, backend::PlayQueue& queue, std::unique_ptr<backend::OutputStream>& stream);

}  // namespace mm::pulse
