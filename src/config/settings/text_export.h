#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/settings/program_settings.h"
#include "records/export_format.h"
#include "records/text_conversion.h"

namespace tarno2 {

// The rules of the conversion's dialog and what its progress looks like. Texts are in the language chosen last.

/// The settings with everything that is out of its range put right.
[[nodiscard]] TextExportSettings withinLimits(TextExportSettings settings);
/// How lines are made after these settings.
[[nodiscard]] ExportFormat exportFormat(const TextExportSettings& settings);

/// Which fields mean something in the chosen modes.
struct ExportFields {
    bool timePrecision = false;
    bool voltagePrecision = true;  ///< of codes as well
    bool tabCount = false;
    bool symbol = false;
    bool symbolCount = false;
};
[[nodiscard]] ExportFields usedFields(const TextExportSettings& settings);

/// A conversion's counters at one moment.
struct ConversionState {
    explicit ConversionState(const ConversionProgress& progress);

    uint64_t lines;
    uint64_t totalLines;
    uint64_t files;
    uint64_t totalFiles;
    uint64_t bytes;
    /// Bytes of all the text, from those of the lines so far; nothing while there is none.
    [[nodiscard]] std::optional<uint64_t> totalBytes() const;
    /// Milliseconds that it will take on, at the speed so far; nothing while there is no line.
    [[nodiscard]] std::optional<uint64_t> remaining(uint64_t elapsed) const;
    [[nodiscard]] int thousandths() const;  ///< done
};

/// Hours, minutes and seconds.
[[nodiscard]] std::string durationText(uint64_t milliseconds);

/// The progress in words, in the code page: what is done, " / ", what there is in all (of the time: what is left, or
/// "-:-:-" while nobody knows).
struct ProgressTexts {
    std::string files;
    std::string size;
    std::string lines;
    std::string time;
};
[[nodiscard]] ProgressTexts progressTexts(const ConversionState& state, uint64_t elapsedMilliseconds);

}  // namespace tarno2
