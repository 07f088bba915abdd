// Reaching every control without a mouse and naming it for a screen reader:
// the level bars take the focus and show their level, each control carries
// an accessible name, and the common shortcuts sit beside the accelerators.
#include <QAction>
#include <QKeySequence>
#include <QLabel>
#include <QTabWidget>

#include "base/Trap.h"
#include "calibration/modVOut.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "controls/VScrollBar.h"
#include "mixer/modMixer.h"
#include "window/frmWavelark.h"

namespace {

QString withoutAccelerator(QString caption) { return caption.remove('&'); }

// The level a bar stands at in per cent of full: 0 (the top) is 100 %.
QString levelText(const ui::VScrollBar* bar)
{
    const int percent = static_cast<int>((kLevelBarBottom - bar->value()) * 100.0 / kLevelBarBottom + 0.5);
    return QString::number(percent) + " %";
}

}  // namespace

void frmWavelark::mLevelTipsUpdate()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mLevelTipsUpdate", bError);
    QString output = "Output level " + levelText(vsbOutLevel);
    trap.step([&] {
        const std::string volts = gsVOutLevelVolts(vsbOutLevel->Value(), txtVOutMax->control().text(),
                                                   txtVOut2->control().text(), bError);
        if (!volts.empty()) output += QString::fromStdString(" (" + volts + " V)");
    });
    const QString input = "Input level " + levelText(vsbInLevel);
    for (const auto& [bar, tip] : {std::pair{vsbOutLevel, output}, std::pair{vsbInLevel, input}}) {
        bar->setToolTip(tip);
        bar->setAccessibleDescription(tip);
    }
}

void frmWavelark::makeAccessible()
{
    // A box, spin or bar is named by the label that stands for it.
    for (QLabel* label : findChildren<QLabel*>())
        if (QWidget* buddy = label->buddy(); buddy != nullptr && buddy->accessibleName().isEmpty())
            buddy->setAccessibleName(withoutAccelerator(label->text()));
    const std::pair<QWidget*, const char*> unlabelled[] = {
        {updPercent, "Percent"},
        {txtBurstPeriod, "Burst period (ms)"},
        {updBurstPeriod, "Burst period (ms)"},
        {txtBurstCycles, "Burst cycles"},
        {txtFrequency2, "Frequency 2 (Hz)"},
        {txtSweepDuration, "Sweep duration (s)"},
        {txtVOutIdent, "Calibration ident"},
        {txtVOutMax, "Output maximum (V)"},
        {txtVOut2, "Output 2 (V)"},
        {vsbInLevel, "Input level"},
        {vsbOutLevel, "Output level"},
        {picPolarity, "Time response plot"},
        {txtInfo, "Device information"},
        {tabTab, "Settings pages"},
    };
    for (const auto& [widget, name] : unlabelled) widget->setAccessibleName(name);

    for (ui::VScrollBar* bar : {vsbOutLevel, vsbInLevel}) {
        bar->setFocusPolicy(Qt::StrongFocus);  // Tab and the "Ou&t" accelerator reach it
        connect(bar, &QScrollBar::valueChanged, this, &frmWavelark::mLevelTipsUpdate);
    }
    // A calibration typed or stepped into the System page shows at once.
    for (ui::TextBox* box : {txtVOutMax, txtVOut2})
        connect(box, &QLineEdit::textChanged, this, &frmWavelark::mVOutUpdate);
    mLevelTipsUpdate();

    mnuFiExit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    mnuFiPrint->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
    mnuHAbout->setShortcut(QKeySequence(Qt::Key_F1));
}
