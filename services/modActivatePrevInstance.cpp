#include "services/modActivatePrevInstance.h"

#include "base/Trap.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

void gActivatePrevInstance(ErrorFlag& bError)
{
    rt::Trap trap("modActivatePrevInstance", "gActivatePrevInstance", bError);
    trap.step([&] {
        if (host::current().activatePreviousInstance()) return;
        host::msgBox("No previous instance found in gActivatePrevInstance!",
                     host::kExclamation + host::kOkOnly, gsProgNameVersion);
    });
}
