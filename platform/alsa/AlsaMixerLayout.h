#pragma once
// How the elements of an ALSA simple mixer are laid out as the lines and
// controls of the program's mixer (see AlsaMixer.h for the mapping). Kept
// apart from the device so that it can be checked with any set of elements.
#include <cstddef>
#include <string>
#include <vector>

#include "platform/MixerBackend.h"

namespace mm::alsa {

// What the mixer needs to know of one simple element.
struct ElementInfo {
    std::string baseName;  // the element's name
    std::string name;      // with its index when it has one ("PCM 1")
    bool playbackVolume = false;
    bool playbackSwitch = false;
    bool captureVolume = false;
    bool captureSwitch = false;
    DWORD playbackChannels = 1;
    DWORD captureChannels = 1;
    long playbackSteps = 0;  // raw range of the volume
    long captureSteps = 0;
};

// Where a control's value lives: one side of an element, or the program's
// own stream gain.
enum class ValueSource { PlaybackVolume, PlaybackSwitch, CaptureVolume, CaptureSwitch, StreamVolume, StreamMute };

struct ControlBinding {
    ValueSource source = ValueSource::StreamVolume;
    std::size_t element = 0;  // index into the elements (not for the stream gain)
};

// The source type an element's name suggests (PCM -> SRC_WAVEOUT, ... Mic
// -> SRC_MICROPHONE, Line, CD ...; SRC_UNDEFINED when nothing fits).
DWORD sourceTypeForName(const std::string& name);

// The mixer's lines for these elements. Every control's key is its index in
// `bindings`, which says where its value lives.
backend::MixerModel layOutMixer(const std::string& mixerName, const std::vector<ElementInfo>& elements,
                                std::vector<ControlBinding>& bindings);

}  // namespace mm::alsa
