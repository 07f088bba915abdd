// The Info page: what the wave output, the wave input and the mixer are, as
// plain text the user can read and copy but not change.
#include <string>
#include <utility>
#include <vector>

#include "base/NumberText.h"
#include "base/Trap.h"
#include "controls/TextBox.h"
#include "engine/modWaveInOut.h"
#include "window/frmWavelark.h"

namespace {

constexpr const char* kCrLf = "\r\n";
constexpr const char* kNotFound = "Not found";

// What the page tells of either device.
struct DeviceFacts {
    const std::string& name;
    Bool16 noFormats;
    std::int32_t sampleRate;
    std::int16_t bits;
    std::int16_t channels;
    std::int16_t manufacturerId;
    std::int16_t productId;
};

// The "Supports: " block of the output device, empty when it offers none
// of the six.
std::string supportList(const WaveOutDeviceInfo& out)
{
    const std::pair<Bool16, const char*> flags[] = {
        {out.supportsVolume, "  volume control"},
        {out.supportsLRVolume, "  separate L&R volume control"},
        {out.supportsPitch, "  pitch control"},
        {out.supportsPlaybackRate, "  playback rate control"},
        {out.supportsSampleAccurate, "  sample accurate positional info"},
        {out.supportsSync, "  blocking synchronous driver"},
    };
    std::string list;
    for (const auto& [set, text] : flags)
        if (set) list += std::string(text) + kCrLf;
    return list.empty() ? list : "Supports: " + std::string(kCrLf) + list;
}

// The device's section under its heading: name, format, the support list
// (output only), and the identifiers, the last without a line end.
std::string deviceSection(const DeviceFacts& device, const std::string& supports)
{
    std::string text = device.name + kCrLf;
    if (device.noFormats) text += std::string("Sound board format unrecognised") + kCrLf;
    text += rt::userText(static_cast<double>(device.sampleRate) / 1000) + "kHz  " +
            std::to_string(device.bits) + " bits  " + std::to_string(device.channels) +
            " channels" + kCrLf;
    text += supports;
    text += "Manufacturer ID: " + std::to_string(device.manufacturerId) + kCrLf;
    text += "Product ID: " + std::to_string(device.productId);
    return text;
}

}  // namespace

void frmWavelark::mInitInfo(const std::string& sMixerReport, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mInitInfo", bError);
    ui::Control& info = txtInfo->control();
    const WaveOutDeviceInfo& out = gWaveOutInfo();
    const WaveInDeviceInfo& in = gWaveInInfo();

    // Each step adds to what the page holds, so a failure leaves what was
    // written until then. A missing device replaces everything before it.
    const auto addDevice = [&](const DeviceFacts& device, const std::string& supports) {
        trap.step([&] {
            info.setText(device.name.empty() ? std::string(kNotFound)
                                             : info.text() + deviceSection(device, supports));
        });
    };
    trap.step([&] { info.setText(std::string("WAVEOUT") + kCrLf); });
    addDevice({out.name, out.noFormats, out.sampleRate, out.bits, out.channels, out.manufacturerId,
               out.productId},
              supportList(out));
    trap.step([&] { info.setText(info.text() + kCrLf + kCrLf + "WAVEIN" + kCrLf); });
    addDevice({in.name, in.noFormats, in.sampleRate, in.bits, in.channels, in.manufacturerId,
               in.productId},
              {});
    trap.step([&] { info.setText(info.text() + kCrLf + kCrLf + "MIXER" + kCrLf + sMixerReport); });
    trap.step([&] { txtInfo->setReadOnly(true); });
}
