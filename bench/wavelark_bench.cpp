// Times glWaveOutMake for the signals the program makes most, for the
// largest buffer it can make and for precise loops (the longest of which the
// window waits for), next to two references over the same number of
// samples: the floor (the bare float phase accumulator, the one sequential
// part every tone needs) and two other synthesisers run as programs, with
// their start-up time taken off. Prints ns per sample and the ratios, and the
// peak memory of a make.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "base/Array.h"
#include "engine/modWaveInOut.h"
#include "engine/ToneLoop.h"
#include "engine/modWaveInOutTesting.h"

namespace {

constexpr std::int32_t kDeviceRate = 44100;
// The peers make this many samples (the engine's largest buffer).
constexpr long kPeerSamples = 2099999;
constexpr long kPeerStartSamples = 1024;

struct Case {
    std::string name;
    std::string shape;
    std::int16_t percent = 0;
    float frequency1 = 1000;
    float frequency2 = 0;
    float duration = 0;
    bool logarithmic = false;
    bool bidirectional = false;
    std::int16_t steps = 0;
    float burstCycles = 0;
    std::int32_t burstPeriod = 0;
    std::string peer;            // sine, square, triangle, noise or sweep
    double targetRatio = 1.5;    // most time per sample, in floors (0: none)
    bool exactOnly = false;      // the plain per-sample formulas only
    bool precise = false;        // a continuous tone as a precise loop
    std::int32_t rate = kDeviceRate;
    float maximum = 20000;       // the device's highest frequency
    long samples = 0;            // per make, filled by the first make
};

// The frequency of the longest precise loop among 100,000 spaced evenly on a
// log scale from 10 Hz to the maximum.
float longestPreciseLoop(std::int32_t rate, float maximum)
{
    constexpr int kCount = 100000;
    float longest = 10;
    std::int32_t longestLength = 0;
    for (int i = 0; i < kCount; ++i) {
        const auto f = static_cast<float>(10 * std::pow(maximum / 10.0, i / (kCount - 1.0)));
        const std::int32_t length = synth::preciseToneLoop(rate, f, 2099999).length;
        if (length > longestLength) {
            longest = f;
            longestLength = length;
        }
    }
    return longest;
}

// 23.7 s there and back from 20 Hz to 20 kHz: close to 2,099,999 samples.
constexpr float kLargestDuration = 23.7f;

std::vector<Case> cases()
{
    std::vector<Case> list;
    auto tone = [&](std::string name, std::string shape, std::int16_t percent, float f,
                    std::string peer) {
        Case c;
        c.name = std::move(name);
        c.shape = std::move(shape);
        c.percent = percent;
        c.frequency1 = f;
        c.peer = std::move(peer);
        list.push_back(c);
    };
    tone("sine 1 kHz", "Sine", 0, 1000, "sine");
    list.back().targetRatio = 3;
    tone("triangle 30% 1 kHz", "Triangle", 30, 1000, "triangle");
    tone("mark/space 50% 1 kHz", "MarkSpace", 50, 1000, "square");
    tone("noise (1 kHz set)", "Noise", 0, 1000, "noise");
    tone("sine 20 Hz", "Sine", 0, 20, "sine");
    list.back().targetRatio = 3;
    tone("triangle 30% 20 Hz", "Triangle", 30, 20, "triangle");
    tone("mark/space 50% 20 Hz", "MarkSpace", 50, 20, "square");
    tone("noise (20 Hz set)", "Noise", 0, 20, "noise");

    Case burst;
    burst.name = "burst 1 kHz 10 cycles/100 ms";
    burst.shape = "Sine";
    burst.burstCycles = 10;
    burst.burstPeriod = 100;
    burst.peer = "sine";
    burst.targetRatio = 3;
    list.push_back(burst);

    Case sweep;
    sweep.name = "sweep 5 s log bi 20 Hz-20 kHz";
    sweep.shape = "Sine";
    sweep.frequency1 = 20;
    sweep.frequency2 = 20000;
    sweep.duration = 5;
    sweep.logarithmic = true;
    sweep.bidirectional = true;
    sweep.steps = 600;
    sweep.peer = "sweep";
    sweep.targetRatio = 3;
    list.push_back(sweep);

    Case largest = sweep;
    largest.name = "largest: sweep 23.7 s log bi";
    largest.duration = kLargestDuration;
    list.push_back(largest);

    Case plainSine = list[0];
    plainSine.name = "sine 1 kHz, libm per sample";
    plainSine.exactOnly = true;
    plainSine.targetRatio = 0;
    list.push_back(plainSine);
    Case plainSweep = sweep;
    plainSweep.name = "sweep 5 s, libm per sample";
    plainSweep.exactOnly = true;
    plainSweep.targetRatio = 0;
    list.push_back(plainSweep);

    // Precise loops: a short one, one of a second, and at each rate the
    // longest found, whose make is the longest the window waits for.
    auto precise = [&](std::string name, std::string shape, std::int16_t percent, float f,
                       std::int32_t rate, float maximum) {
        tone(std::move(name), std::move(shape), percent, f, "sine");
        list.back().precise = true;
        list.back().rate = rate;
        list.back().maximum = maximum;
        list.back().targetRatio = 0;
    };
    precise("precise sine 1 kHz", "Sine", 0, 1000, kDeviceRate, 20000);
    precise("precise sine 997 Hz", "Sine", 0, 997, kDeviceRate, 20000);
    for (const auto& [rate, maximum] : {std::pair{44100, 20000.0f}, {48000, 21768.0f},
                                        {96000, 40000.0f}}) {
        const float f = longestPreciseLoop(rate, maximum);
        char at[64];
        std::snprintf(at, sizeof at, " %.8g Hz at %d", f, rate);
        precise(std::string("precise sine") + at, "Sine", 0, f, rate, maximum);
        precise(std::string("precise triangle 30%") + at, "Triangle", 30, f, rate, maximum);
        precise(std::string("precise mark/space 50%") + at, "MarkSpace", 50, f, rate, maximum);
    }
    return list;
}

void applyCase(const Case& c)
{
    gWaveOutResetForTests();
    WaveOutDeviceInfo& info = gWaveOutInfo();
    info.sampleRate = c.rate;
    info.frequencyMax = c.maximum;
    info.bits = 16;
    gWaveOutSetShape(c.shape);
    gWaveOutSetPercent(c.percent);
    ErrorFlag error = kFalse;
    gWaveOutSetFrequency1SweepBurst(c.frequency1, c.frequency2, c.duration, toBool16(c.logarithmic),
                                    toBool16(c.bidirectional), c.steps, c.burstCycles,
                                    c.burstPeriod, error);
    gWaveOutUseExactSamplesForTests(toBool16(c.exactOnly));
    gWaveOutSetPreciseLoop(toBool16(c.precise));
}

long makeOnce(rt::SampleArray& samples)
{
    ErrorFlag error = kFalse;
    glWaveOutMake(samples, error);
    if (error) {
        std::fprintf(stderr, "the make failed\n");
        std::exit(1);
    }
    return samples.size();
}

void benchMake(benchmark::State& state, Case* c)
{
    applyCase(*c);
    rt::SampleArray samples;
    c->samples = makeOnce(samples);
    for (auto _ : state) {
        ErrorFlag error = kFalse;
        benchmark::DoNotOptimize(glWaveOutMake(samples, error));
        benchmark::ClobberMemory();
    }
    state.counters["samples"] = static_cast<double>(c->samples);
    state.SetItemsProcessed(state.iterations() * c->samples);
}

// The floor: nothing but the phase accumulator, each phase stored.
__attribute__((noinline)) float phaseLoop(float* phases, long count, float phase, float step)
{
    for (long i = 0; i < count; ++i) {
        phase = phase + step;
        if (phase >= 6.2831855f) phase = phase - 6.2831855f;
        phases[i] = phase;
    }
    return phase;
}

void benchFloor(benchmark::State& state, const Case* c)
{
    // Sweeps and noise run the accumulator at 1 kHz.
    const float f = c->frequency2 != 0 || c->shape == "Noise" ? 1000.0f : c->frequency1;
    const float samplesPerCycle = static_cast<float>(static_cast<double>(kDeviceRate) / f);
    const float step = 6.2831855f / samplesPerCycle;
    std::vector<float> phases(static_cast<std::size_t>(c->samples));
    for (auto _ : state) {
        benchmark::DoNotOptimize(phaseLoop(phases.data(), c->samples, 0.0f, step));
        benchmark::ClobberMemory();
    }
    state.counters["samples"] = static_cast<double>(c->samples);
    state.SetItemsProcessed(state.iterations() * c->samples);
}

// ---- The peers ------------------------------------------------------------

std::string soxCommand(const std::string& wave, long samples)
{
    static const std::map<std::string, std::string> kinds = {
        {"sine", "sine 1000"}, {"square", "square 1000"}, {"triangle", "triangle 1000"},
        {"noise", "whitenoise"}, {"sweep", "sine 20/20000"}};
    return "sox -D -r 44100 -n -b 16 -c 1 -t raw /dev/null synth " + std::to_string(samples) +
           "s " + kinds.at(wave) + " 2>/dev/null";
}

std::string gstCommand(const std::string& wave, long samples)
{
    // No sweep here: the sweep is compared with its sine.
    static const std::map<std::string, std::string> kinds = {
        {"sine", "sine"}, {"square", "square"}, {"triangle", "triangle"},
        {"noise", "white-noise"}, {"sweep", "sine"}};
    const long buffers = (samples + 1023) / 1024;
    return "gst-launch-1.0 -q audiotestsrc wave=" + kinds.at(wave) +
           " freq=1000 samplesperbuffer=1024 num-buffers=" + std::to_string(buffers) +
           " ! audio/x-raw,format=S16LE,channels=1,rate=44100 ! fakesink >/dev/null 2>&1";
}

bool available(const char* program)
{
    return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

double secondsToRun(const std::string& command)
{
    const auto start = std::chrono::steady_clock::now();
    const int status = std::system(command.c_str());
    const auto end = std::chrono::steady_clock::now();
    if (status != 0) return -1;
    return std::chrono::duration<double>(end - start).count();
}

// Time for kPeerSamples minus the time of a run of kPeerStartSamples.
void benchPeer(benchmark::State& state, std::string (*command)(const std::string&, long),
               std::string wave)
{
    for (auto _ : state) {
        const double full = secondsToRun(command(wave, kPeerSamples));
        const double start = secondsToRun(command(wave, kPeerStartSamples));
        if (full < 0 || start < 0) {
            state.SkipWithError("the program failed");
            break;
        }
        state.SetIterationTime(std::max(full - start, 1e-9));
    }
    state.counters["samples"] = static_cast<double>(kPeerSamples - kPeerStartSamples);
    state.SetItemsProcessed(state.iterations() * (kPeerSamples - kPeerStartSamples));
}

// ---- Results ----------------------------------------------------------------

class Collector : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration) continue;
            const auto samples = run.counters.find("samples");
            if (samples == run.counters.end() || samples->second.value <= 0) continue;
            // Per iteration, in the run's unit. The peers are timed by the
            // wall clock (they are other processes); the engine and the floor
            // by this thread's processor time, which the other work on a
            // shared machine does not inflate.
            const bool peer = run.run_name.function_name.rfind("peer/", 0) == 0;
            const double perIteration = peer ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
            const double nsPerMake =
                perIteration / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
            perMake[run.run_name.function_name] = nsPerMake;
            perSample[run.run_name.function_name] = nsPerMake / samples->second.value;
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> perMake;
    std::map<std::string, double> perSample;
};

double lookup(const std::map<std::string, double>& m, const std::string& key)
{
    const auto it = m.find(key);
    return it == m.end() ? 0 : it->second;
}

// Peak resident memory a make adds, measured in a child process so that the
// first make really is the first: the kernel's high-water mark is reset
// before each make.
long readStatusKb(const char* field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(field, 0) == 0) return std::atol(line.c_str() + std::string(field).size());
    return -1;
}

void resetPeak()
{
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
}

std::string memoryReport(const Case& c)
{
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return c.name + ": no pipe";
    const pid_t child = fork();
    if (child == 0) {
        close(pipeFds[0]);
        applyCase(c);
        rt::SampleArray samples;
        long report[3] = {0, 0, 0};
        for (int make = 0; make < 2; ++make) {
            const long before = readStatusKb("VmRSS:");
            resetPeak();
            report[2] = makeOnce(samples);
            report[make] = readStatusKb("VmHWM:") - before;
        }
        if (write(pipeFds[1], report, sizeof report) != sizeof report) _exit(1);
        _exit(0);
    }
    close(pipeFds[1]);
    long report[3] = {-1, -1, 0};
    if (read(pipeFds[0], report, sizeof report) != sizeof report) report[0] = report[1] = -1;
    close(pipeFds[0]);
    waitpid(child, nullptr, 0);
    char line[200];
    std::snprintf(line, sizeof line,
                  "  %-30s first make +%.2f MB, next make +%.2f MB (%ld samples: %.2f MB each for "
                  "the working buffer and the copy)",
                  c.name.c_str(), report[0] / 1024.0, report[1] / 1024.0, report[2],
                  report[2] * 2 / 1048576.0);
    return line;
}

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

    static std::vector<Case> all = cases();
    // Memory first, while this process has made nothing yet.
    std::vector<std::string> memory;
    for (const Case& c : all)
        if (c.name == "sine 1 kHz" || c.name.rfind("largest", 0) == 0 ||
            c.name.rfind("sweep 5 s log", 0) == 0)
            memory.push_back(memoryReport(c));
    for (Case& c : all) {
        benchmark::RegisterBenchmark(("make/" + c.name).c_str(), benchMake, &c)
            ->Unit(benchmark::kMicrosecond);
    }
    // The floor needs each case's sample count, known after its first make.
    for (Case& c : all) {
        if (c.samples == 0) {
            applyCase(c);
            rt::SampleArray samples;
            c.samples = makeOnce(samples);
        }
        benchmark::RegisterBenchmark(("floor/" + c.name).c_str(), benchFloor, &c)
            ->Unit(benchmark::kMicrosecond);
    }
    const bool haveSox = available("sox");
    const bool haveGst = available("gst-launch-1.0");
    for (const char* wave : {"sine", "square", "triangle", "noise", "sweep"}) {
        if (haveSox)
            benchmark::RegisterBenchmark((std::string("peer/sox/") + wave).c_str(), benchPeer,
                                         &soxCommand, std::string(wave))
                ->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
        if (haveGst && std::string(wave) != "sweep")
            benchmark::RegisterBenchmark((std::string("peer/gst/") + wave).c_str(), benchPeer,
                                         &gstCommand, std::string(wave))
                ->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
    }

    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);

    std::printf("\n%-30s %9s %10s %9s %10s %8s %7s %6s %8s %8s\n", "case", "samples", "us/make",
                "ns/sample", "Msample/s", "floor ns", "xfloor", "target", "sox/this", "gst/this");
    for (const Case& c : all) {
        const double ns = lookup(collector.perSample, "make/" + c.name);
        if (ns == 0) continue;
        const double floorNs = lookup(collector.perSample, "floor/" + c.name);
        const double sox = lookup(collector.perSample, "peer/sox/" + c.peer);
        const std::string gstWave = c.peer == "sweep" ? std::string("sine") : c.peer;
        const double gst = lookup(collector.perSample, "peer/gst/" + gstWave);
        const double ratio = floorNs > 0 ? ns / floorNs : 0.0;
        const char* verdict = c.targetRatio == 0 ? "" : ratio <= c.targetRatio ? "met" : "MISSED";
        std::printf("%-30s %9ld %10.2f %9.3f %10.1f %8.3f %7.2f %3.1f %-6s %6.1f %8.1f\n",
                    c.name.c_str(), c.samples, lookup(collector.perMake, "make/" + c.name) / 1000.0,
                    ns, 1000.0 / ns, floorNs, ratio, c.targetRatio, verdict,
                    sox > 0 ? sox / ns : 0.0, gst > 0 ? gst / ns : 0.0);
    }
    std::printf("\npeers (ns/sample over %ld samples, start-up taken off):",
                kPeerSamples - kPeerStartSamples);
    for (const auto& [name, ns] : collector.perSample)
        if (name.rfind("peer/", 0) == 0) std::printf("  %s %.2f", name.c_str() + 5, ns);
    std::printf("\n\npeak memory of a make (resident memory added, in a fresh process):\n");
    for (const std::string& line : memory) std::printf("%s\n", line.c_str());

    const Case& largest = *std::find_if(all.begin(), all.end(), [](const Case& c) {
        return c.name.rfind("largest", 0) == 0;
    });
    std::printf("\ncontinuous tone (sine 1 kHz) %.2f us per make, target under 200 us\n",
                lookup(collector.perMake, "make/sine 1 kHz") / 1000);
    std::printf("largest buffer (%ld samples) %.2f ms per make, target under 7 ms\n",
                largest.samples, lookup(collector.perMake, "make/" + largest.name) / 1e6);
    const auto perMake = [&](const Case& c) { return lookup(collector.perMake, "make/" + c.name); };
    const Case* slowest = nullptr;
    for (const Case& c : all)
        if (c.precise && (slowest == nullptr || perMake(c) > perMake(*slowest))) slowest = &c;
    if (slowest != nullptr) {
        const double ns = lookup(collector.perSample, "make/" + slowest->name);
        std::printf("slowest precise loop: %s, %ld samples, %.2f ms per make (%.2f ms at this "
                    "speed for the 2,099,999-sample limit), target under 20 ms\n",
                    slowest->name.c_str(), slowest->samples, perMake(*slowest) / 1e6,
                    ns * 2099999 / 1e6);
    }
    benchmark::Shutdown();
    return 0;
}
