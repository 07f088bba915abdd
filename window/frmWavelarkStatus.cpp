// The status bar says in words what lblOutLevel's colour says (playing,
// muted, a burst under way, the output lost) and what plays, followed by
// the output device and its rate. A timer watches the open output, so that
// a device unplugged or a sound server gone is told within a second even
// when nobody touches the window.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include <QLabel>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>

#include "base/NumberText.h"
#include "base/Trap.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "platform/Colours.h"
#include "platform/qt/LiveWait.h"
#include "services/modErrorHandler.h"
#include "services/modGeneral.h"
#include "window/frmWavelark.h"

namespace {

// Every word the status bar uses.
namespace words {
constexpr const char* kPlaying = "Playing ";
constexpr const char* kSweeping = "Sweeping ";
constexpr const char* kSweepTo = " to ";
constexpr const char* kLog = ", log";
constexpr const char* kLin = ", lin";
constexpr const char* kBothWays = ", both ways";
constexpr const char* kBursts = "Bursts every ";
constexpr const char* kCyclesOf = " cycles of ";
constexpr const char* kMuted = "Muted";
constexpr const char* kStopped = "Stopped: change a setting to play";
constexpr const char* kRecording = "Recording...";
constexpr const char* kFiring = "Firing a burst...";
constexpr const char* kLost = "Output lost: ";
constexpr const char* kHertz = " Hz";
constexpr const char* kSeconds = " s";
constexpr const char* kMilliseconds = " ms";
constexpr const char* kPercent = " %";
constexpr const char* kInverted = ", inverted";
constexpr const char* kSine = "sine";
constexpr const char* kTriangle = "triangle ";
constexpr const char* kSawtooth = "sawtooth";
constexpr const char* kSquare = "square";
constexpr const char* kMarkSpace = "mark/space ";
constexpr const char* kNoise = "noise";
constexpr const char* kDeviceSeparator = "  |  ";
}  // namespace words

// A lost output is looked for this often: it is told within a second.
constexpr int kLostCheckMs = 250;

// A box's number as the user reads it; the text itself when it is none (a
// status never fails over a box being typed into).
std::string boxNumber(const ui::TextBox* box)
{
    const std::string text = box->control().text();
    const std::optional<double> value = rt::parseUserNumber(text);
    return value ? rt::userText(*value) : text;
}

// The percentage box as a whole number, -1 when it holds none.
long percentOf(const ui::TextBox* box)
{
    const std::optional<double> value = rt::parseUserNumber(box->control().text());
    return value ? std::lround(std::clamp(*value, -1.0, 101.0)) : -1;
}

}  // namespace

void frmWavelark::makeStatusBar()
{
    lblStatus = new QLabel;
    lblStatus->setObjectName("lblStatus");
    lblStatus->setAccessibleName("Status");
    statusBar()->addWidget(lblStatus, 1);

    tmrOutputLost = new QTimer(this);
    tmrOutputLost->setObjectName("tmrOutputLost");
    tmrOutputLost->setInterval(kLostCheckMs);
    connect(tmrOutputLost, &QTimer::timeout, this, &frmWavelark::tmrOutputLost_Timer);
    tmrOutputLost->start();
}

void frmWavelark::mStatusUpdate()
{
    rt::Trap trap(kModule, "mStatusUpdate");
    std::string status;
    trap.step([&] {
        std::string lost;
        if (gbWaveOutLost(lost)) {
            status = words::kLost + lost;
            return;
        }
        // Reopened or closed since: a new loss is told anew.
        outputLostTold_ = false;
        status = msStatusSignal();
    });
    trap.step([&] {
        const WaveOutDeviceInfo& device = gWaveOutInfo();
        // A long name is cut to the device record's length, maybe after a blank.
        const std::string name = device.name.substr(0, device.name.find_last_not_of(' ') + 1);
        if (name.empty()) return;
        status += words::kDeviceSeparator + name + ", " + std::to_string(device.sampleRate) + words::kHertz;
    });
    trap.step([&] { lblStatus->setText(QString::fromStdString(status)); });
}

std::string frmWavelark::msStatusSignal()
{
    // A fired burst holds the window disabled until it has played.
    if (!isEnabled()) return chkBurstMeasure->value() != 0 ? words::kRecording : words::kFiring;
    if (lblOutLevel->foreColor() != ui::kColourGreen)
        return chkMute->value() != 0 ? words::kMuted : words::kStopped;

    std::string shape;
    const long percent = percentOf(txtPercent);
    if (optNoise->value()) shape = words::kNoise;
    else if (optTriangle->value())
        shape = percent == 0 ? words::kSawtooth : words::kTriangle + std::to_string(percent) + words::kPercent;
    else if (optMarkSpace->value())
        shape = percent == 50 ? words::kSquare : words::kMarkSpace + std::to_string(percent) + words::kPercent;
    else shape = words::kSine;
    const std::string inverted = chkInvert->value() != 0 && !optNoise->value() ? words::kInverted : "";

    if (optNoise->value()) return words::kPlaying + shape;
    const std::string frequency1 = boxNumber(txtFrequency1) + words::kHertz;
    // The page shown and Sweep decide what was made, as they did for the
    // generator state (mSetFrequency1SweepBurst).
    if (tabTab->currentIndex() == kBurstPage) {
        return words::kBursts + boxNumber(txtBurstPeriod) + words::kMilliseconds + ", " +
               boxNumber(txtBurstCycles) + words::kCyclesOf + frequency1 + " " + shape + inverted;
    }
    if (chkSweep->value() != 0) {
        const std::string law = optSweepLog->value() ? words::kLog : words::kLin;
        const std::string both = chkSweepBi->value() != 0 ? words::kBothWays : "";
        const std::string other = optSine->value() ? "" : ", " + shape;
        return words::kSweeping + frequency1 + words::kSweepTo + boxNumber(txtFrequency2) +
               words::kHertz + law + ", " + boxNumber(txtSweepDuration) + words::kSeconds + both +
               other + inverted;
    }
    // A tone plays a whole number of cycles in its loop: the frequency that
    // really comes out, which may differ from the one asked.
    const double played = gfWaveOutFrequencyPlayed();
    const std::optional<double> asked = rt::parseUserNumber(txtFrequency1->control().text());
    std::string frequency = boxNumber(txtFrequency1);
    if (played > 0 && asked && std::abs(*asked) < 1e30) {
        ErrorFlag bError = kFalse;
        frequency = gsFrequencyText(played, static_cast<float>(*asked), bError);
    }
    return words::kPlaying + frequency + words::kHertz + " " + shape + inverted;
}

void frmWavelark::tmrOutputLost_Timer()
{
    // Inside an engine wait the output is the engine's: look again next time.
    if (host::waitUnderway()) return;
    rt::Trap trap(kModule, "tmrOutputLost_Timer");
    std::string why;
    bool lost = false;
    trap.step([&] { lost = gbWaveOutLost(why) != kFalse; });
    if (trap.leaving() || lost == outputLostTold_) return;
    outputLostTold_ = lost;
    if (lost) {
        // Not a program error and nothing to answer: no box, one log entry.
        trap.step([&] {
            lblOutLevel->setForeColor(ui::kColourRed);
            ErrorFlag bShown = kFalse;
            mShowTimeResponse(ui::kColourRed, bShown);
        });
        trap.step([&] { gbLogWarning(kModule, "tmrOutputLost_Timer", words::kLost + why); });
    }
    trap.step([&] { mStatusUpdate(); });
}
