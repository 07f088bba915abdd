#pragma once
// What the virtual card's mixers are made of: their lines and controls, the
// faults they play, and an optional log of every value written. The
// program's card has the standard mixer and no log; the testing controls
// (VirtualMixerTesting.h) change them for tests.
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/MixerApi.h"

namespace mm::loopback {

// Which of the card's levels a control sets and reads; Nothing keeps the
// control's own value.
enum class Drives { Nothing, Master, MasterMute, Wave, WaveMute, Mic, MicMute };

struct ControlLayout {
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

struct LineLayout {
    DWORD componentType = MIXERLINE_COMPONENTTYPE_DST_UNDEFINED;
    std::string shortName;
    std::string name;
    DWORD channels = 2;
    DWORD flags = MIXERLINE_LINEF_ACTIVE;
    DWORD targetType = MIXERLINE_TARGETTYPE_UNDEFINED;
    std::string targetName;
    std::vector<ControlLayout> controls;
    std::vector<LineLayout> sources;  // a destination's
};

struct MixerLayout {
    std::string name = "Wavelark Virtual Card";
    std::vector<LineLayout> destinations;
};

// The default mixer described in VirtualMixer.h.
MixerLayout standardMixer();

// A value written to a control, by the control's name.
struct MixerWrite {
    std::string control;
    DWORD value = 0;
    bool operator==(const MixerWrite&) const = default;
};

inline constexpr unsigned kEveryOpening = ~0u;

struct MixerSetup {
    // Mixer 0 first; none: no mixer at all.
    std::vector<MixerLayout> mixers{standardMixer()};
    // The next `refusals` openings (kEveryOpening: all) are refused with
    // this code; reading the capabilities opens too.
    MMRESULT refuseOpen = MMSYSERR_NOERROR;
    unsigned refusals = 0;
    // Reading or writing the control of that name fails with the code
    // ("" stands for every control).
    std::map<std::string, MMRESULT> readFaults;
    std::map<std::string, MMRESULT> writeFaults;
    // The mixers are gone: none are listed, and calls on mixers still open
    // fail with MMSYSERR_NODRIVER.
    bool vanished = false;
    // Every value written, in order, while logWrites is set.
    bool logWrites = false;
    std::vector<MixerWrite> writes;
};

// Reads or changes the setup under the mixers' lock.
void withMixerSetup(const std::function<void(MixerSetup&)>& use);

}  // namespace mm::loopback
