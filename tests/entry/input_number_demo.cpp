// Opens the number-entry dialog for a person to try: first a real number
// (0.25 to 10, two decimals, Cancel allowed), then a whole number with the
// spin control and no Cancel. Everything can be done with the keyboard:
// type, Up/Down/Page keys with Shift and Ctrl, Enter to accept, Esc to
// cancel. The answers are printed.
#include <cstdio>

#include <QApplication>

#include "entry/frmInputNumber.h"
#include "entry/modInputNumber.h"
#include "platform/HostServices.h"
#include "platform/qt/QtHost.h"
#include "services/modErrorHandler.h"

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    host::QtHost qtHost;
    host::install(&qtHost);
    gInstallErrorHandler();
    gInstallInputNumberDialog();

    ErrorFlag bError = kFalse;
    const std::string cycles = gsInputNumber("Burst Cycles", "Cycles per burst (0.25 to 10)", 2,
                                             10, 0.25f, 0.05f, false, true, bError);
    std::printf("Cycles: \"%s\"%s\n", cycles.c_str(), bError ? " (failed)" : "");

    bError = kFalse;
    const std::string period = gsInputNumber("Burst Period", "", 100, 2000, 2, 1, true, false, bError);
    std::printf("Period: \"%s\"%s\n", period.c_str(), bError ? " (failed)" : "");

    host::install(nullptr);
    return 0;
}
