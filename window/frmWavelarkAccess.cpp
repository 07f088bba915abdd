// Reaching every control without a mouse and naming it for a screen reader:
// the level bars take the focus and show their level, each control carries
// an accessible name, and the common shortcuts sit beside the accelerators.
#include <QAction>
#include <QKeySequence>
#include <QLabel>
#include <QTabWidget>

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
int levelPercent(const ui::VScrollBar* bar)
{
    return static_cast<int>((kLevelBarBottom - bar->value()) * 100.0 / kLevelBarBottom + 0.5);
}

}  // namespace

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
        auto showLevel = [bar] {
            const QString level = QString::number(levelPercent(bar)) + " %";
            bar->setAccessibleDescription(level);
            bar->setToolTip(level);
        };
        connect(bar, &QScrollBar::valueChanged, this, showLevel);
        showLevel();
    }

    mnuFiExit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    mnuFiPrint->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
    mnuHAbout->setShortcut(QKeySequence(Qt::Key_F1));
}
