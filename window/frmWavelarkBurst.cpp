// Bursts: a number of cycles of the first frequency followed by silence up
// to the period, fired once (and then maybe recorded and drawn) or repeated
// by a looped output buffer while Auto is checked.
#include "window/frmWavelark.h"

#include <algorithm>

#include <QLabel>
#include <QPainter>
#include <QTabWidget>

#include "analysis/modPolarityVerdict.h"
#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/QtConversions.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "engine/modTimeResponseShow.h"
#include "engine/modWaveInOut.h"
#include "engine/modWavePolarity.h"
#include "entry/modUpDownSet.h"
#include "platform/Colours.h"
#include "services/modGeneral.h"

namespace {

constexpr std::int32_t kBurstPeriodMax = 2000;  // ms

// The verdict as one line of text at the plot's top left, in black or
// white, whichever stands out from the background.
void drawVerdictLine(ui::PictureBox& plot, const std::string& verdict)
{
    const QColor ink = ui::toQColor(plot.backColor()).lightness() < 128 ? QColor(Qt::white) : QColor(Qt::black);
    plot.paintOn([&](QPainter& painter) {
        painter.setPen(ink);
        painter.drawText(QPointF(6, 4 + painter.fontMetrics().ascent()), QString::fromStdString(verdict));
    });
}

// "Polarity: normal  Delay: 20.000 ms (882 samples)  Gain: -0.0 dB", or
// "No signal".
std::string verdictText(const PolarityVerdict& verdict)
{
    std::string text = gsPolarityText(verdict);
    if (!verdict.signal) return text;
    return text + "  Delay: " + rt::formatNumber(verdict.delayMs, "0.000") + " ms (" +
           std::to_string(verdict.delaySamples) + " samples)  Gain: " +
           rt::formatNumber(verdict.gainDb, "0.0") + " dB";
}

}  // namespace

void frmWavelark::mShowPolarityVerdict(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mShowPolarityVerdict", bError);
    rt::SampleArray played;
    std::int32_t playedRate = 0;
    // The burst just fired is the generator's signal: made again, whole.
    trap.step([&] {
        playedRate = glWaveOutMake(played, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        if (playedRate != recordedRate_) {
            verdictText_ = "No verdict: the input records at " + std::to_string(recordedRate_) +
                           " samples/s, the output plays at " + std::to_string(playedRate);
            return;
        }
        verdict_ = gPolarityVerdict(played, anRecorded, playedRate, bError);
        verdictText_ = verdictText(*verdict_);
    });
    trap.step([&] { lblVerdict->setText(QString::fromStdString(verdictText_)); });
}

std::int32_t frmWavelark::mlBurstPeriodMin(ErrorFlag& bError)
{
    std::int32_t periodMin = 1;
    rt::Trap trap(kModule, "mlBurstPeriodMin", bError);
    trap.step([&] {
        // Twice the burst's own length, so that at least as much silence
        // follows the cycles.
        const float cycles = singleOf(txtBurstCycles);
        const float frequency = singleOf(txtFrequency1);
        const float twiceLength = cycles * 2000.0F / frequency + 0.5F;
        periodMin = std::max(rt::toInt32(rt::intFloor(twiceLength)), 1);
    });
    return periodMin;
}

void frmWavelark::mSetBurstPeriodUpDown(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mSetBurstPeriodUpDown", bError);
    std::int32_t periodMin = 1;
    trap.step([&] {
        periodMin = mlBurstPeriodMin(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        // A period below the new minimum is raised to it rather than refused.
        const std::int32_t period = std::clamp(updBurstPeriod->value(), periodMin, kBurstPeriodMax);
        gUpDownSet(period, kBurstPeriodMax, periodMin, 1, updBurstPeriod->control(), bError);
    });
}

void frmWavelark::chkBurstAuto_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "chkBurstAuto_Click", bError);
    const bool repeatOff = chkBurstAuto->value() == 0;
    trap.step([&] {
        chkBurstMeasure->setEnabled(repeatOff);
        if (!repeatOff) tabTab->setCurrentIndex(kBurstPage);
    });
    trap.step([&] {
        // While bursts repeat, nothing may fire, measure, sweep, mute or
        // choose noise.
        cmdBurstFire->setEnabled(repeatOff);
        chkSweep->setEnabled(repeatOff);
        mFreq2DurationLogLinBiEnable(repeatOff);
        chkMute->setEnabled(repeatOff);
        optNoise->setEnabled(repeatOff);
    });
    trap.step([&] {
        if (repeatOff) {
            gWaveOutClose(kFalse, bError);
            trap.leaveOnError(bError);
        }
    });
    // The looped buffer holds one burst and the silence up to the period.
    trap.step([&] { mWaveChangeShow(repeatOff ? "Make" : "Open", 0, false, bError); });
}

void frmWavelark::cmdBurstFire_Click()
{
    ErrorFlag bError = kFalse;
    {
        rt::Trap trap(kModule, "cmdBurstFire_Click", bError);
        trap.step([&] { tabTab->setCurrentIndex(kBurstPage); });
        trap.step([&] {
            repaint();
            // Nothing is applied while the burst plays and records
            // (mWaveChangeShow); enabled again below, whatever happens.
            setEnabled(false);
            mStatusUpdate();
        });
        trap.step([&] {
            lblOutLevel->setForeColor(ui::kColourGreen);
            mShowTimeResponse(ui::kColourGreen, bError);
        });
        trap.step([&] { anRecord.redim(1, 1); });
        trap.step([&] {
            gWavePolarity(singleOf(txtFrequency1), singleOf(txtBurstCycles),
                          rt::toInt16(singleOf(txtBurstPeriod)), kFalse, anRecord, bError);
        });
    }
    // What follows runs also after a failure above, so that the window never
    // stays disabled.
    rt::Trap trap(kModule, "cmdBurstFire_Click");
    trap.step([&] {
        lblOutLevel->setForeColor(ui::kColourRed);
        ErrorFlag bShown = kFalse;
        mShowTimeResponse(ui::kColourRed, bShown);
    });
    trap.step([&] {
        if (bError || chkBurstMeasure->value() == 0) return;
        mKeepRecording();
        ErrorFlag bShown = kFalse;
        mShowPolarityVerdict(bShown);
        if (mbSpectrumShown()) {
            mShowSpectrum(bShown);
        } else {
            // The recording alone, on a cleared plot, under its verdict.
            gTimeResponseShowClsDrawAxis(bShown);
            gTimeResponseShow(anRecord, kTrue, kTimeResponseFullScale, ui::kColourYellow, bShown);
            drawVerdictLine(*picPolarity, verdictText_);
        }
        lblInLevel->setForeColor(ui::kColourYellow);
    });
    trap.step([&] { anRecord.redim(0, 0); });
    setEnabled(true);
    mStatusUpdate();
    gbGSetFocus(cmdBurstFire->control());
}
