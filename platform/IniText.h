#pragma once
// The text of an INI settings file, in the dialect of Qt's settings class so
// that a file written by either reads the same: "[section]" headers and
// "key=value" lines; sections and keys escape any character outside
// letters, digits, '_', '-' and '.' as %XX (or %UXXXX); values use C-style
// backslash escapes, are put in double quotes when they hold ';', ',' or
// '=' or start or end with a blank, and a leading '@' is doubled. Values
// are strings: a value with unquoted commas (a list) reads as its items
// joined by ",", and "@Invalid()" reads as no value.
#include <map>
#include <string>
#include <string_view>

namespace host::ini {

// The values of one section, by key (the last wins where a key repeats).
std::map<std::string, std::string> readSection(std::string_view text, std::string_view section);

// The text with these values set in that section. A key's line is replaced
// where it stands; new keys follow the section's last entry, and a missing
// section is added at the end. Every other line stays as it was.
std::string withValues(std::string_view text, std::string_view section,
                       const std::map<std::string, std::string>& values);

}  // namespace host::ini
