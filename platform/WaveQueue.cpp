#include "platform/WaveQueue.h"

#include <algorithm>
#include <atomic>
#include <cstring>

namespace mm {

namespace {

std::atomic_ref<DWORD> flagsOf(WAVEHDR& header) { return std::atomic_ref<DWORD>(header.dwFlags); }

}  // namespace

DWORD headerFlags(const WAVEHDR& header)
{
    return std::atomic_ref<DWORD>(const_cast<DWORD&>(header.dwFlags)).load(std::memory_order_acquire);
}

DWORD headerBytesRecorded(const WAVEHDR& header)
{
    return std::atomic_ref<DWORD>(const_cast<DWORD&>(header.dwBytesRecorded))
        .load(std::memory_order_acquire);
}

void headerSetFlags(WAVEHDR& header, DWORD set, DWORD clear)
{
    auto flags = flagsOf(header);
    DWORD old = flags.load(std::memory_order_relaxed);
    while (!flags.compare_exchange_weak(old, (old | set) & ~clear, std::memory_order_acq_rel)) {
    }
}

}  // namespace mm

namespace mm::backend {

PcmLayout PcmLayout::of(const WAVEFORMATEX& format)
{
    PcmLayout layout;
    layout.rate = format.nSamplesPerSec;
    layout.channels = format.nChannels;
    layout.bits = format.wBitsPerSample;
    layout.blockAlign = format.nBlockAlign;
    return layout;
}

void markDone(WAVEHDR& header) { headerSetFlags(header, WHDR_DONE, WHDR_INQUEUE); }

// ---------------------------------------------------------------- player

PlayQueue::PlayQueue(const WAVEFORMATEX& format) : layout_(PcmLayout::of(format)) {}

void PlayQueue::write(WAVEHDR* header)
{
    headerSetFlags(*header, WHDR_INQUEUE, WHDR_DONE);
    std::lock_guard lock(mutex_);
    queue_.push_back(header);
    if (queue_.size() == 1) {
        cursor_ = 0;
        offset_ = 0;
        enterCursor();
    }
}

void PlayQueue::breakLoop()
{
    std::lock_guard lock(mutex_);
    if (inLoop_) breakPending_ = true;
}

void PlayQueue::reset()
{
    std::lock_guard lock(mutex_);
    for (WAVEHDR* header : queue_) markDone(*header);
    queue_.clear();
    cursor_ = 0;
    offset_ = 0;
    inLoop_ = false;
    breakPending_ = false;
    points_.clear();
    emptiedByReset_ = true;
}

void PlayQueue::abandon() { reset(); }

bool PlayQueue::holds(const WAVEHDR* header) const
{
    std::lock_guard lock(mutex_);
    return std::find(queue_.begin(), queue_.end(), header) != queue_.end();
}

bool PlayQueue::empty() const
{
    std::lock_guard lock(mutex_);
    return queue_.empty();
}

void PlayQueue::enterCursor()
{
    inLoop_ = false;
    breakPending_ = false;
    framesThisPass_ = 0;
    if (queue_.empty()) return;
    WAVEHDR& header = *queue_.front();
    if (headerFlags(header) & WHDR_BEGINLOOP) {
        inLoop_ = true;
        passesLeft_ = std::max<DWORD>(header.dwLoops, 1) - 1;
    }
}

void PlayQueue::popDone(std::size_t count)
{
    for (std::size_t i = 0; i < count && !queue_.empty(); ++i) {
        markDone(*queue_.front());
        queue_.pop_front();
    }
    // A header marked done may be unprepared and freed: no pull goes back
    // before this point.
    points_.clear();
    emptiedByReset_ = false;
    cursor_ = 0;
    offset_ = 0;
    enterCursor();
}

void PlayQueue::advanceCursor()
{
    offset_ = 0;
    if (!inLoop_) {
        popDone(1);
        return;
    }
    const bool endsBlock = (headerFlags(*queue_[cursor_]) & WHDR_ENDLOOP) != 0;
    if (!endsBlock) {
        ++cursor_;  // may point past the queue until the rest of the block arrives
        return;
    }
    // A pass of the loop block has been read. A block without any data would
    // repeat without end inside one pull; it ends like a broken loop.
    if (breakPending_ || passesLeft_ == 0 || framesThisPass_ == 0) {
        popDone(cursor_ + 1);
        return;
    }
    --passesLeft_;
    cursor_ = 0;
    framesThisPass_ = 0;
}

std::int16_t PlayQueue::frameAt(const char* data) const
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    std::int32_t sum = 0;
    for (WORD channel = 0; channel < layout_.channels; ++channel) {
        if (layout_.bits == 8) {
            sum += (static_cast<std::int32_t>(bytes[channel]) - 128) * 256;
        } else {
            std::int16_t value;
            std::memcpy(&value, bytes + 2 * channel, sizeof value);
            sum += value;
        }
    }
    return static_cast<std::int16_t>(sum / std::max<WORD>(layout_.channels, 1));
}

std::size_t PlayQueue::pull(std::int16_t* out, std::size_t frames)
{
    std::lock_guard lock(mutex_);
    return pullLocked(out, frames);
}

std::size_t PlayQueue::pullRewindable(std::int16_t* out, std::size_t frames)
{
    std::lock_guard lock(mutex_);
    points_.push_back({pulled_, cursor_, offset_, inLoop_, passesLeft_, framesThisPass_, queue_.empty()});
    return pullLocked(out, frames);
}

std::uint64_t PlayQueue::pulledFrames() const
{
    std::lock_guard lock(mutex_);
    return pulled_;
}

void PlayQueue::settle(std::uint64_t position)
{
    std::lock_guard lock(mutex_);
    while (!points_.empty() && points_.front().position < position) points_.pop_front();
}

std::uint64_t PlayQueue::rewind(std::uint64_t position)
{
    std::lock_guard lock(mutex_);
    if (position >= pulled_) return pulled_;
    const bool beforePoints = points_.empty() || position < points_.front().position;
    if (emptiedByReset_ && beforePoints) {
        // Emptied by a reset since: whatever the queue holds now starts here.
        points_.clear();
        pulled_ = position;
        restartFront();
        return pulled_;
    }
    const auto point = std::find_if(points_.begin(), points_.end(),
                                    [&](const RewindPoint& p) { return p.position >= position; });
    if (point == points_.end()) return pulled_;
    pulled_ = point->position;
    if (point->queueWasEmpty) {
        // Headers written since start as a write into the empty queue does.
        restartFront();
    } else {
        // The program's break request stands: it is for the loop under way.
        cursor_ = point->cursor;
        offset_ = point->offset;
        inLoop_ = point->inLoop;
        passesLeft_ = point->passesLeft;
        framesThisPass_ = point->framesThisPass;
    }
    points_.erase(point, points_.end());
    return pulled_;
}

void PlayQueue::restartFront()
{
    // A break the program asked for since is for this very loop.
    const bool breakAsked = breakPending_;
    cursor_ = 0;
    offset_ = 0;
    enterCursor();
    breakPending_ = inLoop_ && breakAsked;
}

std::size_t PlayQueue::pullLocked(std::int16_t* out, std::size_t frames)
{
    std::size_t got = 0;
    {
        const std::size_t block = std::max<WORD>(layout_.blockAlign, 1);
        while (got < frames && cursor_ < queue_.size()) {
            const WAVEHDR& header = *queue_[cursor_];
            const std::size_t usable = header.dwBufferLength / block * block;
            if (offset_ < usable && header.lpData != nullptr) {
                const std::size_t n = std::min(frames - got, (usable - offset_) / block);
                for (std::size_t i = 0; i < n; ++i) {
                    out[got++] = frameAt(header.lpData + offset_);
                    offset_ += block;
                }
                framesThisPass_ += n;
            }
            if (offset_ >= usable || header.lpData == nullptr) advanceCursor();
        }
    }
    std::fill(out + got, out + frames, std::int16_t{0});
    pulled_ += frames;
    return got;
}

// -------------------------------------------------------------- recorder

CaptureQueue::CaptureQueue(const WAVEFORMATEX& format) : layout_(PcmLayout::of(format)) {}

void CaptureQueue::add(WAVEHDR* header)
{
    std::atomic_ref<DWORD>(header->dwBytesRecorded).store(0, std::memory_order_release);
    headerSetFlags(*header, WHDR_INQUEUE, WHDR_DONE);
    std::lock_guard lock(mutex_);
    queue_.push_back(header);
}

void CaptureQueue::start()
{
    std::lock_guard lock(mutex_);
    started_ = true;
}

void CaptureQueue::stop()
{
    std::lock_guard lock(mutex_);
    started_ = false;
    if (!queue_.empty() && headerBytesRecorded(*queue_.front()) > 0) finishFront();
}

void CaptureQueue::reset()
{
    std::lock_guard lock(mutex_);
    started_ = false;
    for (WAVEHDR* header : queue_) markDone(*header);
    queue_.clear();
}

void CaptureQueue::abandon() { reset(); }

bool CaptureQueue::started() const
{
    std::lock_guard lock(mutex_);
    return started_;
}

bool CaptureQueue::holds(const WAVEHDR* header) const
{
    std::lock_guard lock(mutex_);
    return std::find(queue_.begin(), queue_.end(), header) != queue_.end();
}

bool CaptureQueue::empty() const
{
    std::lock_guard lock(mutex_);
    return queue_.empty();
}

void CaptureQueue::finishFront()
{
    markDone(*queue_.front());
    queue_.pop_front();
}

void CaptureQueue::push(const std::int16_t* frames, std::size_t count)
{
    std::lock_guard lock(mutex_);
    if (!started_) return;
    const std::size_t block = std::max<WORD>(layout_.blockAlign, 1);
    while (count > 0 && !queue_.empty()) {
        WAVEHDR& header = *queue_.front();
        std::atomic_ref<DWORD> recorded(header.dwBytesRecorded);
        std::size_t filled = recorded.load(std::memory_order_relaxed);
        const std::size_t room = header.lpData == nullptr || header.dwBufferLength < filled
                                     ? 0
                                     : (header.dwBufferLength - filled) / block;
        const std::size_t n = std::min(room, count);
        auto* out = reinterpret_cast<unsigned char*>(header.lpData) + filled;
        for (std::size_t i = 0; i < n; ++i) {
            const std::int16_t value = frames[i];
            for (WORD channel = 0; channel < layout_.channels; ++channel) {
                if (layout_.bits == 8) {
                    *out++ = static_cast<unsigned char>((value >> 8) + 128);
                } else {
                    std::memcpy(out, &value, sizeof value);
                    out += 2;
                }
            }
        }
        filled += n * block;
        recorded.store(static_cast<DWORD>(filled), std::memory_order_release);
        frames += n;
        count -= n;
        if ((header.dwBufferLength - filled) < block || header.lpData == nullptr) finishFront();
    }
}

}  // namespace mm::backend
