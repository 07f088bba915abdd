#include "remote/ScpiParser.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "remote/ScpiErrors.h"

namespace scpi {

namespace {

bool isAlpha(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string capitals(std::string_view text)
{
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// Reads text left to right.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}
    bool atEnd() const { return pos_ >= text_.size(); }
    char peek() const { return atEnd() ? '\0' : text_[pos_]; }
    char take() { return text_[pos_++]; }
    bool skip(char c)
    {
        if (peek() != c) return false;
        ++pos_;
        return true;
    }
    // Skips blanks; whether there were any.
    bool skipBlanks()
    {
        const std::size_t start = pos_;
        while (!atEnd() && isBlank(peek())) ++pos_;
        return pos_ > start;
    }
    // A name: a letter, then letters, digits and underscores.
    std::string name()
    {
        const std::size_t start = pos_;
        if (!isAlpha(peek())) return {};
        while (!atEnd() && (isAlpha(peek()) || isDigit(peek()) || peek() == '_')) ++pos_;
        return capitals(text_.substr(start, pos_ - start));
    }
    std::string_view rest() const { return text_.substr(std::min(pos_, text_.size())); }
    std::size_t position() const { return pos_; }
    void moveTo(std::size_t pos) { pos_ = pos; }
    std::string_view slice(std::size_t from) const { return text_.substr(from, pos_ - from); }

private:
    std::string_view text_;
    std::size_t pos_ = 0;
};

ParseError syntax(const std::string& detail) { return {kSyntaxError, detail}; }

bool readString(Reader& in, Parameter& parameter, ParseError& error)
{
    const char quote = in.take();
    parameter.kind = Parameter::Kind::String;
    while (true) {
        if (in.atEnd()) {
            error = syntax("a string has no closing quote");
            return false;
        }
        const char c = in.take();
        if (c == quote) {
            if (!in.skip(quote)) return true;  // a doubled quote stands for one
        }
        parameter.text += c;
    }
}

bool readNumber(Reader& in, Parameter& parameter, ParseError& error)
{
    const std::size_t start = in.position();
    if (in.peek() == '+' || in.peek() == '-') in.take();
    bool digits = false;
    while (isDigit(in.peek())) in.take(), digits = true;
    if (in.skip('.'))
        while (isDigit(in.peek())) in.take(), digits = true;
    if (!digits) {
        error = syntax("a number was expected");
        return false;
    }
    // An exponent only when digits follow it: "2 E" would be a unit.
    const std::size_t beforeExponent = in.position();
    if (in.peek() == 'e' || in.peek() == 'E') {
        in.take();
        in.skipBlanks();
        if (in.peek() == '+' || in.peek() == '-') in.take();
        if (!isDigit(in.peek())) in.moveTo(beforeExponent);
        while (isDigit(in.peek())) in.take();
    }
    std::string number(in.slice(start));
    std::erase_if(number, isBlank);
    errno = 0;
    char* end = nullptr;
    parameter.value = std::strtod(number.c_str(), &end);
    if (errno == ERANGE || end != number.c_str() + number.size()) {
        error = {kDataOutOfRange, "the number " + number + " is too large"};
        return false;
    }
    parameter.kind = Parameter::Kind::Numeric;
    parameter.text = number;
    const std::size_t beforeUnit = in.position();
    in.skipBlanks();
    parameter.unit = in.name();
    if (parameter.unit.empty()) in.moveTo(beforeUnit);
    return true;
}

bool readParameter(Reader& in, Parameter& parameter, ParseError& error)
{
    const char c = in.peek();
    if (c == '"' || c == '\'') return readString(in, parameter, error);
    if (isAlpha(c)) {
        parameter.kind = Parameter::Kind::Character;
        parameter.text = in.name();
        return true;
    }
    if (isDigit(c) || c == '+' || c == '-' || c == '.') return readNumber(in, parameter, error);
    error = syntax(std::string("a parameter cannot start with '") + c + "'");
    return false;
}

bool readParameters(Reader& in, Command& command, ParseError& error)
{
    in.skipBlanks();
    if (in.atEnd()) return true;
    while (true) {
        Parameter parameter;
        if (!readParameter(in, parameter, error)) return false;
        command.parameters.push_back(std::move(parameter));
        in.skipBlanks();
        if (in.atEnd()) return true;
        if (!in.skip(',')) {
            error = syntax("unexpected text after a parameter: " + std::string(in.rest()));
            return false;
        }
        in.skipBlanks();
    }
}

bool readHeader(Reader& in, std::vector<std::string>& path, Command& command, ParseError& error)
{
    if (in.skip('*')) {
        command.common = true;
        const std::string name = in.name();
        if (name.empty()) {
            error = syntax("a name must follow '*'");
            return false;
        }
        command.nodes = {"*" + name};
        return true;
    }
    command.nodes = in.skip(':') ? std::vector<std::string>{} : path;
    while (true) {
        const std::string node = in.name();
        if (node.empty()) {
            error = syntax("a header node was expected at '" + std::string(in.rest()) + "'");
            return false;
        }
        command.nodes.push_back(node);
        if (!in.skip(':')) break;
    }
    path.assign(command.nodes.begin(), command.nodes.end() - 1);
    return true;
}

}  // namespace

std::vector<std::string> splitCommands(std::string_view line)
{
    std::vector<std::string> commands;
    char quote = 0;
    std::size_t start = 0;
    const auto cut = [&](std::size_t end) {
        const std::string_view part = trimmed(line.substr(start, end - start));
        if (!part.empty()) commands.emplace_back(part);
        start = end + 1;
    };
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote != 0) {
            if (c == quote) quote = 0;  // a doubled quote closes and opens again
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == ';') {
            cut(i);
        }
    }
    cut(line.size());
    return commands;
}

bool parseCommand(std::string_view text, std::vector<std::string>& path, Command& command,
                  ParseError& error)
{
    command = {};
    Reader in(trimmed(text));
    if (!readHeader(in, path, command, error)) return false;
    command.query = in.skip('?');
    if (!in.atEnd() && !isBlank(in.peek())) {
        error = syntax("unexpected '" + std::string(1, in.peek()) + "' in the header");
        return false;
    }
    return readParameters(in, command, error);
}

// ---- Header patterns ---------------------------------------------------------------

HeaderPattern::HeaderPattern(std::string_view pattern)
{
    bool optional = false;
    std::size_t i = 0;
    while (i < pattern.size()) {
        const char c = pattern[i];
        if (c == '[') optional = true;
        if (c == ']') optional = false;
        // A common command's star is part of its one name.
        const bool common = c == '*';
        if (!isAlpha(c) && !common) {
            ++i;
            continue;
        }
        Node node{{}, 0, 1, optional};
        if (common) {
            node.longForm = "*";
            node.shortLength = 1;
            ++i;
        }
        while (i < pattern.size() && isAlpha(pattern[i])) {
            if (std::isupper(static_cast<unsigned char>(pattern[i]))) ++node.shortLength;
            node.longForm += static_cast<char>(std::toupper(static_cast<unsigned char>(pattern[i])));
            ++i;
        }
        if (i < pattern.size() && isDigit(pattern[i])) node.suffix = pattern[i++] - '0';
        nodes_.push_back(std::move(node));
    }
}

bool HeaderPattern::matches(const std::vector<std::string>& nodes) const { return matchFrom(0, 0, nodes); }

bool HeaderPattern::matchFrom(std::size_t pattern, std::size_t node,
                              const std::vector<std::string>& nodes) const
{
    if (pattern == nodes_.size()) return node == nodes.size();
    if (nodes_[pattern].optional && matchFrom(pattern + 1, node, nodes)) return true;
    return node < nodes.size() && nodeMatches(nodes_[pattern], nodes[node]) &&
           matchFrom(pattern + 1, node + 1, nodes);
}

bool HeaderPattern::nodeMatches(const Node& node, const std::string& typed)
{
    std::size_t letters = typed.starts_with('*') ? 1 : 0;
    while (letters < typed.size() && isAlpha(typed[letters])) ++letters;
    const std::string_view name(typed.data(), letters);
    if (name != node.longForm && name != std::string_view(node.longForm).substr(0, node.shortLength))
        return false;
    const std::string_view digits = std::string_view(typed).substr(letters);
    if (digits.empty()) return node.suffix == 1;
    if (digits.size() > 2 || !std::all_of(digits.begin(), digits.end(), isDigit)) return false;
    return std::atoi(std::string(digits).c_str()) == node.suffix;
}

bool mnemonicMatches(std::string_view mnemonic, const std::string& typed)
{
    const HeaderPattern pattern(mnemonic);
    return pattern.nodes_.size() == 1 && HeaderPattern::nodeMatches(pattern.nodes_[0], typed);
}

}  // namespace scpi
