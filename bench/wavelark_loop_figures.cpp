// Measures the continuous tone's loop with and without the precise loop, at
// 44.1, 48 and 96 kHz, over the frequencies the engine tests use (300 from
// 10 Hz to the device maximum, and a few awkward ones): the SINAD of one
// pass and the error of the frequency it plays, median and worst, the loop
// lengths, and the frequencies whose loop could not be made.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "base/Array.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutTesting.h"
#include "tests/support/LoopFigures.h"

namespace {

struct Device {
    std::int32_t rate;
    float maximum;
};

struct Spread {
    double median = 0;
    double worst = 0;
};

// The median and the worst (the largest, or the smallest when lowIsWorse).
Spread spreadOf(std::vector<double> values, bool lowIsWorse)
{
    if (values.empty()) return {};
    std::sort(values.begin(), values.end());
    return {values[values.size() / 2], lowIsWorse ? values.front() : values.back()};
}

struct Row {
    Spread sinadDb;
    Spread errorPpm;        // magnitudes
    Spread lengthSeconds;
    std::size_t measured = 0;
    std::vector<float> failed;
    float worstSinadAt = 0;
};

Row measure(const Device& device, bool precise)
{
    Row row;
    std::vector<double> sinad, ppm, seconds;
    double worstSinad = 1e9;
    for (const float f : testing_support::loopTestFrequencies(device.maximum)) {
        gWaveOutResetForTests();
        WaveOutDeviceInfo& info = gWaveOutInfo();
        info.sampleRate = device.rate;
        info.frequencyMax = device.maximum;
        info.bits = 16;
        gWaveOutSetShape("Sine");
        gWaveOutSetPreciseLoop(precise ? kTrue : kFalse);
        ErrorFlag error = kFalse;
        gWaveOutSetFrequency1SweepBurst(f, 0, 0, kFalse, kFalse, 0, 0, 0, error);
        rt::SampleArray samples;
        glWaveOutMake(samples, error);
        if (error || samples.empty()) {
            row.failed.push_back(f);
            continue;
        }
        const auto figures = testing_support::loopFigures(samples.items(), device.rate, f);
        sinad.push_back(figures.sinadDb);
        ppm.push_back(std::fabs(figures.errorPpm));
        seconds.push_back(static_cast<double>(samples.size()) / device.rate);
        if (figures.sinadDb < worstSinad) {
            worstSinad = figures.sinadDb;
            row.worstSinadAt = f;
        }
    }
    row.measured = sinad.size();
    row.sinadDb = spreadOf(sinad, true);
    row.errorPpm = spreadOf(ppm, false);
    row.lengthSeconds = spreadOf(seconds, false);
    return row;
}

}  // namespace

int main()
{
    // A failed make (the 0.005-radian search overflowing its count) is
    // counted, not shown: every error aborts its procedure.
    rt::setErrorReporter(nullptr);
    std::printf("%-6s %-8s %9s %11s %11s %12s %12s %11s %11s %s\n", "rate", "loop", "measured",
                "SINAD med", "SINAD worst", "|ppm| med", "|ppm| worst", "length med",
                "length max", "worst SINAD at / failed");
    for (const Device device : {Device{44100, 20000}, Device{48000, 21768}, Device{96000, 40000}}) {
        for (const bool precise : {false, true}) {
            const Row row = measure(device, precise);
            char notes[4096];
            int used = std::snprintf(notes, sizeof notes, "worst at %.7g Hz", row.worstSinadAt);
            if (!row.failed.empty())
                used += std::snprintf(notes + used, sizeof notes - used, "; %zu failed:",
                                      row.failed.size());
            for (const float f : row.failed)
                if (used < static_cast<int>(sizeof notes))
                    used += std::snprintf(notes + used, sizeof notes - used, " %.7g", f);
            std::printf("%-6d %-8s %9zu %8.2f dB %8.2f dB %12.4f %12.4f %9.3f s %9.3f s %s\n",
                        device.rate, precise ? "precise" : "0.005", row.measured,
                        row.sinadDb.median, row.sinadDb.worst, row.errorPpm.median,
                        row.errorPpm.worst, row.lengthSeconds.median, row.lengthSeconds.worst,
                        notes);
        }
    }
    return 0;
}
