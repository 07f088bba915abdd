#pragma once
// What a sound back end gives the mixer calls: its mixers, and for an open
// one the lines and controls it has (as plain descriptions) and the values
// of those controls. The mixer calls (MixerApi.cpp) keep the handles, number
// the lines and controls, check the records and fill them in; a back end
// only describes its mixer and moves values.
//
// Values pass unchanged: volumes 0..65535 as the mixer defines them,
// switches as the program wrote them (0 is off, anything else on).
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/MixerApi.h"

namespace mm::backend {

struct MixerControlModel {
    DWORD type = MIXERCONTROL_CONTROLTYPE_VOLUME;
    DWORD flags = 0;
    std::string shortName;
    std::string name;
    DWORD minimum = 0;
    DWORD maximum = 65535;
    DWORD steps = 0;
    // The back end's own way back to the control.
    std::size_t key = 0;
};

// A destination line (with its sources) or a source line.
struct MixerLineModel {
    DWORD componentType = MIXERLINE_COMPONENTTYPE_DST_UNDEFINED;
    // MIXERLINE_LINEF_SOURCE is added for source lines by the calls.
    DWORD flags = MIXERLINE_LINEF_ACTIVE;
    DWORD channels = 1;
    std::string shortName;
    std::string name;
    DWORD targetType = MIXERLINE_TARGETTYPE_UNDEFINED;
    std::string targetName;
    std::vector<MixerControlModel> controls;
    std::vector<MixerLineModel> sources;
};

struct MixerModel {
    std::string name;
    WORD mid = 0;
    WORD pid = 0;
    MMVERSION driverVersion = 0;
    std::vector<MixerLineModel> destinations;
};

// An open mixer. Its model stays as it was at opening.
class MixerSession {
public:
    virtual ~MixerSession() = default;
    virtual const MixerModel& model() const = 0;
    virtual MMRESULT getValue(const MixerControlModel& control, DWORD& value) = 0;
    virtual MMRESULT setValue(const MixerControlModel& control, DWORD value) = 0;
};

class MixerBackend {
public:
    virtual ~MixerBackend() = default;
    // Reading the count refreshes the list of mixers.
    virtual UINT count() = 0;
    // MMSYSERR_BADDEVICEID for an id beyond the list.
    virtual MMRESULT open(UINT mixerId, std::unique_ptr<MixerSession>& session) = 0;
};

}  // namespace mm::backend
