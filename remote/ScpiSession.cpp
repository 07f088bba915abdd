#include "remote/ScpiSession.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <optional>
#include <vector>

#include "BuildInfo.h"
#include "entry/modGetLocaleInfo.h"
#include "remote/ScpiParser.h"

namespace scpi {

namespace {

// What a number measures, for the units it may carry.
enum class Dimension { None, Hertz, Seconds, Volts };

struct Unit {
    const char* name;
    Dimension dimension;
    double toBase;  // to Hz, s or V
};

constexpr Unit kUnits[] = {
    {"HZ", Dimension::Hertz, 1},     {"KHZ", Dimension::Hertz, 1e3},
    {"MHZ", Dimension::Hertz, 1e6},  {"S", Dimension::Seconds, 1},
    {"MS", Dimension::Seconds, 1e-3}, {"US", Dimension::Seconds, 1e-6},
    {"V", Dimension::Volts, 1},      {"MV", Dimension::Volts, 1e-3},
};

// A number's dimension and how many of its field's units make one base
// unit (the burst period is in ms: 1000 to the second).
struct NumberUnit {
    Dimension dimension;
    double fieldPerBase;
};

NumberUnit unitOf(Number which)
{
    switch (which) {
    case Number::Frequency1:
    case Number::Frequency2: return {Dimension::Hertz, 1};
    case Number::SweepTime: return {Dimension::Seconds, 1};
    case Number::BurstPeriod: return {Dimension::Seconds, 1000};
    case Number::OutputVolts: return {Dimension::Volts, 1};
    default: return {Dimension::None, 1};
    }
}

// What a query answers for a number it cannot give, so that a client
// always gets a reply; the error queue says why.
constexpr const char* kNotANumber = "9.91E+37";

std::string numberText(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", value);
    return text;
}

// One command being run: its parameters read and checked, its answer kept.
class Call {
public:
    Call(Instrument& instrument, const Command& command, ErrorQueue& errors,
         std::vector<std::string>& replies)
        : instrument(instrument), errors(errors), command_(command), replies_(replies)
    {
    }

    Instrument& instrument;
    ErrorQueue& errors;

    void reply(const std::string& text) { replies_.push_back(text); }

    // Whether the command has exactly `count` parameters; queues the error
    // when not.
    bool takes(std::size_t count)
    {
        if (command_.parameters.size() > count) {
            errors.push(kParameterNotAllowed, "too many parameters");
            return false;
        }
        if (command_.parameters.size() < count) {
            errors.push(kMissingParameter);
            return false;
        }
        return true;
    }

    // The one number, in the field's unit of `which`.
    std::optional<double> number(Number which)
    {
        if (!takes(1)) return std::nullopt;
        const Parameter& p = command_.parameters[0];
        if (p.kind != Parameter::Kind::Numeric) {
            errors.push(kDataTypeError, "a number was expected, not " + p.text);
            return std::nullopt;
        }
        if (p.unit.empty()) return p.value;
        const NumberUnit unit = unitOf(which);
        for (const Unit& known : kUnits) {
            if (p.unit == known.name && known.dimension == unit.dimension && unit.dimension != Dimension::None)
                return p.value * known.toBase * unit.fieldPerBase;
        }
        errors.push(kInvalidSuffix, "the unit " + p.unit + " does not fit here");
        return std::nullopt;
    }

    // ON, OFF or a number (not 0 is on).
    std::optional<bool> boolean()
    {
        if (!takes(1)) return std::nullopt;
        const Parameter& p = command_.parameters[0];
        if (p.kind == Parameter::Kind::Numeric && p.unit.empty()) return std::lround(p.value) != 0;
        if (p.kind == Parameter::Kind::Character && (p.text == "ON" || p.text == "OFF")) return p.text == "ON";
        errors.push(kIllegalParameterValue, "ON, OFF, 1 or 0 was expected");
        return std::nullopt;
    }

    // Which of the mnemonics the one parameter names.
    std::optional<std::size_t> choice(std::initializer_list<const char*> mnemonics)
    {
        if (!takes(1)) return std::nullopt;
        const Parameter& p = command_.parameters[0];
        if (p.kind == Parameter::Kind::Character) {
            std::size_t index = 0;
            for (const char* mnemonic : mnemonics) {
                if (mnemonicMatches(mnemonic, p.text)) return index;
                ++index;
            }
        }
        std::string allowed;
        for (const char* mnemonic : mnemonics) allowed += (allowed.empty() ? "" : "|") + std::string(mnemonic);
        errors.push(kIllegalParameterValue, "one of " + allowed + " was expected");
        return std::nullopt;
    }

private:
    const Command& command_;
    std::vector<std::string>& replies_;
};

using Handler = std::function<void(Call&)>;

struct Entry {
    HeaderPattern header;
    Handler set;    // empty: no set form
    Handler query;  // empty: no query form
};

// The short forms answered for the shapes, in the order of Shape.
constexpr const char* kShapeMnemonics[] = {"SIN", "TRI", "MSP", "NOIS", "SQU", "SAW"};

Entry numberEntry(const char* header, Number which)
{
    return {HeaderPattern(header),
            [which](Call& call) {
                if (const auto value = call.number(which)) call.instrument.setNumber(which, *value, call.errors);
            },
            [which](Call& call) {
                if (!call.takes(0)) return;
                const auto value = call.instrument.number(which, call.errors);
                call.reply(value ? numberText(*value) : kNotANumber);
            }};
}

Entry switchEntry(const char* header, Switch which)
{
    return {HeaderPattern(header),
            [which](Call& call) {
                if (const auto on = call.boolean()) call.instrument.setSwitch(which, *on, call.errors);
            },
            [which](Call& call) {
                if (call.takes(0)) call.reply(call.instrument.switchOn(which) ? "1" : "0");
            }};
}

// A query without parameters.
Entry queryEntry(const char* header, std::function<void(Call&)> answer)
{
    return {HeaderPattern(header), {}, [answer = std::move(answer)](Call& call) {
                if (call.takes(0)) answer(call);
            }};
}

// A command without parameters.
Entry eventEntry(const char* header, std::function<void(Call&)> action)
{
    return {HeaderPattern(header), [action = std::move(action)](Call& call) {
                if (call.takes(0)) action(call);
            }, {}};
}

// One figure of a measured tone; none when no tone stood out.
std::string toneFigure(Call& call, double ToneMeasurement::*figure)
{
    const auto tone = call.instrument.measure(call.errors);
    if (!tone) return kNotANumber;
    if (!tone->tone) {
        call.errors.push(kDataStale, "no tone stands out in the recording");
        return kNotANumber;
    }
    return numberText((*tone).*figure);
}

// Text of several lines as a definite-length block: "#3" + three digits
// giving its length in bytes + the text.
std::string block(const std::string& text)
{
    const std::string length = std::to_string(text.size());
    return "#" + std::to_string(length.size()) + length + text;
}

const std::vector<Entry>& commandTable()
{
    static const std::vector<Entry> table{
        queryEntry("*IDN", [](Call& call) { call.reply(identity()); }),
        eventEntry("*RST", [](Call& call) { call.instrument.reset(call.errors); }),
        // Commands run one after the other to the end, so every earlier
        // one has completed by the time this is read.
        {HeaderPattern("*OPC"), [](Call& call) { call.takes(0); },
         [](Call& call) {
             if (call.takes(0)) call.reply("1");
         }},
        eventEntry("*CLS", [](Call& call) { call.errors.clear(); }),
        eventEntry("*WAI", [](Call&) {}),
        queryEntry("SYSTem:ERRor[:NEXT]", [](Call& call) { call.reply(call.errors.pop()); }),
        queryEntry("SYSTem:VERSion", [](Call& call) { call.reply("1999.0"); }),
        queryEntry("SYSTem:INFOrmation", [](Call& call) { call.reply(block(call.instrument.info())); }),

        numberEntry("[SOURce:]FREQuency[:CW]", Number::Frequency1),
        numberEntry("[SOURce:]FREQuency2", Number::Frequency2),
        {HeaderPattern("[SOURce:]FUNCtion[:SHAPe]"),
         [](Call& call) {
             const auto shape = call.choice({"SINusoid", "TRIangle", "MSPace", "NOISe", "SQUare", "SAWtooth"});
             if (shape) call.instrument.setShape(static_cast<Shape>(*shape), call.errors);
         },
         [](Call& call) {
             if (call.takes(0)) call.reply(kShapeMnemonics[static_cast<int>(call.instrument.shape())]);
         }},
        numberEntry("[SOURce:]FUNCtion:PERCent", Number::Percent),
        switchEntry("OUTPut[:STATe]", Switch::Output),
        switchEntry("OUTPut:INVert", Switch::Invert),

        switchEntry("[SOURce:]SWEep[:STATe]", Switch::Sweep),
        {HeaderPattern("[SOURce:]SWEep:SPACing"),
         [](Call& call) {
             if (const auto spacing = call.choice({"LINear", "LOGarithmic"}))
                 call.instrument.setSpacing(static_cast<Spacing>(*spacing), call.errors);
         },
         [](Call& call) {
             if (call.takes(0)) call.reply(call.instrument.spacing() == Spacing::Linear ? "LIN" : "LOG");
         }},
        switchEntry("[SOURce:]SWEep:BIDirectional", Switch::SweepBidirectional),
        numberEntry("[SOURce:]SWEep:TIME", Number::SweepTime),

        numberEntry("[SOURce:]BURSt:NCYCles", Number::BurstCycles),
        numberEntry("[SOURce:]BURSt:PERiod", Number::BurstPeriod),
        switchEntry("[SOURce:]BURSt:AUTO", Switch::BurstAuto),
        eventEntry("[SOURce:]BURSt:FIRE", [](Call& call) { call.instrument.fireBurst(call.errors); }),
        queryEntry("[SOURce:]BURSt:FIRE:MEASure",
                   [](Call& call) {
                       const auto burst = call.instrument.fireMeasuredBurst(call.errors);
                       if (!burst) {
                           call.reply(quoted("No measurement") + "," + kNotANumber + "," + kNotANumber + ",NONE");
                           return;
                       }
                       const char* polarity = burst->polarity > 0 ? "NORM" : burst->polarity < 0 ? "INV" : "NONE";
                       call.reply(quoted(burst->verdict) + "," + numberText(burst->peak) + "," +
                                  numberText(burst->delayMs) + "," + polarity);
                   }),

        numberEntry("[SOURce:]VOLTage[:LEVel]", Number::OutputLevel),
        numberEntry("[SOURce:]VOLTage[:LEVel]:VRMS", Number::OutputVolts),

        queryEntry("MEASure:THDN", [](Call& call) { call.reply(toneFigure(call, &ToneMeasurement::thdnDb)); }),
        queryEntry("MEASure:FREQuency",
                   [](Call& call) { call.reply(toneFigure(call, &ToneMeasurement::frequency)); }),
    };
    return table;
}

}  // namespace

std::string identity()
{
    return std::string(kSettingsAppKey) + "," + buildinfo::kProductName + ",0," +
           std::to_string(buildinfo::kVersionMajor) + "." + std::to_string(buildinfo::kVersionMinor) + "." +
           std::to_string(buildinfo::kVersionRevision);
}

std::string Session::execute(std::string_view line)
{
    std::vector<std::string> replies;
    std::vector<std::string> path;
    for (const std::string& text : splitCommands(line)) {
        Command command;
        ParseError error;
        if (!parseCommand(text, path, command, error)) {
            errors_.push(error.code, error.detail);
            break;
        }
        const auto& table = commandTable();
        const auto entry = std::find_if(table.begin(), table.end(), [&](const Entry& e) {
            return e.header.matches(command.nodes) && (command.query ? bool(e.query) : bool(e.set));
        });
        if (entry == table.end()) {
            errors_.push(kUndefinedHeader, text);
            break;
        }
        Call call(instrument_, command, errors_, replies);
        (command.query ? entry->query : entry->set)(call);
    }
    std::string reply;
    for (const std::string& part : replies) reply += (reply.empty() ? "" : ";") + part;
    return reply;
}

}  // namespace scpi
