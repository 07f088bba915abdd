#pragma once
// A small tokenizer for fixed-length platform names and report lines.
#include <cstdint>
#include <string>

#include "base/Types.h"

// The token of Text from position Start (1-based) up to the first delimiter:
// the characters of Delimiters are tried in turn and the first one found at
// all ends the token, even if a later one stands earlier in the text. Start
// then moves past the delimiter by the length of the whole Delimiters text
// (so "\r\n" splits lines). No delimiter left: "" and Start unchanged. Start
// beyond the end: the one-character text "\0" (end marker).
std::string gsStringParse(const std::string& Text, const std::string& Delimiters,
                          std::int16_t& Start, ErrorFlag& bError);
