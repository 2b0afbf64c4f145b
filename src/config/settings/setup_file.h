#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "config/settings/program_settings.h"
#include "platform/os_error.h"

namespace tarno2 {

// Setups: all that describes a measurement (board, channels, names, trigger, file, stop rule, view), kept under a name.
// Each is a file of the same keys as `Tarno2.cfg`, without those that belong to the window and to the program, in the
// folder "Setups" of the program's directory; the file is all of it, and may be carried to another computer. Of what
// drivers are told it has the part of its own driver. Names are those of files. Window thread only.

/// The ending of a setup's file.
inline constexpr std::string_view kSetupEnding = ".setup";

/// A name that every system takes for a file: not empty, without control characters and any of / \ : * ? " < > |, with
/// no point at either end and no blank at the last one, and not that of a device of Windows (con, nul, com1...).
[[nodiscard]] bool isSetupName(std::string_view name);
[[nodiscard]] std::string setupPath(const std::string& programDirectory, const std::string& name);
/// The names of all setups, sorted.
[[nodiscard]] std::vector<std::string> setupNames(const std::string& programDirectory);

/// Makes the folder when it is missing. False leaves an older setup of the name as it was.
[[nodiscard]] bool writeSetup(const std::string& path, const ProgramSettings& settings);

enum class SetupRead { Done, NotOpened, NoSetup };
/// Puts what describes the measurement in place of what the settings say of it; what the file lacks gets its start
/// value. Nothing changes unless it is done. `why`: of a file that can't be opened.
[[nodiscard]] SetupRead readSetup(const std::string& path, ProgramSettings& settings, OsError& why);

}  // namespace tarno2
