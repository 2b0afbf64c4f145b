#pragma once

#include <string>

#include "records/conversion_inputs.h"
#include "records/export_format.h"

namespace tarno2::test {

/// The text of a data file as printf makes it, value by value: what the conversion must match to the byte.
[[nodiscard]] std::string printfExport(const std::string& data, const ExportFormat& format,
                                       const ConversionInputs& inputs);

/// printf's "%.*lf" with another decimal character.
[[nodiscard]] std::string printfFixed(double value, int precision, char decimal);

}  // namespace tarno2::test
