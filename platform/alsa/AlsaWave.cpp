#include "platform/alsa/AlsaWave.h"

#include <alsa/asoundlib.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/WaveBackend.h"
#include "platform/alsa/AlsaBoundedCall.h"
#include "platform/alsa/AlsaCommon.h"
#include "platform/alsa/AlsaStreamGain.h"
#include "platform/alsa/AlsaStreamLink.h"
#include "platform/alsa/AlsaThreadPriority.h"
#include "platform/pulse/PulseOutput.h"

namespace mm::alsa {

namespace {

using backend::CaptureQueue;
using backend::PlayQueue;

// How much a stream buffers and in what pieces it moves it.
struct Timing {
    unsigned bufferUs;
    unsigned periodUs;
};

// Output: two periods of 40 ms. Every period moved through a sound server
// costs a round of messages in the server's client thread as well as a
// wake-up of the feeder, so the periods are as long as the change-over
// latency allows: the buffer is kept between one and two periods full, so
// a change is heard about 45 ms after its pass ends (60 ms on average is
// queued, and the server renders some of it ahead), and the feeder may be
// held off for 40 ms before the device runs dry. The stream threads run
// raised where the user may (AlsaThreadPriority.h), so that a loaded
// machine does not hold them off that long. Input: short periods in a deeper buffer, since only
// delivery (not latency or wake-ups) matters there and it runs only while
// a burst is measured.
constexpr Timing kOutputTiming{80'000, 40'000};
constexpr Timing kInputTiming{200'000, 10'000};
constexpr int kWaitMs = 100;

// ---------------------------------------------------------------- errors

// An error met while opening or setting up a device; a refused format or
// rate is a bad format.
MMRESULT openError(int error) { return -error == EINVAL ? WAVERR_BADFORMAT : deviceError(error); }

// ---------------------------------------------------------------- devices

struct Device {
    std::string pcm;    // opened for playing or recording
    std::string probe;  // opened to read the capabilities
    std::string mixer;  // control device for the volume support bits
    std::string name;
    int card = -1;      // -1 for the default device
    int pcmDevice = 0;
    bool viaServer = false;  // the sound server's plugin: output goes native
};

struct Probe {
    DWORD formats = 0;
    WORD channels = 0;
};

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

// A sound server's plugin describes itself as "Playback/recording through
// the <server>", which the 31 characters of a device name would cut before
// the server's name: the device is named by the server alone.
std::string deviceNameOf(std::string description)
{
    constexpr std::string_view kThrough = "Playback/recording through the ";
    if (description.starts_with(kThrough)) description.erase(0, kThrough.size());
    return description;
}

// The description ALSA's hints give a PCM name.
std::string hintDescription(const std::string& pcmName)
{
    void** hints = nullptr;
    std::string description;
    if (snd_device_name_hint(-1, "pcm", &hints) < 0) return description;
    for (void** hint = hints; *hint != nullptr; ++hint) {
        char* name = snd_device_name_get_hint(*hint, "NAME");
        if (name != nullptr && pcmName == name) {
            if (char* desc = snd_device_name_get_hint(*hint, "DESC")) {
                description = firstLine(desc);
                std::free(desc);
            }
        }
        std::free(name);
        if (!description.empty()) break;
    }
    snd_device_name_free_hint(hints);
    return description;
}

// The standard rate x channels x bits combinations the PCM accepts.
Probe probeFormats(snd_pcm_t* pcm)
{
    Probe probe;
    snd_pcm_hw_params_t* any = nullptr;
    snd_pcm_hw_params_t* trial = nullptr;
    if (snd_pcm_hw_params_malloc(&any) < 0) return probe;
    if (snd_pcm_hw_params_malloc(&trial) < 0) {
        snd_pcm_hw_params_free(any);
        return probe;
    }
    if (snd_pcm_hw_params_any(pcm, any) >= 0) {
        static const unsigned rates[] = {11025, 22050, 44100, 48000, 96000};
        for (unsigned group = 0; group < 5; ++group) {
            for (unsigned bitsIndex = 0; bitsIndex < 2; ++bitsIndex) {
                for (unsigned channels = 1; channels <= 2; ++channels) {
                    snd_pcm_hw_params_copy(trial, any);
                    const snd_pcm_format_t format =
                        bitsIndex == 0 ? SND_PCM_FORMAT_U8 : SND_PCM_FORMAT_S16_LE;
                    if (snd_pcm_hw_params_set_format(pcm, trial, format) < 0) continue;
                    if (snd_pcm_hw_params_set_channels(pcm, trial, channels) < 0) continue;
                    if (snd_pcm_hw_params_test_rate(pcm, trial, rates[group], 0) < 0) continue;
                    // Within a rate group: mono 8, stereo 8, mono 16, stereo 16.
                    probe.formats |= DWORD{1} << (4 * group + 2 * bitsIndex + (channels - 1));
                }
            }
        }
        unsigned maxChannels = 0;
        if (snd_pcm_hw_params_get_channels_max(any, &maxChannels) >= 0) {
            probe.channels = static_cast<WORD>(std::min(maxChannels, 0xFFFFu));
        }
    }
    snd_pcm_hw_params_free(trial);
    snd_pcm_hw_params_free(any);
    return probe;
}

// Reads what a device can do; the error of the opening when it does not open.
int probeDevice(const Device& device, snd_pcm_stream_t stream, Probe& probe)
{
    snd_pcm_t* pcm = nullptr;
    int error = snd_pcm_open(&pcm, device.probe.c_str(), stream, SND_PCM_NONBLOCK);
    if (error < 0 && device.probe != device.pcm) {
        error = snd_pcm_open(&pcm, device.pcm.c_str(), stream, SND_PCM_NONBLOCK);
    }
    if (error < 0) return error;
    probe = probeFormats(pcm);
    snd_pcm_close(pcm);
    return 0;
}

// Volume support from the device's mixer: volume when any element has a
// playback volume, left/right volume when such an element is not mono.
DWORD probeSupport(const Device& device)
{
    DWORD support = WAVECAPS_SAMPLEACCURATE;
    snd_mixer_t* mixer = nullptr;
    if (snd_mixer_open(&mixer, 0) < 0) return support;
    if (snd_mixer_attach(mixer, device.mixer.c_str()) >= 0 &&
        snd_mixer_selem_register(mixer, nullptr, nullptr) >= 0 && snd_mixer_load(mixer) >= 0) {
        for (snd_mixer_elem_t* element = snd_mixer_first_elem(mixer); element != nullptr;
             element = snd_mixer_elem_next(element)) {
            if (!snd_mixer_selem_has_playback_volume(element)) continue;
            support |= WAVECAPS_VOLUME;
            if (!snd_mixer_selem_is_playback_mono(element)) support |= WAVECAPS_LRVOLUME;
        }
    }
    snd_mixer_close(mixer);
    return support;
}

// A hexadecimal id from a sysfs file ("0x8086" or "046d"); 0 when absent.
WORD readHexId(const std::string& path)
{
    std::ifstream file(path);
    std::string text;
    if (!(file >> text)) return 0;
    try {
        return static_cast<WORD>(std::stoul(text, nullptr, 16) & 0xFFFF);
    } catch (...) {
        return 0;
    }
}

// Maker and product of a card: PCI ids, else the USB device's ids.
std::pair<WORD, WORD> cardIds(int card)
{
    if (card < 0) return {0, 0};
    const std::string base = "/sys/class/sound/card" + std::to_string(card) + "/device/";
    WORD maker = readHexId(base + "vendor");
    WORD product = readHexId(base + "device");
    if (maker == 0) {
        maker = readHexId(base + "../idVendor");
        product = readHexId(base + "../idProduct");
    }
    return {maker, product};
}

// The first PCM device of a card in the given direction, -1 when none.
int firstPcmDevice(snd_ctl_t* control, snd_pcm_stream_t stream)
{
    snd_pcm_info_t* info = nullptr;
    if (snd_pcm_info_malloc(&info) < 0) return -1;
    int device = -1;
    int found = -1;
    while (snd_ctl_pcm_next_device(control, &device) >= 0 && device >= 0) {
        snd_pcm_info_set_device(info, static_cast<unsigned>(device));
        snd_pcm_info_set_subdevice(info, 0);
        snd_pcm_info_set_stream(info, stream);
        if (snd_ctl_pcm_info(control, info) >= 0) {
            found = device;
            break;
        }
    }
    snd_pcm_info_free(info);
    return found;
}

std::vector<Device> listDevices(snd_pcm_stream_t stream)
{
    silenceAlsaDiagnostics();
    std::vector<Device> devices;
    // The default device is listed when it opens, and also when something
    // holds or refuses it: its capabilities then say why it cannot be used.
    snd_pcm_t* pcm = nullptr;
    const int opened = snd_pcm_open(&pcm, "default", stream, SND_PCM_NONBLOCK);
    if (opened >= 0) snd_pcm_close(pcm);
    if (opened >= 0 || deviceError(opened) != MMSYSERR_NODRIVER) {
        std::string name = deviceNameOf(hintDescription("default"));
        devices.push_back({"default", "default", "default", name.empty() ? "Default" : name, -1, 0,
                           stream == SND_PCM_STREAM_PLAYBACK && pulse::defaultPcmIsServer()});
    }
    int card = -1;
    while (snd_card_next(&card) >= 0 && card >= 0) {
        const std::string control = "hw:" + std::to_string(card);
        snd_ctl_t* ctl = nullptr;
        if (snd_ctl_open(&ctl, control.c_str(), 0) < 0) continue;
        const int device = firstPcmDevice(ctl, stream);
        snd_ctl_close(ctl);
        if (device < 0) continue;
        char* cardName = nullptr;
        std::string name = "Card " + std::to_string(card);
        if (snd_card_get_name(card, &cardName) >= 0 && cardName != nullptr) {
            name = cardName;
            std::free(cardName);
        }
        const std::string suffix = std::to_string(card) + "," + std::to_string(device);
        devices.push_back({"plughw:" + suffix, "hw:" + suffix, control, name, card, device});
    }
    return devices;
}

// ---------------------------------------------------------------- streams

// Sets 16-bit mono at exactly `rate`, with the buffer and period times given.
// A stream starts once its buffer holds as many whole periods as fit: on a
// loaded machine the feeder may be late for the periods after the first,
// and a stream started on one period would run dry at once.
int configure(snd_pcm_t* pcm, unsigned rate, Timing timing, snd_pcm_uframes_t& period)
{
    snd_pcm_hw_params_t* hw = nullptr;
    int error = snd_pcm_hw_params_malloc(&hw);
    if (error < 0) return error;
    unsigned bufferTime = timing.bufferUs;
    unsigned periodTime = timing.periodUs;
    snd_pcm_uframes_t buffer = 0;
    int dir = 0;
    if ((error = snd_pcm_hw_params_any(pcm, hw)) >= 0 &&
        (error = snd_pcm_hw_params_set_access(pcm, hw, SND_PCM_ACCESS_RW_INTERLEAVED)) >= 0 &&
        (error = snd_pcm_hw_params_set_format(pcm, hw, SND_PCM_FORMAT_S16_LE)) >= 0 &&
        (error = snd_pcm_hw_params_set_channels(pcm, hw, 1)) >= 0 &&
        (error = snd_pcm_hw_params_set_rate(pcm, hw, rate, 0)) >= 0 &&
        (error = snd_pcm_hw_params_set_buffer_time_near(pcm, hw, &bufferTime, &dir)) >= 0 &&
        (error = snd_pcm_hw_params_set_period_time_near(pcm, hw, &periodTime, &dir)) >= 0 &&
        (error = snd_pcm_hw_params(pcm, hw)) >= 0) {
        if ((error = snd_pcm_hw_params_get_period_size(hw, &period, &dir)) >= 0) {
            error = snd_pcm_hw_params_get_buffer_size(hw, &buffer);
        }
    }
    snd_pcm_hw_params_free(hw);
    if (error < 0) return error == -EBUSY ? error : -EINVAL;

    snd_pcm_sw_params_t* sw = nullptr;
    if ((error = snd_pcm_sw_params_malloc(&sw)) < 0) return error;
    if ((error = snd_pcm_sw_params_current(pcm, sw)) >= 0 &&
        (error = snd_pcm_sw_params_set_avail_min(pcm, sw, period)) >= 0 &&
        (error = snd_pcm_sw_params_set_start_threshold(pcm, sw, std::max(period, buffer / period * period))) >= 0) {
        error = snd_pcm_sw_params(pcm, sw);
    }
    snd_pcm_sw_params_free(sw);
    if (error < 0) return error;
    return snd_pcm_prepare(pcm);
}

int openPcm(const Device& device, snd_pcm_stream_t stream, unsigned rate, Timing timing,
            snd_pcm_t*& pcm, snd_pcm_uframes_t& period)
{
    int error = snd_pcm_open(&pcm, device.pcm.c_str(), stream, SND_PCM_NONBLOCK);
    if (error < 0) return error;
    if ((error = configure(pcm, rate, timing, period)) < 0) {
        snd_pcm_close(pcm);
        pcm = nullptr;
    }
    return error;
}

// Brings a stream back after an under- or overrun or a suspend; false when
// the error means the device is gone.
bool recover(snd_pcm_t* pcm, int error)
{
    if (error == -EAGAIN || error == -EINTR) return true;
    if (error == -ESTRPIPE) {
        int resumed;
        while ((resumed = snd_pcm_resume(pcm)) == -EAGAIN) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (resumed >= 0) return true;
        return snd_pcm_prepare(pcm) >= 0;
    }
    if (error == -EPIPE) return snd_pcm_prepare(pcm) >= 0;
    return false;
}

// An opened and configured PCM, or the error that kept it closed.
struct OpenedPcm {
    int error = 0;
    snd_pcm_t* pcm = nullptr;
    snd_pcm_uframes_t period = 0;
    unsigned rate = 0;
};
using OpenPcm = std::function<OpenedPcm()>;

// Stops and closes a stream's PCM. Through a sound server both may wait for
// the server, so only the stream's own thread does this, as it ends.
void closePcm(snd_pcm_t* pcm)
{
    snd_pcm_drop(pcm);
    snd_pcm_close(pcm);
}

// A stream thread's first step: opens the device and says how the opening
// ended. False when there is nothing to play or record: the opening failed,
// or the program let go or gave the stream up meanwhile (the device is then
// closed again).
template <class Queue>
bool openDevice(const OpenPcm& open, Opening& opening, QueueLink<Queue>& link, OpenedPcm& device)
{
    const OpenedPcm opened = open();
    opening.end(opened.error);
    if (opened.error >= 0) noteServerAnswered();
    if (opened.error < 0) {
        link.fail();
        return false;
    }
    if (link.isCut() || link.failure() != MMSYSERR_NOERROR) {
        closePcm(opened.pcm);
        return false;
    }
    device = opened;
    return true;
}

// An output's thread: it feeds the device from the queue until the program
// lets go or the device fails, then closes the device. It outlives the
// output object when the device is slow to close (a stopped server), and
// ends when the server answers or dies.
class Feeder {
public:
    Feeder(OpenPcm open, PlayQueue& queue) : link(queue), open_(std::move(open)) {}

    void run()
    {
        raiseStreamPriority();
        OpenedPcm device;
        if (!openDevice(open_, opening, link, device)) return;
        pcm_ = device.pcm;
        period_ = device.period;
        rate_ = device.rate;
        feed();
        closePcm(pcm_);
    }

    QueueLink<PlayQueue> link;
    Opening opening;

private:
    bool stopping() const { return link.isCut(); }

    // Writes all of `frames`, waiting for room; false when the device failed.
    bool writeAll(const std::int16_t* frames, snd_pcm_uframes_t count)
    {
        int stalledMs = 0;
        int recoveries = 0;
        while (count > 0 && !stopping()) {
            const snd_pcm_sframes_t written = snd_pcm_writei(pcm_, frames, count);
            if (written > 0) {
                frames += written;
                count -= static_cast<snd_pcm_uframes_t>(written);
                stalledMs = 0;
                recoveries = 0;
                continue;
            }
            // Nothing taken waits like no room: a raised feeder must never
            // spin.
            if (written == -EAGAIN || written == 0) {
                const int ready = snd_pcm_wait(pcm_, kWaitMs);
                if (ready == 0 && (stalledMs += kWaitMs) >= kStallLimitMs) return false;
                if (ready < 0 && !recover(pcm_, ready)) return false;
                continue;
            }
            if (++recoveries > 10 || !recover(pcm_, static_cast<int>(written))) return false;
        }
        return true;
    }

    // Waits until the device has room for a period; false when it failed.
    // It sleeps for the time the missing room takes to play rather than
    // polling: through a sound server's plugin every poll wake-up costs
    // a round of messages, and the room only ever grows at the rate the
    // device plays. A device whose room does not grow for the stall limit
    // is gone.
    bool awaitRoom()
    {
        auto lastGrowth = std::chrono::steady_clock::now();
        snd_pcm_sframes_t lastRoom = -1;
        int recoveries = 0;
        while (!stopping()) {
            const snd_pcm_sframes_t room = snd_pcm_avail_update(pcm_);
            if (room < 0) {
                if (++recoveries > 10 || !recover(pcm_, static_cast<int>(room))) return false;
                continue;
            }
            if (static_cast<snd_pcm_uframes_t>(room) >= period_) return true;
            const auto now = std::chrono::steady_clock::now();
            if (room > lastRoom) {
                lastRoom = room;
                lastGrowth = now;
            } else if (now - lastGrowth >= std::chrono::milliseconds(kStallLimitMs)) {
                return false;
            }
            std::this_thread::sleep_for(timeToPlay(period_ - static_cast<snd_pcm_uframes_t>(room)));
        }
        return true;
    }

    // How long `frames` take to play, plus a millisecond so the room has
    // been reported by the time the feeder looks again; at most kWaitMs.
    std::chrono::microseconds timeToPlay(snd_pcm_uframes_t frames) const
    {
        const auto us = static_cast<long long>(frames) * 1'000'000 / rate_ + 1'000;
        return std::chrono::microseconds(std::min<long long>(us, kWaitMs * 1'000));
    }

    // Takes a period from the queue only once the device has room for it, so
    // a header is marked done when its end really goes to the device.
    void feed()
    {
        std::vector<std::int16_t> chunk(period_);
        while (!stopping()) {
            if (!awaitRoom()) {
                link.fail();
                return;
            }
            if (!link.with([&](PlayQueue& queue) { queue.pull(chunk.data(), chunk.size()); })) return;
            applyStreamGain(chunk);
            if (!writeAll(chunk.data(), period_)) {
                link.fail();
                return;
            }
        }
    }

    OpenPcm open_;
    snd_pcm_t* pcm_ = nullptr;
    snd_pcm_uframes_t period_ = 0;
    unsigned rate_ = 1;
};

class AlsaOutput : public backend::OutputStream {
public:
    AlsaOutput(OpenPcm open, PlayQueue& queue) : feeder_(std::make_shared<Feeder>(std::move(open), queue))
    {
        std::thread([feeder = feeder_] { feeder->run(); }).detach();
    }
    // Never waits for the device: the feeder closes it on its own thread.
    ~AlsaOutput() override { feeder_->link.cut(); }
    int awaitOpening() { return feeder_->opening.awaitEnd(); }
    MMRESULT failure() const override { return streamFailure(feeder_->link, feeder_->opening); }

private:
    std::shared_ptr<Feeder> feeder_;
};

// An input's thread: it records into the queue while recording is wanted,
// until the program lets go or the device fails, then closes the device.
class Recorder {
public:
    Recorder(OpenPcm open, CaptureQueue& queue) : link(queue), open_(std::move(open)) {}

    void run()
    {
        raiseStreamPriority();
        OpenedPcm device;
        if (!openDevice(open_, opening, link, device)) return;
        pcm_ = device.pcm;
        period_ = device.period;
        capture();
        closePcm(pcm_);
    }
    void want(bool recording)
    {
        {
            std::lock_guard lock(mutex_);
            wanted_ = recording;
        }
        wake_.notify_all();
    }
    void release()
    {
        link.cut();
        wake_.notify_all();
    }

    QueueLink<CaptureQueue> link;
    Opening opening;

private:
    // Waits until recording is wanted (true) or the program lets go (false);
    // the device is stopped meanwhile, outside the lock, since stopping may
    // wait for a sound server.
    bool awaitWanted(bool& running)
    {
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                wake_.wait_for(lock, std::chrono::milliseconds(50),
                               [&] { return wanted_ || link.isCut(); });
                if (link.isCut()) return false;
                if (wanted_) return true;
            }
            if (running) {
                snd_pcm_drop(pcm_);
                running = false;
            }
        }
    }

    void capture()
    {
        std::vector<std::int16_t> chunk(period_ * 4);
        bool running = false;
        int stalledMs = 0;
        int recoveries = 0;
        while (awaitWanted(running)) {
            if (!running) {
                if (snd_pcm_prepare(pcm_) < 0 || snd_pcm_start(pcm_) < 0) break;
                running = true;
                stalledMs = 0;
            }
            const snd_pcm_sframes_t got = snd_pcm_readi(pcm_, chunk.data(), chunk.size());
            if (got > 0) {
                if (!link.with([&](CaptureQueue& queue) {
                        queue.push(chunk.data(), static_cast<std::size_t>(got));
                    })) {
                    return;
                }
                stalledMs = 0;
                recoveries = 0;
            } else if (got == -EAGAIN || got == 0) {
                const int ready = snd_pcm_wait(pcm_, kWaitMs);
                if (ready == 0 && (stalledMs += kWaitMs) >= kStallLimitMs) break;
                if (ready < 0 && !recover(pcm_, ready)) break;
            } else if (++recoveries > 10 || !recover(pcm_, static_cast<int>(got))) {
                break;
            } else if (snd_pcm_state(pcm_) == SND_PCM_STATE_PREPARED) {
                snd_pcm_start(pcm_);
            }
        }
        link.fail();
    }

    OpenPcm open_;
    snd_pcm_t* pcm_ = nullptr;
    snd_pcm_uframes_t period_ = 0;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool wanted_ = false;
};

class AlsaInput : public backend::InputStream {
public:
    AlsaInput(OpenPcm open, CaptureQueue& queue)
        : recorder_(std::make_shared<Recorder>(std::move(open), queue))
    {
        std::thread([recorder = recorder_] { recorder->run(); }).detach();
    }
    // Never waits for the device: the recorder closes it on its own thread.
    ~AlsaInput() override { recorder_->release(); }
    int awaitOpening() { return recorder_->opening.awaitEnd(); }
    MMRESULT failure() const override { return streamFailure(recorder_->link, recorder_->opening); }
    void start() override { recorder_->want(true); }
    void stop() override { recorder_->want(false); }

private:
    std::shared_ptr<Recorder> recorder_;
};

// ---------------------------------------------------------------- back end

// A device's capabilities as probed, or the error that kept it from opening.
struct ProbeResult {
    int error = 0;
    Probe probe;
    DWORD support = 0;
};

// Every call that may wait on a sound server goes through the bounded
// worker (AlsaBoundedCall.h); a server that does not answer in time counts
// as gone.
class AlsaBackend : public backend::WaveBackend {
public:
    UINT outputCount() override { return static_cast<UINT>(refresh(SND_PCM_STREAM_PLAYBACK)); }
    UINT inputCount() override { return static_cast<UINT>(refresh(SND_PCM_STREAM_CAPTURE)); }

    MMRESULT outputCaps(UINT deviceId, WAVEOUTCAPSA& caps) override
    {
        Device found;
        ProbeResult probed;
        if (MMRESULT result = probe(deviceId, SND_PCM_STREAM_PLAYBACK, found, probed)) return result;
        caps = WAVEOUTCAPSA{};
        fillCommon(found, probed.probe, caps);
        caps.dwSupport = probed.support;
        return MMSYSERR_NOERROR;
    }
    MMRESULT inputCaps(UINT deviceId, WAVEINCAPSA& caps) override
    {
        Device found;
        ProbeResult probed;
        if (MMRESULT result = probe(deviceId, SND_PCM_STREAM_CAPTURE, found, probed)) return result;
        caps = WAVEINCAPSA{};
        fillCommon(found, probed.probe, caps);
        return MMSYSERR_NOERROR;
    }

    MMRESULT openOutput(UINT deviceId, const WAVEFORMATEX& format, PlayQueue& queue,
                        std::unique_ptr<backend::OutputStream>& stream) override
    {
        Device found;
        if (MMRESULT result = find(deviceId, SND_PCM_STREAM_PLAYBACK, found)) return result;
        if (found.viaServer) {
            const int error = pulse::openOutput(format.nSamplesPerSec, queue, stream);
            return error < 0 ? openError(error) : MMSYSERR_NOERROR;
        }
        return openStream<AlsaOutput>(found, SND_PCM_STREAM_PLAYBACK, format, kOutputTiming, queue, stream);
    }
    MMRESULT openInput(UINT deviceId, const WAVEFORMATEX& format, CaptureQueue& queue,
                       std::unique_ptr<backend::InputStream>& stream) override
    {
        Device found;
        if (MMRESULT result = find(deviceId, SND_PCM_STREAM_CAPTURE, found)) return result;
        return openStream<AlsaInput>(found, SND_PCM_STREAM_CAPTURE, format, kInputTiming, queue, stream);
    }

private:
    struct DeviceList {
        std::vector<Device> devices;
        bool listed = false;
    };

    DeviceList& listFor(snd_pcm_stream_t direction)
    {
        return direction == SND_PCM_STREAM_PLAYBACK ? outputs_ : inputs_;
    }

    // Lists the devices anew; a server that does not answer leaves the last
    // list as it was. Returns the number of devices.
    std::size_t refresh(snd_pcm_stream_t direction)
    {
        auto devices = boundedCall<std::vector<Device>>(kAlsaDiscoveryLimit, [direction] { return listDevices(direction); });
        std::lock_guard lock(mutex_);
        DeviceList& list = listFor(direction);
        if (devices) {
            list.devices = std::move(*devices);
            list.listed = true;
        }
        return list.devices.size();
    }

    MMRESULT find(UINT deviceId, snd_pcm_stream_t direction, Device& found)
    {
        bool listed = false;
        {
            std::lock_guard lock(mutex_);
            listed = listFor(direction).listed;
        }
        if (!listed) refresh(direction);
        std::lock_guard lock(mutex_);
        const DeviceList& list = listFor(direction);
        if (!list.listed) return MMSYSERR_NODRIVER;
        if (deviceId >= list.devices.size()) return MMSYSERR_BADDEVICEID;
        found = list.devices[deviceId];
        return MMSYSERR_NOERROR;
    }

    // Probes a device; a device that will not open gives the reason.
    MMRESULT probe(UINT deviceId, snd_pcm_stream_t direction, Device& found, ProbeResult& probed)
    {
        if (MMRESULT result = find(deviceId, direction, found)) return result;
        auto result = boundedCall<ProbeResult>(kAlsaDiscoveryLimit, [found, direction] {
            ProbeResult r;
            r.error = probeDevice(found, direction, r.probe);
            if (r.error >= 0 && direction == SND_PCM_STREAM_PLAYBACK) r.support = probeSupport(found);
            return r;
        });
        if (!result) return MMSYSERR_NODRIVER;
        if (result->error < 0) return deviceError(result->error);
        probed = *result;
        return MMSYSERR_NOERROR;
    }

    // Opens the device's PCM in one direction and starts its stream thread.
    template <class Stream, class Queue, class Base>
    static MMRESULT openStream(const Device& found, snd_pcm_stream_t direction, const WAVEFORMATEX& format,
                               Timing timing, Queue& queue, std::unique_ptr<Base>& stream)
    {
        const unsigned rate = format.nSamplesPerSec;
        auto created = std::make_unique<Stream>(
            [found, direction, rate, timing] {
                OpenedPcm o;
                o.error = openPcm(found, direction, rate, timing, o.pcm, o.period);
                o.rate = rate;
                return o;
            },
            queue);
        if (const int error = created->awaitOpening(); error < 0) return openError(error);
        stream = std::move(created);
        return MMSYSERR_NOERROR;
    }

    template <class Caps>
    static void fillCommon(const Device& device, const Probe& probe, Caps& caps)
    {
        const auto [maker, product] = cardIds(device.card);
        caps.wMid = maker;
        caps.wPid = product;
        caps.vDriverVersion = libraryVersion();
        backend::copyDeviceName(device.name, caps.szPname);
        caps.dwFormats = probe.formats;
        caps.wChannels = probe.channels;
    }

    std::mutex mutex_;
    DeviceList outputs_;
    DeviceList inputs_;
};

}  // namespace

StreamGain& streamGain()
{
    static StreamGain gain;
    return gain;
}

void applyStreamGain(std::span<std::int16_t> samples)
{
    const StreamGain& gain = streamGain();
    const double factor = gain.mute ? 0.0 : static_cast<double>(gain.level.load()) / 65535.0;
    if (factor == 1.0) return;
    for (auto& sample : samples) sample = static_cast<std::int16_t>(std::lround(sample * factor));
}

backend::WaveBackend& backend()
{
    static AlsaBackend* const instance = new AlsaBackend;
    return *instance;
}

}  // namespace mm::alsa
