#pragma once
// The virtual card's mixer. By default it is a plain sound card's mixer:
//   Speakers (DST_SPEAKERS): Master Volume, Master Mute
//     Wave (SRC_WAVEOUT): Wave Volume, Wave Mute
//   Recording (DST_WAVEIN)
//     Microphone (SRC_MICROPHONE): Mic Volume, Mic Mute
// whose controls drive the card's levels (VirtualCard.h's levels()), so
// that what the mixer sets is what the card's output and input hear.
//
// What the mixers are made of is in VirtualMixerSetup.h; tests change it
// through VirtualMixerTesting.h.
namespace mm::backend {
class MixerBackend;
}

namespace mm::loopback {

// The mixer calls use it when the virtual card is the back end.
backend::MixerBackend& mixerBackend();

}  // namespace mm::loopback
