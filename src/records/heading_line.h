#pragma once

#include <string>

#include "records/conversion_inputs.h"
#include "records/export_format.h"

namespace tarno2 {

/// The line of headings over exported columns, line end included: "name [unit]" over each channel, of codes the name
/// alone; the names of the lines. UTF-8. A heading that holds the divider or a double quote stands between double
/// quotes, those inside of it doubled.
[[nodiscard]] std::string headingLine(const ExportFormat& format, const ConversionInputs& inputs);

/// A text of a column: between double quotes when it holds the divider or a double quote.
[[nodiscard]] std::string quotedColumn(const std::string& text, const ExportFormat& format);

}  // namespace tarno2
