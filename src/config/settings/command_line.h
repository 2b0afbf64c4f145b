#pragma once

#include <span>
#include <string>
#include <string_view>

#include "config/settings/option_list.h"

namespace tarno2 {

/// What the program is asked to do.
struct CommandLine {
    enum Mode { Interactive, Console, Open, Version, Options, Usage };
    Mode mode = Interactive;
    std::string path;     ///< of the autosettings file, in console mode, as it was typed, quotes included; of the
                          ///< recording to open, without quotes around it
    bool status = false;  ///< the exit status tells what came of it
};

/// Nothing is interactive mode, "/c " or "/C " and a path is console mode, "--status " before it asks for an exit
/// status, "--open " and a path for a recording to be shown (without a path, as menus start it, interactive mode),
/// "--version" for the version, "--list-options" for `commandOptions`; anything else asks how to use the program.
[[nodiscard]] CommandLine parseCommandLine(std::string_view argumentText);

/// What the recording programs take; those that need a window only when asked for.
[[nodiscard]] std::span<const ProgramOption> commandOptions(bool withWindow);

}  // namespace tarno2
