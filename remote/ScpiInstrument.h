#pragma once
// What remote commands act on: the generator as the user works it. The
// program's implementation goes through the main window's own controls, so
// a remote value meets the same rules as a typed one; the command table
// needs only this interface and is tested with a stand-in.
//
// Every call that changes something reports what went wrong into the error
// queue it is given; a refused value changes nothing.
#include <optional>
#include <string>

#include "remote/ScpiErrors.h"

namespace scpi {

// The numbers a command sets and reads, each in its field's own unit.
enum class Number {
    Frequency1,   // Hz
    Frequency2,   // Hz, the sweep's second frequency
    Percent,      // the mark or rise of a cycle, 0..100
    SweepTime,    // s
    BurstCycles,  // cycles
    BurstPeriod,  // ms
    OutputLevel,  // the output level bar: 0 (silent) to 1 (full scale)
    OutputVolts,  // V rms at the output, once it is calibrated
};

// The on/off settings.
enum class Switch {
    Output,              // on: the signal plays (Mute clear)
    Invert,
    Sweep,
    SweepBidirectional,
    BurstAuto,           // bursts repeat at the period
};

// Square and sawtooth are a mark/space signal at 50 % and a triangle at 0 %.
enum class Shape { Sine, Triangle, MarkSpace, Noise, Square, Sawtooth };
enum class Spacing { Linear, Logarithmic };

// A measured burst: the polarity verdict and what the recording held.
struct BurstMeasurement {
    std::string verdict;   // "Polarity: normal", "Polarity: INVERTED", "No signal"
    double peak = 0;       // the recording's largest sample, 0..1 of full scale
    double delayMs = 0;    // how late the burst came back
    int polarity = 0;      // 1 normal, -1 inverted, 0 no signal
};

// The figures of a recorded tone.
struct ToneMeasurement {
    bool tone = false;     // a tone stood clear of the noise
    double frequency = 0;  // Hz
    double thdnDb = 0;     // THD+N, dB below the fundamental
};

class Instrument {
public:
    virtual ~Instrument() = default;

    // Back to the built-in control values.
    virtual void reset(ErrorQueue& errors) = 0;
    virtual void setNumber(Number which, double value, ErrorQueue& errors) = 0;
    // No value (and an error queued) when the number cannot be read now.
    virtual std::optional<double> number(Number which, ErrorQueue& errors) = 0;
    virtual void setSwitch(Switch which, bool on, ErrorQueue& errors) = 0;
    virtual bool switchOn(Switch which) = 0;
    virtual void setShape(Shape shape, ErrorQueue& errors) = 0;
    virtual Shape shape() = 0;
    virtual void setSpacing(Spacing spacing, ErrorQueue& errors) = 0;
    virtual Spacing spacing() = 0;
    // Fires one burst, as Fire does.
    virtual void fireBurst(ErrorQueue& errors) = 0;
    // Fires one burst with Measure on and judges the recording.
    virtual std::optional<BurstMeasurement> fireMeasuredBurst(ErrorQueue& errors) = 0;
    // Records the input while the signal plays (or takes the last
    // recording) and reads its figures.
    virtual std::optional<ToneMeasurement> measure(ErrorQueue& errors) = 0;
    // The device information page.
    virtual std::string info() = 0;
};

}  // namespace scpi
