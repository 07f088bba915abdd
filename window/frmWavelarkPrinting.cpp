// File > Print (Ctrl+P): the window on one page of the printer the user
// chooses, with the plot redrawn on the page and a byline naming the
// program, the time and the output device. "Print to File" writes a PDF and
// needs no printer at all.
#include <QAction>
#include <QDateTime>
#include <QPrintDialog>
#include <QPrinter>
#include <QRect>

#include "base/Convert.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "engine/modTimeResponseShow.h"
#include "engine/modWaveInOut.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"
#include "window/frmWavelark.h"
#include "window/modPrintForm.h"

namespace {

// "Wavelark v1.0.0    Printed 2026-11-23 15:04    Output: Wavelark Virtual Card"
std::string bylineNow()
{
    const std::string printed =
        QDateTime::currentDateTime().toString("yyyy-MM-dd hh:mm").toStdString();
    return gsProgNameVersion + "    Printed " + printed + "    Output: " + gWaveOutInfo().name;
}

}  // namespace

void frmWavelark::mnuFiPrint_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuFiPrint_Click", bError);
    trap.step([&] {
        QPrinter printer(QPrinter::HighResolution);
        printer.setDocName(windowTitle());
        QPrintDialog dialog(&printer, this);
        // Cancelled, nothing is printed.
        if (dialog.exec() != QDialog::Accepted) return;
        PrintForm(printer, bError);
    });
}

void frmWavelark::PrintForm(QPrinter& printer, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "PrintForm", bError);
    std::string failure;
    trap.step([&] {
        failure = gsPrintForm(*this, printer, bylineNow(), [this](ui::PlotSurface& page, const QRect& area) {
            // The made signal as the screen shows it, on the page.
            ErrorFlag bPlot = kFalse;
            gnTimeResponseInit(page, rt::toInt16(area.left()), rt::toInt16(area.top()),
                               rt::toInt16(area.width()), rt::toInt16(area.height()), bPlot);
            if (!bPlot) mShowTimeResponse(lblOutLevel->foreColor(), bPlot);
        });
    });
    // The plot draws on the screen again, where it left off: what the
    // picture box holds stays.
    trap.step([&] {
        if (!plotReady_) return;
        gnTimeResponseInit(*picPolarity, 0, 0, rt::toInt16(picPolarity->scaleWidth()),
                           rt::toInt16(picPolarity->scaleHeight()), bError);
    });
    trap.step([&] {
        if (failure.empty()) return;
        host::msgBox(failure, host::kExclamation, windowTitle().toStdString());
        bError = kTrue;
    });
}

void frmWavelark::connectPrintHandlers()
{
    connect(mnuFiPrint, &QAction::triggered, this, &frmWavelark::mnuFiPrint_Click);
}
