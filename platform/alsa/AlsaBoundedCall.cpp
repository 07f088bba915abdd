#include "platform/alsa/AlsaBoundedCall.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace mm::alsa {

namespace {

// One call's meeting point between its caller and the worker.
struct Ticket {
    std::function<void()> job;
    std::function<void()> orphaned;
    bool ended = false;
    bool abandoned = false;
};

// The worker: one thread for the whole run, never joined (a program that
// exits while the server is stopped must not wait for it).
class Worker {
public:
    Worker() { std::thread([this] { serve(); }).detach(); }

    bool run(std::chrono::milliseconds limit, std::function<void()> job, std::function<void()> orphaned)
    {
        std::unique_lock lock(mutex_);
        if (running_ && running_->abandoned) return false;
        auto ticket = std::make_shared<Ticket>();
        ticket->job = std::move(job);
        ticket->orphaned = std::move(orphaned);
        queue_.push_back(ticket);
        wake_.notify_all();
        if (ended_.wait_for(lock, limit, [&] { return ticket->ended; })) return true;
        ticket->abandoned = true;
        return false;
    }

    void post(std::function<void()> job)
    {
        std::lock_guard lock(mutex_);
        auto ticket = std::make_shared<Ticket>();
        ticket->job = std::move(job);
        queue_.push_back(ticket);
        wake_.notify_all();
    }

private:
    void serve()
    {
        std::unique_lock lock(mutex_);
        for (;;) {
            wake_.wait(lock, [&] { return !queue_.empty(); });
            const std::shared_ptr<Ticket> ticket = queue_.front();
            queue_.pop_front();
            if (ticket->abandoned) continue;  // its caller gave up before it began
            running_ = ticket;
            lock.unlock();
            ticket->job();
            lock.lock();
            running_.reset();
            if (ticket->abandoned && ticket->orphaned) {
                lock.unlock();
                ticket->orphaned();
                lock.lock();
            }
            ticket->ended = true;
            ended_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable ended_;
    std::deque<std::shared_ptr<Ticket>> queue_;
    std::shared_ptr<Ticket> running_;  // the job under way, if any
};

std::atomic<bool>& serverSilent()
{
    static std::atomic<bool> silent{false};
    return silent;
}

Worker& worker()
{
    static Worker* const instance = new Worker;
    return *instance;
}

}  // namespace

bool runBounded(std::chrono::milliseconds limit, std::function<void()> job, std::function<void()> orphaned)
{
    const bool inTime = worker().run(limit, std::move(job), std::move(orphaned));
    serverSilent() = !inTime;
    return inTime;
}

void noteServerSilent() { serverSilent() = true; }
void noteServerAnswered() { serverSilent() = false; }
std::chrono::milliseconds openingLimit() { return serverSilent() ? kAlsaCallLimit : kAlsaDiscoveryLimit; }

void runDetached(std::function<void()> job) { worker().post(std::move(job)); }

}  // namespace mm::alsa
