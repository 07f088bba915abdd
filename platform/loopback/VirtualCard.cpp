#include "platform/loopback/VirtualCard.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/WaveBackend.h"
#include "platform/loopback/VirtualCardSetup.h"

namespace mm::loopback {

namespace {

using backend::CaptureQueue;
using backend::PlayQueue;
using Wide = __int128;

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kNsPerMs = 1'000'000;
constexpr std::size_t kChunk = 2048;
constexpr std::size_t kSessionsKept = 4;

// Whole frames of a stream at `rate` in `elapsedNs`.
std::uint64_t framesIn(std::int64_t elapsedNs, DWORD rate)
{
    if (elapsedNs <= 0) return 0;
    return static_cast<std::uint64_t>(Wide(elapsedNs) * rate / kNsPerSecond);
}

std::int16_t clampSample(double value)
{
    return static_cast<std::int16_t>(std::clamp(std::nearbyint(value), -32768.0, 32767.0));
}

// One opening of the output: what it played, kept for a while in a ring so
// the input can hear it after the latency.
struct Session {
    std::uint64_t id = 0;
    DWORD rate = 0;
    std::int64_t startNs = 0;
    std::vector<std::int16_t> ring;
    std::uint64_t produced = 0;

    std::int16_t at(std::uint64_t index) const
    {
        if (index >= produced || produced - index > ring.size()) return 0;
        return ring[index % ring.size()];
    }
    void append(std::int16_t value) { ring[produced++ % ring.size()] = value; }
};

class Card;

class VirtualOutput : public backend::OutputStream {
public:
    VirtualOutput(Card& card, PlayQueue& queue) : card_(card), queue_(queue) {}
    ~VirtualOutput() override;

    MMRESULT failure() const override { return failure_.load(); }
    MMRESULT admitWrite() override;

    Card& card_;
    PlayQueue& queue_;
    std::shared_ptr<Session> session;
    std::atomic<MMRESULT> failure_{MMSYSERR_NOERROR};
};

class VirtualInput : public backend::InputStream {
public:
    VirtualInput(Card& card, CaptureQueue& queue) : card_(card), queue_(queue) {}
    ~VirtualInput() override;

    MMRESULT failure() const override { return failure_.load(); }
    void start() override;
    void stop() override;

    Card& card_;
    CaptureQueue& queue_;
    std::atomic<MMRESULT> failure_{MMSYSERR_NOERROR};
    // Guarded by the card's mutex.
    bool started = false;
    std::int64_t startNs = 0;
    std::uint64_t produced = 0;
    std::vector<std::pair<std::uint64_t, std::int64_t>> offsets;  // session id, first index
};

class Card : public backend::WaveBackend {
public:
    Card() { resetLocked(); }

    // ---- back end
    UINT outputCount() override
    {
        std::lock_guard lock(mutex_);
        return setup_.vanished ? 0 : static_cast<UINT>(setup_.outputs.size());
    }
    UINT inputCount() override
    {
        std::lock_guard lock(mutex_);
        return setup_.vanished ? 0 : static_cast<UINT>(setup_.inputs.size());
    }

    MMRESULT outputCaps(UINT deviceId, WAVEOUTCAPSA& caps) override
    {
        std::lock_guard lock(mutex_);
        DeviceTraits layout;
        if (MMRESULT result = findDevice(setup_.outputs, deviceId, layout)) return result;
        caps = WAVEOUTCAPSA{};
        fillCommon(layout, caps);
        caps.dwSupport = layout.support;
        return MMSYSERR_NOERROR;
    }
    MMRESULT inputCaps(UINT deviceId, WAVEINCAPSA& caps) override
    {
        std::lock_guard lock(mutex_);
        DeviceTraits layout;
        if (MMRESULT result = findDevice(setup_.inputs, deviceId, layout)) return result;
        caps = WAVEINCAPSA{};
        fillCommon(layout, caps);
        return MMSYSERR_NOERROR;
    }

    MMRESULT openOutput(UINT deviceId, const WAVEFORMATEX& format, PlayQueue& queue,
                        std::unique_ptr<backend::OutputStream>& stream) override
    {
        std::unique_lock lock(mutex_);
        if (MMRESULT result = openCheck(setup_.outputs, deviceId, format, setup_.refuseOutputOpen)) return result;
        if (output_ != nullptr) return MMSYSERR_ALLOCATED;
        auto opened = std::make_unique<VirtualOutput>(*this, queue);
        auto session = std::make_shared<Session>();
        session->id = ++sessionCount_;
        session->rate = format.nSamplesPerSec;
        session->startNs = nowLocked();
        const std::uint64_t ringFrames =
            framesIn(latencyNs() + kNsPerSecond / 2, session->rate) + 2 * kChunk;
        session->ring.assign(ringFrames, 0);
        sessions_.push_back(session);
        if (sessions_.size() > kSessionsKept) sessions_.pop_front();
        opened->session = std::move(session);
        output_ = opened.get();
        stream = std::move(opened);
        startClockLocked();
        return MMSYSERR_NOERROR;
    }

    MMRESULT openInput(UINT deviceId, const WAVEFORMATEX& format, CaptureQueue& queue,
                       std::unique_ptr<backend::InputStream>& stream) override
    {
        std::unique_lock lock(mutex_);
        if (MMRESULT result = openCheck(setup_.inputs, deviceId, format, setup_.refuseInputOpen)) return result;
        if (input_ != nullptr) return MMSYSERR_ALLOCATED;
        auto opened = std::make_unique<VirtualInput>(*this, queue);
        input_ = opened.get();
        stream = std::move(opened);
        startClockLocked();
        return MMSYSERR_NOERROR;
    }

    // ---- streams
    void detachOutput(VirtualOutput* output)
    {
        std::unique_lock lock(mutex_);
        if (output_ == output) output_ = nullptr;
        stopClockIfIdle(lock);
    }
    void detachInput(VirtualInput* input)
    {
        std::unique_lock lock(mutex_);
        if (input_ == input) input_ = nullptr;
        stopClockIfIdle(lock);
    }
    void startInput(VirtualInput& input)
    {
        std::lock_guard lock(mutex_);
        input.started = true;
        input.startNs = nowLocked();
        input.produced = 0;
        input.offsets.clear();
    }
    void stopInput(VirtualInput& input)
    {
        std::lock_guard lock(mutex_);
        input.started = false;
    }
    MMRESULT writeFault()
    {
        std::lock_guard lock(mutex_);
        return setup_.failWrites;
    }

    // ---- setup
    void withSetup(const std::function<void(CardSetup&)>& use)
    {
        std::lock_guard lock(mutex_);
        use(setup_);
    }
    void restart()
    {
        stopClock();
        std::lock_guard lock(mutex_);
        resetLocked();
    }
    void useSimulatedTime()
    {
        stopClock();
        std::lock_guard lock(mutex_);
        simulated_ = true;
        simulatedNs_ = 0;
    }
    bool simulated()
    {
        std::lock_guard lock(mutex_);
        return simulated_;
    }
    void advance(std::uint32_t ms)
    {
        std::lock_guard lock(mutex_);
        if (!simulated_) return;
        simulatedNs_ += std::int64_t{ms} * kNsPerMs;
        stepLocked(simulatedNs_);
    }
    void startTap()
    {
        std::lock_guard lock(mutex_);
        tapping_ = true;
        tap_.clear();
        tapSession_ = 0;
    }
    std::vector<TapSegment> takeTap()
    {
        std::lock_guard lock(mutex_);
        tapping_ = false;
        return std::exchange(tap_, {});
    }

private:
    void resetLocked()
    {
        setup_ = CardSetup{};
        simulated_ = false;
        simulatedNs_ = 0;
        tapping_ = false;
        tap_.clear();
        sessions_.clear();
        Levels& mixer = levels();
        mixer.master = mixer.wave = mixer.mic = 65535;
        mixer.masterMute = mixer.waveMute = mixer.micMute = false;
    }

    std::int64_t latencyNs() const { return std::int64_t{setup_.latencyMs} * kNsPerMs; }

    MMRESULT findDevice(const std::vector<DeviceTraits>& devices, UINT deviceId, DeviceTraits& layout) const
    {
        if (setup_.vanished) return MMSYSERR_NODRIVER;
        if (deviceId >= devices.size()) return MMSYSERR_BADDEVICEID;
        layout = devices[deviceId];
        return layout.capsResult;
    }

    template <class Caps>
    static void fillCommon(const DeviceTraits& layout, Caps& caps)
    {
        caps.wMid = layout.mid;
        caps.wPid = layout.pid;
        caps.vDriverVersion = layout.driverVersion;
        backend::copyDeviceName(layout.name, caps.szPname);
        caps.dwFormats = layout.formats;
        caps.wChannels = layout.channels;
    }

    MMRESULT openCheck(const std::vector<DeviceTraits>& devices, UINT deviceId,
                       const WAVEFORMATEX& format, MMRESULT refusal) const
    {
        if (setup_.vanished) return MMSYSERR_NODRIVER;
        if (deviceId >= devices.size()) return MMSYSERR_BADDEVICEID;
        if (refusal != MMSYSERR_NOERROR) return refusal;
        if (format.nSamplesPerSec < setup_.lowestRate || format.nSamplesPerSec > setup_.highestRate) {
            return WAVERR_BADFORMAT;
        }
        return MMSYSERR_NOERROR;
    }

    std::int64_t nowLocked() const
    {
        if (simulated_) return simulatedNs_;
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
                   std::chrono::steady_clock::now() - epoch_)
            .count();
    }

    // Moves the card to `nowNs`: the output plays what became due, then the
    // input records what became due.
    void stepLocked(std::int64_t nowNs)
    {
        if (output_ != nullptr) playLocked(*output_, nowNs);
        if (input_ != nullptr) recordLocked(*input_, nowNs);
    }

    void playLocked(VirtualOutput& output, std::int64_t nowNs)
    {
        if (output.failure_ != MMSYSERR_NOERROR) return;
        if (setup_.vanished) {
            output.failure_ = MMSYSERR_NODRIVER;
            output.queue_.abandon();
            return;
        }
        Session& session = *output.session;
        const std::uint64_t due = framesIn(nowNs - session.startNs, session.rate);
        const Levels& mixer = levels();
        const double gain = (mixer.masterMute || mixer.waveMute)
                                ? 0.0
                                : masterGain(mixer.master) * linearGain(mixer.wave);
        std::int16_t chunk[kChunk];
        while (session.produced < due) {
            const std::size_t count = static_cast<std::size_t>(
                std::min<std::uint64_t>(due - session.produced, kChunk));
            output.queue_.pull(chunk, count);
            if (gain != 1.0) {
                for (std::size_t i = 0; i < count; ++i) chunk[i] = clampSample(chunk[i] * gain);
            }
            for (std::size_t i = 0; i < count; ++i) session.append(chunk[i]);
            if (tapping_) tapLocked(session, chunk, count);
        }
    }

    void tapLocked(const Session& session, const std::int16_t* samples, std::size_t count)
    {
        if (tap_.empty() || tapSession_ != session.id) {
            tap_.push_back(TapSegment{session.rate, {}});
            tapSession_ = session.id;
        }
        tap_.back().samples.insert(tap_.back().samples.end(), samples, samples + count);
    }

    void recordLocked(VirtualInput& input, std::int64_t nowNs)
    {
        if (input.failure_ != MMSYSERR_NOERROR || !input.started) return;
        if (setup_.vanished) {
            input.failure_ = MMSYSERR_NODRIVER;
            input.queue_.abandon();
            return;
        }
        const DWORD rate = input.queue_.layout().rate;
        const std::uint64_t due = framesIn(nowNs - input.startNs, rate);
        if (setup_.silentInput) {
            input.produced = due;
            return;
        }
        const Levels& mixer = levels();
        const double gain = (mixer.micMute ? 0.0 : linearGain(mixer.mic)) * setup_.inputGain;
        std::int16_t chunk[kChunk];
        while (input.produced < due) {
            const std::size_t count = static_cast<std::size_t>(
                std::min<std::uint64_t>(due - input.produced, kChunk));
            for (std::size_t i = 0; i < count; ++i) {
                const double heard = hearLocked(input, input.produced + i);
                chunk[i] = clampSample(gain == 1.0 ? heard : heard * gain);
            }
            input.produced += count;
            input.queue_.push(chunk, count);
        }
    }

    // The output index that input sample 0 hears in a session: the session's
    // sample playing one latency before the input started, to the nearest
    // sample, so that equal rates copy samples exactly.
    std::int64_t firstIndexLocked(VirtualInput& input, const Session& session)
    {
        for (const auto& [id, first] : input.offsets) {
            if (id == session.id) return first;
        }
        const std::int64_t offsetNs = input.startNs - latencyNs() - session.startNs;
        const Wide twice = Wide(offsetNs) * session.rate * 2 + kNsPerSecond;
        const Wide divisor = Wide(kNsPerSecond) * 2;
        Wide rounded = twice / divisor;  // round half up: floor((2x + 1) / 2)
        if (twice % divisor != 0 && twice < 0) rounded -= 1;
        const auto index = static_cast<std::int64_t>(rounded);
        input.offsets.emplace_back(session.id, index);
        return index;
    }

    // What input sample m hears: the newest session already playing at that
    // moment, between two of its samples when the rates differ.
    double hearLocked(VirtualInput& input, std::uint64_t m)
    {
        const DWORD inputRate = input.queue_.layout().rate;
        for (auto session = sessions_.rbegin(); session != sessions_.rend(); ++session) {
            const Session& s = **session;
            const Wide position = Wide(firstIndexLocked(input, s)) * inputRate + Wide(m) * s.rate;
            if (position < 0) continue;  // before this session opened
            const auto index = static_cast<std::uint64_t>(position / inputRate);
            const auto fraction = static_cast<std::int64_t>(position % inputRate);
            if (index >= s.produced) return 0.0;
            const double here = s.at(index);
            if (fraction == 0) return here;
            const double next = index + 1 < s.produced ? s.at(index + 1) : here;
            return here + (next - here) * static_cast<double>(fraction) / inputRate;
        }
        return 0.0;
    }

    // ---- clock thread (real time only)
    void startClockLocked()
    {
        if (simulated_ || clock_.joinable()) return;
        clockStop_ = false;
        clock_ = std::thread([this] { runClock(); });
    }

    void runClock()
    {
        std::unique_lock lock(mutex_);
        while (!clockStop_) {
            stepLocked(nowLocked());
            wake_.wait_for(lock, std::chrono::milliseconds(1));
        }
    }

    void stopClockIfIdle(std::unique_lock<std::mutex>& lock)
    {
        if (output_ != nullptr || input_ != nullptr || !clock_.joinable()) return;
        clockStop_ = true;
        std::thread clock = std::move(clock_);
        lock.unlock();
        wake_.notify_all();
        clock.join();
    }

    void stopClock()
    {
        std::unique_lock lock(mutex_);
        if (!clock_.joinable()) return;
        clockStop_ = true;
        std::thread clock = std::move(clock_);
        lock.unlock();
        wake_.notify_all();
        clock.join();
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::thread clock_;
    bool clockStop_ = false;
    const std::chrono::steady_clock::time_point epoch_ = std::chrono::steady_clock::now();

    CardSetup setup_;
    bool simulated_ = false;
    std::int64_t simulatedNs_ = 0;

    VirtualOutput* output_ = nullptr;
    VirtualInput* input_ = nullptr;
    std::deque<std::shared_ptr<Session>> sessions_;
    std::uint64_t sessionCount_ = 0;

    bool tapping_ = false;
    std::vector<TapSegment> tap_;
    std::uint64_t tapSession_ = 0;
};

// Never destroyed: streams still open when the process ends detach from it
// while the static handle table goes.
Card& card()
{
    static Card* const instance = new Card;
    return *instance;
}

VirtualOutput::~VirtualOutput() { card_.detachOutput(this); }

MMRESULT VirtualOutput::admitWrite()
{
    if (MMRESULT failed = failure()) return failed;
    return card_.writeFault();
}

VirtualInput::~VirtualInput() { card_.detachInput(this); }
void VirtualInput::start() { card_.startInput(*this); }
void VirtualInput::stop() { card_.stopInput(*this); }

}  // namespace

backend::WaveBackend& backend() { return card(); }

Levels& levels()
{
    static Levels mixer;
    return mixer;
}

double masterGain(std::uint16_t level)
{
    return std::pow(10.0, -3.0 * (1.0 - static_cast<double>(level) / 65535.0));
}

double linearGain(std::uint16_t level) { return static_cast<double>(level) / 65535.0; }

void withCardSetup(const std::function<void(CardSetup&)>& use) { card().withSetup(use); }
void restartCard() { card().restart(); }
void useSimulatedTime() { card().useSimulatedTime(); }
bool simulatedTime() { return card().simulated(); }
void advance(std::uint32_t milliseconds) { card().advance(milliseconds); }
void startTap() { card().startTap(); }
std::vector<TapSegment> takeTap() { return card().takeTap(); }

}  // namespace mm::loopback
