#include "entry/modInputNumber.h"

#include "base/Trap.h"

namespace {

InputNumberDialog gDialog;

}  // namespace

void gSetInputNumberDialog(InputNumberDialog dialog) { gDialog = std::move(dialog); }

std::string gsInputNumber(const std::string& isHeader, const std::string& isPrompt, float ifValue,
                          float ifMax, float ifMin, float ifResolution, bool ibInteger,
                          bool ibAllowCancel, ErrorFlag& bError)
{
    std::string result;
    rt::Trap trap("modInputNumber", "gsInputNumber", bError);
    trap.step([&] {
        if (!gDialog) return;
        InputNumber request{isHeader, isPrompt, ifValue, ifMax, ifMin, ifResolution,
                            ibInteger, ibAllowCancel, false};
        result = gDialog(request);
        if (request.obError) {
            bError = kTrue;
            result.clear();
        }
    });
    return result;
}
