#pragma once
// The host services of a process without windows: message boxes go to the
// error stream and take their default button, the clock is the steady clock,
// the locale is the system's, the kernel is uname's, the program is the
// running executable and the settings are the user's settings file;
// addresses go to the desktop's opener (xdg-open), and the system-information
// program is the first of kSystemInfoPrograms found on the PATH.
// The program's Qt host (QtHost) builds on it.
#include "platform/HostServices.h"
#include "platform/SettingsStore.h"

namespace host {

// The system-information programs looked for, in this order: the system
// profilers first, which show the hardware, its drivers and the operating
// system in one report (hardinfo2, and hardinfo, its name before), then a
// desktop's own information centre (KDE's kinfocenter), a hardware lister
// with a window (lshw-gtk), and last the GNOME and Xfce system monitors,
// which show at least the processor, memory and load.
inline constexpr const char* kSystemInfoPrograms[] = {
    "hardinfo2", "hardinfo", "kinfocenter", "lshw-gtk", "gnome-system-monitor", "xfce4-taskmanager",
};

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
    std::int32_t openAddress(const std::string& address) override;
    bool startSystemInfo() override;

private:
    SettingsStore settings_;
};

}  // namespace host
