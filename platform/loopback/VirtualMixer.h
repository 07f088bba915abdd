#pragma once
// The virtual card's mixer. By default it is a plain sound card's mixer:
//   Speakers (DST_SPEAKERS): Master Volume, Master Mute
//     Wave (SRC_WAVEOUT): Wave Volume, Wave Mute
//   Recording (DST_WAVEIN)
//     Microphone (SRC_MICROPHONE): Mic Volume, Mic Mute
// whose controls drive the card's levels (VirtualCard.h's levels()), so
// that what the mixer sets is what the card's output and input hear.
//
// Everything below the back end is for tests: the mixers, lines and
// controls (names, types, missing controls, a second mixer, none at all),
// refused opens, failing reads and writes, a mixer that disappears, and a
// log of every value written. loopback::reset() puts the default back.
#include <string>
#include <vector>

#include "platform/MixerApi.h"

namespace mm::backend {
class MixerBackend;
}

namespace mm::loopback {

// The mixer calls use it when the virtual card is the wave back end.
backend::MixerBackend& mixerBackend();

// ------------------------------------------------------------------ tests

// Which of the card's levels a control sets and reads; Nothing keeps the
// control's own value.
enum class Drives { Nothing, Master, MasterMute, Wave, WaveMute, Mic, MicMute };

struct MixerControlSpec {
    DWORD type = MIXERCONTROL_CONTROLTYPE_VOLUME;
    std::string shortName;
    std::string name;
    DWORD flags = 0;
    DWORD minimum = 0;
    DWORD maximum = 65535;
    DWORD steps = 0;
    Drives drives = Drives::Nothing;
    DWORD value = 0;  // of a control that drives nothing
};

struct MixerLineSpec {
    DWORD componentType = MIXERLINE_COMPONENTTYPE_DST_UNDEFINED;
    std::string shortName;
    std::string name;
    DWORD channels = 2;
    DWORD flags = MIXERLINE_LINEF_ACTIVE;
    DWORD targetType = MIXERLINE_TARGETTYPE_UNDEFINED;
    std::string targetName;
    std::vector<MixerControlSpec> controls;
    std::vector<MixerLineSpec> sources;  // a destination's
};

struct MixerSpec {
    std::string name = "Wavelark Virtual Card";
    std::vector<MixerLineSpec> destinations;
};

// The default mixer described above.
MixerSpec standardMixer();

// The card's mixers, mixer 0 first (none: no mixer at all).
void setMixers(std::vector<MixerSpec> mixers);

// Faults: the next `times` openings refused (every one by default; reading
// the capabilities opens too), or reading or writing the control of that
// name failing ("" for every control), with the code given (0 clears it).
inline constexpr unsigned kEveryOpening = ~0u;
void refuseMixerOpen(MMRESULT code, unsigned times = kEveryOpening);
void failMixerReads(const std::string& controlName, MMRESULT code);
void failMixerWrites(const std::string& controlName, MMRESULT code);
// The mixers disappear: none are listed, and calls on mixers still open
// fail with MMSYSERR_NODRIVER, until reset.
void vanishMixers();

// Every value written, in order, by control name.
struct MixerWrite {
    std::string control;
    DWORD value = 0;
    bool operator==(const MixerWrite&) const = default;
};
std::vector<MixerWrite> mixerWrites();

// Back to the standard mixer with no faults and an empty log (part of
// loopback::reset()).
void resetMixers();

}  // namespace mm::loopback
