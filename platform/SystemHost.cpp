#include "platform/SystemHost.h"

#include <sys/utsname.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
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

std::optional<SystemVersion> SystemHost::systemVersion()
{
    struct utsname info {};
    if (::uname(&info) != 0) return std::nullopt;
    return SystemVersion{info.release, info.version};
}

std::string SystemHost::programPath()
{
    std::error_code error;
    const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string("./wavelark") : exe.string();
}

std::unique_ptr<SettingsBatch> SystemHost::openSettings(const std::string& appKey, const std::string& section)
{
    return settings_.open(appKey, section);
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
