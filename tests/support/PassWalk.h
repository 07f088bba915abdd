#pragma once
// Follows a recording of signals that took over from one another, each
// played as whole passes of its looping buffer: the walk steps pass by pass
// through the recording and notes where each next buffer begins. A stretch
// that is a whole pass of neither the current buffer nor the next (a
// missing, repeated or silent stretch, a change inside a pass) is a fault;
// the walk then finds its way back and goes on.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace testing_support {

struct PassWalk {
    std::size_t start = 0;             // where the first buffer's first pass begins
    std::vector<std::size_t> changes;  // where buffers 1, 2, ... begin
    std::vector<std::size_t> faults;   // where a stretch matched nothing expected
    std::size_t end = 0;               // where the walk stopped (less than a pass left)
};

// Whether recording[at, at + buffer length) is one pass of the buffer,
// sample by sample within the tolerance.
inline bool isPass(const std::vector<std::int16_t>& recording, std::size_t at,
                   const std::vector<std::int16_t>& buffer, int tolerance)
{
    if (buffer.empty() || at + buffer.size() > recording.size()) return false;
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        if (std::abs(recording[at + i] - buffer[i]) > tolerance) return false;
    }
    return true;
}

// The first position from `from` where a pass of buffer `k` or a later one
// begins; which buffer in `k`. recording.size() when there is none.
inline std::size_t findPass(const std::vector<std::int16_t>& recording, std::size_t from,
                            const std::vector<std::vector<std::int16_t>>& buffers,
                            std::size_t& k, int tolerance)
{
    for (std::size_t at = from; at < recording.size(); ++at) {
        for (std::size_t j = k; j < buffers.size(); ++j) {
            if (isPass(recording, at, buffers[j], tolerance)) {
                k = j;
                return at;
            }
        }
    }
    return recording.size();
}

inline PassWalk walkPasses(const std::vector<std::int16_t>& recording,
                           const std::vector<std::vector<std::int16_t>>& buffers,
                           int tolerance = 0)
{
    PassWalk walk;
    std::size_t k = 0;
    std::size_t at = findPass(recording, 0, buffers, k, tolerance);
    walk.start = at;
    for (std::size_t j = 1; j <= k && at < recording.size(); ++j) walk.changes.push_back(at);
    while (at < recording.size() && !buffers.empty()) {
        if (isPass(recording, at, buffers[k], tolerance)) {
            at += buffers[k].size();
            continue;
        }
        if (k + 1 < buffers.size() && isPass(recording, at, buffers[k + 1], tolerance)) {
            ++k;
            walk.changes.push_back(at);
            at += buffers[k].size();
            continue;
        }
        // Less than a pass of either left: the recording ends here.
        const std::size_t left = recording.size() - at;
        if (left < buffers[k].size() &&
            (k + 1 >= buffers.size() || left < buffers[k + 1].size()))
            break;
        walk.faults.push_back(at);
        const std::size_t before = k;
        at = findPass(recording, at + 1, buffers, k, tolerance);
        for (std::size_t j = before + 1; j <= k && at < recording.size(); ++j)
            walk.changes.push_back(at);
    }
    walk.end = std::min(at, recording.size());
    return walk;
}

}  // namespace testing_support
