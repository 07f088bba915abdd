// Wavelark: a sound-card signal generator and test instrument.
#include <QApplication>

#include "entry/frmInputNumber.h"
#include "platform/HostServices.h"
#include "platform/qt/QtHost.h"
#include "services/modErrorHandler.h"
#include "window/frmWavelark.h"

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("Wavelark");
    QApplication::setOrganizationName("Marlo");

    host::QtHost qtHost;
    host::install(&qtHost);
    gInstallErrorHandler();
    gInstallInputNumberDialog();

    frmWavelark window;
    window.Form_Load();
    window.show();
    const int result = QApplication::exec();
    host::install(nullptr);
    return result;
}
