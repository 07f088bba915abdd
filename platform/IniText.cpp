#include "platform/IniText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace host::ini {

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    return (c | 0x20) - 'a' + 10;
}

void appendUtf8(std::string& out, std::uint32_t code)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | ((code >> 12) & 0x0F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// The next UTF-8 character of `text` from `i` as a code point; `i` moves past it.
std::uint32_t nextCodePoint(std::string_view text, std::size_t& i)
{
    const auto lead = static_cast<unsigned char>(text[i++]);
    int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    std::uint32_t code = extra == 3 ? lead & 0x07u : extra == 2 ? lead & 0x0Fu : extra == 1 ? lead & 0x1Fu : lead;
    for (; extra > 0 && i < text.size(); --extra) code = (code << 6) | (static_cast<unsigned char>(text[i++]) & 0x3Fu);
    return code;
}

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

// ------------------------------------------------------------- keys

std::string escapeKey(std::string_view key)
{
    std::string out;
    for (std::size_t i = 0; i < key.size();) {
        const char c = key[i];
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
            c == '-' || c == '.') {
            out += c;
            ++i;
            continue;
        }
        if (c == '/') {
            out += '\\';
            ++i;
            continue;
        }
        const std::uint32_t code = nextCodePoint(key, i);
        out += code <= 0xFF ? "%" : "%U";
        for (int shift = code <= 0xFF ? 4 : 12; shift >= 0; shift -= 4) out += kHexDigits[(code >> shift) & 0xF];
    }
    return out;
}

std::string unescapeKey(std::string_view key)
{
    std::string out;
    for (std::size_t i = 0; i < key.size();) {
        if (key[i] == '\\') {
            out += '/';
            ++i;
            continue;
        }
        const std::size_t digits = i + 1 < key.size() && key[i + 1] == 'U' ? 4 : 2;
        const std::size_t first = i + (digits == 4 ? 2 : 1);
        bool escaped = key[i] == '%' && first + digits <= key.size();
        for (std::size_t d = 0; escaped && d < digits; ++d) escaped = isHexDigit(key[first + d]);
        if (!escaped) {
            out += key[i++];
            continue;
        }
        std::uint32_t code = 0;
        for (std::size_t d = 0; d < digits; ++d) code = code * 16 + hexValue(key[first + d]);
        appendUtf8(out, code);
        i = first + digits;
    }
    return out;
}

// The header a section is written under; "General" is escaped because a
// plain [General] holds the keys of no section.
std::string sectionHeader(std::string_view section)
{
    const std::string name = escapeKey(section);
    return "[" + (name == "General" ? "%General" : name) + "]";
}

// ----------------------------------------------------------- values

std::string escapeValue(std::string_view value)
{
    std::string out;
    bool needsQuotes = false;
    bool escapeNextIfDigit = false;
    const auto hexEscape = [&](unsigned char c) {
        out += "\\x";
        if (c >= 16) out += static_cast<char>(kHexDigits[c >> 4] | 0x20);
        out += static_cast<char>(kHexDigits[c & 0xF] | 0x20);
    };
    if (!value.empty() && value.front() == '@') out += '@';
    for (const char c : value) {
        const auto u = static_cast<unsigned char>(c);
        if (c == ';' || c == ',' || c == '=') needsQuotes = true;
        if (escapeNextIfDigit && isHexDigit(c)) {
            hexEscape(u);
            continue;
        }
        escapeNextIfDigit = false;
        switch (c) {
        case '\0': out += "\\0"; escapeNextIfDigit = true; break;
        case '\a': out += "\\a"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        case '\v': out += "\\v"; break;
        case '"':
        case '\\': out += '\\'; out += c; break;
        default:
            if (u <= 0x1F) {
                hexEscape(u);
                escapeNextIfDigit = true;
            } else {
                out += c;
            }
        }
    }
    if (needsQuotes || (!out.empty() && (out.front() == ' ' || out.back() == ' '))) out = '"' + out + '"';
    return out;
}

// Reads a value: blanks around unquoted text go, quotes group, backslash
// escapes (named, \x hex, octal) stand for their character, and unquoted
// commas separate list items.
std::optional<std::string> unescapeValue(std::string_view raw)
{
    static const std::map<char, char> named = {{'a', '\a'}, {'b', '\b'}, {'f', '\f'},  {'n', '\n'},
                                               {'r', '\r'}, {'t', '\t'}, {'v', '\v'},  {'"', '"'},
                                               {'?', '?'},  {'\'', '\''}, {'\\', '\\'}};
    std::vector<std::string> items;
    std::string item;
    bool inQuotes = false;
    bool quoted = false;
    std::size_t keep = 0;  // what trailing blanks may not eat (escaped or quoted text)
    std::size_t i = 0;
    const auto skipBlanks = [&] {
        while (i < raw.size() && (raw[i] == ' ' || raw[i] == '\t')) ++i;
    };
    const auto chopBlanks = [&] {
        while (item.size() > keep && (item.back() == ' ' || item.back() == '\t')) item.pop_back();
    };
    skipBlanks();
    while (i < raw.size()) {
        const char c = raw[i];
        if (c == '\\' && i + 1 < raw.size()) {
            const char e = raw[i + 1];
            i += 2;
            if (auto found = named.find(e); found != named.end()) {
                item += found->second;
            } else if (e == 'x' || (e >= '0' && e <= '7')) {
                const bool hex = e == 'x';
                const auto isDigit = [&](char d) { return hex ? isHexDigit(d) : d >= '0' && d <= '7'; };
                if (!hex || (i < raw.size() && isDigit(raw[i]))) {  // a bare \x stands for nothing
                    std::uint32_t code = hex ? 0 : static_cast<std::uint32_t>(e - '0');
                    while (i < raw.size() && isDigit(raw[i])) {
                        code = code * (hex ? 16 : 8) + static_cast<std::uint32_t>(hexValue(raw[i++]));
                    }
                    appendUtf8(item, code & 0xFFFF);
                }
            }
            keep = item.size();
        } else if (c == '\\') {
            ++i;
        } else if (c == '"') {
            ++i;
            quoted = true;
            inQuotes = !inQuotes;
            if (!inQuotes) skipBlanks();
            keep = item.size();
        } else if (c == ',' && !inQuotes) {
            if (!quoted) chopBlanks();
            items.push_back(std::move(item));
            item.clear();
            quoted = false;
            keep = 0;
            ++i;
            skipBlanks();
        } else {
            item += c;
            ++i;
            if (inQuotes) keep = item.size();
        }
    }
    if (!quoted) chopBlanks();
    if (!items.empty()) {
        items.push_back(std::move(item));
        item = items.front();
        for (std::size_t k = 1; k < items.size(); ++k) item += "," + items[k];
    }
    if (item == "@Invalid()") return std::nullopt;
    if (item.starts_with("@@")) item.erase(0, 1);
    return item;
}

// ------------------------------------------------------------ lines

std::vector<std::string_view> splitLines(std::string_view text)
{
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

// The section a header line opens, unescaped ("" for [General]); no value
// for a line that is not a header.
std::optional<std::string> headerSection(std::string_view line)
{
    const std::string_view text = trimmed(line);
    if (text.size() < 2 || text.front() != '[') return std::nullopt;
    const auto close = text.rfind(']');
    if (close == 0 || close == std::string_view::npos) return std::nullopt;
    const std::string_view name = text.substr(1, close - 1);
    if (name == "General") return std::string();
    if (name == "%General") return std::string("General");
    return unescapeKey(name);
}

struct Entry {
    std::string key;
    std::string_view rawValue;
};

std::optional<Entry> entryOf(std::string_view line)
{
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == ';' || text.front() == '#') return std::nullopt;
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) return std::nullopt;
    return Entry{unescapeKey(trimmed(text.substr(0, equals))), text.substr(equals + 1)};
}

}  // namespace

std::map<std::string, std::string> readSection(std::string_view text, std::string_view section)
{
    std::map<std::string, std::string> values;
    bool inSection = false;
    for (const std::string_view line : splitLines(text)) {
        if (auto header = headerSection(line)) {
            inSection = *header == section;
            continue;
        }
        if (!inSection) continue;
        if (auto entry = entryOf(line)) {
            if (auto value = unescapeValue(entry->rawValue)) {
                values[entry->key] = *value;
            } else {
                values.erase(entry->key);
            }
        }
    }
    return values;
}

std::string withValues(std::string_view text, std::string_view section,
                       const std::map<std::string, std::string>& values)
{
    const auto entryLine = [](const std::string& key, const std::string& value) {
        return escapeKey(key) + "=" + escapeValue(value);
    };
    const std::vector<std::string_view> original = splitLines(text);
    std::vector<std::string> lines(original.begin(), original.end());
    std::map<std::string, std::string> missing = values;
    std::optional<std::size_t> sectionEnd;  // where new keys go: after the section's last entry
    bool inSection = false;
    for (std::size_t n = 0; n < lines.size(); ++n) {
        if (auto header = headerSection(lines[n])) {
            inSection = *header == section;
            if (inSection && !sectionEnd) sectionEnd = n + 1;
            continue;
        }
        if (!inSection) continue;
        if (auto entry = entryOf(lines[n])) {
            if (auto value = values.find(entry->key); value != values.end()) {
                lines[n] = entryLine(entry->key, value->second);
                missing.erase(entry->key);
            }
            if (*sectionEnd <= n) sectionEnd = n + 1;
        }
    }
    std::vector<std::string> added;
    for (const auto& [key, value] : missing) added.push_back(entryLine(key, value));
    if (!sectionEnd) {
        if (!lines.empty() && !trimmed(lines.back()).empty()) lines.emplace_back();
        lines.push_back(sectionHeader(section));
        sectionEnd = lines.size();
    }
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(*sectionEnd), added.begin(), added.end());
    std::string out;
    for (const std::string& line : lines) out += line + "\n";
    return out;
}

}  // namespace host::ini
