#pragma once
// What a stream's own thread and the program share: the link to the queue
// the thread serves (cut when the program closes the stream), the failure
// the thread met, and the opening the program waits for. The thread opens
// its device itself, so that a slow or stopped sound server holds that
// thread rather than the program's.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/WaveApi.h"
#include "platform/alsa/AlsaBoundedCall.h"

namespace mm::alsa {

// A device that takes or gives no data for this long is treated as gone: a
// stopped sound server is then told as lost well within a second.
inline constexpr int kStallLimitMs = 600;

// The link between a stream's thread and the queue it serves. The program
// cuts it when it closes the stream; from then on the thread touches the
// queue no more, and only finishes with its device.
template <class Queue>
class QueueLink {
public:
    explicit QueueLink(Queue& queue) : queue_(&queue) {}

    // Runs `use` on the queue; false (and `use` not run) once cut.
    template <class Use>
    bool with(Use&& use)
    {
        std::lock_guard lock(mutex_);
        if (queue_ == nullptr) return false;
        use(*queue_);
        return true;
    }
    void cut()
    {
        std::lock_guard lock(mutex_);
        queue_ = nullptr;
    }
    bool isCut() const
    {
        std::lock_guard lock(mutex_);
        return queue_ == nullptr;
    }
    // The device failed: the failure is recorded and nothing waits on the
    // queued headers any more.
    void fail()
    {
        with([&](Queue& queue) {
            noteServerSilent();
            failure_ = MMSYSERR_NODRIVER;
            queue.abandon();
        });
    }
    MMRESULT failure() const { return failure_.load(); }

private:
    mutable std::mutex mutex_;
    Queue* queue_;
    std::atomic<MMRESULT> failure_{MMSYSERR_NOERROR};
};

// A stream's thread opens its own device, so that a slow or stopped sound
// server holds that thread rather than the program's. The program waits for
// the opening at most openingLimit() (AlsaBoundedCall.h): an opening that
// ends in time gives its result there; one that does not leaves the stream
// pending (what is written meanwhile waits in the queue), and one still not
// ended after the discovery limit (a connection to a server that does not
// answer) counts as a device gone.
class Opening {
public:
    void end(int error)
    {
        {
            std::lock_guard lock(mutex_);
            ended_ = true;
            error_ = error;
        }
        done_.notify_all();
    }
    // The error of an opening that failed in time; 0 when it succeeded or
    // is still under way.
    int awaitEnd()
    {
        std::unique_lock lock(mutex_);
        if (done_.wait_for(lock, openingLimit(), [&] { return ended_; })) return error_;
        noteServerSilent();
        return 0;
    }
    bool overdue() const
    {
        std::lock_guard lock(mutex_);
        return !ended_ && std::chrono::steady_clock::now() - began_ > kAlsaDiscoveryLimit;
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable done_;
    bool ended_ = false;
    int error_ = 0;
    const std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
};

// A stream's failure as the program sees it: what its thread recorded, or a
// device gone when the opening is overdue.
template <class Queue>
MMRESULT streamFailure(QueueLink<Queue>& link, const Opening& opening)
{
    if (link.failure() == MMSYSERR_NOERROR && opening.overdue()) link.fail();
    return link.failure();
}

}  // namespace mm::alsa
