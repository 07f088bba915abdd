#pragma once
// One client's conversation with the instrument: each line of commands is
// read, every command found in the command table and run in order, and the
// answers of the queries on the line are joined into one reply line. A
// malformed or unknown command is queued as an error and the rest of its
// line is skipped; the commands before it have run.
//
// The commands (short form in capitals, optional nodes in brackets):
//   *IDN?  *RST  *OPC  *OPC?  *CLS  *WAI
//   SYSTem:ERRor[:NEXT]?  SYSTem:VERSion?  SYSTem:INFOrmation?
//   [SOURce:]FREQuency[:CW] <Hz>   [SOURce:]FREQuency2 <Hz>
//   [SOURce:]FUNCtion[:SHAPe] SINusoid|TRIangle|MSPace|NOISe|SQUare|SAWtooth
//   [SOURce:]FUNCtion:PERCent <0..100>
//   OUTPut[:STATe] ON|OFF   OUTPut:INVert ON|OFF
//   [SOURce:]SWEep[:STATe] ON|OFF   [SOURce:]SWEep:SPACing LINear|LOGarithmic
//   [SOURce:]SWEep:BIDirectional ON|OFF   [SOURce:]SWEep:TIME <s>
//   [SOURce:]BURSt:NCYCles <n>   [SOURce:]BURSt:PERiod <ms>
//   [SOURce:]BURSt:AUTO ON|OFF   [SOURce:]BURSt:FIRE   [SOURce:]BURSt:FIRE:MEASure?
//   [SOURce:]VOLTage[:LEVel] <0..1>   [SOURce:]VOLTage[:LEVel]:VRMS <V>
//   MEASure:THDN?   MEASure:FREQuency?
// Each setting also has its query (FREQ?). A bare number is in the
// setting's own unit (Hz, s, ms, V); a unit may follow it: HZ, KHZ, MHZ
// (mega), S, MS, US, V, MV. A query whose number cannot be given (no
// tone in the recording, no calibration) answers 9.91E+37 and queues the
// reason, so a client always gets its reply.
#include <string>
#include <string_view>

#include "remote/ScpiErrors.h"
#include "remote/ScpiInstrument.h"

namespace scpi {

// "Marlo,Wavelark,0,1.0.0": maker, model, serial number, version.
std::string identity();

class Session {
public:
    explicit Session(Instrument& instrument) : instrument_(instrument) {}

    // Runs one line (without its newline); the reply line, empty when the
    // line held no query.
    std::string execute(std::string_view line);
    ErrorQueue& errors() { return errors_; }

private:
    Instrument& instrument_;
    ErrorQueue errors_;
};

}  // namespace scpi
