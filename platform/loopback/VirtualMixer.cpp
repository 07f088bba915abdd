#include "platform/loopback/VirtualMixer.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/MixerBackend.h"
#include "platform/loopback/VirtualCard.h"
#include "platform/loopback/VirtualMixerSetup.h"

namespace mm::loopback {

namespace {

using backend::MixerControlModel;
using backend::MixerLineModel;
using backend::MixerModel;

constexpr const char* kCardName = "Wavelark Virtual Card";

ControlLayout volume(const std::string& name, Drives drives)
{
    ControlLayout control;
    control.type = MIXERCONTROL_CONTROLTYPE_VOLUME;
    control.shortName = "Volume";
    control.name = name;
    control.steps = 65535;
    control.drives = drives;
    return control;
}

ControlLayout mute(const std::string& name, Drives drives)
{
    ControlLayout control;
    control.type = MIXERCONTROL_CONTROLTYPE_MUTE;
    control.shortName = "Mute";
    control.name = name;
    control.flags = MIXERCONTROL_CONTROLF_UNIFORM;
    control.maximum = 1;
    control.drives = drives;
    return control;
}

LineLayout line(DWORD type, const std::string& shortName, const std::string& name, DWORD channels,
                   DWORD targetType, const std::string& targetName)
{
    LineLayout layout;
    layout.componentType = type;
    layout.shortName = shortName;
    layout.name = name;
    layout.channels = channels;
    layout.targetType = targetType;
    layout.targetName = targetName;
    return layout;
}

// Where a control sits in a mixer: destination, source (-1 for the
// destination's own controls) and index.
struct Path {
    std::size_t destination = 0;
    std::ptrdiff_t source = -1;
    std::size_t control = 0;
};

struct State {
    std::mutex mutex;
    MixerSetup setup;
};

State& state()
{
    static State* const instance = new State;  // never destroyed: sessions may outlive statics
    return *instance;
}

MMRESULT faultFor(const std::map<std::string, MMRESULT>& faults, const std::string& name)
{
    auto found = faults.find(name);
    if (found != faults.end()) return found->second;
    found = faults.find("");
    return found != faults.end() ? found->second : MMSYSERR_NOERROR;
}

DWORD readLevel(const ControlLayout& control)
{
    Levels& card = levels();
    switch (control.drives) {
    case Drives::Master: return card.master;
    case Drives::MasterMute: return card.masterMute ? 1 : 0;
    case Drives::Wave: return card.wave;
    case Drives::WaveMute: return card.waveMute ? 1 : 0;
    case Drives::Mic: return card.mic;
    case Drives::MicMute: return card.micMute ? 1 : 0;
    case Drives::Nothing: break;
    }
    return control.value;
}

void writeLevel(ControlLayout& control, DWORD value)
{
    Levels& card = levels();
    const auto level = static_cast<std::uint16_t>(std::min<DWORD>(value, 65535));
    switch (control.drives) {
    case Drives::Master: card.master = level; return;
    case Drives::MasterMute: card.masterMute = value != 0; return;
    case Drives::Wave: card.wave = level; return;
    case Drives::WaveMute: card.waveMute = value != 0; return;
    case Drives::Mic: card.mic = level; return;
    case Drives::MicMute: card.micMute = value != 0; return;
    case Drives::Nothing: control.value = value; return;
    }
}

class VirtualSession : public backend::MixerSession {
public:
    VirtualSession(UINT mixerId, const MixerLayout& layout) : mixerId_(mixerId)
    {
        model_.name = layout.name;
        model_.driverVersion = 0x0100;
        for (std::size_t d = 0; d < layout.destinations.size(); ++d) {
            const LineLayout& destination = layout.destinations[d];
            MixerLineModel& line = model_.destinations.emplace_back(describe(destination, d, -1));
            for (std::size_t s = 0; s < destination.sources.size(); ++s) {
                line.sources.push_back(
                    describe(destination.sources[s], d, static_cast<std::ptrdiff_t>(s)));
            }
        }
    }

    const MixerModel& model() const override { return model_; }

    MMRESULT getValue(const MixerControlModel& control, DWORD& value) override
    {
        State& shared = state();
        std::lock_guard lock(shared.mutex);
        MixerSetup& mixers = shared.setup;
        ControlLayout* layout = nullptr;
        if (MMRESULT result = find(mixers, control, layout)) return result;
        if (MMRESULT fault = faultFor(mixers.readFaults, layout->name)) return fault;
        value = readLevel(*layout);
        return MMSYSERR_NOERROR;
    }

    MMRESULT setValue(const MixerControlModel& control, DWORD value) override
    {
        State& shared = state();
        std::lock_guard lock(shared.mutex);
        MixerSetup& mixers = shared.setup;
        ControlLayout* layout = nullptr;
        if (MMRESULT result = find(mixers, control, layout)) return result;
        if (MMRESULT fault = faultFor(mixers.writeFaults, layout->name)) return fault;
        if (mixers.logWrites) mixers.writes.push_back({layout->name, value});
        writeLevel(*layout, value);
        return MMSYSERR_NOERROR;
    }

private:
    MixerLineModel describe(const LineLayout& layout, std::size_t destination, std::ptrdiff_t source)
    {
        MixerLineModel line;
        line.componentType = layout.componentType;
        line.flags = layout.flags;
        line.channels = layout.channels;
        line.shortName = layout.shortName;
        line.name = layout.name;
        line.targetType = layout.targetType;
        line.targetName = layout.targetName;
        for (std::size_t c = 0; c < layout.controls.size(); ++c) {
            const ControlLayout& from = layout.controls[c];
            MixerControlModel control;
            control.type = from.type;
            control.flags = from.flags;
            control.shortName = from.shortName;
            control.name = from.name;
            control.minimum = from.minimum;
            control.maximum = from.maximum;
            control.steps = from.steps;
            control.key = paths_.size();
            paths_.push_back({destination, source, c});
            line.controls.push_back(control);
        }
        return line;
    }

    // The control as the mixer now has it (a test may have changed the mixer).
    MMRESULT find(MixerSetup& mixers, const MixerControlModel& control, ControlLayout*& layout)
    {
        if (mixers.vanished) return MMSYSERR_NODRIVER;
        if (mixerId_ >= mixers.mixers.size() || control.key >= paths_.size()) return MIXERR_INVALCONTROL;
        const Path& path = paths_[control.key];
        auto& destinations = mixers.mixers[mixerId_].destinations;
        if (path.destination >= destinations.size()) return MIXERR_INVALCONTROL;
        LineLayout* line = &destinations[path.destination];
        if (path.source >= 0) {
            if (static_cast<std::size_t>(path.source) >= line->sources.size()) return MIXERR_INVALCONTROL;
            line = &line->sources[static_cast<std::size_t>(path.source)];
        }
        if (path.control >= line->controls.size()) return MIXERR_INVALCONTROL;
        layout = &line->controls[path.control];
        return MMSYSERR_NOERROR;
    }

    UINT mixerId_;
    MixerModel model_;
    std::vector<Path> paths_;
};

class VirtualMixers : public backend::MixerBackend {
public:
    UINT count() override
    {
        State& shared = state();
        std::lock_guard lock(shared.mutex);
        const MixerSetup& mixers = shared.setup;
        return mixers.vanished ? 0 : static_cast<UINT>(mixers.mixers.size());
    }

    MMRESULT open(UINT mixerId, std::unique_ptr<backend::MixerSession>& session) override
    {
        State& shared = state();
        std::lock_guard lock(shared.mutex);
        MixerSetup& mixers = shared.setup;
        if (mixers.vanished || mixerId >= mixers.mixers.size()) return MMSYSERR_BADDEVICEID;
        if (mixers.refuseOpen != MMSYSERR_NOERROR && mixers.refusals > 0) {
            if (mixers.refusals != kEveryOpening) --mixers.refusals;
            return mixers.refuseOpen;
        }
        session = std::make_unique<VirtualSession>(mixerId, mixers.mixers[mixerId]);
        return MMSYSERR_NOERROR;
    }
};

}  // namespace

backend::MixerBackend& mixerBackend()
{
    static VirtualMixers* const instance = new VirtualMixers;
    return *instance;
}

MixerLayout standardMixer()
{
    LineLayout speakers = line(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, "Speakers", "Speakers", 2,
                                  MIXERLINE_TARGETTYPE_WAVEOUT, kCardName);
    speakers.controls = {volume("Master Volume", Drives::Master), mute("Master Mute", Drives::MasterMute)};
    LineLayout wave = line(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, "Wave", "Wave", 2,
                              MIXERLINE_TARGETTYPE_WAVEOUT, kCardName);
    wave.controls = {volume("Wave Volume", Drives::Wave), mute("Wave Mute", Drives::WaveMute)};
    speakers.sources = {wave};

    LineLayout recording = line(MIXERLINE_COMPONENTTYPE_DST_WAVEIN, "Recording", "Recording", 2,
                                   MIXERLINE_TARGETTYPE_WAVEIN, kCardName);
    LineLayout microphone = line(MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE, "Mic", "Microphone", 1,
                                    MIXERLINE_TARGETTYPE_UNDEFINED, "");
    microphone.controls = {volume("Mic Volume", Drives::Mic), mute("Mic Mute", Drives::MicMute)};
    recording.sources = {microphone};

    MixerLayout mixer;
    mixer.name = kCardName;
    mixer.destinations = {speakers, recording};
    return mixer;
}

void withMixerSetup(const std::function<void(MixerSetup&)>& use)
{
    State& shared = state();
    std::lock_guard lock(shared.mutex);
    use(shared.setup);
}

}  // namespace mm::loopback
