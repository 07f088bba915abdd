// Wavelark: a sound-card signal generator and test instrument.
#include <QApplication>
#include <QIcon>

#include "BuildInfo.h"
#include "app/CommandLine.h"
#include "app/Display.h"
#include "entry/frmInputNumber.h"
#include "platform/HostServices.h"
#include "platform/qt/QtHost.h"
#include "services/modErrorHandler.h"
#include "window/frmWavelark.h"

namespace {

// Names the program for the settings store, the window manager and the
// desktop entry, and gives every window its icon.
void describeProgram()
{
    QApplication::setApplicationName("Wavelark");
    QApplication::setOrganizationName("Marlo");
    QApplication::setApplicationVersion(QStringLiteral("%1.%2.%3")
                                            .arg(buildinfo::kVersionMajor)
                                            .arg(buildinfo::kVersionMinor)
                                            .arg(buildinfo::kVersionRevision));
    QApplication::setDesktopFileName("io.github.marlo.Wavelark");
    QIcon icon;
    for (const char* size : {"48", "256"}) icon.addFile(QStringLiteral(":/icons/%1/io.github.marlo.Wavelark.png").arg(size));
    QApplication::setWindowIcon(icon);
}

}  // namespace

int main(int argc, char* argv[])
{
    if (const auto status = app::commandLineExitStatus(argc, argv)) return *status;
    const auto application = app::openDisplayOrExit(argc, argv);
    describeProgram();

    host::QtHost qtHost;
    host::install(&qtHost);
    gInstallErrorHandler();
    gInstallInputNumberDialog();

    frmWavelark window;
    window.Form_Load();
    if (window.unloadedUnseen()) return 0;  // an earlier copy was brought forward
    window.show();
    const int result = QApplication::exec();
    host::install(nullptr);
    return result;
}
