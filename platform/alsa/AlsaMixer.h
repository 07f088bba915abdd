#pragma once
// The mixers on ALSA: mixer 0 is the simple mixer of ALSA's "default"
// control device when it opens (through the PulseAudio plugin where that
// runs), then one per card ("hw:N"), as the wave devices are listed.
//
// Each is shown as two destinations:
//   "Speakers" (DST_SPEAKERS): the Master element's volume and mute (with no
//     Master, the first playback element with a volume). Its sources are the
//     other playback elements, typed by name (PCM or Wave -> SRC_WAVEOUT,
//     ... Mic -> SRC_MICROPHONE, Line, CD ...). A card without a PCM element
//     has as its SRC_WAVEOUT source the program's own stream gain
//     (AlsaStreamGain.h), which every feeder applies.
//   "Recording" (DST_WAVEIN), when the card can record: the capture
//     elements as sources; when none is named ... Mic, the main capture
//     element ("Capture", else the first with a volume) is the microphone;
//     otherwise the main capture element is the destination's own control.
// Volumes scale linearly from the element's raw range onto 0..65535 (read
// from its first channel, written to all); mutes are inverted switches.
namespace mm::backend {
class MixerBackend;
}

namespace mm::alsa {

backend::MixerBackend& mixerBackend();

}  // namespace mm::alsa
