#pragma once
// The per-user settings store: one INI file per application key,
// <config folder>/<application key>/Wavelark.conf, with one group per
// section and every value a string (IniText.h). The file is read once when
// a batch opens and once more when it commits, to merge the batch's saves
// into the file as it is then. A write goes to a temporary file in the same
// folder that is renamed over the old one only when every byte is written,
// so the file is always either the old one or the new one, whole.
#include <memory>
#include <string>

#include "platform/HostServices.h"

namespace host {

class SettingsStore {
public:
    // Files under the user's configuration folder ($XDG_CONFIG_HOME, default
    // ~/.config).
    SettingsStore();
    // Files under the given folder instead (tests).
    explicit SettingsStore(std::string folder);

    // A batch on an application key's file (HostServices.h). Raises a
    // run-time file error when the file is there but cannot be read.
    std::unique_ptr<SettingsBatch> open(const std::string& appKey, const std::string& section) const;

    // The file that holds an application key's settings.
    std::string filePath(const std::string& appKey) const;

private:
    std::string folder_;
};

}  // namespace host
