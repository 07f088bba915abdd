#include "platform/alsa/AlsaMixer.h"

#include <alsa/asoundlib.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/MixerBackend.h"
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

snd_mixer_selem_channel_id_t firstChannel(snd_mixer_elem_t* e, bool capture)
{
    for (int c = 0; c <= SND_MIXER_SCHN_LAST; ++c) {
        const auto channel = static_cast<snd_mixer_selem_channel_id_t>(c);
        if (capture ? snd_mixer_selem_has_capture_channel(e, channel)
                    : snd_mixer_selem_has_playback_channel(e, channel)) {
            return channel;
        }
    }
    return SND_MIXER_SCHN_MONO;
}

DWORD channelCount(snd_mixer_elem_t* e, bool capture)
{
    if (capture ? snd_mixer_selem_is_capture_mono(e) : snd_mixer_selem_is_playback_mono(e)) return 1;
    DWORD count = 0;
    for (int c = 0; c <= SND_MIXER_SCHN_LAST; ++c) {
        const auto channel = static_cast<snd_mixer_selem_channel_id_t>(c);
        if (capture ? snd_mixer_selem_has_capture_channel(e, channel)
                    : snd_mixer_selem_has_playback_channel(e, channel)) {
            ++count;
        }
    }
    return std::max<DWORD>(count, 1);
}

// A volume's raw range and where it is read.
struct Scale {
    long minimum = 0;
    long maximum = 0;
    snd_mixer_selem_channel_id_t channel = SND_MIXER_SCHN_MONO;
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
        element.playback.channel = firstChannel(e, false);
        element.capture.channel = firstChannel(e, true);
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

class AlsaSession : public backend::MixerSession {
public:
    ~AlsaSession() override
    {
        if (mixer_ != nullptr) snd_mixer_close(mixer_);
    }

    static MMRESULT open(const MixerDevice& device, std::unique_ptr<backend::MixerSession>& session)
    {
        auto opened = std::make_unique<AlsaSession>();
        int error = snd_mixer_open(&opened->mixer_, 0);
        if (error < 0) {
            opened->mixer_ = nullptr;
            return mixerError(error);
        }
        if ((error = snd_mixer_attach(opened->mixer_, device.control.c_str())) < 0 ||
            (error = snd_mixer_selem_register(opened->mixer_, nullptr, nullptr)) < 0 ||
            (error = snd_mixer_load(opened->mixer_)) < 0) {
            return mixerError(error);
        }
        opened->elements_ = elementsOf(opened->mixer_);
        std::vector<ElementInfo> infos;
        for (const Element& element : opened->elements_) infos.push_back(element.info);
        opened->model_ = layOutMixer(device.name, infos, opened->bindings_);
        opened->model_.driverVersion = libraryVersion();
        session = std::move(opened);
        return MMSYSERR_NOERROR;
    }

    const MixerModel& model() const override { return model_; }

    MMRESULT getValue(const MixerControlModel& control, DWORD& value) override
    {
        const Element* e = nullptr;
        if (!resolve(control, e)) return MIXERR_INVALCONTROL;
        if (int error = snd_mixer_handle_events(mixer_); error < 0) return mixerError(error);
        const ControlBinding& b = bindings_[control.key];
        long raw = 0;
        int on = 0;
        int error = 0;
        switch (b.source) {
        case ValueSource::PlaybackVolume:
            error = snd_mixer_selem_get_playback_volume(e->handle, e->playback.channel, &raw);
            value = toLevel(raw, e->playback);
            break;
        case ValueSource::CaptureVolume:
            error = snd_mixer_selem_get_capture_volume(e->handle, e->capture.channel, &raw);
            value = toLevel(raw, e->capture);
            break;
        case ValueSource::PlaybackSwitch:
            error = snd_mixer_selem_get_playback_switch(e->handle, e->playback.channel, &on);
            value = on ? 0 : 1;
            break;
        case ValueSource::CaptureSwitch:
            error = snd_mixer_selem_get_capture_switch(e->handle, e->capture.channel, &on);
            value = on ? 0 : 1;
            break;
        case ValueSource::StreamVolume: value = streamGain().level; break;
        case ValueSource::StreamMute: value = streamGain().mute ? 1 : 0; break;
        }
        return error < 0 ? mixerError(error) : MMSYSERR_NOERROR;
    }

    MMRESULT setValue(const MixerControlModel& control, DWORD value) override
    {
        const Element* e = nullptr;
        if (!resolve(control, e)) return MIXERR_INVALCONTROL;
        const ControlBinding& b = bindings_[control.key];
        int error = 0;
        switch (b.source) {
        case ValueSource::PlaybackVolume:
            error = snd_mixer_selem_set_playback_volume_all(e->handle, toRaw(value, e->playback));
            break;
        case ValueSource::CaptureVolume:
            error = snd_mixer_selem_set_capture_volume_all(e->handle, toRaw(value, e->capture));
            break;
        case ValueSource::PlaybackSwitch:
            error = snd_mixer_selem_set_playback_switch_all(e->handle, value != 0 ? 0 : 1);
            break;
        case ValueSource::CaptureSwitch:
            error = snd_mixer_selem_set_capture_switch_all(e->handle, value != 0 ? 0 : 1);
            break;
        case ValueSource::StreamVolume:
            streamGain().level = static_cast<std::uint16_t>(std::min<DWORD>(value, 65535));
            break;
        case ValueSource::StreamMute: streamGain().mute = value != 0; break;
        }
        return error < 0 ? mixerError(error) : MMSYSERR_NOERROR;
    }

private:
    // Checks that the control is one this session gave out and finds the
    // element behind it; `element` stays null for the program's stream gain,
    // which has none.
    bool resolve(const MixerControlModel& control, const Element*& element) const
    {
        if (control.key >= bindings_.size()) return false;
        const ControlBinding& binding = bindings_[control.key];
        if (binding.source == ValueSource::StreamVolume || binding.source == ValueSource::StreamMute) return true;
        if (binding.element >= elements_.size()) return false;
        element = &elements_[binding.element];
        return true;
    }

    snd_mixer_t* mixer_ = nullptr;
    std::vector<Element> elements_;
    MixerModel model_;
    std::vector<ControlBinding> bindings_;
};

class AlsaMixers : public backend::MixerBackend {
public:
    UINT count() override
    {
        std::lock_guard lock(mutex_);
        mixers_ = listMixers();
        listed_ = true;
        return static_cast<UINT>(mixers_.size());
    }

    MMRESULT open(UINT mixerId, std::unique_ptr<backend::MixerSession>& session) override
    {
        MixerDevice device;
        {
            std::lock_guard lock(mutex_);
            if (!listed_) {
                mixers_ = listMixers();
                listed_ = true;
            }
            if (mixerId >= mixers_.size()) return MMSYSERR_BADDEVICEID;
            device = mixers_[mixerId];
        }
        return AlsaSession::open(device, session);
    }

private:
    std::mutex mutex_;
    std::vector<MixerDevice> mixers_;
    bool listed_ = false;
};

}  // namespace

backend::MixerBackend& mixerBackend()
{
    static AlsaMixers* const instance = new AlsaMixers;
    return *instance;
}

}  // namespace mm::alsa
