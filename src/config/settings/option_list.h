#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tarno2 {

/// One thing that a program takes on its command line.
struct ProgramOption {
    std::string_view name;   ///< "--status"
    std::string_view value;  ///< what follows it, "FILE"; empty for nothing
    std::string_view what;   ///< one line for users
};

/// A line of the list by which shells complete command lines: four fields between tabs.
///
///     command   the command of the program to which it belongs; empty for the program itself
///     name      `-x` or `--name` of an option, a word in capitals for an argument, another word for a command
///     value     what follows it: `{a,b}` one of these words, `FILE` or `TEXT` most likely a file, another word a value
///               that can't be guessed; empty: nothing. `COMMAND` says that the name is one.
///     what      what it is, for users
[[nodiscard]] std::string optionLine(std::string_view command, std::string_view name, std::string_view value,
                                     std::string_view what);
/// The lines of a program without commands.
[[nodiscard]] std::string optionList(std::span<const ProgramOption> options);

}  // namespace tarno2
