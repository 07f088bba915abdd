// Measures the playback engine as a user meets it and prints the figures:
//  - change-overs on the virtual card in simulated time: 1,000 frequency
//    changes, every sample of the output followed (gaps, repeats, changes
//    inside a pass);
//  - change-overs on the real sound server through ALSA: 100 changes,
//    recorded back through the null sink's monitor; latency from the call
//    to the first new sample, and gaps;
//  - CPU while a 1 kHz tone plays and the program idles, beside sox's
//    "play -n synth sine 1000" measured the same way;
//  - with --load, while two busy processes hold both cores: gaps in 60 s of
//    a steady tone, 1,000 change-overs, and the CPU again;
//  - with --stalled, the time of each call the window makes while the sound
//    server is stopped, and of the exit.
// The server parts need the private server; run through scripts/measure.
// Each part runs in a child process of its own, since a process chooses
// its sound back end once.
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "base/Array.h"
#include "base/Trap.h"
#include "engine/modWaveInOut.h"
#include "mixer/modMixer.h"
#include "platform/HostServices.h"
#include "platform/SystemHost.h"
#include "platform/WaveApi.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/PassWalk.h"
#include "tests/support/ThreadClasses.h"

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::uint32_t kRate = 44100;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Failures inside the engine are printed and end the procedure.
std::int16_t printError(const std::string& module, const std::string& procedure, std::int32_t line)
{
    std::fprintf(stderr, "error in %s.%s line %d: %s\n", module.c_str(), procedure.c_str(), line,
                 rt::currentError().description.c_str());
    return rt::kAnswerAbort;
}

// The system host with a clock that moves only when the program sleeps,
// driving the virtual card by the same amount.
class SimulatedHost : public host::SystemHost {
public:
    std::int16_t msgBox(const std::string& text, std::int32_t style, const std::string& title) override
    {
        std::fprintf(stderr, "[%s] %s\n", title.c_str(), text.c_str());
        ++boxes;
        return host::defaultAnswer(style);
    }
    void beep() override {}
    std::uint32_t tickCount() override { return tick_; }
    void sleep(std::uint32_t milliseconds) override
    {
        tick_ += milliseconds;
        mm::loopback::advance(milliseconds);
    }
    int boxes = 0;

private:
    std::uint32_t tick_ = 1000;
};

bool findDevices()
{
    ErrorFlag error = kFalse;
    const bool found = gbWaveOutThere(error) && gbWaveInThere(error) && !error;
    if (!found) std::fprintf(stderr, "no usable sound device\n");
    gWaveOutSetShape("Sine");
    return found;
}

void tone(float frequency)
{
    ErrorFlag error = kFalse;
    gWaveOutSetFrequency1SweepBurst(frequency, 0, 0, kFalse, kFalse, 0, 0, 0, error);
}

// gWaveOutChange without display trimming; the whole made buffer.
std::vector<std::int16_t> change(const std::string& action, bool& failed)
{
    rt::SampleArray samples;
    rt::SampleArray noRecord;
    ErrorFlag error = kFalse;
    gWaveOutChange(action, 0, kFalse, kFalse, samples, noRecord, error);
    failed = failed || error;
    return samples.items();
}

// Neighbouring frequencies differ, so a pass of one never passes for the other.
float frequencyOf(std::size_t k)
{
    static const float frequencies[] = {1000, 1250, 750, 2000, 1500, 600, 1800, 900, 2500, 1100};
    return frequencies[k % std::size(frequencies)];
}

void printWalk(const char* where, const testing_support::PassWalk& walk, std::size_t changes)
{
    std::printf("%s: %zu change-overs made, %zu found at pass boundaries, %zu faults "
                "(gaps, repeats or changes inside a pass)\n",
                where, changes, walk.changes.size(), walk.faults.size());
}

// ---- the virtual card -------------------------------------------------------

int measureVirtualCard()
{
    ::setenv("WAVELARK_AUDIO", "loopback", 1);
    SimulatedHost simulated;
    host::install(&simulated);
    mm::loopback::reset();
    mm::loopback::useSimulatedTime();
    if (!findDevices()) return 1;

    constexpr std::size_t kChanges = 1000;
    std::mt19937 random(20260101);
    std::uniform_int_distribution<int> pause(0, 40);  // ms; 0 changes twice in a pass
    std::vector<std::vector<std::int16_t>> buffers;
    bool failed = false;
    mm::loopback::startTap();
    tone(frequencyOf(0));
    buffers.push_back(change("Open", failed));
    for (std::size_t k = 1; k <= kChanges; ++k) {
        const int ms = pause(random);
        if (ms > 0) simulated.sleep(static_cast<std::uint32_t>(ms));
        tone(frequencyOf(k));
        buffers.push_back(change("", failed));
    }
    simulated.sleep(200);
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);
    std::vector<std::int16_t> heard;
    for (const auto& segment : mm::loopback::takeTap())
        heard.insert(heard.end(), segment.samples.begin(), segment.samples.end());

    const testing_support::PassWalk walk = testing_support::walkPasses(heard, buffers, 0);
    printWalk("virtual card", walk, kChanges);
    std::printf("virtual card: %.1f s of output followed sample by sample, %d error boxes\n",
                heard.size() / static_cast<double>(kRate), simulated.boxes);
    host::install(nullptr);
    return failed ? 1 : 0;
}

// ---- the real server ----------------------------------------------------------

// Records the default input at 44.1 kHz mono and keeps, while the program
// polls it, when each count of samples had arrived.
class Recorder {
public:
    explicit Recorder(double seconds) : memory_(static_cast<std::size_t>(seconds * kRate) * 2)
    {
        const mm::WAVEFORMATEX format = mm::pcmFormat(kRate);
        ok_ = mm::waveInOpen(&handle_, 0, &format, 0, 0, mm::CALLBACK_NULL) == 0;
        header_.lpData = memory_.data();
        header_.dwBufferLength = static_cast<mm::DWORD>(memory_.size());
        ok_ = ok_ && mm::waveInPrepareHeader(handle_, &header_, sizeof header_) == 0 &&
              mm::waveInAddBuffer(handle_, &header_, sizeof header_) == 0;
        start_ = Clock::now();
        ok_ = ok_ && mm::waveInStart(handle_) == 0;
    }
    ~Recorder()
    {
        mm::waveInReset(handle_);
        mm::waveInUnprepareHeader(handle_, &header_, sizeof header_);
        mm::waveInClose(handle_);
    }
    bool ok() const { return ok_; }
    bool full() const { return mm::headerFlags(header_) & mm::WHDR_DONE; }

    // Sleeps `ms` a millisecond at a time, noting the samples arrived. The
    // end is a time, not a count of sleeps: on a loaded machine a sleep of
    // a millisecond lasts longer.
    void sleepWatching(std::uint32_t ms)
    {
        const auto until = Clock::now() + std::chrono::milliseconds(ms);
        while (Clock::now() < until) {
            host::sleep(1);
            arrivals_.push_back({secondsSince(start_), mm::headerBytesRecorded(header_) / 2});
        }
    }
    double now() const { return secondsSince(start_); }

    std::vector<std::int16_t> samples() const
    {
        std::vector<std::int16_t> out(mm::headerBytesRecorded(header_) / 2);
        std::memcpy(out.data(), memory_.data(), out.size() * 2);
        return out;
    }

    // When sample `index` was played into the sink (seen by the monitor):
    // the earliest arrival, less the samples after it, bounds that from
    // above most tightly.
    double playedAt(std::size_t index) const
    {
        double origin = 1e9;
        for (const auto& a : arrivals_) {
            if (a.samples > 0) origin = std::min(origin, a.time - a.samples / double(kRate));
        }
        return origin + index / double(kRate);
    }
    // When sample `index` reached the program.
    double arrivedAt(std::size_t index) const
    {
        for (const auto& a : arrivals_) {
            if (a.samples > index) return a.time;
        }
        return -1;
    }

private:
    struct Arrival {
        double time;
        std::size_t samples;
    };
    std::vector<char> memory_;
    mm::HWAVEIN handle_ = 0;
    mm::WAVEHDR header_;
    bool ok_ = false;
    Clock::time_point start_;
    std::vector<Arrival> arrivals_;
};

struct Spread {
    double min, median, p95, max;
};

Spread spreadOf(std::vector<double> values)
{
    if (values.empty()) return {0, 0, 0, 0};
    std::sort(values.begin(), values.end());
    const auto at = [&](double q) { return values[static_cast<std::size_t>(q * (values.size() - 1))]; };
    return {values.front(), at(0.5), at(0.95), values.back()};
}

void printSpread(const char* what, const Spread& s)
{
    std::printf("  %-44s min %6.1f  median %6.1f  95%% %6.1f  max %6.1f ms\n", what, s.min * 1000,
                s.median * 1000, s.p95 * 1000, s.max * 1000);
}

// Where each fault of a steady tone lies and what it is: the stretch up to
// the next whole pass, and how much of it is silence (the device ran dry)
// rather than samples out of step.
void describeFaults(const std::vector<std::int16_t>& heard, const std::vector<std::int16_t>& pass,
                    const testing_support::PassWalk& walk)
{
    for (const std::size_t fault : walk.faults) {
        std::size_t resume = fault + 1;
        while (resume < heard.size() && !testing_support::isPass(heard, resume, pass, 2)) ++resume;
        const auto silent = std::count_if(heard.begin() + static_cast<std::ptrdiff_t>(fault),
                                          heard.begin() + static_cast<std::ptrdiff_t>(resume),
                                          [](std::int16_t sample) { return std::abs(sample) <= 2; });
        std::printf("  fault at %.3f s: %.1f ms to the next whole pass, %.1f ms of it silent\n",
                    fault / double(kRate), (resume - fault) * 1000.0 / kRate, silent * 1000.0 / kRate);
    }
}

// A steady 1 kHz tone recorded for `seconds`, followed sample by sample.
int measureSteadyTone(double seconds)
{
    ::setenv("WAVELARK_AUDIO", "alsa", 1);
    if (!findDevices()) return 1;
    Recorder recorder(seconds + 1);
    if (!recorder.ok()) {
        std::fprintf(stderr, "the input did not open\n");
        return 1;
    }
    bool failed = false;
    recorder.sleepWatching(300);
    tone(1000);
    const std::vector<std::vector<std::int16_t>> buffers = {change("Open", failed)};
    while (!recorder.full()) recorder.sleepWatching(10);
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);
    const std::vector<std::int16_t> heard = recorder.samples();
    const testing_support::PassWalk walk = testing_support::walkPasses(heard, buffers, 2);
    std::printf("real server: steady 1 kHz tone, %.1f s followed sample by sample, %zu faults "
                "(gaps or repeats)\n",
                (heard.size() - std::min(heard.size(), walk.start)) / double(kRate), walk.faults.size());
    describeFaults(heard, buffers[0], walk);
    return failed || !walk.faults.empty() ? 1 : 0;
}

int measureServer(std::size_t changes)
{
    ::setenv("WAVELARK_AUDIO", "alsa", 1);
    if (!findDevices()) return 1;
    std::mt19937 random(20260102);
    std::uniform_int_distribution<int> pause(100, 160);
    Recorder recorder(changes * 0.16 + 1.5);
    if (!recorder.ok()) {
        std::fprintf(stderr, "the input did not open\n");
        return 1;
    }
    std::vector<std::vector<std::int16_t>> buffers;
    std::vector<double> calls;
    bool failed = false;
    recorder.sleepWatching(300);
    tone(frequencyOf(0));
    buffers.push_back(change("Open", failed));
    for (std::size_t k = 1; k <= changes; ++k) {
        recorder.sleepWatching(static_cast<std::uint32_t>(pause(random)));
        // From a 1 kHz tone to another and back, pass lengths 10 and 20 ms.
        tone(k % 2 == 1 ? 1250 : 1000);
        calls.push_back(recorder.now());
        buffers.push_back(change("", failed));
    }
    while (!recorder.full() && recorder.now() < changes * 0.2 + 5) recorder.sleepWatching(10);
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);

    const std::vector<std::int16_t> heard = recorder.samples();
    const testing_support::PassWalk walk = testing_support::walkPasses(heard, buffers, 2);
    printWalk("real server", walk, changes);
    if (walk.changes.size() != changes) {
        std::printf("real server: latency not measured (the recording does not follow every change)\n");
        return 1;
    }
    std::vector<double> played, arrived, played1k, beyondPass1k;
    for (std::size_t k = 1; k <= changes; ++k) {
        const std::size_t first = walk.changes[k - 1];
        const double call = calls[k - 1];
        played.push_back(recorder.playedAt(first) - call);
        arrived.push_back(recorder.arrivedAt(first) - call);
        if (k % 2 == 1) {
            // Out of the 1 kHz tone, whose pass is 441 samples (10 ms).
            played1k.push_back(played.back());
            beyondPass1k.push_back(played.back() - buffers[k - 1].size() / double(kRate));
        }
    }
    std::printf("real server: change-over latency, from the call to the first new sample\n");
    printSpread("played into the sink, out of 1 kHz", spreadOf(played1k));
    printSpread("  the same less a whole 10 ms pass", spreadOf(beyondPass1k));
    printSpread("played into the sink, all", spreadOf(played));
    printSpread("arrived in the program's recording, all", spreadOf(arrived));
    const auto slow = std::count_if(arrived.begin(), arrived.end(), [](double s) { return s > 0.1; });
    std::printf("  changes that took over 100 ms to arrive: %td of %zu\n", slow, arrived.size());
    return failed || !walk.faults.empty() ? 1 : 0;
}

int runChild(const std::string& self, const std::string& part, const std::string& argument = "");

// ---- a stopped server -------------------------------------------------------------

double monotonicSeconds()
{
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

// Plays a tone, has the server stopped (as a hung or suspended session is)
// and times each call the window would then make; the exit is timed by the
// parent, from the moment written to `exitFile`.
int stalledServerCalls(const std::string& exitFile)
{
    ::setenv("WAVELARK_AUDIO", "alsa", 1);
    const char* serverVariable = std::getenv("WAVELARK_PULSE_PID");
    if (serverVariable == nullptr || !findDevices()) return 1;
    std::string report;
    ErrorFlag error = kFalse;
    gbMixerThereInit(report, error);
    bool failed = false;
    tone(1000);
    change("Open", failed);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    ::kill(std::atoi(serverVariable), SIGSTOP);
    const auto timed = [](const char* what, const std::function<void()>& call) {
        const auto start = Clock::now();
        call();
        std::printf("  %-44s %7.1f ms\n", what, secondsSince(start) * 1000);
    };
    std::printf("calls with the sound server stopped\n");
    timed("a change at once (the stream not yet stalled)", [&] {
        tone(1250);
        change("", failed);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    std::string lost;
    timed("the lost query, a second later", [&] { gbWaveOutLost(lost); });
    std::printf("  the output %s\n", lost.empty() ? "is not told as lost" : ("is lost: " + lost).c_str());
    timed("a change (reopens)", [&] {
        tone(1000);
        change("", failed);
    });
    timed("the master level", [&] { gMixerOutMasterSetLevel(30000, error); });
    timed("the close (Mute)", [&] { gWaveOutClose(kTrue, error); });
    timed("the restore at exit", [&] { gMixerSelectedRestore(error); });
    std::ofstream(exitFile) << std::to_string(monotonicSeconds());
    return 0;
}

int measureStalledServer(const std::string& self)
{
    const char* serverVariable = std::getenv("WAVELARK_PULSE_PID");
    if (serverVariable == nullptr) return 1;
    const std::string exitFile = "/tmp/wavelark-measure-exit-" + std::to_string(::getpid());
    const int status = runChild(self, "--stalled-child", exitFile);
    const double ended = monotonicSeconds();
    ::kill(std::atoi(serverVariable), SIGCONT);
    double exitStarted = 0;
    std::ifstream(exitFile) >> exitStarted;
    std::remove(exitFile.c_str());
    if (exitStarted > 0) std::printf("  %-44s %7.1f ms\n", "the exit", (ended - exitStarted) * 1000);
    return status;
}

// ---- CPU ------------------------------------------------------------------------

// Plays a 1 kHz tone for `seconds` while the program does nothing else.
int playTone(double seconds)
{
    ::setenv("WAVELARK_AUDIO", "alsa", 1);
    if (!findDevices()) return 1;
    tone(1000);
    bool failed = false;
    change("Open", failed);
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);
    return failed ? 1 : 0;
}

// CPU seconds a process's threads have run so far, from the scheduler's
// own nanosecond accounting (the tick counts of /proc/<pid>/stat move in
// 10 ms steps, coarse beside a load of a few milliseconds a second);
// negative when the process is gone.
double cpuSeconds(pid_t pid)
{
    const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
    std::error_code error;
    double seconds = 0;
    bool found = false;
    for (const auto& task : std::filesystem::directory_iterator(tasks, error)) {
        std::ifstream schedstat(task.path() / "schedstat");
        unsigned long long runNs = 0;
        if (schedstat >> runNs) {
            seconds += static_cast<double>(runNs) / 1e9;
            found = true;
        }
    }
    return found ? seconds : -1;
}

// The scheduling class of each of a process's threads, as "name:class".
std::string describeThreadClasses(pid_t pid)
{
    std::string classes;
    for (const auto& thread : testing_support::threadClasses(pid)) {
        if (!classes.empty()) classes += ", ";
        classes += thread.name + ":" +
                   (thread.policy == SCHED_FIFO ? "fifo"
                    : thread.policy == SCHED_RR ? "rr"
                                                : "nice " + std::to_string(thread.nice));
    }
    return classes;
}

// Starts a command; `quiet` sends its diagnostics to /dev/null.
pid_t spawn(std::vector<std::string> arguments, bool quiet = false)
{
    std::vector<char*> argv;
    for (auto& a : arguments) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (quiet) posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid = 0;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

struct CpuUse {
    double process;  // % of one core
    double server;
    std::string threads;  // the scheduling class of each thread
};

// Runs the command, lets it settle for 2 s, then measures 20 s of it (and
// of the sound server), and stops it.
std::optional<CpuUse> measureCpu(std::vector<std::string> command, bool quiet = false)
{
    const pid_t pid = spawn(std::move(command), quiet);
    if (pid == 0) return std::nullopt;
    const char* serverVariable = std::getenv("WAVELARK_PULSE_PID");
    const pid_t server = serverVariable != nullptr ? std::atoi(serverVariable) : 0;
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const auto start = Clock::now();
    const double process0 = cpuSeconds(pid);
    const double server0 = server > 0 ? cpuSeconds(server) : 0;
    const std::string threads = describeThreadClasses(pid);
    std::this_thread::sleep_for(std::chrono::seconds(20));
    const double process1 = cpuSeconds(pid);
    const double server1 = server > 0 ? cpuSeconds(server) : 0;
    const double wall = secondsSince(start);
    ::kill(pid, SIGTERM);
    ::waitpid(pid, nullptr, 0);
    if (process0 < 0 || process1 < 0) return std::nullopt;
    return CpuUse{(process1 - process0) / wall * 100, (server1 - server0) / wall * 100, threads};
}

// Three rounds, the program and sox in turn, so that both meet the machine
// in the same state.
int measureCpuSideBySide(const std::string& self)
{
    std::printf("CPU while a 1 kHz tone plays (20 s after 2 s to settle; %% of one core)\n");
    const auto report = [](const char* who, const std::optional<CpuUse>& use) {
        if (!use)
            std::printf("  %-34s not measured (did not run)\n", who);
        else
            std::printf("  %-34s %5.2f %%   (sound server meanwhile %5.2f %%)\n", who, use->process,
                        use->server);
        return use ? use->process : -1.0;
    };
    std::vector<double> ours, sox;
    std::string classes;
    for (int round = 0; round < 3; ++round) {
        const auto use = measureCpu({self, "--play-tone", "24"});
        if (use) classes = use->threads;
        ours.push_back(report("wavelark (engine, program idle)", use));
        sox.push_back(report("sox: play -n synth sine 1000",
                             measureCpu({"play", "-q", "-n", "synth", "sine", "1000"}, true)));
    }
    std::sort(ours.begin(), ours.end());
    std::sort(sox.begin(), sox.end());
    std::printf("  median of three: wavelark %.2f %%, sox %.2f %%\n", ours[1], sox[1]);
    std::printf("  wavelark's threads: %s\n", classes.c_str());
    return 0;
}

int runChild(const std::string& self, const std::string& part, const std::string& argument)
{
    std::vector<std::string> command = {self, part};
    if (!argument.empty()) command.push_back(argument);
    const pid_t pid = spawn(command);
    if (pid == 0) return 1;
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

// Two processes that keep both cores busy at the program's own priority
// while the server figures are taken again: 60 s of a steady tone, 1,000
// change-overs and the CPU of a playing tone.
int measureUnderLoad(const std::string& self)
{
    std::vector<pid_t> load;
    for (int i = 0; i < 2; ++i) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            volatile unsigned long spin = 0;
            for (;;) spin = spin + 1;
        }
        if (pid > 0) load.push_back(pid);
    }
    std::printf("under load: %zu busy processes at the program's priority\n", load.size());
    int status = runChild(self, "--steady", "60");
    status |= runChild(self, "--server", "1000");
    status |= runChild(self, "--cpu");
    for (const pid_t pid : load) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
    return status;
}

}  // namespace

int main(int argc, char** argv)
{
    rt::setErrorReporter(&printError);
    const std::string self = "/proc/self/exe";
    const std::string part = argc > 1 ? argv[1] : "";
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (part == "--virtual") return measureVirtualCard();
    if (part == "--server") return measureServer(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 100);
    if (part == "--steady") return measureSteadyTone(argc > 2 ? std::atof(argv[2]) : 10);
    if (part == "--load") return measureUnderLoad(self);
    if (part == "--stalled") return measureStalledServer(self);
    if (part == "--stalled-child") return stalledServerCalls(argc > 2 ? argv[2] : "");
    if (part == "--cpu") return measureCpuSideBySide(self);
    if (part == "--play-tone") return playTone(argc > 2 ? std::atof(argv[2]) : 10);
    if (!part.empty()) {
        std::fprintf(stderr, "usage: wavelark_measure [--virtual | --server [changes] | --steady [seconds] "
                             "| --cpu | --load | --stalled]\n");
        return 2;
    }
    int status = runChild(self, "--virtual");
    if (std::getenv("PULSE_SERVER") == nullptr) {
        std::printf("no private sound server (PULSE_SERVER unset): run scripts/measure for the "
                    "server figures\n");
        return status;
    }
    status |= runChild(self, "--server");
    status |= runChild(self, "--cpu");
    return status;
}
