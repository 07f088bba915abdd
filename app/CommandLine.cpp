#include "app/CommandLine.h"

#include <cstdio>
#include <string_view>

#include "BuildInfo.h"

namespace app {

namespace {

constexpr const char* kUsage = "Usage: wavelark [--help | --version]";

void printHelp()
{
    std::printf("%s\n", kUsage);
    std::printf("%s",
                "Turns the sound card into a test signal generator for amplifiers, speakers\n"
                "and audio circuits. Everything is set in its window, which needs a display.\n"
                "\n"
                "Options:\n"
                "  -h, --help      print this help and exit\n"
                "      --version   print the version and licence and exit\n"
                "\n"
                "Environment:\n"
                "  WAVELARK_AUDIO  the sound back end: alsa (the real devices), loopback (a\n"
                "                  virtual card whose input hears its output) or auto (the\n"
                "                  default: ALSA, else the virtual card)\n"
                "\n"
                "Files:\n"
                "  ~/.config/Marlo/Wavelark.conf      the settings\n"
                "  ~/.local/state/Marlo/wavelark.log  the error log (wavelark.log beside the\n"
                "                                     program instead when its folder is writable)\n"
                "\n"
                "See wavelark(1) for more.\n");
}

void printVersion()
{
    std::printf("%s %d.%d.%d\n", buildinfo::kProductName, buildinfo::kVersionMajor,
                buildinfo::kVersionMinor, buildinfo::kVersionRevision);
    std::printf("Copyright (C) %s\n", buildinfo::kLegalCopyright);
    std::printf("%s",
                "License GPL-3.0-or-later: GNU GPL version 3 or later <https://gnu.org/licenses/gpl.html>.\n"
                "This is free software: you are free to change and redistribute it.\n"
                "There is NO WARRANTY, to the extent permitted by law.\n");
}

}  // namespace

std::optional<int> commandLineExitStatus(int argc, char* argv[])
{
    for (int index = 1; index < argc; ++index) {
        const std::string_view argument = argv[index];
        if (argument == "-h" || argument == "--help") {
            printHelp();
            return 0;
        }
        if (argument == "--version") {
            printVersion();
            return 0;
        }
        const char* kind = argument.starts_with('-') ? "unknown option" : "unexpected argument";
        std::fprintf(stderr, "wavelark: %s '%s'\n%s\n", kind, argv[index], kUsage);
        return 2;
    }
    return std::nullopt;
}

}  // namespace app
