#pragma once
// The main window: the signal panel (frequency, shape, symmetry, inversion,
// sweep switch, levels, mute, the time-response picture) above a four-page
// tab control (Sweep, Burst, Info, System), and the File, Wave and Help menus.
// Members carry the control names; handlers carry the event names.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QMainWindow>

#include "base/Array.h"
#include "analysis/modPolarityVerdict.h"
#include "base/Types.h"
#include "platform/Control.h"
#include "controls/ControlAdapters.h"

class QAction;
class QCloseEvent;
class QLabel;
class QMenu;
class QPrinter;
class QTabWidget;
class QTimer;

namespace host {
class SettingsBatch;
}

namespace rt {
class Trap;
}

namespace ui {
class CheckBox;
class CommandButton;
class Label;
class MultiLineTextBox;
class OptionButton;
class PictureBox;
class TextBox;
class UpDown;
class VScrollBar;
}  // namespace ui

class frmWavelark : public QMainWindow, public ui::Form {
    Q_OBJECT
public:
    explicit frmWavelark(QWidget* parent = nullptr);
    ~frmWavelark() override;

    // ui::Form
    std::string formName() const override { return "frmWavelark"; }
    std::vector<ui::Control*> controls() const override { return controls_.all(); }
    ui::Control* control(const std::string& name) const { return controls_.find(name); }

    // Brings the system up; runs once, before the window is shown. Three
    // outcomes: refused (an earlier copy runs: it is brought forward and this
    // window is unloaded unseen), the device problem (everything disabled but
    // File, Exit, Help and About) or normal (settings restored, signal made).
    void Form_Load();
    // True when Form_Load refused the start: the window is not to be shown.
    bool unloadedUnseen() const { return unloadedUnseen_; }
    // Takes the system down, once, however the window closes: unless the
    // caption tells of the device problem, stores the region and the
    // settings, closes the output and gives the mixer back its levels.
    void Form_Unload(std::int16_t& Cancel);
    void mnuFiExit_Click();
    void mnuHAbout_Click();

    // Shape, sweep, mode and plot handlers (frmWavelarkSignal.cpp,
    // frmWavelarkWaveMenu.cpp, frmWavelarkPlot.cpp). Setting an option
    // button or check box from code runs its Click, as a user's click does.
    void optSine_Click();
    void optTriangle_Click();
    void optMarkSpace_Click();
    void optNoise_Click();
    void optSweepLin_Click();
    void optSweepLog_Click();
    void chkSweep_Click();
    void chkSweepBi_Click();
    void chkInvert_Click();
    void chkMute_Click();
    void tabTab_Click();
    void picPolarity_Click();
    void mnuWaveSine_Click();
    void mnuWaveSquare_Click();
    void mnuWaveTriangle_Click();
    void mnuWaveSawtooth_Click();

    // Bursts (frmWavelarkBurst.cpp).
    void chkBurstAuto_Click();
    void cmdBurstFire_Click();

    // The up-downs step their buddy boxes (frmWavelarkFields.cpp): the
    // up-down writes the box, whose Change applies the value.
    void updPercent_Change();
    void updBurstPeriod_Change();

    // Signal panel
    ui::Label* lblFrequency1 = nullptr;
    ui::TextBox* txtFrequency1 = nullptr;
    ui::OptionButton* optSine = nullptr;
    ui::OptionButton* optTriangle = nullptr;
    ui::OptionButton* optMarkSpace = nullptr;
    ui::OptionButton* optNoise = nullptr;
    ui::Label* lblPercent = nullptr;
    ui::TextBox* txtPercent = nullptr;
    ui::UpDown* updPercent = nullptr;
    ui::CheckBox* chkInvert = nullptr;
    ui::CheckBox* chkSweep = nullptr;
    ui::Label* lblOutLevel = nullptr;
    ui::VScrollBar* vsbOutLevel = nullptr;
    ui::Label* lblInLevel = nullptr;
    ui::VScrollBar* vsbInLevel = nullptr;
    ui::CheckBox* chkMute = nullptr;
    ui::PictureBox* picPolarity = nullptr;
    ui::CommonDialog* CommonDialogue = nullptr;
    QTabWidget* tabTab = nullptr;

    // Sweep page
    ui::Label* lblFrequency2 = nullptr;
    ui::TextBox* txtFrequency2 = nullptr;
    ui::Label* lblSweepDuration = nullptr;
    ui::TextBox* txtSweepDuration = nullptr;
    ui::OptionButton* optSweepLin = nullptr;
    ui::OptionButton* optSweepLog = nullptr;
    ui::CheckBox* chkSweepBi = nullptr;

    // Burst page
    ui::Label* lblBurstCycles = nullptr;
    ui::TextBox* txtBurstCycles = nullptr;
    ui::Label* lblBurstPeriod = nullptr;
    ui::TextBox* txtBurstPeriod = nullptr;
    ui::UpDown* updBurstPeriod = nullptr;
    ui::CommandButton* cmdBurstFire = nullptr;
    ui::CheckBox* chkBurstAuto = nullptr;
    ui::CheckBox* chkBurstMeasure = nullptr;

    // Info page
    ui::MultiLineTextBox* txtInfo = nullptr;

    // System page
    ui::Label* lblVOutIdent = nullptr;
    ui::TextBox* txtVOutIdent = nullptr;
    ui::Label* lblVOutMax = nullptr;
    ui::TextBox* txtVOutMax = nullptr;
    ui::Label* lblVOut2 = nullptr;
    ui::TextBox* txtVOut2 = nullptr;
    ui::CommandButton* cmdVOutCalibrate = nullptr;

    // Menus
    QAction* mnuFile = nullptr;
    QAction* mnuFiPrint = nullptr;
    QAction* mnuFiHyphen = nullptr;
    QAction* mnuFiExit = nullptr;
    QAction* mnuWave = nullptr;
    QAction* mnuWaveSine = nullptr;
    QAction* mnuWaveSquare = nullptr;
    QAction* mnuWaveTriangle = nullptr;
    QAction* mnuWaveSawtooth = nullptr;
    QAction* mnuHelp = nullptr;
    QAction* mnuHAbout = nullptr;

    // ---- Output calibration and printing (frmWavelarkCalibration.cpp,
    // frmWavelarkPrinting.cpp) ----
    // Calibrates the output against the user's voltmeter; the signal, the
    // output level and Mute are as before afterwards, however it ended.
    void cmdVOutCalibrate_Click();
    // The print dialog, then the window on one page of the printer chosen.
    void mnuFiPrint_Click();
    // The window drawn control by control on one page of the printer, with
    // the plot redrawn at the printer's resolution and a byline under it.
    // A file is written whole or not at all; a failure is shown to the user
    // and sets the error flag.
    void PrintForm(QPrinter& printer, ErrorFlag& bError);

    // ---- Analysis: the precise loop, the spectrum view, Measure tone, the
    // polarity verdict and WAV export (frmWavelarkWaveMenu.cpp,
    // frmWavelarkSpectrum.cpp, frmWavelarkBurst.cpp, frmWavelarkExport.cpp) ----
    void mnuWavePreciseLoop_Click();
    void mnuPlotTimeResponse_Click();
    void mnuPlotSpectrum_Click();
    void mnuPlotMeasureTone_Click();
    void mnuFiExport_Click();
    QAction* mnuWavePreciseLoop = nullptr;
    QAction* mnuFiExport = nullptr;
    // The plot's right-click menu.
    QMenu* mnuPlot = nullptr;
    QAction* mnuPlotTimeResponse = nullptr;
    QAction* mnuPlotSpectrum = nullptr;
    QAction* mnuPlotMeasureTone = nullptr;
    // The last polarity verdict, at the right of the status bar.
    QLabel* lblVerdict = nullptr;

protected:
    // The title-bar close and the window manager's close.
    void closeEvent(QCloseEvent* event) override;

private:
    static constexpr const char* kModule = "frmWavelark";
    // Pages of tabTab.
    static constexpr int kSweepPage = 0;
    static constexpr int kBurstPage = 1;

    // Makes the rest of a trapped procedure do nothing once a call it made
    // has set the error flag.
    // A box's text as a 32-bit float ("Type mismatch" when it is no number).
    static float singleOf(const ui::TextBox* box);

    // ---- Applying the controls to the signal (frmWavelarkSignal.cpp) ----
    // With Mute checked and automatic bursts off, the action becomes "Make"
    // (build only); then mWaveChangeShow.
    void mWaveOutChangeShow(const std::string& action, bool reset, ErrorFlag& bError);
    // The one road to the engine: stores the fields in the generator state,
    // runs gWaveOutChange with the action, colours lblOutLevel (green when it
    // played, red for "Make") and draws the made signal.
    void mWaveChangeShow(const std::string& action, std::int32_t loops, bool reset,
                         ErrorFlag& bError);
    // Copies frequency 1 and the sweep or burst fields (as the page shown
    // says) into the generator state.
    void mSetFrequency1SweepBurst(ErrorFlag& bError);
    // mSetFrequency1SweepBurst, then mWaveOutChangeShow("", true).
    void mSetFrequency1SweepBurstMakeUpdate(ErrorFlag& bError);
    // Enabling rules (frmWavelarkWaveMenu.cpp).
    void mForceNonSineWaveFrequencies(ErrorFlag& bError);
    void mTriangleMarkEnable(ErrorFlag& bError);
    void mPercentEnable(bool enable);
    void mFreq2DurationLogLinBiEnable(bool enable);
    void mBurstEnable(bool enable);
    void mSweepFrequencyLoEnableUpdate(bool update, ErrorFlag& bError);
    void mEnableDisableWaveMenu(ErrorFlag& bError);
    void mShowSweepTab();
    // Shared tail of the shape handlers.
    void mShapeChosen(const char* shape, ErrorFlag& bError);
    // Shared body of the Lin, Log and Bi-directional handlers.
    void mSweepSettingChanged(const char* procedure);
    // Shared body of the Square, Triangle and Sawtooth items.
    void mWaveMenuShape(const char* procedure, ui::OptionButton* shape, const char* percent);

    // ---- Bursts (frmWavelarkBurst.cpp) ----
    // Loads updBurstPeriod: its value, maximum 2000, minimum mlBurstPeriodMin.
    void mSetBurstPeriodUpDown(ErrorFlag& bError);
    // (N*2000/F + 0.5) truncated, 1 when 0; N, F read as Single from
    // txtBurstCycles, txtFrequency1.
    std::int32_t mlBurstPeriodMin(ErrorFlag& bError);

    // ---- The plot (frmWavelarkPlot.cpp) ----
    // Makes picPolarity the plot surface, cleared with its axes; called once
    // at start-up.
    std::int16_t mnTimeResponseInitDrawAxisForm(ErrorFlag& bError);
    // Draws the made signal as it leaves the card (scaled by the output
    // level) in the colour given.
    void mShowTimeResponse(std::int32_t colour, ErrorFlag& bError);

    // ---- The numeric fields (frmWavelarkFields.cpp) ----
    struct FieldRow;
    static const std::vector<FieldRow>& fieldRows();
    void connectFieldHandlers();
    void connectSignalHandlers();
    // True when the playing pass may last long (a sweep, a burst period),
    // so a change is heard at once rather than at the end of the pass.
    bool mbLongPass() const;
    // The same for a tone made with or without the precise loop.
    bool mbLongPassWith(bool preciseLoop) const;
    void upDownMouseDown(const char* procedure, ui::UpDown* upDown, std::int16_t button);
    void upDownChanged(const char* procedure, ui::UpDown* upDown);
    void fieldChanged(const FieldRow& row);
    void fieldKeyDown(const FieldRow& row, std::int16_t& keyCode, std::int16_t shift);
    void fieldKeyPress(const FieldRow& row, std::int16_t& keyAscii);
    bool fieldInError(const FieldRow& row, const char* procedure);
    void txtFrequency1Changed(float value, ErrorFlag& bError);
    void txtFrequency2Changed(float value, ErrorFlag& bError);
    void txtSweepDurationChanged(float value, ErrorFlag& bError);
    void txtBurstCyclesChanged(float value, ErrorFlag& bError);
    void txtBurstPeriodChanged(float value, ErrorFlag& bError);
    void txtPercentChanged(float value, ErrorFlag& bError);
    void txtBurstCycles_LostFocus();

    // The made signal as the plot shows it, and the recorded input (a
    // single element, index 0, when nothing is recorded).
    rt::SampleArray anSamples;
    rt::SampleArray anRecord;
    // The up-down whose arrow the mouse holds, if any.
    ui::UpDown* heldUpDown = nullptr;

    // ---- Start-up and shutdown, settings, the Info page, the level bars
    // (frmWavelarkStartup.cpp, ...Settings.cpp, ...Info.cpp, ...Levels.cpp) ----
    void connectLifeHandlers();
    // Parts of Form_Load and Form_Unload, run as steps of their traps.
    void loadNormal(rt::Trap& trap, const std::string& sMixerReport, ErrorFlag& bError);
    void loadProblem(rt::Trap& trap, ErrorFlag& bError);
    void clampFrequencies(rt::Trap& trap);
    // The window's values into the batch, then the batch written.
    void writeSettings(rt::Trap& trap, host::SettingsBatch& store);
    void mGetSettings(ErrorFlag& bError);
    void mInitInfo(const std::string& sMixerReport, ErrorFlag& bError);
    void vsbOutLevel_Change();
    void vsbOutLevel_Scroll();
    void vsbInLevel_Change();
    void vsbInLevel_Scroll();
    void mOutLevelChange(ErrorFlag& bError);
    void mInLevelChange(ErrorFlag& bError);
    // Sets a mixer level from a bar, then draws the plot and the volts again.
    void levelChange(const char* procedure, const ui::VScrollBar& bar,
                     void (*setLevel)(std::int32_t, ErrorFlag&), std::int32_t colour,
                     ErrorFlag& bError);
    void mVOutUpdate();
    void picPolarity_Resize();

    // ---- Output calibration and printing ----
    void connectCalibrationHandlers();
    void connectPrintHandlers();
    // The shape, signal, output level and Mute the user had, back after a
    // calibration.
    void mRestoreAfterCalibration(std::int16_t mute, ErrorFlag& bError);
    // The Out label's plain caption, without volts.
    void mClearLblVout();
    // The change action of txtVOutMax and txtVOut2.
    void txtVOutChanged(float value, ErrorFlag& bError);
    // The interval over which this run has measured the card's fall (see
    // gVOutCalibrate): kept for the run, never stored.
    std::int32_t mlVOutState = 0;

    // ---- Analysis (see the public block above) ----
    void makeAnalysisMenus(QMenu* file, QMenu* wave);
    void connectAnalysisHandlers();
    // True while the plot shows the spectrum rather than the time response.
    bool mbSpectrumShown() const;
    // The signal the spectrum and the export use: the last recording (a
    // measured burst or tone) while it stands, else the loop the engine made
    // and plays, its first lMax samples (all when lMax < 1). Returns its
    // rate (0: nothing to use).
    std::int32_t mlAnalysedSignal(rt::SampleArray& anSignal, std::int32_t lMax);
    // Draws the spectrum of the analysed signal and its figures on the plot.
    void mShowSpectrum(ErrorFlag& bError);
    // Records a second of the signal as it plays (Measure tone, the remote
    // measurement) and keeps it as the analysed signal.
    void mRecordPlayingTone(ErrorFlag& bError);
    // Keeps anRecord, recorded at the input's rate, as the analysed signal.
    void mKeepRecording();
    // A made signal replaces the recording as what is analysed.
    void mForgetRecording();
    // The verdict of the burst just measured, on the plot and in lblVerdict.
    void mShowPolarityVerdict(ErrorFlag& bError);
    // The last recording (a measured burst, Measure tone or a remote
    // measurement) and its rate; empty once a new signal is made.
    rt::SampleArray anRecorded;
    std::int32_t recordedRate_ = 0;
    std::string verdictText_;
    // The verdict behind verdictText_, for the remote commands; none when
    // the recording and the burst could not be compared.
    std::optional<PolarityVerdict> verdict_;

    bool unloadedUnseen_ = false;
    bool unloaded_ = false;
    // The plot is set up once start-up has prepared it (normal path only).
    bool plotReady_ = false;

    QWidget* makeSignalPanel();
    QWidget* makeLevelPanel();
    QWidget* makeTabs();
    QWidget* makeSweepPage();
    QWidget* makeBurstPage();
    QWidget* makeInfoPage();
    QWidget* makeSystemPage();
    void makeMenus();
    void makeAccessible();

    template <class Widget, class... Args>
    Widget* make(Args&&... args);
    QAction* addMenuItem(QMenu* menu, const char* name, const char* caption);

    ui::ControlList controls_;

    // ---- The status in words, the lost output (frmWavelarkStatus.cpp) and
    // the level bars' tooltips (frmWavelarkAccess.cpp) ----
public:
    // The status bar's main text: what the output does, in words, then the
    // device and its rate.
    QLabel* lblStatus = nullptr;

private:
    void makeStatusBar();
    // Says in lblStatus what lblOutLevel's colour and the controls say;
    // called after every change the window applies.
    void mStatusUpdate();
    // What the output does when it is not lost, without the device.
    std::string msStatusSignal();
    // Every few hundred milliseconds: tells a lost output (label, plot,
    // status and one log entry) with nothing touched.
    void tmrOutputLost_Timer();
    QTimer* tmrOutputLost = nullptr;
    bool outputLostTold_ = false;
    // Both bars' level in per cent, the output's also in volts once
    // calibrated, as tooltip and accessible description.
    void mLevelTipsUpdate();

    // ---- Remote control (frmWavelarkRemote.cpp) ----
public:
    // File > Remote control: checked while the server listens.
    QAction* mnuFiRemote = nullptr;
    void mnuFiRemote_Click();
    // Whether the server listens, and the port it listens (or last
    // listened) on; both kept with the settings.
    bool remoteOn() const;
    std::uint16_t remotePort() const { return remotePort_; }
    // From the settings at start-up: the port, then whether to listen.
    void setRemotePort(std::int32_t port);
    void setRemoteOn(bool on);

private:
    class RemoteControl;
    void makeRemote();
    // Starts the server on the port; a port that cannot be had is told in a
    // box and leaves it off.
    bool mbRemoteStart(std::uint16_t port);
    void mRemoteStop();
    void mRemoteShowStatus();
    std::shared_ptr<RemoteControl> remote_;
    std::uint16_t remotePort_ = 5025;
    QLabel* lblRemote = nullptr;
};
