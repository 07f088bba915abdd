#pragma once
// The scheduling of a stream's thread. A stream thread sleeps nearly all the
// time and must run within a few milliseconds of waking, or the device runs
// dry (a gap in the signal) or overflows (a gap in the recording): on a
// machine whose cores are busy at the program's own priority, the ordinary
// time-sharing class does not promise that.

namespace mm::alsa {

// Raises the calling thread as far as the user's limits allow, in this
// order: the real-time round-robin class below the sound server's own
// threads (a real-time limit such as the audio group's, or the
// capability), else a lower nice value (as far as the nice limit allows),
// else nothing. Threads the
// calling thread starts afterwards (a sound server's client thread inside
// ALSA's plugin) inherit the class: it is called first thing on a stream's
// thread, before the device is opened.
void raiseStreamPriority();

}  // namespace mm::alsa
