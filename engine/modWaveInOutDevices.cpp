// The signal engine's device discovery: the output and input devices chosen
// at start-up and the device records filled from their capabilities.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "base/Convert.h"
#include "engine/modWaveInOutState.h"
#include "services/modGeneral.h"

using namespace waveio;

WaveOutDeviceInfo& gWaveOutInfo() { return gState.devices.output; }
WaveInDeviceInfo& gWaveInInfo() { return gState.devices.input; }

namespace {

// A device's format as its capabilities suggest it.
struct DeviceFormat {
    std::int32_t sampleRate = 0;
    std::int16_t bits = 0;
    std::int16_t channels = 0;
};

// The format rule. dwFormats is compared as a signed number, as the rule
// was written; a name holding "Audigy" gets that card's own rates.
DeviceFormat mFormatFromCaps(const std::string& sName, mm::DWORD dwFormats, Direction direction)
{
    const auto formats = static_cast<std::int32_t>(dwFormats);
    const auto stereoIf = [&](std::int32_t a, std::int32_t b) -> std::int16_t {
        return (formats & a) || (formats & b) ? 2 : 1;
    };
    if (sName.find("Audigy") != std::string::npos)
        return direction == Direction::Out ? DeviceFormat{96000, 24, 2} : DeviceFormat{48000, 16, 2};
    if (formats >= 256) return {44100, static_cast<std::int16_t>(formats < 513 ? 8 : 16), stereoIf(0x800, 0x200)};
    if (formats >= 16) return {22050, static_cast<std::int16_t>(formats >= 33 ? 16 : 8), stereoIf(0x80, 0x20)};
    if (formats < 1) return {44100, 16, 1};
    return {11025, static_cast<std::int16_t>(formats < 3 ? 8 : 16), stereoIf(8, 2)};
}

// "major.minor" of a driver version; the divisor is 255, as designed.
std::string msDriverVersion(mm::MMVERSION version)
{
    const auto value = static_cast<std::int32_t>(version);
    return std::to_string(value / 255) + "." + std::to_string(value % 255);
}

std::string msDeviceName(const char (&szPname)[mm::MAXPNAMELEN])
{
    return std::string(szPname, strnlen(szPname, mm::MAXPNAMELEN));
}

bool mbIsModem(const std::string& sName)
{
    std::string upper = sName;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return upper.find("MODEM") != std::string::npos;
}

// Ids above 32767 (PCI and USB makers) keep the bits a 16-bit Integer holds.
std::int16_t mnId(mm::WORD id) { return static_cast<std::int16_t>(id); }

bool mbSupports(mm::DWORD support, mm::DWORD bit) { return (support & bit) != 0; }

// The fields both device records take from their capabilities alike.
template <class Info, class Caps>
void mFillFromCaps(Info& info, const Caps& caps, Direction direction)
{
    info.manufacturerId = mnId(caps.wMid);
    info.productId = mnId(caps.wPid);
    info.driverVersion = msDriverVersion(caps.vDriverVersion);
    info.name = msDeviceName(caps.szPname);
    info.noFormats = toBool16(static_cast<std::int32_t>(caps.dwFormats) < 1);
    const DeviceFormat format = mFormatFromCaps(info.name, caps.dwFormats, direction);
    info.sampleRate = format.sampleRate;
    info.bits = format.bits;
    info.channels = format.channels;
    info.deviceChannels = mnId(caps.wReserved1);
}

void mWaveOutGloballyInitCaps(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutGloballyInitCaps", bError);
    trap.step([&] {
        const mm::WAVEOUTCAPSA& caps = gState.devices.outputCaps;
        WaveOutDeviceInfo& info = gState.devices.output;
        mFillFromCaps(info, caps, Direction::Out);
        info.frequencyMax = info.sampleRate > 80000
                                ? 40000.0f
                                : rt::toSingle(std::floor(info.sampleRate * 0.45351475));
        info.frequencyMaxNonSine = rt::toSingle(info.frequencyMax * 0.1);
        info.supportsLRVolume = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_LRVOLUME));
        info.supportsPitch = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_PITCH));
        info.supportsPlaybackRate = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_PLAYBACKRATE));
        info.supportsSync = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_SYNC));
        info.supportsVolume = toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_VOLUME));
        info.supportsSampleAccurate =
            toBool16(mbSupports(caps.dwSupport, mm::WAVECAPS_SAMPLEACCURATE));
    });
}

void mWaveInGloballyInitCaps(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveInGloballyInitCaps", bError);
    trap.step([&] { mFillFromCaps(gState.devices.input, gState.devices.inputCaps, Direction::In); });
}

// The device search both directions share: the first device whose
// capabilities read and whose name is not a modem's, while no read failed.
template <class Caps, class Count, class Read, class Fill, class ErrorText>
Bool16 mbDeviceThere(const char* procedure, const char* notFound, Caps& caps,
                     std::int32_t& deviceId, Count count, Read read, Fill fill,
                     ErrorText errorText, ErrorFlag& bError)
{
    Bool16 bThere = kFalse;
    std::string sText;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] {
        const mm::UINT devices = count();
        if (devices == 0) {
            sText = notFound;
            return;
        }
        for (mm::UINT id = 0; id < devices; ++id) {
            const mm::MMRESULT result = read(id, &caps, static_cast<mm::UINT>(sizeof caps));
            if (result != mm::MMSYSERR_NOERROR) {
                sText = errorText(result, bError);
                bError = kTrue;
                continue;
            }
            fill(bError);
            if (!mbIsModem(msDeviceName(caps.szPname)) && !bError) {
                deviceId = static_cast<std::int32_t>(id);
                bThere = kTrue;
                return;
            }
        }
    });
    trap.step([&] {
        if (!sText.empty()) host::msgBox(sText, host::kCritical, gsProgNameVersion);
    });
    return bThere;
}

}  // namespace

Bool16 gbWaveOutThere(ErrorFlag& bError)
{
    return mbDeviceThere("gbWaveOutThere", "Wave device not found", gState.devices.outputCaps,
                         gState.output.deviceId, mm::waveOutGetNumDevs, mm::waveOutGetDevCapsA,
                         mWaveOutGloballyInitCaps, msWaveOutGetErrorText, bError);
}

Bool16 gbWaveInThere(ErrorFlag& bError)
{
    return mbDeviceThere("gbWaveInThere", "Wave Input device not found", gState.devices.inputCaps,
                         gState.input.deviceId, mm::waveInGetNumDevs, mm::waveInGetDevCapsA,
                         mWaveInGloballyInitCaps, msWaveInGetErrorText, bError);
}
