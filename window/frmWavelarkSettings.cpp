// The main window's settings: read into the controls at start-up
// (mGetSettings) and written back at a normal shutdown (writeSettings, part
// of Form_Unload). One table gives every key, in the order both ways, with
// how its value goes into its control and comes out of it; each way goes
// through one session of the settings store.
#include <functional>
#include <memory>
#include <source_location>
#include <string>
#include <vector>

#include <QAction>
#include <QTabWidget>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "controls/VScrollBar.h"
#include "engine/modWaveInOut.h"
#include "entry/modGetLocaleInfo.h"
#include "mixer/modMixer.h"
#include "platform/Colours.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"
#include "window/frmWavelark.h"

namespace {

struct Setting {
    const char* key;
    std::string defaultValue;
    // Puts a stored value into the control; a value that does not convert
    // or that the control refuses raises a run-time error.
    std::function<void(const std::string&)> read;
    // The control's value as it is stored.
    std::function<std::string()> write;
    // The row's line, so that the error log names the key that failed.
    std::source_location where;
};

// The row whose default is computed while reading: the burst period.
constexpr std::size_t kBurstPeriodRow = 15;

std::string integerText(std::int32_t value) { return std::to_string(value); }

// A check box takes 0 (clear), 1 (checked) or 2 (greyed, shown checked);
// anything else is an invalid property value.
void setCheckValue(ui::CheckBox& box, const std::string& stored)
{
    const std::int16_t value = rt::toInt16(rt::toInt32User(stored));
    if (value < 0 || value > 2) rt::raise(rt::kErrInvalidPropertyValue);
    box.setValue(value);
}

void setTabIndex(QTabWidget& tabs, const std::string& stored)
{
    const std::int16_t index = rt::toInt16(rt::toDoubleUser(stored));
    if (index < 0 || index >= tabs.count()) rt::raise(rt::kErrInvalidPropertyValue);
    tabs.setCurrentIndex(index);
}

Setting textRow(const char* key, const char* defaultValue, ui::TextBox* box,
                std::source_location where = std::source_location::current())
{
    return {key, defaultValue, [box](const std::string& v) { box->control().setText(v); },
            [box] { return box->control().text(); }, where};
}

Setting levelRow(const char* key, ui::VScrollBar* bar,
                 std::source_location where = std::source_location::current())
{
    return {key, "16384",
            [bar](const std::string& v) { bar->setValue16(rt::toInt16(rt::toInt32User(v))); },
            [bar] { return integerText(bar->Value()); }, where};
}

Setting optionRow(const char* key, const char* defaultValue, ui::OptionButton* option,
                  std::source_location where = std::source_location::current())
{
    return {key, defaultValue, [option](const std::string& v) { option->setValue(rt::toBooleanUser(v)); },
            [option] { return rt::booleanText(option->value()); }, where};
}

Setting checkRow(const char* key, ui::CheckBox* box,
                 std::source_location where = std::source_location::current())
{
    return {key, "0", [box](const std::string& v) { setCheckValue(*box, v); },
            [box] { return integerText(box->value()); }, where};
}

// A voltage: read as a number and shown again in the user's form.
Setting voltsRow(const char* key, ui::TextBox* box,
                 std::source_location where = std::source_location::current())
{
    return {key, "0",
            [box](const std::string& v) { box->control().setText(rt::userText(rt::toSingleUser(v))); },
            [box] { return box->control().text(); }, where};
}

// The text of a box that an up-down steps is stored, but the value goes
// back into the up-down, whose Change writes the box: a fraction comes back
// rounded.
Setting steppedRow(const char* key, const char* defaultValue, ui::TextBox* box, ui::UpDown* upDown,
                   std::source_location where = std::source_location::current())
{
    return {key, defaultValue, [upDown](const std::string& v) { upDown->setValue(rt::toInt32User(v)); },
            [box] { return box->control().text(); }, where};
}

std::vector<Setting> settingsTable(frmWavelark& w)
{
    std::vector<Setting> table{
        steppedRow("txtPercent", "50", w.txtPercent, w.updPercent),
        textRow("txtFrequency1", "440", w.txtFrequency1),
        textRow("txtFrequency2", "4400", w.txtFrequency2),
        levelRow("vsbOutLevel", w.vsbOutLevel),
        levelRow("vsbInLevel", w.vsbInLevel),
        // Setting an option runs its Click; the last shape stored as "True" wins.
        optionRow("optSine", "True", w.optSine),
        optionRow("optTriangle", "False", w.optTriangle),
        optionRow("optNoise", "False", w.optNoise),
        optionRow("optMarkSpace", "False", w.optMarkSpace),
        checkRow("chkInvert", w.chkInvert),
        checkRow("chkSweep", w.chkSweep),
        {"optSweepLog", "False",
         [&w](const std::string& v) {
             w.optSweepLog->setValue(rt::toBooleanUser(v));
             w.optSweepLin->setValue(!w.optSweepLog->value());
         },
         [&w] { return rt::booleanText(w.optSweepLog->value()); }, std::source_location::current()},
        checkRow("chkSweepBi", w.chkSweepBi),
        textRow("txtSweepDuration", "5", w.txtSweepDuration),
        textRow("txtBurstCycles", "2", w.txtBurstCycles),
        steppedRow("txtBurstPeriod", "", w.txtBurstPeriod, w.updBurstPeriod),
        checkRow("chkBurstMeasure", w.chkBurstMeasure),
        textRow("txtVOutIdent", "", w.txtVOutIdent),
        voltsRow("txtVOutMax", w.txtVOutMax),
        voltsRow("txtVOut2", w.txtVOut2),
        {"tabTab.Tab", "0", [&w](const std::string& v) { setTabIndex(*w.tabTab, v); },
         [&w] { return integerText(w.tabTab->currentIndex()); }, std::source_location::current()},
        {"picPolarity.BackColor", integerText(ui::kColourButtonFace),
         [&w](const std::string& v) { w.picPolarity->setBackColor(rt::toInt32User(v)); },
         [&w] { return integerText(w.picPolarity->backColor()); }, std::source_location::current()},
        // Analysis: the precise loop, off unless the user chose it; the
        // signal made after the settings are read uses it.
        {"mnuWavePreciseLoop", "False",
         [&w](const std::string& v) {
             w.mnuWavePreciseLoop->setChecked(rt::toBooleanUser(v));
             gWaveOutSetPreciseLoop(toBool16(w.mnuWavePreciseLoop->isChecked()));
         },
         [&w] { return rt::booleanText(w.mnuWavePreciseLoop->isChecked()); }, std::source_location::current()},
        // Remote control: its port, then whether it listens (off unless
        // the user turned it on).
        {"RemotePort", "5025", [&w](const std::string& v) { w.setRemotePort(rt::toInt32User(v)); },
         [&w] { return integerText(w.remotePort()); }, std::source_location::current()},
        {"RemoteControl", "False", [&w](const std::string& v) { w.setRemoteOn(rt::toBooleanUser(v)); },
         [&w] { return rt::booleanText(w.remoteOn()); }, std::source_location::current()},
    };
    return table;
}

}  // namespace

void frmWavelark::mGetSettings(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mGetSettings", bError);
    // A changed region may have changed the decimal character the numbers
    // were stored with: the controls keep their built-in values, and the
    // mixer stays as found.
    if (gbUserRegionChanged) return;

    trap.step([&] { gMixerOutMasterSetMute(kFalse, bError); });
    if (bError) return;
    trap.step([&] { gMixerOutWaveSetMute(kFalse, bError); });
    if (bError) return;
    trap.step([&] { gMixerOutWaveSetLevel(65535, bError); });
    if (bError) return;

    std::unique_ptr<host::SettingsBatch> store;
    trap.step([&] { store = host::current().openSettings(kSettingsAppKey, kSettingsSection); });
    std::vector<Setting> table = settingsTable(*this);
    const auto readRows = [&](std::size_t first, std::size_t end) {
        for (std::size_t row = first; row < end; ++row) {
            const Setting& setting = table[row];
            trap.step(
                [&] {
                    setting.read(store ? store->get(setting.key, setting.defaultValue)
                                       : setting.defaultValue);
                },
                setting.where);
        }
    };
    readRows(0, kBurstPeriodRow);
    // The burst period's default is the shortest period for the cycles and
    // frequency just restored.
    trap.step([&] { table[kBurstPeriodRow].defaultValue = integerText(mlBurstPeriodMin(bError)); });
    if (bError) return;
    readRows(kBurstPeriodRow, table.size());
}

void frmWavelark::writeSettings(rt::Trap& trap, host::SettingsBatch& store)
{
    for (const Setting& setting : settingsTable(*this))
        trap.step([&] { store.save(setting.key, setting.write()); }, setting.where);
    // One write of the whole file; a failure keeps the saves, so Retry
    // writes them again.
    trap.step([&] { store.commit(); });
}
