#include "platform/alsa/AlsaMixer.h"

#include <alsa/asoundlib.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/MixerBackend.h"
#include "platform/alsa/AlsaBoundedCall.h"
#include "platform/alsa/AlsaCommon.h"
#include "platform/alsa/AlsaMixerLayout.h"
#include "platform/alsa/AlsaStreamGain.h"

namespace mm::alsa {

namespace {

using backend::MixerControlModel;
using backend::MixerModel;

// A mixer whose sound server has gone away reports a broken pipe.
MMRESULT mixerError(int error) { return -error == EPIPE ? MMSYSERR_NODRIVER : deviceError(error); }

// --------------------------------------------------------------- the list

struct MixerDevice {
    std::string control;  // the control device the simple mixer attaches to
    std::string name;
};

// The card name behind a control device; false when it does not open.
bool controlCardName(const std::string& control, std::string& name)
{
    snd_ctl_t* ctl = nullptr;
    if (snd_ctl_open(&ctl, control.c_str(), 0) < 0) return false;
    snd_ctl_card_info_t* info = nullptr;
    if (snd_ctl_card_info_malloc(&info) >= 0) {
        if (snd_ctl_card_info(ctl, info) >= 0) name = snd_ctl_card_info_get_name(info);
        snd_ctl_card_info_free(info);
    }
    snd_ctl_close(ctl);
    return true;
}

std::vector<MixerDevice> listMixers()
{
    silenceAlsaDiagnostics();
    std::vector<MixerDevice> mixers;
    auto add = [&](const std::string& control, const std::string& fallback) {
        std::string name;
        if (!controlCardName(control, name)) return;
        mixers.push_back({control, name.empty() ? fallback : name});
    };
    add("default", "Default");
    int card = -1;
    while (snd_card_next(&card) >= 0 && card >= 0) {
        const std::string number = std::to_string(card);
        add("hw:" + number, "Card " + number);
    }
    return mixers;
}

// ----------------------------------------------------------- the elements

// The channels an element has on one side.
std::vector<snd_mixer_selem_channel_id_t> channelsOf(snd_mixer_elem_t* e, bool capture)
{
    std::vector<snd_mixer_selem_channel_id_t> channels;
    for (int c = 0; c <= SND_MIXER_SCHN_LAST; ++c) {
        const auto channel = static_cast<snd_mixer_selem_channel_id_t>(c);
        if (capture ? snd_mixer_selem_has_capture_channel(e, channel)
                    : snd_mixer_selem_has_playback_channel(e, channel)) {
            channels.push_back(channel);
        }
    }
    if (channels.empty()) channels.push_back(SND_MIXER_SCHN_MONO);
    return channels;
}

DWORD channelCount(snd_mixer_elem_t* e, bool capture)
{
    if (capture ? snd_mixer_selem_is_capture_mono(e) : snd_mixer_selem_is_playback_mono(e)) return 1;
    return static_cast<DWORD>(channelsOf(e, capture).size());
}

// A volume's raw range.
struct Scale {
    long minimum = 0;
    long maximum = 0;
};

DWORD toLevel(long raw, const Scale& scale)
{
    if (scale.maximum <= scale.minimum) return 0;
    const long clamped = std::clamp(raw, scale.minimum, scale.maximum);
    return static_cast<DWORD>(std::lround(static_cast<double>(clamped - scale.minimum) * 65535.0 /
                                          static_cast<double>(scale.maximum - scale.minimum)));
}

long toRaw(DWORD level, const Scale& scale)
{
    const double share = static_cast<double>(std::min<DWORD>(level, 65535)) / 65535.0;
    return scale.minimum + std::lround(share * static_cast<double>(scale.maximum - scale.minimum));
}

// An element of the simple mixer, with what the layout needs to know of it.
struct Element {
    snd_mixer_elem_t* handle = nullptr;
    ElementInfo info;
    Scale playback;
    Scale capture;
};

std::vector<Element> elementsOf(snd_mixer_t* mixer)
{
    std::vector<Element> elements;
    for (snd_mixer_elem_t* e = snd_mixer_first_elem(mixer); e != nullptr; e = snd_mixer_elem_next(e)) {
        if (!snd_mixer_selem_is_active(e) || snd_mixer_selem_is_enumerated(e)) continue;
        Element element;
        element.handle = e;
        ElementInfo& info = element.info;
        info.baseName = snd_mixer_selem_get_name(e);
        info.name = info.baseName;
        if (const unsigned index = snd_mixer_selem_get_index(e); index > 0) {
            info.name += ' ';
            info.name += std::to_string(index);
        }
        info.playbackVolume = snd_mixer_selem_has_playback_volume(e);
        info.playbackSwitch = snd_mixer_selem_has_playback_switch(e);
        info.captureVolume = snd_mixer_selem_has_capture_volume(e);
        info.captureSwitch = snd_mixer_selem_has_capture_switch(e);
        if (!(info.playbackVolume || info.playbackSwitch || info.captureVolume || info.captureSwitch)) continue;
        info.playbackChannels = channelCount(e, false);
        info.captureChannels = channelCount(e, true);
        if (info.playbackVolume) {
            snd_mixer_selem_get_playback_volume_range(e, &element.playback.minimum, &element.playback.maximum);
            info.playbackSteps = element.playback.maximum - element.playback.minimum;
        }
        if (info.captureVolume) {
            snd_mixer_selem_get_capture_volume_range(e, &element.capture.minimum, &element.capture.maximum);
            info.captureSteps = element.capture.maximum - element.capture.minimum;
        }
        elements.push_back(element);
    }
    return elements;
}

// ----------------------------------------------------------------- values

bool isCapture(ValueSource source)
{
    return source == ValueSource::CaptureVolume || source == ValueSource::CaptureSwitch;
}

bool isVolume(ValueSource source)
{
    return source == ValueSource::PlaybackVolume || source == ValueSource::CaptureVolume;
}

// One side of an element, channel by channel, as raw values (switches as
// 0 or 1).
int readRaw(snd_mixer_elem_t* e, ValueSource source, std::vector<long>& raw)
{
    const bool capture = isCapture(source);
    raw.clear();
    for (const auto channel : channelsOf(e, capture)) {
        long value = 0;
        int on = 0;
        int error = 0;
        switch (source) {
        case ValueSource::PlaybackVolume: error = snd_mixer_selem_get_playback_volume(e, channel, &value); break;
        case ValueSource::CaptureVolume: error = snd_mixer_selem_get_capture_volume(e, channel, &value); break;
        case ValueSource::PlaybackSwitch: error = snd_mixer_selem_get_playback_switch(e, channel, &on); break;
        case ValueSource::CaptureSwitch: error = snd_mixer_selem_get_capture_switch(e, channel, &on); break;
        default: break;
        }
        if (error < 0) return error;
        raw.push_back(isVolume(source) ? value : on);
    }
    return 0;
}

int writeRaw(snd_mixer_elem_t* e, ValueSource source, const std::vector<long>& raw)
{
    const auto channels = channelsOf(e, isCapture(source));
    for (std::size_t i = 0; i < channels.size() && i < raw.size(); ++i) {
        int error = 0;
        const int on = raw[i] != 0 ? 1 : 0;
        switch (source) {
        case ValueSource::PlaybackVolume: error = snd_mixer_selem_set_playback_volume(e, channels[i], raw[i]); break;
        case ValueSource::CaptureVolume: error = snd_mixer_selem_set_capture_volume(e, channels[i], raw[i]); break;
        case ValueSource::PlaybackSwitch: error = snd_mixer_selem_set_playback_switch(e, channels[i], on); break;
        case ValueSource::CaptureSwitch: error = snd_mixer_selem_set_capture_switch(e, channels[i], on); break;
        default: break;
        }
        if (error < 0) return error;
    }
    return 0;
}

// The program's value of a side read channel by channel: the first
// channel's volume on 0..65535, or 1 for a mute that is on (a switch off).
DWORD levelOf(const Element& e, ValueSource source, const std::vector<long>& raw)
{
    const long first = raw.empty() ? 0 : raw.front();
    if (isVolume(source)) return toLevel(first, isCapture(source) ? e.capture : e.playback);
    return first != 0 ? 0 : 1;
}

// The raw values the program's value stands for, the same on every channel.
std::vector<long> uniformRaw(const Element& e, ValueSource source, DWORD value)
{
    const long raw = isVolume(source) ? toRaw(value, isCapture(source) ? e.capture : e.playback)
                                      : (value != 0 ? 0 : 1);
    return std::vector<long>(channelsOf(e.handle, isCapture(source)).size(), raw);
}

// What the program last read from each control, channel by channel, across
// openings of the mixer. Writing back the very value that was read puts
// back those raw values: a level read at start-up and written at exit
// restores each channel (the desktop's balance) and the exact raw step,
// which one value on 0..65535 cannot carry for a range of 65536 steps.
class Readings {
public:
    struct Reading {
        DWORD value = 0;
        std::vector<long> raw;
    };

    void note(const std::string& key, DWORD value, std::vector<long> raw)
    {
        std::lock_guard lock(mutex_);
        readings_[key] = Reading{value, std::move(raw)};
    }
    // The raw values behind `value` when it is what was last read there.
    std::optional<std::vector<long>> rawFor(const std::string& key, DWORD value) const
    {
        std::lock_guard lock(mutex_);
        const auto found = readings_.find(key);
        if (found == readings_.end() || found->second.value != value) return std::nullopt;
        return found->second.raw;
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, Reading> readings_;
};

Readings& readings()
{
    static Readings* const instance = new Readings;
    return *instance;
}

// The ALSA side of an open mixer. Only the bounded-call worker uses it;
// it closes the mixer when the last call that holds it has ended.
struct OpenMixer {
    ~OpenMixer()
    {
        if (mixer != nullptr) snd_mixer_close(mixer);
    }

    // Where the readings of a control are kept.
    std::string readingKey(const Element& e, ValueSource source) const
    {
        return control + '|' + e.info.name + '|' + std::to_string(static_cast<int>(source));
    }

    MMRESULT get(const Element& e, ValueSource source, DWORD& value)
    {
        if (int error = snd_mixer_handle_events(mixer); error < 0) return failed(error);
        std::vector<long> raw;
        if (int error = readRaw(e.handle, source, raw); error < 0) return failed(error);
        value = levelOf(e, source, raw);
        readings().note(readingKey(e, source), value, std::move(raw));
        return MMSYSERR_NOERROR;
    }

    MMRESULT set(const Element& e, ValueSource source, DWORD value)
    {
        const auto kept = readings().rawFor(readingKey(e, source), value);
        const int error = writeRaw(e.handle, source, kept ? *kept : uniformRaw(e, source, value));
        return error < 0 ? failed(error) : MMSYSERR_NOERROR;
    }

    MMRESULT failed(int error)
    {
        broken = true;
        return mixerError(error);
    }

    std::atomic<bool> broken{false};  // a call failed: the next opening starts afresh
    snd_mixer_t* mixer = nullptr;
    std::string control;
    std::vector<Element> elements;
    std::vector<ControlBinding> bindings;
};

// Opens and loads a mixer and lays out its lines.
MMRESULT openMixer(const MixerDevice& device, std::shared_ptr<OpenMixer>& opened, MixerModel& model)
{
    auto state = std::make_shared<OpenMixer>();
    state->control = device.control;
    int error = snd_mixer_open(&state->mixer, 0);
    if (error < 0) {
        state->mixer = nullptr;
        return mixerError(error);
    }
    if ((error = snd_mixer_attach(state->mixer, device.control.c_str())) < 0 ||
        (error = snd_mixer_selem_register(state->mixer, nullptr, nullptr)) < 0 ||
        (error = snd_mixer_load(state->mixer)) < 0) {
        return mixerError(error);
    }
    state->elements = elementsOf(state->mixer);
    std::vector<ElementInfo> infos;
    for (const Element& element : state->elements) infos.push_back(element.info);
    model = layOutMixer(device.name, infos, state->bindings);
    model.driverVersion = libraryVersion();
    opened = std::move(state);
    return MMSYSERR_NOERROR;
}

// Every call that may wait on a sound server runs as a bounded call
// (AlsaBoundedCall.h); one that does not answer in time counts as a mixer
// gone (MMSYSERR_NODRIVER).
class AlsaSession : public backend::MixerSession {
public:
    AlsaSession(std::shared_ptr<OpenMixer> state, MixerModel model)
        : state_(std::move(state)), model_(std::move(model))
    {
    }
    // Closing may wait on the server too: the worker does it, after any
    // call still under way.
    ~AlsaSession() override
    {
        runDetached([state = std::move(state_)]() mutable { state.reset(); });
    }

    const std::shared_ptr<OpenMixer>& state() const { return state_; }

    const MixerModel& model() const override { return model_; }

    MMRESULT getValue(const MixerControlModel& control, DWORD& value) override
    {
        if (control.key >= state_->bindings.size()) return MIXERR_INVALCONTROL;
        const ControlBinding binding = state_->bindings[control.key];
        switch (binding.source) {
        case ValueSource::StreamVolume: value = streamGain().level; return MMSYSERR_NOERROR;
        case ValueSource::StreamMute: value = streamGain().mute ? 1 : 0; return MMSYSERR_NOERROR;
        default: break;
        }
        if (binding.element >= state_->elements.size()) return MIXERR_INVALCONTROL;
        struct Read {
            MMRESULT result = MMSYSERR_NOERROR;
            DWORD value = 0;
        };
        auto read = boundedCall<Read>(kAlsaCallLimit, [state = state_, binding] {
            Read r;
            r.result = state->get(state->elements[binding.element], binding.source, r.value);
            return r;
        });
        if (!read) return MMSYSERR_NODRIVER;
        if (read->result == MMSYSERR_NOERROR) value = read->value;
        return read->result;
    }

    MMRESULT setValue(const MixerControlModel& control, DWORD value) override
    {
        if (control.key >= state_->bindings.size()) return MIXERR_INVALCONTROL;
        const ControlBinding binding = state_->bindings[control.key];
        switch (binding.source) {
        case ValueSource::StreamVolume:
            streamGain().level = static_cast<std::uint16_t>(std::min<DWORD>(value, 65535));
            return MMSYSERR_NOERROR;
        case ValueSource::StreamMute: streamGain().mute = value != 0; return MMSYSERR_NOERROR;
        default: break;
        }
        if (binding.element >= state_->elements.size()) return MIXERR_INVALCONTROL;
        auto written = boundedCall<MMRESULT>(kAlsaCallLimit, [state = state_, binding, value] {
            return state->set(state->elements[binding.element], binding.source, value);
        });
        return written ? *written : MMSYSERR_NODRIVER;
    }

private:
    std::shared_ptr<OpenMixer> state_;
    MixerModel model_;
};

class AlsaMixers : public backend::MixerBackend {
public:
    UINT count() override { return static_cast<UINT>(refresh()); }

    MMRESULT open(UINT mixerId, std::unique_ptr<backend::MixerSession>& session) override
    {
        bool listed = false;
        {
            std::lock_guard lock(mutex_);
            listed = listed_;
        }
        if (!listed) refresh();
        MixerDevice device;
        {
            std::lock_guard lock(mutex_);
            if (!listed_) return MMSYSERR_NODRIVER;
            if (mixerId >= mixers_.size()) return MMSYSERR_BADDEVICEID;
            device = mixers_[mixerId];
            // The program opens the mixer for every value it sets: the last
            // opening serves again while its calls succeed, which spares
            // the server a connection each time.
            if (kept_ && kept_->control == device.control && !kept_->broken) {
                session = std::make_unique<AlsaSession>(kept_, keptModel_);
                return MMSYSERR_NOERROR;
            }
        }
        struct Opened {
            MMRESULT result = MMSYSERR_NOERROR;
            std::shared_ptr<OpenMixer> state;
            MixerModel model;
        };
        auto opened = boundedCall<Opened>(kAlsaDiscoveryLimit, [device] {
            Opened o;
            o.result = openMixer(device, o.state, o.model);
            return o;
        });
        if (!opened) return MMSYSERR_NODRIVER;
        if (opened->result != MMSYSERR_NOERROR) return opened->result;
        std::lock_guard lock(mutex_);
        keep(opened->state, opened->model);
        session = std::make_unique<AlsaSession>(std::move(opened->state), std::move(opened->model));
        return MMSYSERR_NOERROR;
    }

private:
    // Lists the mixers anew; a server that does not answer leaves the last
    // list as it was. Returns the number of mixers.
    std::size_t refresh()
    {
        auto mixers = boundedCall<std::vector<MixerDevice>>(kAlsaDiscoveryLimit, [] { return listMixers(); });
        std::lock_guard lock(mutex_);
        if (mixers) {
            mixers_ = std::move(*mixers);
            listed_ = true;
        }
        return mixers_.size();
    }

    // Keeps an opening for the next; the one it replaces is closed on the
    // worker.
    void keep(const std::shared_ptr<OpenMixer>& state, const MixerModel& model)
    {
        if (kept_) runDetached([old = std::move(kept_)]() mutable { old.reset(); });
        kept_ = state;
        keptModel_ = model;
    }

    std::mutex mutex_;
    std::vector<MixerDevice> mixers_;
    bool listed_ = false;
    std::shared_ptr<OpenMixer> kept_;
    MixerModel keptModel_;
};

}  // namespace

backend::MixerBackend& mixerBackend()
{
    static AlsaMixers* const instance = new AlsaMixers;
    return *instance;
}

}  // namespace mm::alsa
