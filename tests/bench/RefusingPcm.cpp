// An ALSA PCM plugin whose every opening is refused as busy, as a sound
// card held by another program refuses it. The busy-device tests point
// ALSA's default device at it through a configuration of their own.
#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>

#include <cerrno>

extern "C" {

SND_PCM_PLUGIN_DEFINE_FUNC(refusing)
{
    (void)pcmp;
    (void)name;
    (void)root;
    (void)conf;
    (void)stream;
    (void)mode;
    return -EBUSY;
}

SND_PCM_PLUGIN_SYMBOL(refusing)

}  // extern "C"
