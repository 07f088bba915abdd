#include "platform/alsa/AlsaCommon.h"

#include <alsa/asoundlib.h>

#include <cerrno>
#include <cstdio>

namespace mm::alsa {

namespace {

void quietAlsa(const char*, int, const char*, int, const char*, ...) {}

}  // namespace

void silenceAlsaDiagnostics()
{
    static const bool done = (snd_lib_error_set_handler(&quietAlsa), true);
    (void)done;
}

MMRESULT deviceError(int error)
{
    switch (-error) {
    case EBUSY:
    case EAGAIN: return MMSYSERR_ALLOCATED;
    case ENOENT:
    case ENODEV:
    case ENXIO:
    case ECONNREFUSED:
    case ENOTCONN:
    case EHOSTDOWN:
    case ESHUTDOWN: return MMSYSERR_NODRIVER;
    case ENOMEM: return MMSYSERR_NOMEM;
    default: return MMSYSERR_ERROR;
    }
}

MMVERSION libraryVersion()
{
    unsigned major = 0;
    unsigned minor = 0;
    std::sscanf(snd_asoundlib_version(), "%u.%u", &major, &minor);
    return static_cast<MMVERSION>(((major & 0xFF) << 8) | (minor & 0xFF));
}

}  // namespace mm::alsa
