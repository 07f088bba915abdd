#pragma once
// The main window: the signal panel (frequency, shape, symmetry, inversion,
// sweep switch, levels, mute, the time-response picture) above a four-page
// tab control (Sweep, Burst, Info, System), and the File, Wave and Help menus.
// Members carry the control names; handlers carry the event names.
#include <cstdint>
#include <string>

#include <QMainWindow>

#include "base/Types.h"
#include "platform/Control.h"
#include "controls/ControlAdapters.h"

class QAction;
class QCloseEvent;
class QMenu;
class QTabWidget;

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

protected:
    // The title-bar close and the window manager's close.
    void closeEvent(QCloseEvent* event) override;

private:
    // Start-up, settings, the Info page and the level bars.
    void connectLifeHandlers();
    // Parts of Form_Load and Form_Unload, run as steps of their traps.
    void loadNormal(rt::Trap& trap, const std::string& sMixerReport, ErrorFlag& bError);
    void loadProblem(rt::Trap& trap, ErrorFlag& bError);
    void clampFrequencies(rt::Trap& trap);
    void writeSettings(rt::Trap& trap);
    void mGetSettings(ErrorFlag& bError);
    void mInitInfo(const std::string& sMixerReport, ErrorFlag& bError);
    void vsbOutLevel_Change();
    void vsbOutLevel_Scroll();
    void vsbInLevel_Change();
    void vsbInLevel_Scroll();
    void mOutLevelChange(ErrorFlag& bError);
    void mInLevelChange(ErrorFlag& bError);
    void mVOutUpdate();
    void picPolarity_Resize();

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

    template <class Widget, class... Args>
    Widget* make(Args&&... args);
    QAction* addMenuItem(QMenu* menu, const char* name, const char* caption);

    ui::ControlList controls_;
};
