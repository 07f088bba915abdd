#include "tests/support/ScriptedHost.h"

#include <chrono>
#include <thread>

#include "tests/support/TestEnvironment.h"

namespace testing_support {

ScriptedHost::ScriptedHost()
    : programFile(makeTempFolder("program") + "/wavelark"),
      settingsFolder_(makeTempFolder("settings")),
      settings_(settingsFolder_)
{
    host::install(this);
}

ScriptedHost::~ScriptedHost() { host::install(nullptr); }

std::int16_t ScriptedHost::msgBox(const std::string& text, std::int32_t style,
                                  const std::string& title)
{
    boxes.push_back({text, style, title});
    if (onBox) onBox(boxes.back());
    if (answers.empty()) {
        // An unscripted error box answers Abort, so a failing step cannot be
        // retried for ever; other boxes take their default button.
        if ((style & 7) == host::kAbortRetryIgnore) return host::kResultAbort;
        return host::defaultAnswer(style);
    }
    const std::int16_t answer = answers.front();
    answers.pop_front();
    return answer;
}

void ScriptedHost::useSimulatedTime(std::uint32_t startTick)
{
    simulated_ = true;
    tick_ = startTick;
}

std::uint32_t ScriptedHost::tickCount()
{
    if (simulated_) return tick_;
    using namespace std::chrono;
    return static_cast<std::uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void ScriptedHost::sleep(std::uint32_t milliseconds)
{
    sleptMs += milliseconds;
    if (!simulated_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        return;
    }
    tick_ += milliseconds;
    for (auto& listener : sleepListeners) listener(milliseconds);
}

std::optional<std::string> ScriptedHost::localeInfo(host::LocaleItem item)
{
    return item == host::LocaleItem::DecimalSeparator ? decimalChar : regionCode;
}

std::unique_ptr<host::SettingsBatch> ScriptedHost::openSettings(const std::string& appKey,
                                                              const std::string& section)
{
    return settings_.open(appKey, section);
}

std::int32_t ScriptedHost::openAddress(const std::string& address)
{
    openedAddresses.push_back(address);
    return openAddressResult;
}

std::string ScriptedHost::boxTexts() const
{
    std::string texts;
    for (const Box& box : boxes) texts += box.title + ": " + box.text + "\n";
    return texts;
}

}  // namespace testing_support
