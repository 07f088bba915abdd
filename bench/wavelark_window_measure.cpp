// Measures the main window as a user meets it, through ALSA on the private
// sound server that scripts/measure starts (what is played comes back from
// the null sink's monitor), with the program's own host:
//  - keystroke to new frequency: 50 keys in txtFrequency1, each switching
//    the tone between 100 Hz and 1 kHz ("100" + "0", then Backspace); the
//    time from the key to the first cycle of the new frequency in the
//    recording, median and worst;
//  - the window's repaints while a 5 s sweep is changed from txtFrequency1
//    every 150 ms for 10 s: the longest time without a repaint of the plot,
//    which a timer asks for every 20 ms.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "platform/HostServices.h"
#include "platform/WaveApi.h"
#include "platform/qt/QtHost.h"
#include "services/modErrorHandler.h"
#include "tests/bench/Recorder.h"
#include "window/frmWavelark.h"

namespace {

constexpr mm::DWORD kRate = testing_support::kRecorderRate;

std::vector<double> risingCrossings(const std::vector<std::int16_t>& s)
{
    std::vector<double> at;
    for (std::size_t i = 1; i < s.size(); ++i)
        if (s[i - 1] < 0 && s[i] >= 0) at.push_back(i - 1 + double(-s[i - 1]) / (s[i] - s[i - 1]));
    return at;
}

// Milliseconds from `fromMs` to the first of three cycles in a row of the
// given frequency; negative when there is none.
double msToFrequency(const std::vector<double>& crossings, double fromMs, double frequency)
{
    const double period = kRate / frequency;
    for (std::size_t j = 0; j + 3 < crossings.size(); ++j) {
        if (crossings[j] * 1000 / kRate < fromMs) continue;
        bool steady = true;
        for (std::size_t k = j; k < j + 3; ++k)
            steady = steady && std::abs(crossings[k + 1] - crossings[k] - period) < 0.05 * period;
        if (steady) return crossings[j] * 1000 / kRate - fromMs;
    }
    return -1;
}

void unmute(frmWavelark& window)
{
    window.chkMute->setFocus();
    QTest::keyClick(window.chkMute, Qt::Key_Space);
}

int measureKeystrokes(frmWavelark& window)
{
    constexpr int kKeys = 50;
    window.txtFrequency1->control().setText("100");
    unmute(window);
    window.txtFrequency1->setFocus();
    window.txtFrequency1->end(false);
    testing_support::Recorder recording(kKeys * 0.3 + 3);
    if (!recording.ok()) {
        std::printf("the input did not open\n");
        return 1;
    }
    QTest::qWait(1000);
    std::vector<double> keyMs;
    for (int k = 0; k < kKeys; ++k) {
        keyMs.push_back(host::tickCount() - recording.startTick());
        QTest::keyClick(window.txtFrequency1, k % 2 == 0 ? Qt::Key_0 : Qt::Key_Backspace);
        QTest::qWait(300);
    }
    const auto crossings = risingCrossings(recording.take());
    std::vector<double> delays;
    for (int k = 0; k < kKeys; ++k) {
        const double delay = msToFrequency(crossings, keyMs[k], k % 2 == 0 ? 1000 : 100);
        if (delay >= 0 && delay < 300) delays.push_back(delay);
        else std::printf("  key %d at %.0f ms: the new frequency %s\n", k, keyMs[k],
                         delay < 0 ? "never came" : ("came after " + std::to_string(delay) + " ms").c_str());
    }
    if (delays.size() != kKeys) {
        std::printf("keystroke to new frequency: %zu of %d changes found\n", delays.size(), kKeys);
        if (delays.empty()) return 1;
    }
    std::sort(delays.begin(), delays.end());
    std::printf("keystroke to new frequency in the recording (%zu keys): median %.1f ms, worst %.1f ms\n",
                delays.size(), delays[delays.size() / 2], delays.back());
    return 0;
}

int measureRepaints(frmWavelark& window)
{
    window.txtFrequency1->control().setText("100");
    window.txtFrequency2->control().setText("4400");
    window.txtSweepDuration->control().setText("5");
    window.chkSweep->setValue(1);
    unmute(window);

    QElapsedTimer clock;
    clock.start();
    std::vector<double> paints;
    struct PaintWatch : QObject {
        std::vector<double>* paints;
        QElapsedTimer* clock;
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Paint) paints->push_back(clock->nsecsElapsed() / 1e6);
            return false;
        }
    } watch;
    watch.paints = &paints;
    watch.clock = &clock;
    window.picPolarity->installEventFilter(&watch);
    QTimer ask;
    QObject::connect(&ask, &QTimer::timeout, [&] { window.picPolarity->update(); });
    ask.start(20);

    window.txtFrequency1->setFocus();
    int changes = 0;
    while (clock.elapsed() < 10000) {
        QTest::keyClick(window.txtFrequency1, Qt::Key_Up);
        ++changes;
        QTest::qWait(150);
    }
    window.picPolarity->removeEventFilter(&watch);
    double longest = 0;
    for (std::size_t i = 1; i < paints.size(); ++i) longest = std::max(longest, paints[i] - paints[i - 1]);
    std::printf("5 s sweep changed %d times in 10 s: %zu repaints, longest without one %.0f ms\n",
                changes, paints.size(), longest);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    host::QtHost qtHost;
    host::install(&qtHost);
    gInstallErrorHandler();
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (mm::waveBackendName() != "alsa") {
        std::printf("needs WAVELARK_AUDIO=alsa and the private sound server (scripts/measure)\n");
        return 1;
    }

    frmWavelark window;
    window.Form_Load();
    window.show();
    QTest::qWait(500);
    int status = measureKeystrokes(window);
    status |= measureRepaints(window);
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);
    host::install(nullptr);
    return status;
}
