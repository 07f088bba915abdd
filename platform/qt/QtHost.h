#pragma once
// The program's host services: Qt message boxes and beep on top of the
// system host's clock, locale and settings.
#include "platform/SystemHost.h"

namespace host {

class QtHost : public SystemHost {
public:
    std::int16_t msgBox(const std::string& text, std::int32_t style,
                        const std::string& title) override;
    void beep() override;
};

}  // namespace host
