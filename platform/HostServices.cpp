#include "platform/HostServices.h"

#include "base/NumberText.h"
#include "platform/SystemHost.h"

namespace host {

namespace {

HostServices* gInstalled = nullptr;

HostServices& systemHost()
{
    static SystemHost host;
    return host;
}

std::string hostDecimalChar()
{
    return current().localeInfo(LocaleItem::DecimalSeparator).value_or(std::string());
}

// The run-time's conversions read the decimal character from whichever host
// is installed (the system host until one is).
const bool gDecimalCharSourceSet = (rt::setDecimalCharSource(&hostDecimalChar), true);

}  // namespace

std::string HostServices::getSetting(const std::string& appKey, const std::string& section,
                                     const std::string& key, const std::string& defaultValue)
{
    return openSettings(appKey, section)->get(key, defaultValue);
}

void HostServices::saveSetting(const std::string& appKey, const std::string& section,
                               const std::string& key, const std::string& value)
{
    const std::unique_ptr<SettingsBatch> batch = openSettings(appKey, section);
    batch->save(key, value);
    batch->commit();
}

std::int32_t HostServices::openAddress(const std::string&) { return kOpenNoAssociation; }
bool HostServices::startSystemInfo() { return false; }

HostServices& current() { return gInstalled != nullptr ? *gInstalled : systemHost(); }

void install(HostServices* services) { gInstalled = services; }

std::int16_t msgBox(const std::string& text, std::int32_t style, const std::string& title)
{
    return current().msgBox(text, style, title);
}

void beep() { current().beep(); }
std::uint32_t tickCount() { return current().tickCount(); }
void sleep(std::uint32_t milliseconds) { current().sleep(milliseconds); }
std::int32_t openAddress(const std::string& address) { return current().openAddress(address); }
bool startSystemInfo() { return current().startSystemInfo(); }

std::int16_t defaultAnswer(std::int32_t style)
{
    static const std::int16_t buttons[6][3] = {
        {kResultOk, kResultOk, kResultOk},
        {kResultOk, kResultCancel, kResultCancel},
        {kResultAbort, kResultRetry, kResultIgnore},
        {kResultYes, kResultNo, kResultCancel},
        {kResultYes, kResultNo, kResultNo},
        {kResultRetry, kResultCancel, kResultCancel},
    };
    const int set = style & 7;
    const int defaultIndex = (style >> 8) & 3;
    if (set > 5 || defaultIndex > 2) return kResultOk;
    return buttons[set][defaultIndex];
}

}  // namespace host
