#pragma once
// The program's host services: Qt message boxes and beep, a sleep that
// keeps the window alive while the engine waits (LiveWait), addresses
// opened through the desktop (QDesktopServices) and the per-user instance
// marker (InstanceMarker), on top of the system host's clock, locale,
// settings and system-information program. Make it after the application.
#include "platform/SystemHost.h"
#include "platform/qt/InstanceMarker.h"
#include "platform/qt/LiveWait.h"

namespace host {

class QtHost : public SystemHost {
public:
    std::int16_t msgBox(const std::string& text, std::int32_t style,
                        const std::string& title) override;
    void beep() override;
    void sleep(std::uint32_t milliseconds) override;
    std::int32_t openAddress(const std::string& address) override;
    bool previousInstance() override { return !marker_.claim(); }
    bool activatePreviousInstance() override { return marker_.askHolderForward(); }

private:
    LiveWait liveWait_;
    InstanceMarker marker_;
};

}  // namespace host
