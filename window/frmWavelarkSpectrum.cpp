// The plot's second view: the spectrum of what is analysed (one whole loop
// of the made signal, or the last recording of a measured burst or tone)
// with its figures, chosen from the plot's right-click menu, and Measure
// tone, which records a second of the input while the signal plays on.
#include "window/frmWavelark.h"

#include <algorithm>

#include <algorithm>

#include <QAction>
#include <QActionGroup>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QStatusBar>

#include "analysis/modSpectrum.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "calibration/modVOut.h"
#include "controls/PictureBox.h"
#include "controls/QtConversions.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "engine/modWaveInOut.h"
#include "platform/Colours.h"
#include "platform/HostServices.h"
#include "window/modSpectrumPicture.h"

namespace {

constexpr const char* kMeasureToneTitle = "Measure tone";
// A tone's recording starts with the change that remakes it, and its first
// quarter of a second is left out: a change made just before may still be
// coming back through the sound path.
constexpr double kToneSettleSeconds = 0.25;
// The spectrum looks at no more than this many samples (1.5 s at 44.1 kHz),
// so that a precise loop of a million samples is drawn in milliseconds; the
// window keeps the figures' resolution far below a hertz.
constexpr std::int32_t kSpectrumSamplesMax = 65536;
constexpr const char* kMutedText =
    "Nothing plays while Mute is checked.\n\nClear Mute, then choose Measure tone again.";

// Labels and the readout in black or white, whichever stands out from the
// background the user chose.
SpectrumColours coloursOn(std::int32_t background, std::int32_t trace)
{
    const QColor back = ui::toQColor(background);
    const QColor ink = back.lightness() < 128 ? QColor(Qt::white) : QColor(Qt::black);
    return {ui::toQColor(trace), QColor(128, 128, 128), ink};
}

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) text += (text.empty() ? "" : "; ") + line;
    return text;
}

}  // namespace

void frmWavelark::makeAnalysisMenus(QMenu* file, QMenu* wave)
{
    mnuFiExport = addMenuItem(file, "mnuFiExport", "&Export WAV...");
    // Above the separator, beside Print.
    file->removeAction(mnuFiExport);
    file->insertAction(mnuFiHyphen, mnuFiExport);
    connect(mnuFiExport, &QAction::triggered, this, &frmWavelark::mnuFiExport_Click);

    wave->addSeparator();
    mnuWavePreciseLoop = addMenuItem(wave, "mnuWavePreciseLoop", "&Precise loop");
    mnuWavePreciseLoop->setCheckable(true);
    connect(mnuWavePreciseLoop, &QAction::triggered, this, &frmWavelark::mnuWavePreciseLoop_Click);

    mnuPlot = new QMenu(this);
    mnuPlot->setObjectName("mnuPlot");
    auto* views = new QActionGroup(mnuPlot);
    mnuPlotTimeResponse = addMenuItem(mnuPlot, "mnuPlotTimeResponse", "&Time response");
    mnuPlotSpectrum = addMenuItem(mnuPlot, "mnuPlotSpectrum", "&Spectrum");
    for (QAction* view : {mnuPlotTimeResponse, mnuPlotSpectrum}) {
        view->setCheckable(true);
        views->addAction(view);
    }
    mnuPlotTimeResponse->setChecked(true);
    addMenuItem(mnuPlot, "mnuPlotHyphen", "-");
    mnuPlotMeasureTone = addMenuItem(mnuPlot, "mnuPlotMeasureTone", "&Measure tone");
    connect(mnuPlotTimeResponse, &QAction::triggered, this, &frmWavelark::mnuPlotTimeResponse_Click);
    connect(mnuPlotSpectrum, &QAction::triggered, this, &frmWavelark::mnuPlotSpectrum_Click);
    connect(mnuPlotMeasureTone, &QAction::triggered, this, &frmWavelark::mnuPlotMeasureTone_Click);
}

void frmWavelark::connectAnalysisHandlers()
{
    lblVerdict = new QLabel;
    lblVerdict->setObjectName("lblVerdict");
    statusBar()->addPermanentWidget(lblVerdict);
    picPolarity->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(picPolarity, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { mnuPlot->popup(picPolarity->mapToGlobal(at)); });
}

void frmWavelark::mnuPlotTimeResponse_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuPlotTimeResponse_Click", bError);
    trap.step([&] { mShowTimeResponse(lblOutLevel->foreColor(), bError); });
}

void frmWavelark::mnuPlotSpectrum_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuPlotSpectrum_Click", bError);
    trap.step([&] { mShowSpectrum(bError); });
}

void frmWavelark::mnuPlotMeasureTone_Click()
{
    ErrorFlag bError = kFalse;
    {
        rt::Trap trap(kModule, "mnuPlotMeasureTone_Click", bError);
        trap.step([&] {
            if (chkMute->value() == 0 || chkBurstAuto->value() != 0) return;
            host::msgBox(kMutedText, host::kExclamation, kMeasureToneTitle);
            trap.leave();
        });
        trap.step([&] {
            mRecordPlayingTone(bError);
            trap.leaveOnError(bError);
        });
        trap.step([&] { mnuPlotSpectrum->setChecked(true); });
    }
    rt::Trap trap(kModule, "mnuPlotMeasureTone_Click");
    trap.step([&] { anRecord.redim(0, 0); });
    trap.step([&] { mShowTimeResponse(lblOutLevel->foreColor(), bError); });
}

void frmWavelark::mRecordPlayingTone(ErrorFlag& bError)
{
    const std::int32_t rate = std::max(gWaveInInfo().sampleRate, 1);
    const auto settle = static_cast<std::int32_t>(rate * kToneSettleSeconds);
    rt::Trap trap(kModule, "mRecordPlayingTone", bError);
    // Recorded while the signal is remade and follows itself at the end of
    // the playing pass, without a gap.
    trap.step([&] { anRecord.redim(1, settle + rate); });
    trap.step([&] {
        mWaveChangeShow("", 0, false, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        rt::SampleArray kept;
        kept.redim(1, rate);
        std::copy(&anRecord.at(settle + 1), &anRecord.at(settle + rate) + 1, &kept.at(1));
        anRecord = kept;
        mKeepRecording();
    });
}

void frmWavelark::mKeepRecording()
{
    anRecorded = anRecord;
    recordedRate_ = gWaveInInfo().sampleRate;
    // A verdict belongs to the burst it was made of.
    verdictText_.clear();
    verdict_.reset();
}

void frmWavelark::mForgetRecording()
{
    anRecorded.erase();
    recordedRate_ = 0;
}

bool frmWavelark::mbSpectrumShown() const { return mnuPlotSpectrum != nullptr && mnuPlotSpectrum->isChecked(); }

std::int32_t frmWavelark::mlAnalysedSignal(rt::SampleArray& anSignal, std::int32_t lMax)
{
    if (!anRecorded.empty()) {
        anSignal = anRecorded;
        return recordedRate_;
    }
    // The window keeps only a cycle of a tone for its plot: the whole loop
    // is read from the buffer the engine made and plays.
    return glWaveOutMadeSamples(lMax, anSignal);
}

void frmWavelark::mShowSpectrum(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mShowSpectrum", bError);
    rt::SampleArray signal;
    std::int32_t rate = 0;
    Spectrum spectrum;
    std::vector<std::string> readout;
    trap.step([&] {
        rate = mlAnalysedSignal(signal, kSpectrumSamplesMax);
        if (signal.size() > kSpectrumSamplesMax) signal.redimPreserve(signal.lbound() + kSpectrumSamplesMax - 1);
        if (rate > 0 && !signal.empty()) spectrum = gSpectrum(signal, rate, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        const SpectrumFigures figures = gSpectrumFigures(spectrum, bError);
        // Volts only for what leaves the card: the input has no calibration.
        const bool made = anRecorded.empty();
        const double volts = made ? gfVOutFullScale(vsbOutLevel->Value(), txtVOutMax->control().text(),
                                                    txtVOut2->control().text(), bError)
                                  : 0;
        readout = gsSpectrumReadout(figures, volts);
        if (made && gfWaveOutFrequencyPlayed() > 0)
            readout.insert(readout.begin() + 1, "Played: " + rt::formatNumber(gfWaveOutFrequencyPlayed(), "0.000") + " Hz");
        if (!made && !verdictText_.empty()) readout.push_back(verdictText_);
    });
    trap.step([&] {
        const std::int32_t trace = anRecorded.empty() ? lblOutLevel->foreColor() : ui::kColourYellow;
        const SpectrumColours colours = coloursOn(picPolarity->backColor(), trace);
        const QRect area(0, 0, picPolarity->scaleWidth(), picPolarity->scaleHeight());
        picPolarity->cls();
        picPolarity->paintOn([&](QPainter& painter) { gSpectrumPaint(painter, area, spectrum, readout, colours); });
        picPolarity->setAccessibleDescription(QString::fromStdString(joined(readout)));
    });
}
