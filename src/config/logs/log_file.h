#pragma once

#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/os_error.h"

namespace tarno2 {

/// Opens a log for writing at its end, without sharing, making it when there is none. A link, or anything else than a
/// regular file of that name, is left alone. `log` stays closed on failure.
OsError openLogFile(File& log, const std::string& path);

/// Hands a whole line to the system with one write, so that lines of two threads never mix, and has it put on the disk.
/// False when it could not be written: no log may change what the program does.
bool writeLogLine(File& log, std::string_view line);

}  // namespace tarno2
