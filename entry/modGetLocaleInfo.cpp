#include "entry/modGetLocaleInfo.h"

#include <cstdint>
#include <memory>

#include "base/Trap.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "modGetLocaleInfo";
constexpr const char* kRegionKey = "UserRegion";

// One item of the user's locale. A failing read shows its own message and
// gives an empty text without setting the error flag: callers go on with an
// empty decimal character or region code.
std::string msGetLocaleInfoUser(host::LocaleItem LCType, ErrorFlag& bError)
{
    std::string result;
    rt::Trap trap(kModule, "msGetLocaleInfoUser", bError);
    trap.step([&] {
        const std::optional<std::string> value = host::current().localeInfo(LCType);
        if (!value) {
            host::msgBox("Error occurred with GetLocaleInfo", host::kExclamation,
                         std::string(kModule) + ".msGetLocaleInfoUser");
            return;
        }
        // A platform text may carry its terminator; the item ends before it.
        result = value->substr(0, value->find('\0'));
    });
    return result;
}

std::string msGetLocaleInfoUserRegionCode(ErrorFlag& bError)
{
    return msGetLocaleInfoUser(host::LocaleItem::RegionCode, bError);
}

}  // namespace

std::string gsGetLocaleInfoUserDecimalChar(ErrorFlag& bError)
{
    return msGetLocaleInfoUser(host::LocaleItem::DecimalSeparator, bError);
}

Bool16 gbGetLocaleInfoUserRegionChanged(ErrorFlag& bError)
{
    Bool16 changed = kFalse;
    rt::Trap trap(kModule, "gbGetLocaleInfoUserRegionChanged", bError);
    std::string stored;
    trap.step([&] {
        stored = host::current().getSetting(kSettingsAppKey, kSettingsSection, kRegionKey, "");
    });
    trap.step([&] {
        if (stored.empty()) {
            trap.leave();  // first run: nothing was written under another region
            return;
        }
        const std::string current = msGetLocaleInfoUserRegionCode(bError);
        if (current == stored || bError) return;
        host::msgBox("Your region setting has changed\r\n\r\nResetting start up defaults",
                     host::kExclamation + host::kOkOnly, gsProgNameVersion);
        changed = kTrue;
    });
    return changed;
}

void gGetLocaleInfoSaveUserRegion(host::SettingsBatch& store, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gGetLocaleInfoSaveUserRegion", bError);
    trap.step([&] {
        const std::string current = msGetLocaleInfoUserRegionCode(bError);
        if (bError || current.empty()) return;
        store.save(kRegionKey, current);
    });
}

void gGetLocaleInfoSaveUserRegion(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gGetLocaleInfoSaveUserRegion", bError);
    std::unique_ptr<host::SettingsBatch> store;
    trap.step([&] { store = host::current().openSettings(kSettingsAppKey, kSettingsSection); });
    if (!store) return;
    gGetLocaleInfoSaveUserRegion(*store, bError);
    trap.step([&] { store->commit(); });
}
