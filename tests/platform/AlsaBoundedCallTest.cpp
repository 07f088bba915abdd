// The bounded calls into ALSA, with jobs that stand in for a sound server
// that answers, is slow, or does not answer until released.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/alsa/AlsaBoundedCall.h"

namespace {

using namespace std::chrono_literals;
using mm::alsa::boundedCall;
using mm::alsa::kAlsaCallLimit;
using Clock = std::chrono::steady_clock;

// A server that holds every job until let go.
class HeldServer {
public:
    void answer()
    {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [&] { return released_; });
    }
    void release()
    {
        {
            std::lock_guard lock(mutex_);
            released_ = true;
        }
        wake_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable wake_;
    bool released_ = false;
};

bool eventually(const std::function<bool()>& condition)
{
    const auto start = Clock::now();
    while (!condition()) {
        if (Clock::now() - start > 10s) return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

TEST(AlsaBoundedCall, AHeldServerCostsOneLimitThenCallsGiveUpAtOnceAndLateResultsAreReleased)
{
    HeldServer server;
    std::atomic<int> released{0};
    std::atomic<bool> queuedRan{false};

    const auto start = Clock::now();
    const auto held = boundedCall<int>(
        kAlsaCallLimit, [&] { server.answer(); return 1; }, [&](int& late) { released = late; });
    const auto waited = Clock::now() - start;
    EXPECT_FALSE(held.has_value());
    EXPECT_GE(waited, kAlsaCallLimit);
    EXPECT_LT(waited, 5s) << "bounded, whatever the machine's load";

    // The worker is held past the limit: the next call does not wait again,
    // and the job it brought never runs later.
    const auto next = Clock::now();
    EXPECT_FALSE(boundedCall<int>(kAlsaCallLimit, [&] { queuedRan = true; return 2; }).has_value());
    EXPECT_LT(Clock::now() - next, kAlsaCallLimit);

    // Once the server answers, the overrun result goes to its release, and
    // calls are served again.
    server.release();
    EXPECT_TRUE(eventually([&] { return released == 1; }));
    EXPECT_EQ(boundedCall<int>(kAlsaCallLimit, [] { return 3; }), 3);
    EXPECT_FALSE(queuedRan);
}

}  // namespace
