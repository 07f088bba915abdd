#include "platform/alsa/AlsaThreadPriority.h"

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

namespace mm::alsa {

namespace {

// PulseAudio and PipeWire run their own mixing threads at real-time
// priority 5 or more by default; a stream thread stays below them, so the
// server that it feeds is never held off by it.
constexpr int kRealtimePriority = 4;
constexpr int kWantedNice = -10;

// The soft limit of a resource; 0 when it cannot be read.
rlim_t softLimit(int resource)
{
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) return 0;
    return limit.rlim_cur;
}

bool tryRealtime(int priority)
{
    sched_param parameter{};
    parameter.sched_priority = priority;
    // Without reset-on-fork: threads started from here (the sound server's
    // client thread) must inherit the class; stream threads start no
    // programs.
    return sched_setscheduler(0, SCHED_RR, &parameter) == 0;
}

bool tryNice(int nice)
{
    // On Linux a nice value set with the thread's id applies to that thread.
    return setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), nice) == 0;
}

}  // namespace

void raiseStreamPriority()
{
    if (tryRealtime(kRealtimePriority)) return;
    const auto realtimeLimit = static_cast<int>(std::min<rlim_t>(softLimit(RLIMIT_RTPRIO), kRealtimePriority));
    if (realtimeLimit > 0 && tryRealtime(realtimeLimit)) return;

    if (tryNice(kWantedNice)) return;
    // RLIMIT_NICE allows nice values down to 20 - limit.
    const int niceFloor = 20 - static_cast<int>(std::min<rlim_t>(softLimit(RLIMIT_NICE), 40));
    if (niceFloor < getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()))) tryNice(std::max(niceFloor, kWantedNice));
}

}  // namespace mm::alsa
