#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "exports/exporter.h"
#include "records/text_conversion.h"

namespace tarno2 {

/// What can be chosen for a format besides frames and channels.
enum ExporterOption : uint32_t {
    kTextOptions = 1,  ///< columns, dividers, precision, pieces
    kDataOption = 2,   ///< codes, volts or units
    kBitsOption = 4    ///< bits of a sample
};

/// A format that recordings can be exported to.
struct ExporterRow {
    const char* name;       ///< as the command line has it
    const char* extension;  ///< of its files, without the "."
    const char* title;      ///< for a list of them, in any language
    uint32_t options;       ///< of `ExporterOption`
    bool needsRate;         ///< the frames have to have a rate
    bool needsLimits;       ///< the channels have to have limits, volts
    bool usesMarks;         ///< it has a place for marks and triggers
    bool describes;         ///< a description is made beside it: the output is a recording of its own
    bool usuallyVolts;      ///< where nobody says what values are wanted; else codes
    /// Null: the rows of text, which are made by threads of their own (`convertToText`).
    std::unique_ptr<Exporter> (*make)(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal);
};

/// All of them, text first.
[[nodiscard]] std::span<const ExporterRow> exporters();
/// Null when there is none of that name.
[[nodiscard]] const ExporterRow* findExporter(std::string_view name);

}  // namespace tarno2
