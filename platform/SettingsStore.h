#pragma once
// The per-user settings store: one INI file per application key,
// <config folder>/<application key>/Wavelark.conf, with one group per
// section and every value a string.
#include <string>

namespace host {

class SettingsStore {
public:
    // Files under the user's configuration folder ($XDG_CONFIG_HOME, default
    // ~/.config).
    SettingsStore();
    // Files under the given folder instead (tests).
    explicit SettingsStore(std::string folder);

    std::string get(const std::string& appKey, const std::string& section, const std::string& key,
                    const std::string& defaultValue) const;
    void save(const std::string& appKey, const std::string& section, const std::string& key,
              const std::string& value);

    // The file that holds an application key's settings.
    std::string filePath(const std::string& appKey) const;

private:
    std::string folder_;
};

}  // namespace host
