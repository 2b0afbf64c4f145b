#pragma once

#include <string>

#include "exports/export_recording.h"
#include "records/conversion_inputs.h"

namespace tarno2 {

/// What the command line asks for.
struct ExportOptions {
    ExportTask task;  ///< row, files, format and wish; the output's name is never empty once parsed
    KnownInputs known;
    bool quiet = false;
};

/// Takes the command line apart. Returns -1 to go on; else the program ends with that exit status, everything being
/// said already (help on the standard output, one line about bad use on the error output).
int parseExportOptions(int argc, const char* const* argv, ExportOptions& options);

}  // namespace tarno2
