#pragma once
// Calls into ALSA that may wait on a sound server, bounded in time. Through
// the PulseAudio plugin, opening a device or a mixer, reading or writing a
// mixer value, and stopping a stream all wait for the server's answer: a
// server that is stopped (a hung session, a suspended machine) would hold
// the program's thread until it resumes. Such calls run one after another
// on one worker thread; the program's thread waits for each at most its
// limit and otherwise goes on as if the device were gone: kAlsaCallLimit
// for what the program does while it runs (mixer values), the longer
// kAlsaDiscoveryLimit for what connects to the server (finding devices,
// opening a mixer, which the program does at start-up and then keeps), which
// on a loaded machine may take a few hundred milliseconds and whose false
// "not found" would cost the user the whole run.
//
// A call that overran still runs to its end on the worker (when the server
// answers or dies); what it got is then handed to its `release` there, never
// to the caller. A call that had not started when its caller gave up never
// runs. While the worker is held by a call whose caller gave up, new calls
// give up at once rather than each waiting its own limit.
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace mm::alsa {

inline constexpr std::chrono::milliseconds kAlsaCallLimit{200};
inline constexpr std::chrono::milliseconds kAlsaDiscoveryLimit{2000};

// Runs `job` on the worker and waits for it at most `limit`; true when it
// ended in time. `orphaned` runs on the worker after a job whose caller
// stopped waiting.
bool runBounded(std::chrono::milliseconds limit, std::function<void()> job, std::function<void()> orphaned);

// What is known of the sound server: a call or stream that got no answer in
// time marks it silent, one that ended in time marks it answering. Opening a
// stream waits kAlsaDiscoveryLimit for a server not known to be silent (a
// loaded machine may take that long) and only kAlsaCallLimit for a silent
// one, so that the change after a stall does not wait again.
void noteServerSilent();
void noteServerAnswered();
std::chrono::milliseconds openingLimit();

// Hands `job` to the worker without waiting for it (closing what the worker
// opened, in order after the calls before it).
void runDetached(std::function<void()> job);

// `job`'s result, or nothing when it did not end in time (`release` then
// gets the result on the worker once the job ends).
template <class T>
std::optional<T> boundedCall(std::chrono::milliseconds limit, std::function<T()> job,
                             std::function<void(T&)> release = {})
{
    auto slot = std::make_shared<std::optional<T>>();
    const bool inTime = runBounded(limit, [slot, job = std::move(job)] { slot->emplace(job()); },
                                   [slot, release = std::move(release)] {
                                       if (release && slot->has_value()) release(**slot);
                                   });
    if (!inTime) return std::nullopt;
    return std::move(*slot);
}

}  // namespace mm::alsa
