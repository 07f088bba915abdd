#pragma once
// A host for tests: every message box is recorded (text, style, title) and
// answered from a queue (when the queue is empty: Abort for an Abort / Retry /
// Ignore box, the default button for any other), beeps
// are counted, the locale is set by the test, settings live in a temporary
// folder. The clock is real by default; in simulated time the tick count
// stands still until something sleeps, and each sleep advances it by exactly
// that long and tells the listeners (the virtual sound card follows it).
// Addresses and the system-information program are recorded, never opened
// or started; their answers are set by the test.
// Installed for the life of the object.
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/HostServices.h"
#include "platform/SettingsStore.h"

namespace testing_support {

class ScriptedHost : public host::HostServices {
public:
    struct Box {
        std::string text;
        std::int32_t style;
        std::string title;
    };

    ScriptedHost();
    ~ScriptedHost() override;
    ScriptedHost(const ScriptedHost&) = delete;
    ScriptedHost& operator=(const ScriptedHost&) = delete;

    std::vector<Box> boxes;
    std::deque<std::int16_t> answers;
    // Called while a box is "shown", before it is answered (a test can look
    // at the program's state then).
    std::function<void(const Box&)> onBox;
    int beeps = 0;
    // No value makes the locale call fail.
    std::optional<std::string> decimalChar = std::string(".");
    std::optional<std::string> regionCode = std::string("44");

    void useSimulatedTime(std::uint32_t startTick = 1000);
    bool simulatedTime() const { return simulated_; }
    // Listeners told of every simulated sleep, with its length in ms.
    std::vector<std::function<void(std::uint32_t)>> sleepListeners;
    std::uint64_t sleptMs = 0;

    // Every address opened, and what opening one answers.
    std::vector<std::string> openedAddresses;
    std::int32_t openAddressResult = host::kOpenDone;
    // How often the system-information program was started, and whether one
    // is installed.
    int systemInfoStarts = 0;
    bool systemInfoInstalled = true;

    const std::string& settingsFolder() const { return settingsFolder_; }
    host::SettingsStore& settings() { return settings_; }

    std::int16_t msgBox(const std::string& text, std::int32_t style,
                        const std::string& title) override;
    void beep() override { ++beeps; }
    std::uint32_t tickCount() override;
    void sleep(std::uint32_t milliseconds) override;
    std::optional<std::string> localeInfo(host::LocaleItem item) override;
    std::string getSetting(const std::string& appKey, const std::string& section,
                           const std::string& key, const std::string& defaultValue) override;
    void saveSetting(const std::string& appKey, const std::string& section,
                     const std::string& key, const std::string& value) override;
    std::int32_t openAddress(const std::string& address) override;
    bool startSystemInfo() override;

private:
    std::string settingsFolder_;
    host::SettingsStore settings_;
    bool simulated_ = false;
    std::uint32_t tick_ = 0;
};

}  // namespace testing_support
