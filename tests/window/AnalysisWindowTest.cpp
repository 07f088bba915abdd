// The window's analysis on the virtual card in simulated time: the precise
// loop as the user switches it, the spectrum view's readout and picture,
// Measure tone, the measured burst's verdict and WAV export, judged by what
// the card played and recorded and by what lands on disk.
#include <gtest/gtest.h>

#include <sndfile.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <regex>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QTabWidget>
#include <QTest>

#include "analysis/modSpectrum.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/QtConversions.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "entry/modGetLocaleInfo.h"
#include "platform/Colours.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TestEnvironment.h"
#include "tests/support/VirtualCardSession.h"
#include "window/frmWavelark.h"
#include "window/frmWavelarkExportTesting.h"
#include "window/modSpectrumPicture.h"

namespace {

namespace fs = std::filesystem;

constexpr int kRate = 44100;  // the virtual card's rate, both ways

void settle()
{
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
}

// The number after "<name>: " in the readout, NaN when it is not there.
double figure(const std::string& readout, const std::string& name)
{
    std::smatch match;
    const std::regex pattern("(^|; |  )" + std::regex_replace(name, std::regex(R"([+])"), R"(\+)") +
                             R"(: (-?[0-9.]+))");
    if (!std::regex_search(readout, match, pattern)) return std::nan("");
    return std::stod(match[2]);
}

// The largest step between neighbouring samples of what the card played
// (a gap or a jump shows as a step beyond the tone's own slope), and that
// something was played at all.
int largestStep(const std::vector<mm::loopback::TapSegment>& tap)
{
    if (tap.size() != 1 || tap.front().samples.size() < 2) return 1 << 20;
    const auto& heard = tap.front().samples;
    int largest = 0;
    for (std::size_t i = 1; i < heard.size(); ++i) largest = std::max(largest, std::abs(heard[i] - heard[i - 1]));
    return largest;
}

struct WavFile {
    int rate = 0;
    int channels = 0;
    int format = 0;
    std::vector<std::int16_t> samples;
};

WavFile readWav(const fs::path& path)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) return {};
    WavFile wav{info.samplerate, info.channels, info.format,
                std::vector<std::int16_t>(static_cast<std::size_t>(info.frames))};
    sf_read_short(file, wav.samples.data(), info.frames);
    sf_close(file);
    return wav;
}

class AnalysisWindow : public ::testing::Test {
protected:
    void SetUp() override
    {
        gInstallErrorHandler();
        store("txtFrequency1", "1000");
        store("txtBurstPeriod", "100");
        start();
    }
    void TearDown() override
    {
        export_testing::answerSaveDialog(std::nullopt);
        window.reset();
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);
        gWaveInClose(error);
        rt::setErrorReporter(nullptr);
    }

    void store(const std::string& key, const std::string& value)
    {
        auto batch = host.openSettings(kSettingsAppKey, kSettingsSection);
        batch->save(key, value);
        batch->commit();
    }

    void start()
    {
        window = std::make_unique<frmWavelark>();
        window->Form_Load();
        window->resize(900, 600);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        settle();
        ASSERT_TRUE(host.boxes.empty()) << boxTexts();
    }

    void unmute()
    {
        window->chkMute->setValue(0);
        settle();
    }

    std::string readout() const { return window->picPolarity->accessibleDescription().toStdString(); }

    std::string verdict() const { return window->lblVerdict->text().toStdString(); }

    void fireMeasuredBurst()
    {
        window->tabTab->setCurrentIndex(1);
        window->chkBurstMeasure->setValue(1);
        settle();
        window->cmdBurstFire->click();
        settle();
    }

    std::string boxTexts() const { return host.boxTexts(); }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
    std::unique_ptr<frmWavelark> window;
};

// ---- Precise loop ----------------------------------------------------------------

TEST_F(AnalysisWindow, PreciseLoopPlaysTheFrequencySetAndIsKeptOverARestart)
{
    window->txtFrequency1->control().setText("440");
    unmute();
    EXPECT_FALSE(window->mnuWavePreciseLoop->isChecked()) << "off by default";
    EXPECT_NEAR(gfWaveOutFrequencyPlayed(), 440.022, 0.001);

    host.sleep(100);
    mm::loopback::startTap();
    window->mnuWavePreciseLoop->trigger();
    ASSERT_TRUE(window->mnuWavePreciseLoop->isChecked());
    EXPECT_NEAR(gfWaveOutFrequencyPlayed(), 440, 440e-6);
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
    // The precise loop followed the plain one without a gap or a jump: no
    // step beyond a full-scale 440 Hz sine's slope (2053) and the plain
    // loop's own join (up to 0.005 radian, 164).
    host.sleep(300);
    EXPECT_LT(largestStep(mm::loopback::takeTap()), 2053 + 164);

    window->close();
    EXPECT_EQ(host.getSetting(kSettingsAppKey, kSettingsSection, "mnuWavePreciseLoop", ""), "True");
    start();
    EXPECT_TRUE(window->mnuWavePreciseLoop->isChecked());
    EXPECT_NEAR(gfWaveOutFrequencyPlayed(), 440, 440e-6) << "the restored item reached the engine";

    window->mnuWavePreciseLoop->trigger();
    EXPECT_NEAR(gfWaveOutFrequencyPlayed(), 440.022, 0.001);
}

// ---- The spectrum view -------------------------------------------------------------

TEST_F(AnalysisWindow, SpectrumViewReadsTheMadeSineAndDrawsItsPeakAtItsFrequency)
{
    window->mnuPlotSpectrum->trigger();
    settle();
    const std::string text = readout();
    EXPECT_NEAR(figure(text, "Frequency"), 1000, 0.001) << text;
    EXPECT_NEAR(figure(text, "Played"), 1000, 0.001) << text;
    EXPECT_NEAR(figure(text, "Level"), 0, 0.05) << text;
    // A 16-bit sine: its rounding is the only noise.
    EXPECT_GT(figure(text, "SINAD"), 90) << text;
    EXPECT_LT(figure(text, "THD+N"), -90) << text;

    // Muted, so the trace is red; its highest point stands over 1 kHz.
    const QImage& image = window->picPolarity->image();
    const QRgb red = ui::toQColor(ui::kColourRed).rgb();
    int topY = image.height(), topX = -1;
    for (int y = 0; y < image.height() && topX < 0; ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) == red) {
                topY = y;
                topX = x;
                break;
            }
    const QRect area(0, 0, image.width(), image.height());
    EXPECT_NEAR(topX, gdSpectrumX(area, 1000, kRate), 2);
    EXPECT_LT(topY, image.height() / 8) << "a full-scale tone peaks near 0 dBFS, at the top";

    // A remade signal redraws the spectrum, and Time response brings the
    // curve back.
    window->txtFrequency1->control().setText("2000");
    settle();
    EXPECT_NEAR(figure(readout(), "Frequency"), 2000, 0.001) << readout();
    window->mnuPlotTimeResponse->trigger();
    EXPECT_FALSE(window->mnuPlotSpectrum->isChecked());
    EXPECT_TRUE(host.boxes.empty()) << boxTexts();
}

TEST(SpectrumReadout, AwkwardSignalsReadFiniteFiguresOrADash)
{
    struct Case {
        const char* name;
        std::vector<std::int16_t> samples;
    };
    std::vector<std::int16_t> noise(8192), square(8192);
    std::uint32_t seed = 1;
    for (std::size_t i = 0; i < noise.size(); ++i) {
        seed = seed * 1664525 + 1013904223;
        noise[i] = static_cast<std::int16_t>(static_cast<std::int32_t>(seed >> 16) - 32768);
        square[i] = std::sin(2 * std::numbers::pi * 441 * i / kRate) >= 0 ? 32767 : -32767;
    }
    const std::vector<Case> cases = {
        {"silence", std::vector<std::int16_t>(4096, 0)}, {"one sample", {12345}},
        {"nothing", {}}, {"clipped square", square}, {"noise", noise}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        rt::SampleArray samples(1, static_cast<std::int32_t>(c.samples.size()));
        std::copy(c.samples.begin(), c.samples.end(), samples.data());
        ErrorFlag error = kFalse;
        const Spectrum spectrum = samples.empty() ? Spectrum{} : gSpectrum(samples, kRate, error);
        const auto lines = gsSpectrumReadout(gSpectrumFigures(spectrum, error), 1.5);
        ASSERT_FALSE(error);
        std::string text;
        for (const std::string& line : lines) text += line + "\n";
        EXPECT_EQ(lines.size(), 5u) << text;
        EXPECT_EQ(text.find("inf"), std::string::npos) << text;
        EXPECT_EQ(text.find("nan"), std::string::npos) << text;
        EXPECT_EQ(text.find("NaN"), std::string::npos) << text;
        QImage image(400, 250, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        gSpectrumPaint(painter, image.rect(), spectrum, lines, {Qt::red, Qt::gray, Qt::black});
    }
}

TEST(SpectrumReadout, SquareReadsItsToneAndNoiseReadsOnlyALevel)
{
    std::vector<std::int16_t> square(kRate / 10);
    for (std::size_t i = 0; i < square.size(); ++i)
        square[i] = std::sin(2 * std::numbers::pi * 441 * (i + 0.5) / kRate) >= 0 ? 32767 : -32767;
    rt::SampleArray samples(1, static_cast<std::int32_t>(square.size()));
    std::copy(square.begin(), square.end(), samples.data());
    ErrorFlag error = kFalse;
    const auto lines = gsSpectrumReadout(gSpectrumFigures(gSpectrum(samples, kRate, error), error), 0);
    EXPECT_EQ(lines[0], "Frequency: 441.000 Hz");
    // A square's third harmonic is a third of its fundamental: THD near
    // -6.6 dB once the odd harmonics up to the 9th are summed, and no volts
    // without a calibration.
    EXPECT_EQ(lines[1].find(" V)"), std::string::npos);
    EXPECT_NEAR(figure(lines[2], "THD"), -6.8, 0.5) << lines[2];

    const auto silent = gsSpectrumReadout(SpectrumFigures{}, 1.5);
    EXPECT_EQ(silent[0], "Frequency: \u2014");
    EXPECT_EQ(silent[1], "Level: below -140 dBFS");
}

// ---- Measure tone and the verdict ---------------------------------------------------

TEST_F(AnalysisWindow, MeasureToneReadsWhatTheCardPlaysWithoutAGapInTheOutput)
{
    unmute();
    host.sleep(100);
    mm::loopback::startTap();
    window->mnuPlotMeasureTone->trigger();
    settle();
    host.sleep(100);

    ASSERT_TRUE(host.boxes.empty()) << boxTexts();
    EXPECT_TRUE(window->mnuPlotSpectrum->isChecked()) << "the measurement is shown as a spectrum";
    const std::string text = readout();
    EXPECT_NEAR(figure(text, "Frequency"), 1000, 0.01) << text;
    EXPECT_LT(figure(text, "THD+N"), -60) << text;
    EXPECT_TRUE(std::isnan(figure(text, "Played"))) << "a recording has no played frequency";

    // The output went on through the measurement: one segment, no step
    // beyond a 1 kHz sine's own slope (4668).
    const auto tap = mm::loopback::takeTap();
    EXPECT_LT(largestStep(tap), 4700);
    EXPECT_GT(tap.front().samples.size(), static_cast<std::size_t>(kRate));
}

TEST_F(AnalysisWindow, MeasureToneWhileMutedSaysWhyAndRecordsNothing)
{
    window->mnuPlotMeasureTone->trigger();
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_NE(host.boxes[0].text.find("Clear Mute"), std::string::npos) << boxTexts();
    EXPECT_FALSE(window->mnuPlotSpectrum->isChecked());
}

TEST_F(AnalysisWindow, MeasuredBurstVerdictTellsPolarityDelayAndNoSignal)
{
    struct Case {
        const char* name;
        std::uint32_t latencyMs;
        double inputGain;
        std::string expected;
    };
    // The card's input hears its output one latency later: 20 ms is 882
    // samples at 44.1 kHz, 50 ms 2205.
    const std::vector<Case> cases = {
        {"normal", 20, 1, "Polarity: normal  Delay: 20.000 ms (882 samples)"},
        {"inverted", 20, -1, "Polarity: INVERTED  Delay: 20.000 ms (882 samples)"},
        {"delayed", 50, 1, "Polarity: normal  Delay: 50.000 ms (2205 samples)"},
        {"half", 20, 0.5, "Polarity: normal  Delay: 20.000 ms (882 samples)"},
        {"silenced", 20, 0, "No signal"},
    };
    std::vector<double> gains;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ErrorFlag error = kFalse;
        gWaveOutClose(kTrue, error);  // the card takes settings while closed
        mm::loopback::setLatencyMs(c.latencyMs);
        mm::loopback::setInputGain(c.inputGain);
        fireMeasuredBurst();
        ASSERT_TRUE(host.boxes.empty()) << boxTexts();
        EXPECT_EQ(verdict().rfind(c.expected, 0), 0u) << verdict();
        gains.push_back(figure(verdict(), "Gain"));
        // The verdict line is also on the plot: shown with the spectrum.
        window->mnuPlotSpectrum->trigger();
        EXPECT_NE(readout().find(c.expected), std::string::npos) << readout();
        window->mnuPlotTimeResponse->trigger();
    }
    EXPECT_NEAR(gains[1], gains[0], 0.1) << "inverted: the same gain";
    EXPECT_NEAR(gains[3], gains[0] - 6.02, 0.1) << "half the input: 6 dB less";
}

// ---- Export ---------------------------------------------------------------------------

TEST_F(AnalysisWindow, ExportWritesOneLoopOfTheMadeSignalThenTheRecording)
{
    const fs::path folder = testing_support::makeTempFolder("export");
    export_testing::answerSaveDialog((folder / "tone.wav").string());
    window->mnuFiExport->trigger();
    ASSERT_TRUE(host.boxes.empty()) << boxTexts();
    const WavFile tone = readWav(folder / "tone.wav");
    EXPECT_EQ(tone.rate, kRate);
    EXPECT_EQ(tone.channels, 1);
    EXPECT_EQ(tone.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    // 1 kHz at 44.1 kHz loops after 10 cycles of 44.1 samples; the loop's
    // first sample is one step into the cycle.
    ASSERT_EQ(tone.samples.size(), 441u);
    double worst = 0;
    for (std::size_t i = 0; i < tone.samples.size(); ++i) {
        const double exact = 32767 * std::sin(2 * std::numbers::pi * 1000 * (i + 1.0) / kRate);
        worst = std::max(worst, std::abs(tone.samples[i] - exact));
    }
    EXPECT_LT(worst, 2);

    fireMeasuredBurst();
    export_testing::answerSaveDialog((folder / "burst.wav").string());
    window->mnuFiExport->trigger();
    ASSERT_TRUE(host.boxes.empty()) << boxTexts();
    const WavFile burst = readWav(folder / "burst.wav");
    // One pass of the 100 ms period, as recorded: the burst 20 ms late.
    ASSERT_EQ(burst.samples.size(), 4410u);
    EXPECT_TRUE(std::all_of(burst.samples.begin(), burst.samples.begin() + 870,
                            [](std::int16_t s) { return s == 0; }));
    EXPECT_GT(*std::max_element(burst.samples.begin() + 882, burst.samples.begin() + 930), 1000);

    // Cancelling writes nothing.
    export_testing::answerSaveDialog("");
    window->mnuFiExport->trigger();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);
}

TEST_F(AnalysisWindow, AFailedExportSaysWhyAndLeavesNoFile)
{
    const fs::path folder = testing_support::makeTempFolder("export-fail");
    std::vector<fs::path> targets = {folder / "missing" / "tone.wav", folder};
    // A read-only folder stops everyone but the superuser.
    if (::geteuid() != 0) {
        fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
        targets.push_back(folder / "tone.wav");
    }
    for (const fs::path& target : targets) {
        SCOPED_TRACE(target.string());
        host.boxes.clear();
        export_testing::answerSaveDialog(target.string());
        window->mnuFiExport->trigger();
        ASSERT_EQ(host.boxes.size(), 1u);
        EXPECT_EQ(host.boxes[0].title, "Export WAV");
        EXPECT_NE(host.boxes[0].text.find("was not written"), std::string::npos) << boxTexts();
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 0);
    }
}

}  // namespace
