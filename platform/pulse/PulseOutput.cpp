#include "platform/pulse/PulseOutput.h"

#include <alsa/asoundlib.h>
#include <pulse/pulseaudio.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/alsa/AlsaStreamGain.h"
#include "platform/alsa/AlsaStreamLink.h"
#include "platform/alsa/AlsaThreadPriority.h"

namespace mm::pulse {

namespace {

using backend::PlayQueue;
using Clock = std::chrono::steady_clock;

// Half a second queued in the server, asked for in pieces of 240 ms: the
// thread wakes about four times a second, and may be held off 260 ms before
// the server runs dry. The server sets the sink's own latency (how far
// ahead of the loudspeaker it renders, which a change cannot overtake) to
// the queued time less two pieces: 20 ms.
constexpr unsigned kQueuedMs = 500;
constexpr unsigned kRequestMs = 240;
// A change is written from this far past the server's reading position as
// last reported (plus half the time the report took), so that it lands
// before the server reads there even when the thread was a little late.
constexpr unsigned kRewriteMarginMs = 20;
// A server that has asked for nothing for a while and then does not answer
// where it plays within this time is gone (stopped, hung): with the wait
// before asking (a piece's time and 20 ms), a stalled server is told in
// about half a second.
constexpr unsigned kAnswerWithinMs = 250;
// Pulls are remembered in steps of this many milliseconds: a change starts
// at most this much later than it could.
constexpr unsigned kPullStepMs = 5;

// The server's error as an ALSA-style negative error number, so that it is
// told as the same device problem an ALSA stream would give.
int serverError(int error)
{
    switch (error) {
    case PA_ERR_BUSY: return -EBUSY;
    case PA_ERR_INVALID:
    case PA_ERR_NOTSUPPORTED: return -EINVAL;
    case PA_ERR_ACCESS: return -EACCES;
    case PA_ERR_NOENTITY: return -ENODEV;
    default: return -ECONNREFUSED;
    }
}

std::uint64_t framesIn(Clock::duration time, unsigned rate)
{
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(time).count()) *
           rate / 1'000'000;
}

// The output's thread: it connects to the server, keeps the stream fed
// from the queue and rewrites what the server holds when the program
// changes the queue, until the program lets go or the server fails. It
// never blocks: every wait is the main loop's poll, which the program's
// thread can interrupt (wake), so closing never waits on a stopped server.
class ServerFeeder {
public:
    ServerFeeder(unsigned rate, PlayQueue& queue) : link(queue), rate_(rate) {}

    void run()
    {
        alsa::raiseStreamPriority();
        {
            std::lock_guard lock(loopMutex_);
            loop_ = pa_mainloop_new();
        }
        const int error = loop_ != nullptr ? connect() : -ENOMEM;
        opening.end(error);
        if (error < 0) {
            link.fail();
        } else {
            alsa::noteServerAnswered();
            feed();
        }
        disconnect();
    }

    // From the program's thread: the queue changed (or the program let go).
    void wake(bool changed)
    {
        if (changed) changed_ = true;
        std::lock_guard lock(loopMutex_);
        if (loop_ != nullptr) pa_mainloop_wakeup(loop_);
    }

    alsa::QueueLink<PlayQueue> link;
    alsa::Opening opening;

private:
    std::uint32_t bytesFor(unsigned ms) const { return rate_ * ms / 1000 * 2; }

    // Runs the main loop once, waiting at most `limit` for an event.
    void iterate(Clock::duration limit)
    {
        const auto us = std::chrono::duration_cast<std::chrono::microseconds>(limit).count();
        if (pa_mainloop_prepare(loop_, static_cast<int>(std::clamp<long long>(us, 1000, 1'000'000))) < 0) return;
        if (pa_mainloop_poll(loop_) < 0) return;
        pa_mainloop_dispatch(loop_);
    }

    // Iterates until `ready` says yes (0), the server refuses (its error),
    // the program lets go, or the time to connect has passed.
    template <class State>
    int awaitReady(State state, Clock::time_point deadline)
    {
        for (;;) {
            if (const int result = state(); result <= 0) return result;
            if (link.isCut()) return -ECANCELED;
            const auto left = deadline - Clock::now();
            if (left <= Clock::duration::zero()) return -EHOSTDOWN;
            iterate(left);
        }
    }

    int contextState()
    {
        const pa_context_state_t state = pa_context_get_state(context_);
        if (state == PA_CONTEXT_READY) return 0;
        return PA_CONTEXT_IS_GOOD(state) ? 1 : serverError(pa_context_errno(context_));
    }

    int streamState()
    {
        const pa_stream_state_t state = pa_stream_get_state(stream_);
        if (state == PA_STREAM_READY) return 0;
        return PA_STREAM_IS_GOOD(state) ? 1 : serverError(pa_context_errno(context_));
    }

    int connect()
    {
        const auto deadline = Clock::now() + alsa::kAlsaDiscoveryLimit;
        context_ = pa_context_new(pa_mainloop_get_api(loop_), "Wavelark");
        if (context_ == nullptr) return -ENOMEM;
        if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
            return serverError(pa_context_errno(context_));
        }
        if (const int error = awaitReady([this] { return contextState(); }, deadline)) return error;

        const pa_sample_spec spec{PA_SAMPLE_S16LE, rate_, 1};
        if (!pa_sample_spec_valid(&spec)) return -EINVAL;
        stream_ = pa_stream_new(context_, "Signal", &spec, nullptr);
        if (stream_ == nullptr) return serverError(pa_context_errno(context_));
        pa_buffer_attr attr;
        attr.maxlength = static_cast<std::uint32_t>(-1);
        attr.tlength = bytesFor(kQueuedMs);
        attr.prebuf = static_cast<std::uint32_t>(-1);
        attr.minreq = bytesFor(kRequestMs);
        attr.fragsize = static_cast<std::uint32_t>(-1);
        pa_stream_set_write_callback(stream_, &ServerFeeder::onWritable, this);
        if (pa_stream_connect_playback(stream_, nullptr, &attr, PA_STREAM_NOFLAGS, nullptr, nullptr) < 0) {
            return serverError(pa_context_errno(context_));
        }
        return awaitReady([this] { return streamState(); }, deadline);
    }

    void disconnect()
    {
        if (stream_ != nullptr) {
            pa_stream_set_write_callback(stream_, nullptr, nullptr);
            pa_stream_disconnect(stream_);
            pa_stream_unref(stream_);
        }
        if (context_ != nullptr) {
            pa_context_disconnect(context_);
            pa_context_unref(context_);
        }
        std::lock_guard lock(loopMutex_);
        if (loop_ != nullptr) pa_mainloop_free(loop_);
        loop_ = nullptr;
    }

    // Feeds until the program lets go. The server asks for data as it plays.
    // When it has asked for none for a while (it may be starting its sink,
    // or stopped), it is asked where it plays; one that does not answer
    // within kAnswerWithinMs (stopped, hung) is gone.
    void feed()
    {
        const auto askAfter = std::chrono::milliseconds(kRequestMs + 20);
        const auto answerWithin = std::chrono::milliseconds(kAnswerWithinMs);
        lastHeard_ = Clock::now();
        while (!link.isCut() && !failed_) {
            if (changed_.exchange(false)) askWherePlaying();
            const auto now = Clock::now();
            if (!asking_ && now - lastHeard_ >= askAfter) askWherePlaying(false);
            iterate(asking_ ? unanswered_ + answerWithin - now : lastHeard_ + askAfter - now);
            if (contextState() != 0 || streamState() != 0 ||
                (asking_ && Clock::now() - unanswered_ > answerWithin)) {
                failed_ = true;
            }
        }
        if (failed_) link.fail();
    }

    // Pulls `frames` from the queue into buffer_ in remembered steps, at the
    // output level.
    void pullInto(PlayQueue& queue, std::size_t frames)
    {
        buffer_.resize(frames);
        const std::size_t step = std::max<std::size_t>(rate_ * kPullStepMs / 1000, 1);
        for (std::size_t done = 0; done < frames; done += step) {
            queue.pullRewindable(buffer_.data() + done, std::min(step, frames - done));
        }
        alsa::applyStreamGain(buffer_);
    }

    void write(std::int64_t offset, pa_seek_mode_t seek)
    {
        if (pa_stream_write(stream_, buffer_.data(), buffer_.size() * 2, nullptr, offset, seek) < 0) failed_ = true;
    }

    static void onWritable(pa_stream*, std::size_t bytes, void* self)
    {
        static_cast<ServerFeeder*>(self)->fill(bytes / 2);
    }

    // The server asks for `frames`: what it holds is then the queued time
    // less those, so everything before that has been read and need not be
    // pulled again. A change not yet rewritten is rewritten first, from
    // there: pulling on past a broken loop's last pass before it would
    // leave the change behind everything queued.
    void fill(std::size_t frames)
    {
        lastHeard_ = Clock::now();
        const std::uint64_t queued = bytesFor(kQueuedMs) / 2;
        const std::uint64_t held = queued > frames ? queued - frames : 0;
        std::uint64_t read = 0;
        link.with([&](PlayQueue& queue) {
            const std::uint64_t end = queue.pulledFrames();
            read = end > held ? end - held : 0;
            queue.settle(read);
        });
        if (changed_.exchange(false)) rewritePending_ = true;  // changed while this request waited
        if (rewritePending_) rewriteFrom(read, Clock::duration::zero());
        const bool pulled = link.with([&](PlayQueue& queue) { pullInto(queue, frames); });
        if (pulled) write(0, PA_SEEK_RELATIVE);
    }

    // Asks the server where it is reading: for a change to rewrite from, or
    // to hear from a server that has asked for nothing for a while.
    void askWherePlaying(bool toRewrite = true)
    {
        if (toRewrite) rewritePending_ = true;
        if (asking_ && !toRewrite) return;
        if (!asking_) unanswered_ = Clock::now();
        asking_ = true;
        timingAsked_ = Clock::now();
        if (pa_operation* asked = pa_stream_update_timing_info(stream_, &ServerFeeder::onTiming, this)) {
            pa_operation_unref(asked);
        }
    }

    static void onTiming(pa_stream* stream, int success, void* self)
    {
        auto* feeder = static_cast<ServerFeeder*>(self);
        feeder->asking_ = false;
        feeder->lastHeard_ = Clock::now();
        const pa_timing_info* info = success ? pa_stream_get_timing_info(stream) : nullptr;
        if (info == nullptr || info->read_index_corrupt || info->read_index < 0) return;
        if (!feeder->rewritePending_) return;  // a request for data came first and rewrote
        // The server read on while its answer came back: about half the
        // time the answer took.
        feeder->rewriteFrom(static_cast<std::uint64_t>(info->read_index) / 2,
                            (Clock::now() - feeder->timingAsked_) / 2);
    }

    // Pulls again from just past `read` (where the server was reading
    // `since` ago) what the server holds, and writes it over the old.
    void rewriteFrom(std::uint64_t read, Clock::duration since)
    {
        rewritePending_ = false;
        const std::uint64_t target = read + framesIn(since + std::chrono::milliseconds(kRewriteMarginMs), rate_);
        std::uint64_t from = 0;
        const bool pulled = link.with([&](PlayQueue& queue) {
            const std::uint64_t end = queue.pulledFrames();
            from = queue.rewind(target);
            if (from < end) pullInto(queue, static_cast<std::size_t>(end - from));
            else buffer_.clear();
        });
        if (pulled && !buffer_.empty()) write(static_cast<std::int64_t>(from * 2), PA_SEEK_ABSOLUTE);
    }

    const unsigned rate_;
    std::mutex loopMutex_;
    pa_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
    pa_stream* stream_ = nullptr;
    std::atomic<bool> changed_{false};
    std::vector<std::int16_t> buffer_;
    Clock::time_point lastHeard_;    // the server's last request or answer
    Clock::time_point timingAsked_;
    bool asking_ = false;            // asked where the server reads, no answer yet
    Clock::time_point unanswered_;   // since when the server owes an answer
    bool rewritePending_ = false;  // asked where the server reads, not yet rewritten
    bool failed_ = false;
};

class ServerOutput : public backend::OutputStream {
public:
    ServerOutput(unsigned rate, PlayQueue& queue) : feeder_(std::make_shared<ServerFeeder>(rate, queue))
    {
        std::thread([feeder = feeder_] { feeder->run(); }).detach();
    }
    // Never waits for the server: the feeder disconnects on its own thread.
    ~ServerOutput() override
    {
        feeder_->link.cut();
        feeder_->wake(false);
    }
    int awaitOpening() { return feeder_->opening.awaitEnd(); }
    MMRESULT failure() const override { return alsa::streamFailure(feeder_->link, feeder_->opening); }
    void queueChanged() override { feeder_->wake(true); }

private:
    std::shared_ptr<ServerFeeder> feeder_;
};

}  // namespace

bool defaultPcmIsServer()
{
    if (snd_config_update() < 0) return false;
    snd_config_t* pcm = nullptr;
    if (snd_config_search_definition(snd_config, "pcm", "default", &pcm) < 0) return false;
    snd_config_t* type = nullptr;
    const char* name = nullptr;
    const bool server = snd_config_search(pcm, "type", &type) >= 0 && snd_config_get_string(type, &name) >= 0 &&
                        std::string_view(name) == "pulse";
    snd_config_delete(pcm);
    return server;
}

int openOutput(unsigned rate, PlayQueue& queue, std::unique_ptr<backend::OutputStream>& stream)
{
    auto created = std::make_unique<ServerOutput>(rate, queue);
    if (const int error = created->awaitOpening(); error < 0) return error;
    stream = std::move(created);
    return 0;
}

}  // namespace mm::pulse
