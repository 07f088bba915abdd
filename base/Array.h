#pragma once
// An array with the run-time's bounds: a lower bound (0 or 1 in this
// program) and an upper bound, redimensioned with or without keeping its
// contents. An array that was never dimensioned, or was erased, is empty.
// at() checks the index and fails with error 9 "Subscript out of range";
// data() gives the element at the lower bound for hot loops.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/RuntimeError.h"

namespace rt {

template <class T>
class Array {
public:
    Array() = default;
    Array(std::int32_t lower, std::int32_t upper) { redim(lower, upper); }

    // Dimensions lower..upper with every element zero (contents dropped).
    // An upper bound below the lower bound leaves the array empty.
    void redim(std::int32_t lower, std::int32_t upper)
    {
        lower_ = lower;
        items_.assign(countFor(lower, upper), T{});
    }
    // Changes the upper bound keeping the contents; new elements are zero.
    void redimPreserve(std::int32_t upper) { items_.resize(countFor(lower_, upper), T{}); }
    void erase()
    {
        items_.clear();
        lower_ = 0;
    }

    bool empty() const { return items_.empty(); }
    std::int32_t size() const { return static_cast<std::int32_t>(items_.size()); }
    std::int32_t lbound() const { return lower_; }
    // Upper bound; lbound() - 1 when empty.
    std::int32_t ubound() const { return lower_ + size() - 1; }

    T& at(std::int32_t index) { return items_[offset(index)]; }
    const T& at(std::int32_t index) const { return items_[offset(index)]; }
    T& operator()(std::int32_t index) { return at(index); }
    const T& operator()(std::int32_t index) const { return at(index); }

    T* data() { return items_.data(); }
    const T* data() const { return items_.data(); }
    std::vector<T>& items() { return items_; }
    const std::vector<T>& items() const { return items_; }

    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

    bool operator==(const Array& other) const = default;

private:
    static std::size_t countFor(std::int32_t lower, std::int32_t upper)
    {
        return upper < lower ? 0 : static_cast<std::size_t>(upper - lower) + 1;
    }
    std::size_t offset(std::int32_t index) const
    {
        if (index < lower_ || index > ubound()) raise(kErrSubscript);
        return static_cast<std::size_t>(index - lower_);
    }

    std::int32_t lower_ = 0;
    std::vector<T> items_;
};

// The 16-bit sample arrays of the engine, the recording and the plot.
using SampleArray = Array<std::int16_t>;

}  // namespace rt
