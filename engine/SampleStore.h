#pragma once
// The engine's sample buffer, indexed from 1. A make dimensions it to
// kDimension samples, all zero, and then cuts it to the few hundred or
// thousand it made. Clearing 4.2 MB for that would cost more than the make
// itself, so the zeros are kept lazily: samples past valid_ read as 0
// whatever the memory holds, memory from dirty_ on is known to hold zeros,
// and the part in between is cleared only when the samples are handed out
// (settled). The memory is allocated once, zeroed by the system, and grows
// only for a burst period longer than the dimension.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>

#include "base/RuntimeError.h"

namespace waveio {

// Every make starts from a buffer of this many samples and cuts it to the
// length it made.
inline constexpr std::int32_t kDimension = 2099999;

class SampleStore {
public:
    std::int32_t upper() const
    {
        if (!dimensioned_) rt::raise(rt::kErrSubscript);
        return size_;
    }

    // ReDim 1..upper: every sample 0.
    void redimZero(std::int32_t upper)
    {
        checkUpper(upper);
        reserve(upper);
        size_ = upper;
        valid_ = 0;
        dimensioned_ = true;
    }
    // ReDim Preserve 1..upper: samples kept, new ones 0.
    void redimPreserve(std::int32_t upper)
    {
        checkUpper(upper);
        reserve(upper);
        size_ = upper;
        valid_ = std::min(valid_, upper);
        dimensioned_ = true;
    }

    std::int16_t get(std::int32_t index) const
    {
        checkIndex(index);
        return index <= valid_ ? memory_[index - 1] : std::int16_t{0};
    }
    void set(std::int32_t index, std::int16_t value)
    {
        checkIndex(index);
        extendValidTo(index - 1);
        dirty_ = std::max(dirty_, index);
        memory_[index - 1] = value;
        valid_ = std::max(valid_, index);
    }

    // Memory for samples index..index + count - 1 (all within the dimension),
    // to be written in order; endWrite(last) then declares 1..last valid.
    std::int16_t* beginWrite(std::int32_t index, std::int32_t count)
    {
        checkIndex(index);
        checkIndex(index + count - 1);
        extendValidTo(index - 1);
        dirty_ = std::max(dirty_, index + count - 1);
        return memory_.get() + (index - 1);
    }
    void endWrite(std::int32_t last) { valid_ = std::max(valid_, last); }

    // The samples 1..upper, with the zeros they should hold in memory.
    std::span<const std::int16_t> settled()
    {
        if (!dimensioned_) return {};
        zeroRange(valid_, size_);
        valid_ = size_;
        return {memory_.get(), static_cast<std::size_t>(size_)};
    }

private:
    struct FreeMemory {
        void operator()(std::int16_t* p) const { std::free(p); }
    };

    static void checkUpper(std::int32_t upper)
    {
        if (upper < 1) rt::raise(rt::kErrSubscript);
    }
    void checkIndex(std::int32_t index) const
    {
        if (!dimensioned_ || index < 1 || index > size_) rt::raise(rt::kErrSubscript);
    }

    void reserve(std::int32_t count)
    {
        if (count <= capacity_) return;
        const std::int32_t capacity = std::max(count, kDimension);
        auto* fresh = static_cast<std::int16_t*>(std::calloc(capacity, sizeof(std::int16_t)));
        if (fresh == nullptr) throw std::bad_alloc();
        if (memory_) std::memcpy(fresh, memory_.get(), static_cast<std::size_t>(valid_) * 2);
        memory_.reset(fresh);
        capacity_ = capacity;
        dirty_ = valid_;
    }

    // Clears memory elements from..to - 1 (0-based) where they may be dirty.
    void zeroRange(std::int32_t from, std::int32_t to)
    {
        const std::int32_t end = std::min(to, dirty_);
        if (from >= end) return;
        std::memset(memory_.get() + from, 0, static_cast<std::size_t>(end - from) * 2);
        if (end == dirty_) dirty_ = from;
    }
    // Samples valid_ + 1..last become valid zeros.
    void extendValidTo(std::int32_t last)
    {
        if (last <= valid_) return;
        zeroRange(valid_, last);
        valid_ = last;
    }

    std::unique_ptr<std::int16_t[], FreeMemory> memory_;
    std::int32_t capacity_ = 0;
    std::int32_t size_ = 0;
    std::int32_t valid_ = 0;
    std::int32_t dirty_ = 0;
    bool dimensioned_ = false;
};

}  // namespace waveio
