#pragma once
// Reading a line of remote commands: commands separated by semicolons, each
// a header (nodes separated by colons, or a common command such as *IDN),
// an optional question mark that makes it a query, and parameters separated
// by commas: numbers with an optional unit ("2 kHz", "100ms"), character
// data (ON, LOG, SQU) and quoted strings.
//
// Headers are case-insensitive and take either the short form (the capitals
// of a name as the command table writes it, FREQ) or the long form
// (FREQUENCY). A header that does not start with a colon continues from the
// path of the command before it on the same line: in "SWE:SPAC LOG;TIME 2"
// the second command is SWE:TIME. A leading colon starts again from the
// root; common commands leave the path as it is.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace scpi {

struct Parameter {
    enum class Kind { Numeric, Character, String };
    Kind kind = Kind::Character;
    // Character data in capitals, a string's content, or the number as typed.
    std::string text;
    double value = 0;    // a number's value, without its unit
    std::string unit;    // a number's unit in capitals, empty for none
};

struct Command {
    bool common = false;             // *IDN, *RST ...: nodes holds the one name
    std::vector<std::string> nodes;  // the whole path in capitals, FREQ2
    bool query = false;
    std::vector<Parameter> parameters;
};

struct ParseError {
    int code = 0;
    std::string detail;
};

// The line cut at the semicolons that stand outside quotes; surrounding
// blanks and a carriage return are dropped, and so are empty commands.
std::vector<std::string> splitCommands(std::string_view line);

// Reads one command of a line. path is the header path so far (empty at the
// start of a line) and is updated for the next command. False with the
// error when the command is malformed.
bool parseCommand(std::string_view text, std::vector<std::string>& path, Command& command,
                  ParseError& error);

// A header or mnemonic as the command table writes it: capitals for the
// short form, then the rest of the long form in small letters, and an
// optional number suffix (FREQuency2). Optional header nodes stand in
// brackets: "[SOURce:]FREQuency[:CW]".
class HeaderPattern {
public:
    explicit HeaderPattern(std::string_view pattern);
    // Whether a command's nodes name this header.
    bool matches(const std::vector<std::string>& nodes) const;

private:
    struct Node {
        std::string longForm;     // in capitals
        std::size_t shortLength;  // how many of its letters the short form has
        int suffix;               // 1 when none is written
        bool optional;
    };
    bool matchFrom(std::size_t pattern, std::size_t node, const std::vector<std::string>& nodes) const;
    static bool nodeMatches(const Node& node, const std::string& typed);

    std::vector<Node> nodes_;
    friend bool mnemonicMatches(std::string_view mnemonic, const std::string& typed);
};

// Whether typed character data (in capitals) is the mnemonic's short or
// long form: "LOGarithmic" takes LOG and LOGARITHMIC.
bool mnemonicMatches(std::string_view mnemonic, const std::string& typed);

}  // namespace scpi
