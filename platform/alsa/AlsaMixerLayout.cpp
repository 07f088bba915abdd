#include "platform/alsa/AlsaMixerLayout.h"

#include <algorithm>
#include <initializer_list>
#include <sstream>

namespace mm::alsa {

namespace {

using backend::MixerControlModel;
using backend::MixerLineModel;
using backend::MixerModel;

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

bool plays(const ElementInfo& e) { return e.playbackVolume || e.playbackSwitch; }
bool records(const ElementInfo& e) { return e.captureVolume || e.captureSwitch; }
bool isMic(const ElementInfo& e) { return sourceTypeForName(e.baseName) == MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE; }

class Layout {
public:
    Layout(const std::string& mixerName, const std::vector<ElementInfo>& elements,
           std::vector<ControlBinding>& bindings)
        : name_(mixerName), elements_(elements), bindings_(bindings)
    {
    }

    MixerModel build()
    {
        bindings_.clear();
        MixerModel model;
        model.name = name_;
        model.destinations.push_back(speakers());
        if (std::any_of(elements_.begin(), elements_.end(), records)) model.destinations.push_back(recording());
        return model;
    }

private:
    // "Master", else the first playback element with a volume.
    std::ptrdiff_t master() const
    {
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (plays(elements_[i]) && elements_[i].name == "Master") return static_cast<std::ptrdiff_t>(i);
        }
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (elements_[i].playbackVolume) return static_cast<std::ptrdiff_t>(i);
        }
        return -1;
    }

    // "Capture", else the first capture element with a volume, else the first.
    std::size_t mainCapture() const
    {
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (records(elements_[i]) && elements_[i].name == "Capture") return i;
        }
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (elements_[i].captureVolume) return i;
        }
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (records(elements_[i])) return i;
        }
        return 0;
    }

    MixerLineModel speakers()
    {
        const std::ptrdiff_t top = master();
        MixerLineModel line = lineFor(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, "Speakers",
                                      top >= 0 ? elements_[static_cast<std::size_t>(top)].playbackChannels : 2,
                                      MIXERLINE_TARGETTYPE_WAVEOUT);
        if (top >= 0) addControls(line, static_cast<std::size_t>(top), false);

        bool hasWave = false;
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (static_cast<std::ptrdiff_t>(i) != top && plays(elements_[i]) &&
                sourceTypeForName(elements_[i].baseName) == MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT) {
                hasWave = true;
            }
        }
        if (!hasWave) line.sources.push_back(streamSource());
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (static_cast<std::ptrdiff_t>(i) == top || !plays(elements_[i])) continue;
            line.sources.push_back(sourceFor(i, sourceTypeForName(elements_[i].baseName), false));
        }
        return line;
    }

    MixerLineModel recording()
    {
        const std::size_t main = mainCapture();
        const bool namedMic = std::any_of(elements_.begin(), elements_.end(),
                                          [](const ElementInfo& e) { return records(e) && isMic(e); });
        const bool mainIsMic = isMic(elements_[main]);

        MixerLineModel line = lineFor(MIXERLINE_COMPONENTTYPE_DST_WAVEIN, "Recording",
                                      elements_[main].captureChannels, MIXERLINE_TARGETTYPE_WAVEIN);
        // With a microphone of its own the card's main capture level is the
        // recording's; without one, that main capture element is what the
        // microphone is recorded through.
        const bool mainOnDestination = namedMic && !mainIsMic;
        if (mainOnDestination) addControls(line, main, true);
        if (!namedMic) line.sources.push_back(sourceFor(main, MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE, true));
        for (std::size_t i = 0; i < elements_.size(); ++i) {
            if (!records(elements_[i])) continue;
            if (i == main && (mainOnDestination || !namedMic)) continue;
            line.sources.push_back(sourceFor(i, sourceTypeForName(elements_[i].baseName), true));
        }
        return line;
    }

    MixerLineModel lineFor(DWORD type, const std::string& name, DWORD channels, DWORD targetType) const
    {
        MixerLineModel line;
        line.componentType = type;
        line.shortName = name;
        line.name = name;
        line.channels = std::max<DWORD>(channels, 1);
        line.targetType = targetType;
        if (targetType != MIXERLINE_TARGETTYPE_UNDEFINED) line.targetName = name_;
        return line;
    }

    MixerLineModel sourceFor(std::size_t index, DWORD type, bool capture)
    {
        const ElementInfo& e = elements_[index];
        MixerLineModel line = lineFor(type, e.name, capture ? e.captureChannels : e.playbackChannels,
                                      type == MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT ? MIXERLINE_TARGETTYPE_WAVEOUT
                                                                                 : MIXERLINE_TARGETTYPE_UNDEFINED);
        addControls(line, index, capture);
        return line;
    }

    // The program's own output level, where the card has no wave element.
    MixerLineModel streamSource()
    {
        MixerLineModel line = lineFor(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, "Wave", 1, MIXERLINE_TARGETTYPE_WAVEOUT);
        line.name = "Wavelark Wave";
        line.controls.push_back(volume("Wave Volume", 65535, bind({ValueSource::StreamVolume, 0})));
        line.controls.push_back(mute("Wave Mute", bind({ValueSource::StreamMute, 0})));
        return line;
    }

    void addControls(MixerLineModel& line, std::size_t index, bool capture)
    {
        const ElementInfo& e = elements_[index];
        const std::string label =
            capture && e.name.find("Capture") == std::string::npos ? e.name + " Capture" : e.name;
        if (capture ? e.captureVolume : e.playbackVolume) {
            const long steps = capture ? e.captureSteps : e.playbackSteps;
            const auto source = capture ? ValueSource::CaptureVolume : ValueSource::PlaybackVolume;
            line.controls.push_back(volume(label + " Volume", static_cast<DWORD>(std::clamp(steps, 0L, 65535L)),
                                           bind({source, index})));
        }
        if (capture ? e.captureSwitch : e.playbackSwitch) {
            const auto source = capture ? ValueSource::CaptureSwitch : ValueSource::PlaybackSwitch;
            line.controls.push_back(mute(label + " Mute", bind({source, index})));
        }
    }

    std::size_t bind(const ControlBinding& binding)
    {
        bindings_.push_back(binding);
        return bindings_.size() - 1;
    }

    static MixerControlModel volume(const std::string& name, DWORD steps, std::size_t key)
    {
        MixerControlModel control;
        control.type = MIXERCONTROL_CONTROLTYPE_VOLUME;
        control.shortName = "Volume";
        control.name = name;
        control.maximum = 65535;
        control.steps = steps;
        control.key = key;
        return control;
    }

    static MixerControlModel mute(const std::string& name, std::size_t key)
    {
        MixerControlModel control;
        control.type = MIXERCONTROL_CONTROLTYPE_MUTE;
        control.flags = MIXERCONTROL_CONTROLF_UNIFORM;
        control.shortName = "Mute";
        control.name = name;
        control.maximum = 1;
        control.key = key;
        return control;
    }

    const std::string& name_;
    const std::vector<ElementInfo>& elements_;
    std::vector<ControlBinding>& bindings_;
};

}  // namespace

DWORD sourceTypeForName(const std::string& name)
{
    const std::vector<std::string> words = wordsOf(name);
    if (words.empty()) return MIXERLINE_COMPONENTTYPE_SRC_UNDEFINED;
    auto has = [&](std::initializer_list<const char*> wanted) {
        return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
            return std::any_of(wanted.begin(), wanted.end(), [&](const char* w) { return word == w; });
        });
    };
    // "Front Mic" is a microphone; "Mic Boost" is not the microphone's level.
    if (words.back() == "Mic" || words.back() == "Microphone") return MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE;
    if (words.front() == "PCM" || words.front() == "Wave") return MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT;
    if (has({"Line"})) return MIXERLINE_COMPONENTTYPE_SRC_LINE;
    if (has({"CD"})) return MIXERLINE_COMPONENTTYPE_SRC_COMPACTDISC;
    if (has({"Synth", "MIDI", "FM"})) return MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER;
    if (has({"Beep"}) || name.rfind("PC Speaker", 0) == 0) return MIXERLINE_COMPONENTTYPE_SRC_PCSPEAKER;
    if (has({"Phone"})) return MIXERLINE_COMPONENTTYPE_SRC_TELEPHONE;
    if (has({"Aux"})) return MIXERLINE_COMPONENTTYPE_SRC_AUXILIARY;
    if (has({"IEC958", "SPDIF", "S/PDIF", "Digital"})) return MIXERLINE_COMPONENTTYPE_SRC_DIGITAL;
    if (has({"Analog"})) return MIXERLINE_COMPONENTTYPE_SRC_ANALOG;
    return MIXERLINE_COMPONENTTYPE_SRC_UNDEFINED;
}

backend::MixerModel layOutMixer(const std::string& mixerName, const std::vector<ElementInfo>& elements,
                                std::vector<ControlBinding>& bindings)
{
    return Layout(mixerName, elements, bindings).build();
}

}  // namespace mm::alsa
