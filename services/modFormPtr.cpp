#include "services/modFormPtr.h"

#include "base/Convert.h"
#include "base/Trap.h"
#include "platform/Forms.h"

std::int16_t gnFormPtr(const std::string& sFormName, ErrorFlag& bError)
{
    std::int16_t found = -1;
    rt::Trap trap("modFormPtr", "gnFormPtr", bError);
    trap.step([&] {
        const auto& forms = ui::openForms();
        for (std::size_t i = 0; i < forms.size(); ++i) {
            if (forms[i]->formName() == sFormName) {
                found = rt::toInt16(static_cast<double>(i));
                return;
            }
        }
    });
    return found;
}
