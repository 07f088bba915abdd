#pragma once
// A host for tests: every message box is recorded (text, style, title) and
// answered from a queue (when the queue is empty: Abort for an Abort / Retry /
// Ignore box, the default button for any other), beeps are counted, the
// locale and the kernel are set by the test, and the program and the
// settings live in temporary folders (the settings in the real store, so
// batches behave as the program's do). The clock is real by default; in
// simulated time the tick count stands still until something sleeps, and
// each sleep advances it by exactly that long and tells the listeners (the
// virtual sound card follows it). Addresses are recorded, never opened;
// what opening one answers is set by the test.
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
    // Every box shown so far as "title: text" lines, for a failure message.
    std::string boxTexts() const;
    std::deque<std::int16_t> answers;
    // Called while a box is "shown", before it is answered (a test can look
    // at the program's state then).
    std::function<void(const Box&)> onBox;
    int beeps = 0;
    // No value makes the locale call fail.
    std::optional<std::string> decimalChar = std::string(".");
    std::optional<std::string> regionCode = std::string("44");
    // No value makes the kernel unreadable.
    std::optional<host::SystemVersion> osVersion =
        host::SystemVersion{"6.1.0-27-amd64", "#1 SMP PREEMPT_DYNAMIC Debian 6.1.112-1"};
    // "The program": in a temporary folder of its own, so the error log goes
    // there.
    std::string programFile;
    // The instance marker: whether an earlier copy holds it, and whether it
    // answers when asked to come forward (each request is counted).
    bool earlierCopyRunning = false;
    bool earlierCopyAnswers = true;
    int activationRequests = 0;

    void useSimulatedTime(std::uint32_t startTick = 1000);
    bool simulatedTime() const { return simulated_; }
    // Listeners told of every simulated sleep, with its length in ms.
    std::vector<std::function<void(std::uint32_t)>> sleepListeners;
    std::uint64_t sleptMs = 0;

    // Every address opened, and what opening one answers.
    std::vector<std::string> openedAddresses;
    std::int32_t openAddressResult = host::kOpenDone;

    const std::string& settingsFolder() const { return settingsFolder_; }
    std::string settingsFile() const { return settings_.filePath("Marlo"); }

    std::int16_t msgBox(const std::string& text, std::int32_t style,
                        const std::string& title) override;
    void beep() override { ++beeps; }
    std::uint32_t tickCount() override;
    void sleep(std::uint32_t milliseconds) override;
    std::optional<std::string> localeInfo(host::LocaleItem item) override;
    std::optional<host::SystemVersion> systemVersion() override { return osVersion; }
    std::string programPath() override { return programFile; }
    bool previousInstance() override { return earlierCopyRunning; }
    bool activatePreviousInstance() override
    {
        ++activationRequests;
        return earlierCopyAnswers;
    }
    std::unique_ptr<host::SettingsBatch> openSettings(const std::string& appKey,
                                                      const std::string& section) override;
    std::int32_t openAddress(const std::string& address) override;

private:
    std::string settingsFolder_;
    host::SettingsStore settings_;
    bool simulated_ = false;
    std::uint32_t tick_ = 0;
};

}  // namespace testing_support
