#include "entry/modStringParse.h"

#include "base/Convert.h"
#include "base/Trap.h"

std::string gsStringParse(const std::string& Text, const std::string& Delimiters,
                          std::int16_t& Start, ErrorFlag& bError)
{
    std::string token;
    rt::Trap trap("modStringParse", "gsStringParse", bError);
    trap.step([&] {
        if (Start < 1) Start = 1;
        const auto from = static_cast<std::size_t>(Start) - 1;
        if (from >= Text.size()) {
            token = std::string(1, '\0');
            return;
        }
        for (const char delimiter : Delimiters) {
            const std::size_t found = Text.find(delimiter, from);
            if (found == std::string::npos) continue;
            token = Text.substr(from, found - from);
            Start = rt::toInt16(static_cast<double>(found + 1 + Delimiters.size()));
            return;
        }
    });
    return token;
}
