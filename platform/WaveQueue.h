#pragma once
// The two header queues every back end shares: the player that turns the
// written output headers into one stream of samples (loops, break-loop,
// reset, done flags), and the recorder that fills the added input headers.
// The program's thread changes the queues through the wave calls; a back
// end's device side only pulls samples from the player and pushes samples
// into the recorder. Both sides meet under the queue's mutex; the flags and
// byte counts the program polls are written with std::atomic_ref.
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>

#include "platform/WaveApi.h"

namespace mm::backend {

// The sample layout of an open stream.
struct PcmLayout {
    DWORD rate = 0;
    WORD channels = 1;
    WORD bits = 16;
    WORD blockAlign = 2;

    static PcmLayout of(const WAVEFORMATEX& format);
};

// Marks a header done and out of the queue, in one atomic change.
void markDone(WAVEHDR& header);

class PlayQueue {
public:
    explicit PlayQueue(const WAVEFORMATEX& format);

    // Program side.
    // Appends a prepared header: WHDR_INQUEUE set, WHDR_DONE cleared.
    void write(WAVEHDR* header);
    // Ends the loop under way after its present pass.
    void breakLoop();
    // Drops every queued header, each marked done; silence follows.
    void reset();
    bool holds(const WAVEHDR* header) const;
    bool empty() const;
    // Runs `change` with the device side held off: a header's data and
    // length may be rewritten there while it plays.
    template <class Change>
    void holdOff(Change&& change)
    {
        std::lock_guard lock(mutex_);
        change();
    }

    // Device side.
    // Fills `frames` 16-bit mono frames: queued data first (headers that have
    // been read to their end for the last time are marked done), silence
    // after it. Returns how many frames came from headers.
    std::size_t pull(std::int16_t* out, std::size_t frames);
    // The device is gone: every queued header is marked done.
    void abandon();

    // Device side, for a device that can replace what it holds but has not
    // played yet. Positions count the frames pulled since the queue opened.
    // pullRewindable() pulls as pull() does and remembers where it started,
    // so that the pull can be repeated from there after the program changed
    // the queue; pull() remembers nothing.
    std::size_t pullRewindable(std::int16_t* out, std::size_t frames);
    std::uint64_t pulledFrames() const;
    // The device has played up to `position`: going back before it is no
    // longer needed.
    void settle(std::uint64_t position);
    // Goes back to the first remembered position at or after `position` and
    // returns it; the next pull repeats from there with the queue as the
    // program left it. A pull never goes back past a header marked done, so
    // what cannot be repeated is played as it was pulled: the return is then
    // pulledFrames().
    std::uint64_t rewind(std::uint64_t position);

    const PcmLayout& layout() const { return layout_; }

private:
    // Sets up the loop state for the header at the cursor, if it begins one.
    void enterCursor();
    // The cursor has read its header to the end: moves on, repeating or
    // ending a loop, marking finished headers done.
    void advanceCursor();
    void popDone(std::size_t count);
    std::int16_t frameAt(const char* data) const;
    std::size_t pullLocked(std::int16_t* out, std::size_t frames);
    // Reads the front header from its start, as after a write into an empty
    // queue, keeping a break asked for meanwhile.
    void restartFront();

    // The reading state at a position where a pull began.
    struct RewindPoint {
        std::uint64_t position;
        std::size_t cursor;
        std::size_t offset;
        bool inLoop;
        DWORD passesLeft;
        std::size_t framesThisPass;
        bool queueWasEmpty;
    };

    const PcmLayout layout_;
    mutable std::mutex mutex_;
    std::deque<WAVEHDR*> queue_;
    std::size_t cursor_ = 0;   // index in queue_ of the header being read
    std::size_t offset_ = 0;   // bytes read of that header
    bool inLoop_ = false;      // queue_[0] begins a loop block that is playing
    DWORD passesLeft_ = 0;     // passes of that loop still to start after this one
    bool breakPending_ = false;
    std::size_t framesThisPass_ = 0;
    std::uint64_t pulled_ = 0;
    // Where a rewind may land: the remembered points since the last header
    // was marked done, and, after a reset emptied the queue, any position
    // before them (each may start afresh).
    std::deque<RewindPoint> points_;
    bool emptiedByReset_ = false;
};

class CaptureQueue {
public:
    explicit CaptureQueue(const WAVEFORMATEX& format);

    // Program side.
    // Appends a prepared buffer: WHDR_INQUEUE set, WHDR_DONE cleared, no
    // bytes recorded.
    void add(WAVEHDR* header);
    void start();
    // Stops recording; a partly filled buffer is marked done.
    void stop();
    // Stops recording and marks every queued buffer done.
    void reset();
    bool started() const;
    bool holds(const WAVEHDR* header) const;
    bool empty() const;

    // Device side: 16-bit mono frames recorded now. Dropped unless started
    // and a buffer is queued.
    void push(const std::int16_t* frames, std::size_t count);
    void abandon();

    const PcmLayout& layout() const { return layout_; }

private:
    void finishFront();

    const PcmLayout layout_;
    mutable std::mutex mutex_;
    std::deque<WAVEHDR*> queue_;
    bool started_ = false;
};

}  // namespace mm::backend
