#pragma once

#include <string>

#include "records/conversion_inputs.h"
#include "records/export_format.h"

namespace tarno2 {

/// What the command line asks for.
struct ExportOptions {
    std::string dataFile;
    std::string outputName;  ///< never empty once parsed
    ExportFormat format;
    KnownInputs known;
    bool quiet = false;
};

/// Takes the command line apart. Returns -1 to go on; else the program ends with that exit status, everything being
/// said already (help on the standard output, one line about bad use on the error output).
int parseExportOptions(int argc, const char* const* argv, ExportOptions& options);

}  // namespace tarno2
