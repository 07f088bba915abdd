#include "platform/SystemHost.h"

#include <chrono>
#include <cstdio>
#include <thread>

#include <QLocale>
#include <QProcess>
#include <QStandardPaths>

namespace host {

SystemHost::SystemHost() = default;

std::int16_t SystemHost::msgBox(const std::string& text, std::int32_t style,
                                const std::string& title)
{
    std::fprintf(stderr, "[%s] %s\n", title.c_str(), text.c_str());
    return defaultAnswer(style);
}

void SystemHost::beep() { std::fputc('\a', stderr); }

std::uint32_t SystemHost::tickCount()
{
    using namespace std::chrono;
    return static_cast<std::uint32_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

void SystemHost::sleep(std::uint32_t milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::optional<std::string> SystemHost::localeInfo(LocaleItem item)
{
    const QLocale locale = QLocale::system();
    switch (item) {
    case LocaleItem::DecimalSeparator: return locale.decimalPoint().toStdString();
    case LocaleItem::RegionCode: return std::to_string(static_cast<int>(locale.territory()));
    }
    return std::nullopt;
}

std::string SystemHost::getSetting(const std::string& appKey, const std::string& section,
                                   const std::string& key, const std::string& defaultValue)
{
    return settings_.get(appKey, section, key, defaultValue);
}

void SystemHost::saveSetting(const std::string& appKey, const std::string& section,
                             const std::string& key, const std::string& value)
{
    settings_.save(appKey, section, key, value);
}

std::int32_t SystemHost::openAddress(const std::string& address)
{
    const bool started = QProcess::startDetached("xdg-open", {QString::fromStdString(address)});
    return started ? kOpenDone : kOpenNoAssociation;
}

bool SystemHost::startSystemInfo()
{
    for (const char* name : kSystemInfoPrograms) {
        const QString program = QStandardPaths::findExecutable(name);
        if (!program.isEmpty()) return QProcess::startDetached(program, {});
    }
    return false;
}

}  // namespace host
