#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/file.h"
#include "records/conversion_inputs.h"
#include "records/export_format.h"
#include "records/frame_choice.h"

namespace tarno2 {

/// How far a conversion is. Written by it, read by any thread.
struct ConversionProgress {
    std::atomic<uint64_t> totalLines{0};
    std::atomic<uint64_t> totalFiles{0};
    std::atomic<uint64_t> lines{0};
    std::atomic<uint64_t> files{0};  ///< begun
    std::atomic<uint64_t> bytes{0};  ///< of text
};

struct ConversionResult {
    enum Status : int32_t {
        Finished = 0,
        Stopped = 1,  ///< on request; what was converted so far is written, in whole lines
        NoMemory = -1,
        BadInput = -2,  ///< `subject` is the description's key of the input that is missing or makes no sense
        CannotRead = -3,
        CannotCreate = -4,
        CannotWrite = -5,
        OutputIsInput = -6,  ///< the output would replace a file of the recording
        BadName = -7,        ///< empty or too long
        NothingChosen = -8,  ///< the data file ends before what was asked for begins
        OutputExists = -9,
        CodesTooWide = -10,     ///< `subject`: the bits that the output has for a code
        TooManyChannels = -11,  ///< `subject`: the most that the output can have
        RateImpossible = -12,   ///< the output can't tell the rate of the frames
        NoRecordingName = -13,  ///< the name of a recording that is made has to end in ".dat"
        NameTaken = -14,        ///< `subject` is there, of another recording of that name
        RecordsTorn = -15       ///< the records of synchronisation would become one signal
    };
    Status status = Finished;
    std::string subject;         ///< of a failure: the file it is about, or the key
    OsError error;               ///< of a failure: the system's words; ok when it has none
    uint64_t frames = 0;         ///< whole frames in the data file
    uint32_t leftoverBytes = 0;  ///< behind the last whole frame of the data file; they are not converted
};

/// Whether a file must not be replaced, by its name.
using NameGuard = std::function<bool(const std::string&)>;

/// Converts a recorded data file, or what is chosen of it, to lines of text, one a frame, on threads of its own;
/// returns when it is done. The output is cut into pieces by `format.maximumLines`; files of their names are replaced.
/// Without a frame there is one empty file. After a failure the pieces that were finished stay. `kStandardOutput` is
/// the name of the program's output, into which all pieces go.
///
/// The data file, its description and what `guard` (unless empty) holds back are never replaced: the conversion ends at
/// such a name.
///
/// `stop` is looked at after every frame. Memory stays below 64 MiB whatever the size of the file.
[[nodiscard]] ConversionResult convertToText(const std::string& dataFile, const std::string& outputName,
                                             const ExportFormat& format, const ConversionInputs& inputs,
                                             ConversionProgress& progress, const std::atomic<bool>& stop,
                                             const FrameChoice& choice = {}, const NameGuard& guard = {});

/// Opens a data file and counts its frames, of which the choice takes some, for who converts it by other means.
[[nodiscard]] ConversionResult openRecordedData(File& data, const std::string& dataFile, uint32_t frameBytes,
                                                const FrameChoice& choice);

/// What went wrong, in English and in one line; empty for `Finished` and `Stopped`.
[[nodiscard]] std::string describe(const ConversionResult& result);

}  // namespace tarno2
