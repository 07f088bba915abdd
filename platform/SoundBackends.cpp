#include "platform/SoundBackends.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "platform/WaveBackend.h"
#include "platform/alsa/AlsaMixer.h"
#include "platform/alsa/AlsaWave.h"
#include "platform/loopback/VirtualCard.h"
#include "platform/loopback/VirtualMixer.h"

namespace mm::backend {

namespace {

constexpr SoundBackend kBackends[] = {
    {"alsa", &alsa::backend, &alsa::mixerBackend},
    {"loopback", &loopback::backend, &loopback::mixerBackend},
};

bool sameName(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

bool offersDevice(const SoundBackend& candidate)
{
    WaveBackend& wave = candidate.wave();
    return wave.outputCount() > 0 || wave.inputCount() > 0;
}

}  // namespace

std::span<const SoundBackend> soundBackends() { return kBackends; }

const SoundBackend& chooseSoundBackend(std::string_view setting, std::span<const SoundBackend> table)
{
    for (const SoundBackend& named : table) {
        if (sameName(setting, named.name)) return named;
    }
    if (!setting.empty() && !sameName(setting, "auto")) {
        std::fprintf(stderr, "WAVELARK_AUDIO=%.*s names no sound back end; choosing one as for auto\n",
                     static_cast<int>(setting.size()), setting.data());
    }
    for (const SoundBackend& candidate : table.first(table.size() - 1)) {
        if (offersDevice(candidate)) return candidate;
    }
    return table.back();
}

const SoundBackend& activeSoundBackend()
{
    static const SoundBackend& chosen = []() -> const SoundBackend& {
        const char* setting = std::getenv("WAVELARK_AUDIO");
        return chooseSoundBackend(setting != nullptr ? setting : "", soundBackends());
    }();
    return chosen;
}

}  // namespace mm::backend
