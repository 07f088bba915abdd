#pragma once
// What a sound back end gives the wave calls: its device lists with their
// capabilities, and open streams that play a PlayQueue or record into a
// CaptureQueue on the back end's own thread. The wave calls (WaveApi.cpp)
// keep the handles, check the records and drive the queues; a back end only
// moves samples and reports what its devices can do.
//
// A mixer for each back end (MixerBackend.h) sits beside its wave part in
// the table of back ends (SoundBackends.h):
// platform/alsa/ and platform/loopback/ each keep the gains their mixer
// drives (AlsaStreamGain.h, VirtualCard.h's levels()).
#include <memory>
#include <string>

#include "platform/WaveApi.h"
#include "platform/WaveQueue.h"

namespace mm::backend {

// An open output: from construction to destruction it feeds the device from
// its queue. The destructor stops the thread before the queue goes.
class OutputStream {
public:
    virtual ~OutputStream() = default;
    // A failure the device side met (MMSYSERR_NOERROR while there is none).
    // Once set it stays: the device side has marked the queue done and
    // feeds nothing more.
    virtual MMRESULT failure() const = 0;
    // Asked before each write; refusing here refuses the write.
    virtual MMRESULT admitWrite() { return failure(); }
    // Told after the program wrote or rewrote a header: a device that can
    // replace what it holds but has not played yet pulls that part again
    // (PlayQueue::rewind). A break of a loop or a reset is not told: the
    // change goes on with a write, and going back between the two would
    // leave silence; a reset alone comes before a close, which drops what
    // the device holds anyway.
    virtual void queueChanged() {}
};

// An open input: records into its queue between start() and stop().
class InputStream {
public:
    virtual ~InputStream() = default;
    virtual MMRESULT failure() const = 0;
    virtual void start() = 0;
    virtual void stop() = 0;
};

class WaveBackend {
public:
    virtual ~WaveBackend() = default;

    // Reading the count refreshes the device list.
    virtual UINT outputCount() = 0;
    virtual MMRESULT outputCaps(UINT deviceId, WAVEOUTCAPSA& caps) = 0;
    virtual UINT inputCount() = 0;
    virtual MMRESULT inputCaps(UINT deviceId, WAVEINCAPSA& caps) = 0;

    // The format has already been checked to be plain PCM, 8 or 16 bits,
    // mono or stereo.
    virtual MMRESULT openOutput(UINT deviceId, const WAVEFORMATEX& format, PlayQueue& queue,
                                std::unique_ptr<OutputStream>& stream) = 0;
    virtual MMRESULT openInput(UINT deviceId, const WAVEFORMATEX& format, CaptureQueue& queue,
                               std::unique_ptr<InputStream>& stream) = 0;
};

// Copies a device name into a capability record's name field, cut to its
// 31 characters.
void copyDeviceName(const std::string& name, char (&field)[MAXPNAMELEN]);

}  // namespace mm::backend
