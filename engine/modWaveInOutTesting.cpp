#include "engine/modWaveInOutTesting.h"

using waveio::gState;

WaveOutGenerator gWaveOutGeneratorForTests()
{
    const waveio::Generator& generator = gState.generator;
    WaveOutGenerator view;
    view.shape = generator.shapeText;
    view.percent = generator.percent;
    view.invert = generator.invert;
    view.frequency1 = generator.frequency1;
    view.frequency2 = generator.frequency2;
    view.duration = generator.duration;
    view.logarithmic = generator.logarithmic;
    view.bidirectional = generator.bidirectional;
    view.sweepSteps = generator.sweepSteps;
    view.burstCycles = generator.burstCycles;
    view.burstPeriod = generator.burstPeriod;
    view.preciseLoop = toBool16(generator.preciseLoop);
    return view;
}

std::span<const std::int16_t> gWaveOutBufferForTests() { return gState.generator.samples.settled(); }

const mm::WAVEFORMATEX& gWaveOutFormatForTests() { return gState.output.format; }

WaveIOState gWaveIOStateForTests()
{
    return {gState.output.handle, gState.input.handle, gState.output.deviceId,
            gState.input.deviceId, gState.output.currentHdr};
}

const mm::WAVEHDR& gWaveOutHdrForTests(std::int16_t nHdr) { return gState.output.headers.at(nHdr); }

void gWaveOutResetForTests()
{
    // Nothing may still play from the headers the fresh state drops.
    ErrorFlag closing = kFalse;
    gWaveInClose(closing);
    gWaveOutClose(kTrue, closing);
    gState = waveio::EngineState{};
}

void gWaveOutUseExactSamplesForTests(Bool16 bExact)
{
    gState.generator.exactSamplesOnly = bExact != kFalse;
}
