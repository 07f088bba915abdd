#include "platform/MixerApi.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/MixerBackend.h"
#include "platform/SoundBackends.h"

namespace mm {

namespace {

using backend::MixerControlModel;
using backend::MixerLineModel;
using backend::MixerModel;
using backend::MixerSession;

// Handles start far above any mixer id, so that a call naming "a mixer id
// or a handle" can tell them apart.
constexpr HMIXER kFirstHandle = 0x00010000;
constexpr DWORD kObjectMask = 0xF0000000;
// Destination lines are numbered FFFF0000 + d, source lines s * 10000 + d
// (hexadecimal), as mixers commonly number them.
constexpr DWORD kDestinationLineId = 0xFFFF0000;

struct Handles {
    std::mutex mutex;
    std::map<HMIXER, std::unique_ptr<MixerSession>> open;
    HMIXER next = kFirstHandle;
};

Handles& handles()
{
    static Handles table;
    return table;
}

backend::MixerBackend& activeMixers() { return backend::activeSoundBackend().mixer(); }

HMIXER newHandle()
{
    HMIXER& next = handles().next;
    const HMIXER handle = next;
    next = next == 0xFFFFFFFFu ? kFirstHandle : next + 1;
    return handle;
}

// The session a call works on: an open handle's, or one opened for this
// call alone when the call names a mixer by id.
class Target {
public:
    MMRESULT resolve(HMIXEROBJ object, DWORD objectFlags)
    {
        auto& open = handles().open;
        auto found = open.find(object);
        if (objectFlags == MIXER_OBJECTF_HMIXER) {
            if (found == open.end()) return MMSYSERR_INVALHANDLE;
        } else if (objectFlags != MIXER_OBJECTF_MIXER) {
            return MMSYSERR_INVALFLAG;
        }
        if (found != open.end()) {
            session_ = found->second.get();
            return MMSYSERR_NOERROR;
        }
        if (MMRESULT result = activeMixers().open(object, own_)) return result;
        session_ = own_.get();
        return MMSYSERR_NOERROR;
    }
    MixerSession& session() { return *session_; }

private:
    MixerSession* session_ = nullptr;
    std::unique_ptr<MixerSession> own_;
};

template <std::size_t N>
void copyName(const std::string& text, char (&field)[N])
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N - 1));
}

// ------------------------------------------------------------ numbering

struct LinePlace {
    const MixerLineModel* line = nullptr;
    DWORD destination = 0;
    DWORD source = 0;
    bool isSource = false;
};

DWORD lineIdOf(DWORD destination, bool isSource, DWORD source)
{
    return isSource ? (source << 16) | destination : kDestinationLineId | destination;
}

bool findLine(const MixerModel& model, DWORD lineId, LinePlace& place)
{
    for (DWORD d = 0; d < model.destinations.size(); ++d) {
        const MixerLineModel& destination = model.destinations[d];
        if (lineId == lineIdOf(d, false, 0)) {
            place = {&destination, d, 0, false};
            return true;
        }
        for (DWORD s = 0; s < destination.sources.size(); ++s) {
            if (lineId == lineIdOf(d, true, s)) {
                place = {&destination.sources[s], d, s, true};
                return true;
            }
        }
    }
    return false;
}

// Control ids run from 1 in walking order: a destination's controls, then
// those of each of its sources, then the next destination. The same model
// gives the same ids at every opening.
DWORD firstControlId(const MixerModel& model, const LinePlace& place)
{
    DWORD id = 1;
    for (DWORD d = 0; d < model.destinations.size(); ++d) {
        const MixerLineModel& destination = model.destinations[d];
        if (d == place.destination && !place.isSource) return id;
        id += static_cast<DWORD>(destination.controls.size());
        for (DWORD s = 0; s < destination.sources.size(); ++s) {
            if (d == place.destination && place.isSource && s == place.source) return id;
            id += static_cast<DWORD>(destination.sources[s].controls.size());
        }
    }
    return id;
}

const MixerControlModel* findControl(const MixerModel& model, DWORD controlId)
{
    DWORD id = 1;
    auto within = [&](const MixerLineModel& line) -> const MixerControlModel* {
        if (controlId >= id && controlId - id < line.controls.size()) return &line.controls[controlId - id];
        id += static_cast<DWORD>(line.controls.size());
        return nullptr;
    };
    for (const MixerLineModel& destination : model.destinations) {
        if (const MixerControlModel* found = within(destination)) return found;
        for (const MixerLineModel& source : destination.sources) {
            if (const MixerControlModel* found = within(source)) return found;
        }
    }
    return nullptr;
}

// ---------------------------------------------------------------- records

void fillLine(const MixerModel& model, const LinePlace& place, MIXERLINEA& line)
{
    const MixerLineModel& from = *place.line;
    line.dwDestination = place.destination;
    line.dwSource = place.source;
    line.dwLineID = lineIdOf(place.destination, place.isSource, place.source);
    line.fdwLine = from.flags | (place.isSource ? MIXERLINE_LINEF_SOURCE : 0);
    line.dwUser = 0;
    line.dwComponentType = from.componentType;
    line.cChannels = from.channels;
    line.cConnections = place.isSource ? 0 : static_cast<DWORD>(from.sources.size());
    line.cControls = static_cast<DWORD>(from.controls.size());
    copyName(from.shortName, line.szShortName);
    copyName(from.name, line.szName);
    line.Target.dwType = from.targetType;
    line.Target.dwDeviceID = 0;
    line.Target.wMid = model.mid;
    line.Target.wPid = model.pid;
    line.Target.vDriverVersion = model.driverVersion;
    copyName(from.targetName, line.Target.szPname);
}

void fillControl(const MixerControlModel& from, DWORD id, MIXERCONTROLA& control)
{
    control = MIXERCONTROLA{};
    control.cbStruct = sizeof(MIXERCONTROLA);
    control.dwControlID = id;
    control.dwControlType = from.type;
    control.fdwControl = from.flags;
    control.cMultipleItems = 0;
    copyName(from.shortName, control.szShortName);
    copyName(from.name, control.szName);
    control.Bounds.dwMinimum = from.minimum;
    control.Bounds.dwMaximum = from.maximum;
    control.Metrics.cSteps = from.steps;
}

bool isSwitch(const MixerControlModel& control)
{
    return (control.type & MIXERCONTROL_CT_UNITS_MASK) == MIXERCONTROL_CT_UNITS_BOOLEAN;
}

bool inBounds(const MixerControlModel& control, DWORD value)
{
    const DWORD units = control.type & MIXERCONTROL_CT_UNITS_MASK;
    if (units == MIXERCONTROL_CT_UNITS_SIGNED || units == MIXERCONTROL_CT_UNITS_DECIBELS) {
        const auto signedValue = static_cast<LONG>(value);
        return signedValue >= static_cast<LONG>(control.minimum) &&
               signedValue <= static_cast<LONG>(control.maximum);
    }
    return value >= control.minimum && value <= control.maximum;
}

// The checks a value request must pass: only the uniform single value of a
// control is served.
MMRESULT checkDetails(const MIXERCONTROLDETAILS* details)
{
    if (details == nullptr || details->cbStruct != sizeof(MIXERCONTROLDETAILS)) return MMSYSERR_INVALPARAM;
    if (details->cChannels != 1 || details->cMultipleItems != 0) return MMSYSERR_INVALPARAM;
    if (details->cbDetails != sizeof(MIXERCONTROLDETAILS_UNSIGNED) || details->paDetails == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    return MMSYSERR_NOERROR;
}

// Splits a call's flags into the query part and the object part; anything
// else is an invalid flag.
MMRESULT splitFlags(DWORD flags, DWORD& query, DWORD& object)
{
    query = flags & 0x0000000F;
    object = flags & kObjectMask;
    if (flags & ~(kObjectMask | 0x0000000Fu)) return MMSYSERR_INVALFLAG;
    return MMSYSERR_NOERROR;
}

}  // namespace

UINT mixerGetNumDevs() { return activeMixers().count(); }

MMRESULT mixerGetDevCapsA(UINT mixerId, MIXERCAPSA* caps, UINT capsSize)
{
    if (caps == nullptr || capsSize < sizeof(MIXERCAPSA)) return MMSYSERR_INVALPARAM;
    std::lock_guard lock(handles().mutex);
    std::unique_ptr<MixerSession> session;
    if (MMRESULT result = activeMixers().open(mixerId, session)) return result;
    const MixerModel& model = session->model();
    MIXERCAPSA filled;
    filled.wMid = model.mid;
    filled.wPid = model.pid;
    filled.vDriverVersion = model.driverVersion;
    copyName(model.name, filled.szPname);
    filled.fdwSupport = 0;
    filled.cDestinations = static_cast<DWORD>(model.destinations.size());
    *caps = filled;  // only the record, whatever size the caller gave
    return MMSYSERR_NOERROR;
}

MMRESULT mixerOpen(HMIXER* handle, UINT mixerId, DWORD_PTR /*callback*/, DWORD_PTR /*instance*/,
                   DWORD flags)
{
    if (handle == nullptr) return MMSYSERR_INVALPARAM;
    if (flags != (CALLBACK_NULL | MIXER_OBJECTF_MIXER)) return MMSYSERR_INVALFLAG;
    std::lock_guard lock(handles().mutex);
    std::unique_ptr<MixerSession> session;
    if (MMRESULT result = activeMixers().open(mixerId, session)) return result;
    const HMIXER opened = newHandle();
    handles().open[opened] = std::move(session);
    *handle = opened;
    return MMSYSERR_NOERROR;
}

MMRESULT mixerClose(HMIXER handle)
{
    std::unique_ptr<MixerSession> closing;
    std::lock_guard lock(handles().mutex);
    auto found = handles().open.find(handle);
    if (found == handles().open.end()) return MMSYSERR_INVALHANDLE;
    closing = std::move(found->second);
    handles().open.erase(found);
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetLineInfoA(HMIXEROBJ mixer, MIXERLINEA* line, DWORD flags)
{
    DWORD query = 0;
    DWORD object = 0;
    if (MMRESULT result = splitFlags(flags, query, object)) return result;
    if (query == MIXER_GETLINEINFOF_LINEID || query == MIXER_GETLINEINFOF_COMPONENTTYPE ||
        query == MIXER_GETLINEINFOF_TARGETTYPE) {
        return MMSYSERR_NOTSUPPORTED;
    }
    if (query != MIXER_GETLINEINFOF_DESTINATION && query != MIXER_GETLINEINFOF_SOURCE) {
        return MMSYSERR_INVALFLAG;
    }
    if (line == nullptr || line->cbStruct != sizeof(MIXERLINEA)) return MMSYSERR_INVALPARAM;

    std::lock_guard lock(handles().mutex);
    Target target;
    if (MMRESULT result = target.resolve(mixer, object)) return result;
    const MixerModel& model = target.session().model();
    const DWORD d = line->dwDestination;
    if (d >= model.destinations.size()) return MIXERR_INVALLINE;
    LinePlace place{&model.destinations[d], d, 0, false};
    if (query == MIXER_GETLINEINFOF_SOURCE) {
        const DWORD s = line->dwSource;
        if (s >= model.destinations[d].sources.size()) return MIXERR_INVALLINE;
        place = {&model.destinations[d].sources[s], d, s, true};
    }
    fillLine(model, place, *line);
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetLineControlsA(HMIXEROBJ mixer, MIXERLINECONTROLSA* controls, DWORD flags)
{
    DWORD query = 0;
    DWORD object = 0;
    if (MMRESULT result = splitFlags(flags, query, object)) return result;
    if (query == MIXER_GETLINECONTROLSF_ONEBYID || query == MIXER_GETLINECONTROLSF_ONEBYTYPE) {
        return MMSYSERR_NOTSUPPORTED;
    }
    if (query != MIXER_GETLINECONTROLSF_ALL) return MMSYSERR_INVALFLAG;
    if (controls == nullptr || controls->cbStruct != sizeof(MIXERLINECONTROLSA)) return MMSYSERR_INVALPARAM;

    std::lock_guard lock(handles().mutex);
    Target target;
    if (MMRESULT result = target.resolve(mixer, object)) return result;
    const MixerModel& model = target.session().model();
    LinePlace place;
    if (!findLine(model, controls->dwLineID, place)) return MIXERR_INVALLINE;
    const auto& list = place.line->controls;
    if (controls->cControls == 0 || controls->cControls != list.size()) return MMSYSERR_INVALPARAM;
    if (controls->cbmxctrl != sizeof(MIXERCONTROLA) || controls->pamxctrl == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD first = firstControlId(model, place);
    for (DWORD i = 0; i < list.size(); ++i) fillControl(list[i], first + i, controls->pamxctrl[i]);
    return MMSYSERR_NOERROR;
}

MMRESULT mixerGetControlDetailsA(HMIXEROBJ mixer, MIXERCONTROLDETAILS* details, DWORD flags)
{
    DWORD query = 0;
    DWORD object = 0;
    if (MMRESULT result = splitFlags(flags, query, object)) return result;
    if (query == MIXER_GETCONTROLDETAILSF_LISTTEXT) return MMSYSERR_NOTSUPPORTED;
    if (query != MIXER_GETCONTROLDETAILSF_VALUE) return MMSYSERR_INVALFLAG;
    if (MMRESULT result = checkDetails(details)) return result;

    std::lock_guard lock(handles().mutex);
    Target target;
    if (MMRESULT result = target.resolve(mixer, object)) return result;
    const MixerControlModel* control = findControl(target.session().model(), details->dwControlID);
    if (control == nullptr) return MIXERR_INVALCONTROL;
    DWORD value = 0;
    if (MMRESULT result = target.session().getValue(*control, value)) return result;
    std::memcpy(details->paDetails, &value, sizeof value);
    return MMSYSERR_NOERROR;
}

MMRESULT mixerSetControlDetails(HMIXEROBJ mixer, const MIXERCONTROLDETAILS* details, DWORD flags)
{
    DWORD query = 0;
    DWORD object = 0;
    if (MMRESULT result = splitFlags(flags, query, object)) return result;
    if (query == MIXER_SETCONTROLDETAILSF_CUSTOM) return MMSYSERR_NOTSUPPORTED;
    if (query != MIXER_SETCONTROLDETAILSF_VALUE) return MMSYSERR_INVALFLAG;
    if (MMRESULT result = checkDetails(details)) return result;

    std::lock_guard lock(handles().mutex);
    Target target;
    if (MMRESULT result = target.resolve(mixer, object)) return result;
    const MixerControlModel* control = findControl(target.session().model(), details->dwControlID);
    if (control == nullptr) return MIXERR_INVALCONTROL;
    DWORD value = 0;
    std::memcpy(&value, details->paDetails, sizeof value);
    if (!isSwitch(*control) && !inBounds(*control, value)) return MIXERR_INVALVALUE;
    return target.session().setValue(*control, value);
}

}  // namespace mm
