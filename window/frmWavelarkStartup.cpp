// Bringing the program up (Form_Load) and taking it down (Form_Unload),
// and the ways the window closes: File > Exit, the title bar, the window
// manager.
#include <memory>

#include <QCloseEvent>
#include <QString>

#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutMixer.h"
#include "entry/modGetLocaleInfo.h"
#include "mixer/modMixer.h"
#include "platform/HostServices.h"
#include "services/frmAbout.h"
#include "services/modActivatePrevInstance.h"
#include "services/modControlsEnable.h"
#include "services/modGeneral.h"
#include "window/frmWavelark.h"

namespace {

constexpr const char* kProblemCaption = "Wave Device Problem!";
constexpr float kLowestFrequency = 10;

// The mixer report up to the line break before its "Info on Mixer 0
// follows" line; a report without "Info" there cannot be cut (error 5).
std::string reportBeforeInfo(const std::string& report)
{
    const std::size_t info = report.find("Info");
    if (info == std::string::npos || info < 2) rt::raise(rt::kErrInvalidCall);
    return report.substr(0, info - 2);
}

}  // namespace

void frmWavelark::Form_Load()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "Form_Load", bError);
    bool refused = false;
    trap.step([&] { refused = host::current().previousInstance(); });
    if (refused) {
        // Nothing else runs: no settings, no devices, no window.
        trap.step([&] { gActivatePrevInstance(bError); });
        unloadedUnseen_ = true;
        return;
    }
    trap.step([&] { gGStartUpSetStuff(bError); });
    trap.step([&] { setWindowTitle(QString::fromStdString(gsProgNameVersion)); });
    std::string report;
    Bool16 devicesThere = kFalse;
    trap.step([&] { devicesThere = gbWaveInOutMixerThere(kTrue, report, bError); });
    if (trap.leaving()) return;
    if (devicesThere && !bError) loadNormal(trap, report, bError);
    else loadProblem(trap, bError);
}

void frmWavelark::loadNormal(rt::Trap& trap, const std::string& sMixerReport, ErrorFlag& bError)
{
    trap.step([&] { mnTimeResponseInitDrawAxisForm(bError); });
    trap.step([&] { plotReady_ = true; });
    trap.step([&] { anRecord.redim(0, 0); });  // nothing recorded
    trap.step([&] { mGetSettings(bError); });
    // Only a device of 16 bits or more gets clamped frequencies, the Info
    // page and a signal; an 8-bit one (or a failed restore) shows the
    // settings as restored and nothing more.
    if (bError || gWaveOutInfo().bits < 16) return;
    clampFrequencies(trap);
    trap.step([&] { mSetBurstPeriodUpDown(bError); });
    if (bError) return;
    trap.step([&] { gbGSetFocus(chkMute->control()); });
    trap.step([&] { mInitInfo(reportBeforeInfo(sMixerReport), bError); });
    if (bError) return;
    trap.step([&] { gbGSetFocus(chkMute->control()); });
    trap.step([&] { mWaveChangeShow("Make", 0, kFalse, bError); });
}

void frmWavelark::loadProblem(rt::Trap& trap, ErrorFlag& bError)
{
    // The user can still leave and read the About box; nothing else works.
    trap.step([&] { gControlsEnable(formName(), kFalse, bError); });
    trap.step([&] {
        for (QAction* menu : {mnuFile, mnuFiExit, mnuHelp, mnuHAbout}) menu->setEnabled(true);
    });
    trap.step([&] { setWindowTitle(kProblemCaption); });
}

// The first frequency is compared as a real number, the second as a
// rounded whole number: 9.6 stays, 9.4 is raised to 10.
void frmWavelark::clampFrequencies(rt::Trap& trap)
{
    const float highest = gWaveOutInfo().frequencyMax;
    ui::Control& first = txtFrequency1->control();
    ui::Control& second = txtFrequency2->control();
    trap.step([&] {
        if (rt::toSingleUser(first.text()) < kLowestFrequency) first.setText("10");
    });
    trap.step([&] {
        if (rt::toSingleUser(first.text()) > highest) first.setText(rt::userText(highest));
    });
    trap.step([&] {
        if (rt::toInt32User(second.text()) < kLowestFrequency) second.setText("10");
    });
    trap.step([&] {
        if (rt::toInt32User(second.text()) > highest) second.setText(rt::userText(highest));
    });
}

void frmWavelark::Form_Unload(std::int16_t& Cancel)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "Form_Unload", bError);
    // The device-problem caption is the only record of that state: then
    // nothing is stored and the mixer is not touched.
    bool saving = false;
    trap.step([&] { saving = !windowTitle().toUpper().contains("PROBLEM"); });
    if (!saving) return;
    // The region and the settings go in one write: the region is never
    // stored without the values written under it.
    std::unique_ptr<host::SettingsBatch> store;
    trap.step([&] { store = host::current().openSettings(kSettingsAppKey, kSettingsSection); });
    if (store) {
        trap.step([&] { gGetLocaleInfoSaveUserRegion(*store, bError); });
        writeSettings(trap, *store);
    }
    trap.step([&] { gWaveOutClose(kTrue, bError); });
    trap.step([&] { gMixerSelectedRestore(bError); });
    Cancel = 0;
}

void frmWavelark::closeEvent(QCloseEvent* event)
{
    // Once, whichever way the window closes; boxes shown while unloading
    // cannot start a second unload.
    if (!unloaded_) {
        unloaded_ = true;
        std::int16_t Cancel = 0;
        Form_Unload(Cancel);
    }
    event->accept();
}

void frmWavelark::mnuFiExit_Click()
{
    rt::Trap trap(kModule, "mnuFiExit_Click");
    trap.step([&] { close(); });
}

void frmWavelark::mnuHAbout_Click()
{
    rt::Trap trap(kModule, "mnuHAbout_Click");
    trap.step([&] { gShowAbout(this); });
}

void frmWavelark::connectLifeHandlers()
{
    connect(mnuHAbout, &QAction::triggered, this, &frmWavelark::mnuHAbout_Click);
    vsbOutLevel->Change = [this] { vsbOutLevel_Change(); };
    vsbOutLevel->Scroll = [this] { vsbOutLevel_Scroll(); };
    vsbInLevel->Change = [this] { vsbInLevel_Change(); };
    vsbInLevel->Scroll = [this] { vsbInLevel_Scroll(); };
    picPolarity->Resized = [this] { picPolarity_Resize(); };
}

// The plot fills the picture box whatever its size: a new size sets the
// plot's rectangle anew and draws the made signal again.
void frmWavelark::picPolarity_Resize()
{
    if (!plotReady_) return;
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "picPolarity_Resize", bError);
    trap.step([&] { mnTimeResponseInitDrawAxisForm(bError); });
    if (bError) return;
    trap.step([&] { mShowTimeResponse(lblOutLevel->foreColor(), bError); });
}
