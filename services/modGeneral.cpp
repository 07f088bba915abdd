#include "services/modGeneral.h"

#include <cstdlib>

#include "BuildInfo.h"
#include "base/NumberText.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "entry/modGetLocaleInfo.h"
#include "platform/Control.h"
#include "platform/HostServices.h"
#include "services/modErrorHandler.h"

std::string gsOSVersion;
std::string gsProgNameVersion;
Bool16 gbUserRegionChanged = kFalse;

namespace {

constexpr const char* kModule = "modGeneral";
constexpr const char* kUnknownOS = "Windows version unknown";

struct KernelRelease {
    long major = 0;
    long minor = 0;
    long patch = 0;
};

// "6.1.0-27-amd64" -> 6, 1, 0. The major and minor numbers must be there.
KernelRelease parseRelease(const char* release)
{
    KernelRelease parsed;
    char* end = nullptr;
    parsed.major = std::strtol(release, &end, 10);
    if (end == release || *end != '.') rt::raise(rt::kErrInvalidCall);
    const char* minorText = end + 1;
    parsed.minor = std::strtol(minorText, &end, 10);
    if (end == minorText) rt::raise(rt::kErrInvalidCall);
    if (*end == '.') parsed.patch = std::strtol(end + 1, nullptr, 10);
    return parsed;
}

}  // namespace

void gGStartUpSetStuff(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gGStartUpSetStuff", bError);
    trap.step([&] {
        gsOSVersion = gsGGetOSVersion(bError);
        if (bError) {
            gsOSVersion = kUnknownOS;
            bError = kFalse;
        }
    });
    trap.step([&] { gGSetProgNameVersionUser(bError); });
    trap.step([&] {
        ErrorFlag checkError = kFalse;
        const Bool16 changed = gbGetLocaleInfoUserRegionChanged(checkError);
        if (!checkError) gbUserRegionChanged = changed;
    });
}

std::string gsGGetOSVersion(ErrorFlag& bError)
{
    std::string result;
    rt::Trap trap(kModule, "gsGGetOSVersion", bError);
    trap.step([&] {
        const std::optional<host::SystemVersion> system = host::current().systemVersion();
        if (!system) {
            result = kUnknownOS;
            return;
        }
        const KernelRelease release = parseRelease(system->release.c_str());
        result = "Linux v" + std::to_string(release.major) + "." + std::to_string(release.minor) +
                 " Build " + std::to_string(release.patch) + " " + system->version;
    });
    return result;
}

void gGSetProgNameVersionUser(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gGSetProgNameVersionUser", bError);
    trap.step([&] {
        gsProgNameVersion = std::string(buildinfo::kProductName) + " " + gsAppVersion();
    });
}

std::string gsGTrim(const std::optional<std::string>& vText, ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "gsGTrim", bError);
    trap.step([&] {
        if (!vText) return;
        // Leading NULs, trailing NULs and surrounding blanks go, as often as
        // they uncover each other, so a text of NULs and blanks alone is empty.
        text = *vText;
        for (std::string before; before != text;) {
            before = text;
            text = gsGStringLeftStrip(text, std::string(1, '\0'), bError);
            while (!text.empty() && text.back() == '\0') text.pop_back();
            const auto first = text.find_first_not_of(' ');
            const auto last = text.find_last_not_of(' ');
            text = first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
        }
    });
    return text;
}

std::string gsGStringLeftStrip(const std::string& sText, const std::string& sChar,
                               ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "gsGStringLeftStrip", bError);
    trap.step([&] {
        std::size_t start = 0;
        if (!sChar.empty())
            while (start < sText.size() && sText[start] == sChar[0]) ++start;
        text = sText.substr(start);
    });
    return text;
}

Bool16 gbGLenTrim(const std::string& sText, ErrorFlag& bError)
{
    Bool16 result = kFalse;
    rt::Trap trap(kModule, "gbGLenTrim", bError);
    trap.step([&] { result = toBool16(!gsGTrim(sText, bError).empty()); });
    return result;
}

std::int16_t gnGAscii(const std::string& sText)
{
    if (sText.empty()) return 0;
    // The first character's code point (texts are UTF-8), as a 16-bit value.
    const auto byte = [&](std::size_t i) {
        return i < sText.size() ? static_cast<unsigned char>(sText[i]) & 0x3Fu : 0u;
    };
    const unsigned lead = static_cast<unsigned char>(sText[0]);
    unsigned code = lead;
    if (lead >= 0xF0) code = ((lead & 0x07u) << 18) | (byte(1) << 12) | (byte(2) << 6) | byte(3);
    else if (lead >= 0xE0) code = ((lead & 0x0Fu) << 12) | (byte(1) << 6) | byte(2);
    else if (lead >= 0xC0) code = ((lead & 0x1Fu) << 6) | byte(1);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(code));
}

Bool16 gbGSetFocus(ui::Control& control)
{
    Bool16 result = kFalse;
    rt::Trap trap(kModule, "gbGSetFocus");
    trap.step([&] {
        if (control.enabled() && control.visible()) {
            control.setFocus();
            result = kTrue;
        }
    });
    return result;
}

std::string gsGFormat(float Value, ErrorFlag& bError)
{
    std::string pattern;
    rt::Trap trap(kModule, "gsGFormat", bError);
    trap.step([&] {
        if (Value >= 10) pattern = "0.0";
        else if (Value >= 0.05f) pattern = "0.00";
        else pattern = "0.000";
    });
    return pattern;
}

std::string gsFrequencyText(double fPlayed, float fAsked, ErrorFlag& bError)
{
    constexpr int kFewestDecimals = 3;
    constexpr int kMostDecimals = 9;
    std::string text;
    rt::Trap trap(kModule, "gsFrequencyText", bError);
    trap.step([&] {
        text = rt::userText(fAsked);
        std::string pattern = "0.";
        for (int decimals = 1; decimals <= kMostDecimals; ++decimals) {
            pattern += '0';
            if (decimals < kFewestDecimals) continue;
            // The asked value as the 32-bit number it is (7 digits), the
            // played one to its 15.
            const std::string played = rt::formatNumber(fPlayed, pattern);
            if (played != rt::formatNumber(fAsked, pattern)) {
                text = played;
                return;
            }
        }
    });
    return text;
}
