#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "exports/export_facts.h"
#include "exports/export_sink.h"
#include "records/conversion_inputs.h"
#include "records/export_format.h"

namespace tarno2 {

/// What an exporter is told of the frames that it will get.
struct ExportSubject {
    ConversionInputs inputs;  ///< of these frames: the chosen channels, marks by their numbers
    ExportFormat format;      ///< how values are wanted: codes, volts or units
    uint32_t sampleBits = 0;  ///< of a sample in the output; 0: what the codes need
    double rate = 0.0;        ///< frames a second, Hz
    uint64_t frames = 0;      ///< how many come, unless it is stopped
    ExportFacts facts;        ///< their triggers by their numbers, too
    std::string dataFile;     ///< that they come from
    std::string outputName;   ///< of the file that is made
};

/// What the user should know of an output that was made.
struct ExportNote {
    enum Kind : uint8_t {
        FullScale,         ///< detail: what the numbers of the channels mean
        LinesLeftOut,      ///< the format has no place for digital lines
        LowBitsLeftOut,    ///< detail: how many bits of each code
        RateRounded,       ///< detail: the rate that the output tells, Hz
        LastRecordPadded,  ///< detail: by how many frames
        NamesReplaced,     ///< letters that the format does not take
        LimitsRounded,     ///< the limits of channels have more digits than the format
        LongHeader,        ///< detail: its bytes
        PassportLeftOut    ///< names, units, scales, marks and the exact start stay in the passport of the whole
    };
    Kind kind;
    std::string detail;
};
using ExportNotes = std::vector<ExportNote>;

/// The note in English, in one line.
[[nodiscard]] std::string describe(const ExportNote& note);

/// Writes frames in one form. `begin`, `frames` any number of times, `end`; false when the sink failed, which then has
/// the error, or a file beside it (`unwritten`). Memory does not grow with the frames.
class Exporter {
public:
    virtual ~Exporter() = default;
    virtual bool begin(ExportSink& sink) = 0;
    /// `count` frames, one behind the other.
    virtual bool frames(ExportSink& sink, const uint8_t* frames, size_t count) = 0;
    /// `frames`: how many there were; fewer than announced after a stop. What was begun becomes a file that opens.
    virtual bool end(ExportSink& sink, uint64_t frames) = 0;
    /// A file beside the output that could not be written, though the sink may have no error; empty: there is none.
    [[nodiscard]] virtual std::string unwritten() const { return {}; }
    /// Why.
    [[nodiscard]] virtual OsError error() const { return {}; }
    /// After the sink has failed: makes a file that opens of what it has taken, as far as that can be done. `bytes` and
    /// `frames`: what there was after the last call of `frames` that went well.
    virtual bool rescue(ExportSink& sink, uint64_t bytes, uint64_t frames) {
        return sink.cutBack(bytes) && end(sink, frames);
    }
};

}  // namespace tarno2
