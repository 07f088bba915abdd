#pragma once
// The scheduling of a stream's thread. A stream thread sleeps nearly all the
// time and must run within a few milliseconds of waking, or the device runs
// dry (a gap in the signal) or overflows (a gap in the recording): on a
// machine whose cores are busy at the program's own priority, the ordinary
// time-sharing class does not promise that.

namespace mm::alsa {

enum class StreamPriority {
    Realtime,   // round-robin real-time class, below the sound server's own
    RaisedNice, // a lower nice value, as far as the user's limit allows
    Ordinary,   // neither is open to this user: time-sharing as before
};

// Raises the calling thread as far as the user may without privileges of
// its own (a real-time limit, a nice limit, or a capability) and says how
// far it got. Threads the calling thread starts afterwards (a sound
// server's client thread inside ALSA's plugin) inherit the class: it is
// called first thing on a stream's thread, before the device is opened.
StreamPriority raiseStreamPriority();

}  // namespace mm::alsa
