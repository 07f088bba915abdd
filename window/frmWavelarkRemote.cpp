// Remote control: File > Remote control starts a server on this computer's
// loopback addresses, and each command a client sends works the window's
// own controls as the user's typing and clicking does: a number is written
// into its box, whose Change applies it, and the box's leave-check judges
// it; a shape is chosen with its button or Wave menu item; a disabled
// control refuses the command as it refuses the mouse. The boxes those
// handlers would show go to the client's error queue instead, and a value
// the leave-check refuses is taken back out of its box, so it changes
// nothing.
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QStatusBar>
#include <QTabWidget>

#include "analysis/modPolarityVerdict.h"
#include "analysis/modSpectrum.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "calibration/modVOut.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "engine/modWaveInOut.h"
#include "entry/modControl.h"
#include "entry/modInputNumber.h"
#include "mixer/modMixer.h"
#include "platform/HostServices.h"
#include "platform/qt/ScpiServer.h"
#include "remote/ScpiSession.h"
#include "window/frmWavelark.h"

namespace {

constexpr std::int32_t kLowestPort = 1024;
constexpr std::int32_t kHighestPort = 65535;

struct CaughtBox {
    std::string text;
    std::string title;
};

// The host while a remote command runs: everything as before, except that
// message boxes are kept instead of shown and answered with their default
// button, as nobody is there to answer them.
class BoxCatcher : public host::HostServices {
public:
    BoxCatcher() : inner_(host::current()) { host::install(this); }
    ~BoxCatcher() override { host::install(&inner_); }
    BoxCatcher(const BoxCatcher&) = delete;
    BoxCatcher& operator=(const BoxCatcher&) = delete;

    std::vector<CaughtBox> boxes;

    std::int16_t msgBox(const std::string& text, std::int32_t style, const std::string& title) override
    {
        boxes.push_back({text, title});
        return host::defaultAnswer(style);
    }
    void beep() override { inner_.beep(); }
    std::uint32_t tickCount() override { return inner_.tickCount(); }
    void sleep(std::uint32_t milliseconds) override { inner_.sleep(milliseconds); }
    std::optional<std::string> localeInfo(host::LocaleItem item) override { return inner_.localeInfo(item); }
    std::optional<host::SystemVersion> systemVersion() override { return inner_.systemVersion(); }
    std::string programPath() override { return inner_.programPath(); }
    bool previousInstance() override { return inner_.previousInstance(); }
    bool activatePreviousInstance() override { return inner_.activatePreviousInstance(); }
    std::unique_ptr<host::SettingsBatch> openSettings(const std::string& appKey,
                                                      const std::string& section) override
    {
        return inner_.openSettings(appKey, section);
    }
    std::int32_t openAddress(const std::string& address) override { return inner_.openAddress(address); }
    bool startSystemInfo() override { return inner_.startSystemInfo(); }

private:
    host::HostServices& inner_;
};

std::string oneLine(std::string text)
{
    for (const char* lineBreak : {"\r\n", "\r", "\n"}) {
        for (std::size_t at = text.find(lineBreak); at != std::string::npos; at = text.find(lineBreak, at))
            text.replace(at, std::char_traits<char>::length(lineBreak), " ");
    }
    return text;
}

// A caught box as the error it stands for: a field's range message is a
// value out of range, a sound or mixer call's warning a hardware error,
// anything else a failed execution.
void queueBox(const CaughtBox& box, const std::string& caption, scpi::ErrorQueue& errors)
{
    const std::string text = oneLine(box.text);
    const bool fieldMessage = box.title == caption && (text.starts_with("In the range") ||
                                                       text.starts_with("Non-zero value"));
    if (fieldMessage) errors.push(scpi::kDataOutOfRange, text);
    else if (box.title.starts_with("modWaveInOut") || box.title.starts_with("modMixer"))
        errors.push(scpi::kHardwareError, box.title + ": " + text);
    else errors.push(scpi::kExecutionError, box.title.empty() ? text : box.title + ": " + text);
}

double peakOf(const rt::SampleArray& samples)
{
    int peak = 0;
    for (std::int32_t i = samples.lbound(); i <= samples.ubound(); ++i)
        peak = std::max(peak, std::abs(static_cast<int>(samples(i))));
    return peak / 32767.0;
}

}  // namespace

// The instrument that remote commands work, and the server and session
// that bring them.
class frmWavelark::RemoteControl : public scpi::Instrument {
public:
    explicit RemoteControl(frmWavelark& w);

    host::ScpiServer server;

    // scpi::Instrument
    void reset(scpi::ErrorQueue& errors) override;
    void setNumber(scpi::Number which, double value, scpi::ErrorQueue& errors) override;
    std::optional<double> number(scpi::Number which, scpi::ErrorQueue& errors) override;
    void setSwitch(scpi::Switch which, bool on, scpi::ErrorQueue& errors) override;
    bool switchOn(scpi::Switch which) override
    {
        const CheckSwitch check = checkOf(which);
        return (check.box->value() != 0) == check.onChecked;
    }
    void setShape(scpi::Shape shape, scpi::ErrorQueue& errors) override;
    scpi::Shape shape() override;
    void setSpacing(scpi::Spacing spacing, scpi::ErrorQueue& errors) override;
    scpi::Spacing spacing() override
    {
        return w_.optSweepLog->value() ? scpi::Spacing::Logarithmic : scpi::Spacing::Linear;
    }
    void fireBurst(scpi::ErrorQueue& errors) override;
    std::optional<scpi::BurstMeasurement> fireMeasuredBurst(scpi::ErrorQueue& errors) override;
    std::optional<scpi::ToneMeasurement> measure(scpi::ErrorQueue& errors) override;
    std::string info() override { return w_.txtInfo->toPlainText().toStdString(); }

private:
    // For one command: the boxes it would show become errors, and the
    // focus goes back where the user left it.
    class Caught {
    public:
        Caught(frmWavelark& w, scpi::ErrorQueue& errors)
            : w_(w), errors_(errors), focus_(QApplication::focusWidget())
        {
        }
        ~Caught()
        {
            for (const CaughtBox& box : catcher_.boxes) queueBox(box, w_.windowTitle().toStdString(), errors_);
            if (focus_) focus_->setFocus();
        }
        Caught(const Caught&) = delete;
        Caught& operator=(const Caught&) = delete;

    private:
        frmWavelark& w_;
        scpi::ErrorQueue& errors_;
        QPointer<QWidget> focus_;
        BoxCatcher catcher_;
    };

    struct CheckSwitch {
        ui::CheckBox* box;
        bool onChecked;  // Output is on while Mute is clear
        const char* disabledReason;
    };
    struct Calibration {
        float max;
        float second;
    };

    // Whether the user could work the control now; a conflict when not.
    bool usable(const QWidget* control, const char* name, const char* reason, scpi::ErrorQueue& errors) const;
    void setField(ui::TextBox* frmWavelark::*box, const char* name, const char* reason, double value,
                  scpi::ErrorQueue& errors);
    std::optional<double> fieldValue(ui::TextBox* box, const char* name, scpi::ErrorQueue& errors) const;
    void setOutputBar(std::int32_t bar, scpi::ErrorQueue& errors);
    std::optional<Calibration> calibration(scpi::ErrorQueue& errors) const;
    float voltsAtBar(std::int32_t bar, const Calibration& calibration) const;
    void setOutputVolts(double volts, scpi::ErrorQueue& errors);
    void choose(ui::OptionButton* option, const char* name, const char* reason, scpi::ErrorQueue& errors);
    void chooseFromMenu(QAction* item, scpi::ErrorQueue& errors);
    CheckSwitch checkOf(scpi::Switch which) const;

    frmWavelark& w_;
    scpi::Session session_;
    // The controls' values as the window was built, for *RST.
    std::vector<std::pair<ui::TextBox*, QString>> builtInTexts_;
    std::vector<std::pair<ui::CheckBox*, std::int16_t>> builtInChecks_;
    std::vector<ui::OptionButton*> builtInOptions_;
};

namespace {

const char* const kNoiseReason = "noise has no frequency, polarity or cycles";
const char* const kSweepReason = "the sweep is off, or bursts repeat";
const char* const kBurstReason = "bursts go with a steady tone, not with a sweep or noise";
const char* const kRepeatReason = "not while bursts repeat";

}  // namespace

frmWavelark::RemoteControl::RemoteControl(frmWavelark& w) : w_(w), session_(*this)
{
    // In the order *RST puts them back: the frequency before the burst
    // period whose minimum it sets.
    for (ui::TextBox* box : {w.txtFrequency1, w.txtFrequency2, w.txtSweepDuration, w.txtPercent,
                             w.txtBurstCycles, w.txtBurstPeriod})
        builtInTexts_.emplace_back(box, box->text());
    // Automatic bursts off first: they hold Mute and the sweep.
    for (ui::CheckBox* box : {w.chkBurstAuto, w.chkMute, w.chkSweep, w.chkSweepBi, w.chkInvert})
        builtInChecks_.emplace_back(box, box->value());
    for (ui::OptionButton* option : {w.optSweepLin, w.optSweepLog, w.optSine, w.optTriangle,
                                     w.optMarkSpace, w.optNoise})
        if (option->value()) builtInOptions_.push_back(option);

    server.lineReceived = [this](const std::string& line) {
        // Nothing more once the window has been unloaded.
        if (w_.unloaded_) {
            server.close();
            return std::string();
        }
        return session_.execute(line);
    };
    server.lineRefused = [this] {
        session_.errors().push(scpi::kInputBufferOverrun,
                               "a line holds at most 4096 bytes; that line was thrown away");
    };
    server.clientsChanged = [this] { w_.mRemoteShowStatus(); };
}

bool frmWavelark::RemoteControl::usable(const QWidget* control, const char* name, const char* reason,
                                        scpi::ErrorQueue& errors) const
{
    if (w_.isEnabled() && control->isEnabled()) return true;
    errors.push(scpi::kSettingsConflict, std::string(name) + " is disabled: " + reason);
    return false;
}

void frmWavelark::RemoteControl::reset(scpi::ErrorQueue& errors)
{
    Caught caught(w_, errors);
    for (const auto& [box, value] : builtInChecks_)
        if (box->value() != value) box->setValue(value);
    for (ui::OptionButton* option : builtInOptions_) option->setValue(true);
    for (const auto& [box, text] : builtInTexts_)
        if (box->text() != text) box->control().setText(text.toStdString());
    w_.tabTab->setCurrentIndex(kSweepPage);
}

// ---- Numbers ---------------------------------------------------------------------

void frmWavelark::RemoteControl::setField(ui::TextBox* frmWavelark::*box, const char* name,
                                          const char* reason, double value, scpi::ErrorQueue& errors)
{
    ui::TextBox* field = w_.*box;
    if (!usable(field, name, reason, errors)) return;
    Caught caught(w_, errors);
    ui::Control& control = field->control();
    const std::string before = control.text();
    // As a pasted number: one Change, then the check made on leaving the box.
    control.setText(rt::userText(static_cast<float>(value)));
    bool refused = false;
    if (field->Validate) field->Validate(refused);
    if (refused) control.setText(before);
}

std::optional<double> frmWavelark::RemoteControl::fieldValue(ui::TextBox* box, const char* name,
                                                             scpi::ErrorQueue& errors) const
{
    ErrorFlag bError = kFalse;
    const std::string text = box->control().text();
    if (gbCtrlTextValidNumber(text, bError) && !bError) return rt::toSingleUser(text);
    errors.push(scpi::kDataStale, std::string(name) + " holds no number now");
    return std::nullopt;
}

void frmWavelark::RemoteControl::setNumber(scpi::Number which, double value, scpi::ErrorQueue& errors)
{
    using scpi::Number;
    switch (which) {
    case Number::Frequency1:
        return setField(&frmWavelark::txtFrequency1, "Frequency 1", kNoiseReason, value, errors);
    case Number::Frequency2:
        return setField(&frmWavelark::txtFrequency2, "Frequency 2", kSweepReason, value, errors);
    case Number::Percent:
        return setField(&frmWavelark::txtPercent, "The percentage",
                        "only triangle and mark/space take one", value, errors);
    case Number::SweepTime:
        return setField(&frmWavelark::txtSweepDuration, "The sweep duration", kSweepReason, value, errors);
    case Number::BurstCycles:
        return setField(&frmWavelark::txtBurstCycles, "The burst cycles", kBurstReason, value, errors);
    case Number::BurstPeriod:
        return setField(&frmWavelark::txtBurstPeriod, "The burst period", kBurstReason, value, errors);
    case Number::OutputLevel:
        if (value < 0 || value > 1) {
            errors.push(scpi::kDataOutOfRange, "In the range 0 to 1 (of full scale) please!");
            return;
        }
        return setOutputBar(static_cast<std::int32_t>(std::lround((1 - value) * kLevelBarBottom)), errors);
    case Number::OutputVolts: return setOutputVolts(value, errors);
    }
}

std::optional<double> frmWavelark::RemoteControl::number(scpi::Number which, scpi::ErrorQueue& errors)
{
    using scpi::Number;
    switch (which) {
    case Number::Frequency1: return fieldValue(w_.txtFrequency1, "Frequency 1", errors);
    case Number::Frequency2: return fieldValue(w_.txtFrequency2, "Frequency 2", errors);
    case Number::Percent: return fieldValue(w_.txtPercent, "The percentage", errors);
    case Number::SweepTime: return fieldValue(w_.txtSweepDuration, "The sweep duration", errors);
    case Number::BurstCycles: return fieldValue(w_.txtBurstCycles, "The burst cycles", errors);
    case Number::BurstPeriod: return fieldValue(w_.txtBurstPeriod, "The burst period", errors);
    case Number::OutputLevel:
        return static_cast<double>(kLevelBarBottom - w_.vsbOutLevel->Value()) / kLevelBarBottom;
    case Number::OutputVolts:
        if (const auto calibrated = calibration(errors)) return voltsAtBar(w_.vsbOutLevel->Value(), *calibrated);
        return std::nullopt;
    }
    return std::nullopt;
}

void frmWavelark::RemoteControl::setOutputBar(std::int32_t bar, scpi::ErrorQueue& errors)
{
    if (!usable(w_.vsbOutLevel, "The output level", "no usable sound device", errors)) return;
    Caught caught(w_, errors);
    w_.vsbOutLevel->setValue(bar);
}

std::optional<frmWavelark::RemoteControl::Calibration>
frmWavelark::RemoteControl::calibration(scpi::ErrorQueue& errors) const
{
    ErrorFlag bError = kFalse;
    const std::string max = w_.txtVOutMax->control().text();
    const std::string second = w_.txtVOut2->control().text();
    if (gbCtrlTextValidNumber(max, bError) && gbCtrlTextValidNumber(second, bError) && !bError) {
        const Calibration calibrated{rt::toSingleUser(max), rt::toSingleUser(second)};
        if (gbVOutMaxValidActive(calibrated.max, calibrated.second, bError) && !bError) return calibrated;
    }
    errors.push(scpi::kSettingsConflict, "the output is not calibrated: calibrate it on the System page first");
    return std::nullopt;
}

float frmWavelark::RemoteControl::voltsAtBar(std::int32_t bar, const Calibration& calibration) const
{
    ErrorFlag bError = kFalse;
    return gfStep2VOut(glMixerLevelOfBar(bar), calibration.max, calibration.second, bError);
}

void frmWavelark::RemoteControl::setOutputVolts(double volts, scpi::ErrorQueue& errors)
{
    const auto calibrated = calibration(errors);
    if (!calibrated) return;
    const float highest = voltsAtBar(0, *calibrated);
    if (volts < 0 || volts > highest) {
        errors.push(scpi::kDataOutOfRange, "In the range 0 to " + rt::userText(highest, ".") + " (V) please!");
        return;
    }
    // The volts fall as the bar goes down: the first position at or below
    // the volts asked for, or the one above it when that comes nearer.
    std::int32_t low = 0;
    std::int32_t high = kLevelBarBottom;
    while (low < high) {
        const std::int32_t middle = (low + high) / 2;
        if (voltsAtBar(middle, *calibrated) > volts) low = middle + 1;
        else high = middle;
    }
    if (low > 0 && voltsAtBar(low - 1, *calibrated) - volts < volts - voltsAtBar(low, *calibrated)) --low;
    setOutputBar(low, errors);
}

// ---- Switches, shapes, sweep law ---------------------------------------------------

frmWavelark::RemoteControl::CheckSwitch frmWavelark::RemoteControl::checkOf(scpi::Switch which) const
{
    using scpi::Switch;
    switch (which) {
    case Switch::Output: return {w_.chkMute, false, "the output follows the repeating bursts"};
    case Switch::Invert: return {w_.chkInvert, true, kNoiseReason};
    case Switch::Sweep: return {w_.chkSweep, true, "no sweep with noise or while bursts repeat"};
    case Switch::SweepBidirectional: return {w_.chkSweepBi, true, kSweepReason};
    case Switch::BurstAuto: return {w_.chkBurstAuto, true, kBurstReason};
    }
    return {w_.chkMute, false, ""};
}

void frmWavelark::RemoteControl::setSwitch(scpi::Switch which, bool on, scpi::ErrorQueue& errors)
{
    const CheckSwitch check = checkOf(which);
    const std::int16_t wanted = on == check.onChecked ? 1 : 0;
    if (check.box->value() == wanted) return;
    const std::string name = check.box->text().remove('&').toStdString();
    if (!usable(check.box, name.c_str(), check.disabledReason, errors)) return;
    Caught caught(w_, errors);
    check.box->setValue(wanted);
}

void frmWavelark::RemoteControl::choose(ui::OptionButton* option, const char* name, const char* reason,
                                        scpi::ErrorQueue& errors)
{
    if (!usable(option, name, reason, errors)) return;
    Caught caught(w_, errors);
    option->setValue(true);
}

void frmWavelark::RemoteControl::chooseFromMenu(QAction* item, scpi::ErrorQueue& errors)
{
    if (!usable(w_.optSine, "The Wave menu", "no usable sound device", errors)) return;
    // A greyed-out item is the signal already chosen.
    if (!item->isEnabled()) return;
    Caught caught(w_, errors);
    item->trigger();
}

void frmWavelark::RemoteControl::setShape(scpi::Shape shape, scpi::ErrorQueue& errors)
{
    const char* const highReason = "triangle and mark/space go up to a tenth of the highest frequency";
    switch (shape) {
    case scpi::Shape::Sine: return choose(w_.optSine, "Sine", "no usable sound device", errors);
    case scpi::Shape::Triangle: return choose(w_.optTriangle, "Triangle", highReason, errors);
    case scpi::Shape::MarkSpace: return choose(w_.optMarkSpace, "Mark/Space", highReason, errors);
    case scpi::Shape::Noise: return choose(w_.optNoise, "Noise", kRepeatReason, errors);
    case scpi::Shape::Square: return chooseFromMenu(w_.mnuWaveSquare, errors);
    case scpi::Shape::Sawtooth: return chooseFromMenu(w_.mnuWaveSawtooth, errors);
    }
}

scpi::Shape frmWavelark::RemoteControl::shape()
{
    const std::string percent = w_.txtPercent->control().text();
    if (w_.optNoise->value()) return scpi::Shape::Noise;
    if (w_.optMarkSpace->value()) return percent == "50" ? scpi::Shape::Square : scpi::Shape::MarkSpace;
    if (w_.optTriangle->value()) return percent == "0" ? scpi::Shape::Sawtooth : scpi::Shape::Triangle;
    return scpi::Shape::Sine;
}

void frmWavelark::RemoteControl::setSpacing(scpi::Spacing spacing, scpi::ErrorQueue& errors)
{
    if (spacing == scpi::Spacing::Logarithmic) choose(w_.optSweepLog, "Log", kSweepReason, errors);
    else choose(w_.optSweepLin, "Lin", kSweepReason, errors);
}

// ---- Bursts and measurements -------------------------------------------------------

void frmWavelark::RemoteControl::fireBurst(scpi::ErrorQueue& errors)
{
    if (!usable(w_.cmdBurstFire, "Fire", kBurstReason, errors)) return;
    Caught caught(w_, errors);
    w_.cmdBurstFire_Click();
}

std::optional<scpi::BurstMeasurement> frmWavelark::RemoteControl::fireMeasuredBurst(scpi::ErrorQueue& errors)
{
    if (!usable(w_.cmdBurstFire, "Fire", kBurstReason, errors)) return std::nullopt;
    const std::size_t errorsBefore = errors.size();
    std::optional<scpi::BurstMeasurement> measurement;
    Caught caught(w_, errors);
    // Measure is ticked for this burst and left as the user had it.
    const std::int16_t measuring = w_.chkBurstMeasure->value();
    w_.chkBurstMeasure->setValue(1);
    w_.anRecorded = rt::SampleArray();
    w_.cmdBurstFire_Click();
    w_.chkBurstMeasure->setValue(measuring);
    if (w_.anRecorded.empty()) {
        if (errors.size() == errorsBefore) errors.push(scpi::kHardwareError, "the burst was not recorded");
        return std::nullopt;
    }
    // The verdict the window drew for this burst.
    if (!w_.verdict_) {
        if (errors.size() == errorsBefore) errors.push(scpi::kHardwareError, w_.verdictText_);
        return std::nullopt;
    }
    const PolarityVerdict& verdict = *w_.verdict_;
    const int polarity = !verdict.signal ? 0 : verdict.inverted ? -1 : 1;
    return scpi::BurstMeasurement{gsPolarityText(verdict), peakOf(w_.anRecorded), verdict.delayMs, polarity};
}

std::optional<scpi::ToneMeasurement> frmWavelark::RemoteControl::measure(scpi::ErrorQueue& errors)
{
    const bool playing = w_.chkMute->value() == 0 && w_.chkBurstAuto->value() == 0;
    if (!playing && w_.anRecorded.empty()) {
        errors.push(scpi::kSettingsConflict,
                    "nothing recorded: turn the output on (OUTP ON) or fire a measured burst (BURS:FIRE:MEAS?)");
        return std::nullopt;
    }
    ErrorFlag bError = kFalse;
    if (playing) {
        Caught caught(w_, errors);
        w_.mRecordPlayingTone(bError);
        w_.anRecord.redim(0, 0);
        if (bError) return std::nullopt;
    }
    const Spectrum spectrum = gSpectrum(w_.anRecorded, w_.recordedRate_, bError);
    const SpectrumFigures figures = gSpectrumFigures(spectrum, bError);
    if (bError) return std::nullopt;
    return scpi::ToneMeasurement{figures.tone != kFalse, figures.frequency, figures.thdnDb};
}

// ---- The menu item, the status bar and the settings -------------------------------------

void frmWavelark::makeRemote()
{
    mnuFiRemote = new QAction("&Remote control", this);
    mnuFiRemote->setObjectName("mnuFiRemote");
    mnuFiRemote->setCheckable(true);
    mnuFiRemote->setToolTip("Lets test scripts on this computer control the generator (SCPI over TCP)");
    mnuFile->menu()->insertAction(mnuFiHyphen, mnuFiRemote);
    controls_.adopt(std::make_unique<ui::MenuControl>(mnuFiRemote));
    connect(mnuFiRemote, &QAction::triggered, this, &frmWavelark::mnuFiRemote_Click);

    lblRemote = new QLabel;
    lblRemote->setObjectName("lblRemote");
    lblRemote->hide();
    statusBar()->addPermanentWidget(lblRemote);
    remote_ = std::make_shared<RemoteControl>(*this);
}

bool frmWavelark::remoteOn() const { return remote_->server.isListening(); }

void frmWavelark::setRemotePort(std::int32_t port)
{
    if (port < kLowestPort || port > kHighestPort) rt::raise(rt::kErrInvalidPropertyValue);
    remotePort_ = static_cast<std::uint16_t>(port);
}

void frmWavelark::setRemoteOn(bool on)
{
    if (on) mbRemoteStart(remotePort_);
    else mRemoteStop();
}

void frmWavelark::mnuFiRemote_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuFiRemote_Click", bError);
    trap.step([&] {
        if (remoteOn()) {
            mRemoteStop();
            return;
        }
        const std::string port =
            gsInputNumber("Remote control", "Port on this computer (127.0.0.1 and ::1) for test scripts",
                          remotePort_, kHighestPort, kLowestPort, 1, true, true, bError);
        if (port.empty() || bError) return;
        setRemotePort(std::atoi(port.c_str()));
        mbRemoteStart(remotePort_);
    });
    // The item shows whether the server listens, whatever came of the click.
    trap.step([&] { mRemoteShowStatus(); });
}

bool frmWavelark::mbRemoteStart(std::uint16_t port)
{
    QString reason;
    const bool listening = remote_->server.listen(port, reason);
    if (!listening) {
        host::msgBox("Remote control cannot listen on port " + std::to_string(port) + ": " +
                         reason.toStdString() + ".\r\n\r\nChoose another port, or close the program that uses it.",
                     host::kExclamation, windowTitle().toStdString());
    }
    mRemoteShowStatus();
    return listening;
}

void frmWavelark::mRemoteStop()
{
    remote_->server.close();
    mRemoteShowStatus();
}

void frmWavelark::mRemoteShowStatus()
{
    const bool on = remoteOn();
    mnuFiRemote->setChecked(on);
    lblRemote->setVisible(on);
    if (!on) return;
    const int clients = remote_->server.clientCount();
    lblRemote->setText(QString("Remote: port %1, %2 %3")
                           .arg(remote_->server.port())
                           .arg(clients)
                           .arg(clients == 1 ? "client" : "clients"));
}
