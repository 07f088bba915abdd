#pragma once
// The host services of a process without windows: message boxes go to the
// error stream and take their default button, the clock is the steady clock,
// the locale is the system's, the kernel is uname's, the program is the
// running executable and the settings are the user's settings file.
// The program's Qt host (QtHost) builds on it.
#include "platform/HostServices.h"
#include "platform/SettingsStore.h"

namespace host {

class SystemHost : public HostServices {
public:
    SystemHost();

    std::int16_t msgBox(const std::string& text, std::int32_t style,
                        const std::string& title) override;
    void beep() override;
    std::uint32_t tickCount() override;
    void sleep(std::uint32_t milliseconds) override;
    std::optional<std::string> localeInfo(LocaleItem item) override;
    std::optional<SystemVersion> systemVersion() override;
    std::string programPath() override;
    std::unique_ptr<SettingsBatch> openSettings(const std::string& appKey,
                                                const std::string& section) override;

private:
    SettingsStore settings_;
};

}  // namespace host
