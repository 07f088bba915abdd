// The window's analysis as a user meets it, on whatever sound device the
// program would use (run with WAVELARK_AUDIO=alsa against the private sound
// server of scripts/private-server.sh, or on the virtual card):
//  - the slowest precise-loop make: the engine's make timed at 2,000
//    frequencies from 10 Hz to the device maximum, then the window's change
//    to the slowest of them timed as the user meets it (Precise loop on,
//    the frequency typed, the tone playing, the spectrum view shown or not);
//  - Measure tone on a 1 kHz sine: the spectrum readout of the recording;
//  - a measured burst of 2 cycles of 1 kHz: the polarity verdict.
// With --hold SECONDS the window stays up that long at the end, showing the
// spectrum, so that a screenshot can be taken.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QTabWidget>
#include <QTest>

#include "base/NumberText.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "platform/HostServices.h"
#include "platform/qt/QtHost.h"
#include "services/modErrorHandler.h"
#include "window/frmWavelark.h"

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The engine's precise make at many frequencies: the slowest few, slowest
// first (one timing each: a busy machine can make any one of them slow).
std::vector<std::pair<double, float>> slowestPreciseMakes()
{
    const float highest = gWaveOutInfo().frequencyMax;
    std::vector<std::pair<double, float>> timed;
    constexpr int kFrequencies = 2000;
    for (int i = 0; i < kFrequencies; ++i) {
        const float f = static_cast<float>(10 * std::pow(highest / 10.0, i / (kFrequencies - 1.0)));
        ErrorFlag error = kFalse;
        gWaveOutSetFrequency1SweepBurst(f, 0, 0, kFalse, kFalse, 0, 0, 0, error);
        rt::SampleArray samples;
        const auto start = Clock::now();
        glWaveOutMake(samples, error);
        if (!error) timed.emplace_back(msSince(start), f);
    }
    std::sort(timed.rbegin(), timed.rend());
    timed.resize(std::min<std::size_t>(timed.size(), 5));
    return timed;
}

double timedChange(frmWavelark& window, const std::string& frequency)
{
    const auto start = Clock::now();
    window.txtFrequency1->control().setText(frequency);
    return msSince(start);
}

// The window's change from 1 kHz to each of the slowest frequencies, five
// times each, in both views: the worst.
void measurePreciseLoop(frmWavelark& window)
{
    gWaveOutSetPreciseLoop(kTrue);
    gWaveOutSetShape("Sine");
    const auto slowest = slowestPreciseMakes();
    if (!window.mnuWavePreciseLoop->isChecked()) window.mnuWavePreciseLoop->trigger();
    for (const auto& [engineMs, f] : slowest) {
        const std::string text = rt::userText(f);
        std::printf("precise make of %s Hz: %.1f ms in the engine's scan;", text.c_str(), engineMs);
        for (const bool spectrum : {false, true}) {
            (spectrum ? window.mnuPlotSpectrum : window.mnuPlotTimeResponse)->trigger();
            double worst = 0;
            for (int i = 0; i < 5; ++i) {
                timedChange(window, "1000");
                QTest::qWait(30);
                worst = std::max(worst, timedChange(window, text));
                QTest::qWait(30);
            }
            std::printf(" window change, %s view: worst of 5 %.1f ms;", spectrum ? "spectrum" : "time", worst);
        }
        std::printf("\n");
    }
    window.mnuWavePreciseLoop->trigger();
    window.mnuPlotTimeResponse->trigger();
}

void measureTone(frmWavelark& window)
{
    window.txtFrequency1->control().setText("1000");
    QTest::qWait(500);
    const auto start = Clock::now();
    window.mnuPlotMeasureTone->trigger();
    std::printf("Measure tone took %.0f ms\n", msSince(start));
    std::printf("Measure tone, 1 kHz: %s\n", window.picPolarity->accessibleDescription().toStdString().c_str());
}

void measureBurst(frmWavelark& window)
{
    window.tabTab->setCurrentIndex(1);
    window.txtBurstCycles->control().setText("2");
    // A period long enough for the server's latency to fit in the recording.
    window.txtBurstPeriod->control().setText("300");
    window.chkBurstMeasure->setValue(1);
    QTest::qWait(300);
    window.cmdBurstFire->click();
    QTest::qWait(100);
    std::printf("measured burst: %s\n", window.lblVerdict->text().toStdString().c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    host::QtHost qtHost;
    host::install(&qtHost);
    gInstallErrorHandler();
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const int holdSeconds = argc == 3 && std::strcmp(argv[1], "--hold") == 0 ? std::atoi(argv[2]) : 0;

    frmWavelark window;
    window.Form_Load();
    window.resize(900, 600);
    window.show();
    QTest::qWait(500);
    window.chkMute->setValue(0);
    QTest::qWait(500);
    measurePreciseLoop(window);
    measureTone(window);
    measureBurst(window);
    window.tabTab->setCurrentIndex(0);
    window.mnuPlotMeasureTone->trigger();
    std::printf("holding the window for %d s\n", holdSeconds);
    QTest::qWait(holdSeconds * 1000);
    window.chkMute->setValue(1);
    window.close();
    host::install(nullptr);
    return 0;
}
