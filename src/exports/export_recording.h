#pragma once

#include <atomic>
#include <string>

#include "exports/exporters.h"
#include "exports/frame_wish.h"
#include "records/frame_choice.h"
#include "records/text_conversion.h"

namespace tarno2 {

/// What is to become of a recording.
struct ExportTask {
    const ExporterRow* row = nullptr;  ///< of the table; never null when it is begun
    std::string dataFile;
    std::string outputName;   ///< or `kStandardOutput`
    bool replace = false;     ///< an output of that name may be replaced; text always does
    ExportFormat format;      ///< how values are told; the columns of text
    uint32_t sampleBits = 0;  ///< 0: what the codes need
    FrameWish wish;
    // What `lookAround` finds.
    FrameChoice choice;
    ConversionInputs inputs;  ///< of the data file
    ExportFacts facts;        ///< likewise
};

/// What else is known of a data file, and what is not though it was asked for.
struct ExportSurroundings {
    std::string unitsProblem;  ///< in English; empty when all is known or nobody asked
    std::string marksProblem;
    bool packetRateUnknown = false;               ///< time is told by the rate of a channel, though frames were packets
    bool timeRunsOn = false;                      ///< it leaves out the gaps between triggered records
    WishProblem wishProblem = WishProblem::None;  ///< such a task can't be begun
    std::string wishSubject;
};

/// Fills choice, inputs and facts of a task of which the rest is given: labels, marks, start and triggers as far as its
/// format has a place for them. Throws std::bad_alloc.
ExportSurroundings lookAround(ExportTask& task, const RecordedKeys& described, const KnownInputs& known);

/// The first lines, headings included, that text would have for a task which `lookAround` has filled; none of marks.
/// Empty when there are none. UTF-8. Throws std::bad_alloc.
[[nodiscard]] std::string previewText(const ExportTask& task, uint64_t lines);

/// Exports what is chosen of a recording; returns when it is done. `stop` ends it early, with an output that opens; so
/// does a disk that is full, with an error. `notes` get what the user should know. Nothing of the recording is touched.
/// Memory stays below 64 MiB whatever the size of the file.
[[nodiscard]] ConversionResult exportRecording(const ExportTask& task, ConversionProgress& progress,
                                               const std::atomic<bool>& stop, ExportNotes& notes);

}  // namespace tarno2
