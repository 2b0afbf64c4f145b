#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "records/export_format.h"
#include "records/recorded_format.h"
#include "records/recorded_labels.h"

namespace tarno2 {

/// What the conversion to text has to know of a data file.
struct ConversionInputs {
    static constexpr uint32_t kMostChannels = RecordedFormat::kMostChannels;

    uint32_t bytesPerSample = 0;  ///< 2 or 4
    uint32_t channelCount = 0;    ///< samples in a frame
    uint32_t codeBits = 0;
    uint32_t codeShift = 0;
    bool codeSigned = true;
    uint32_t digitalMask = 0;
    uint32_t digitalShift = 0;
    uint32_t digitalLines = 0;
    double codeMinimum = 0.0;  ///< the code of the lower limit of a range
    double codeMaximum = 0.0;  ///< the code of the upper one
    /// Upper and lower limit of each channel, volts.
    std::vector<std::pair<double, double>> ranges;
    double frequency = 0.0;  ///< frames per second of the time column, Hz
    /// What was marked, by the frame of the data file; one entry a frame, UTF-8.
    std::map<uint64_t, std::string> marks;
    RecordedLabels labels;  ///< what is known of the columns; may be nothing

    [[nodiscard]] uint32_t frameBytes() const { return bytesPerSample * channelCount; }
    /// The digital port of a frame, line 0 in the lowest bit.
    [[nodiscard]] uint32_t port(const uint8_t* frame) const {
        const uint32_t low = uint32_t{frame[0]} | uint32_t{frame[1]} << 8U;
        const uint32_t high = bytesPerSample == 2 ? 0 : uint32_t{frame[2]} << 16U | uint32_t{frame[3]} << 24U;
        return ((low | high) & digitalMask) >> digitalShift;
    }
    /// The analog code of a sample word.
    [[nodiscard]] int64_t code(uint32_t word) const;
    /// Volts of a code of channel `channel` (position in the frame).
    [[nodiscard]] double volts(size_t channel, int64_t code) const;
};

/// What somebody knows of a recording better than its description does. What is not set comes from the description.
struct KnownInputs {
    std::optional<uint32_t> bytesPerSample;  ///< other than the description's: the code then fills the whole word
    std::optional<uint32_t> channelCount;
    std::optional<uint32_t> codeBits;
    std::optional<uint32_t> codeShift;
    std::optional<bool> codeSigned;
    std::optional<uint32_t> digitalMask;
    std::optional<uint32_t> digitalShift;
    std::optional<uint32_t> digitalLines;
    std::optional<double> codeMinimum;  ///< a board may use fewer codes than its words have
    std::optional<double> codeMaximum;
    std::vector<std::pair<double, double>> ranges;  ///< upper and lower limit, V; a single one counts for all channels
    std::optional<double> frequency;                ///< of a channel, Hz
    /// Of a recording whose frames were packets, Hz; the description keeps but 8 bits of it.
    std::optional<double> packetFrequency;
};

/// Puts both together. Codes run as far as their bits let them, unless their limits are known.
[[nodiscard]] ConversionInputs conversionInputs(const RecordedKeys& described, const KnownInputs& known);

/// Puts the description's ranges in the order of the columns: a board may send the channels backward. Volts alone have
/// always been told by the ranges as they are listed, and stay so for who reads them by programs.
void putRangesInOrder(ConversionInputs& inputs, const RecordedKeys& described);

/// The description's key of the first input that this format needs and that is missing or makes no sense; empty when
/// the conversion can begin. The frequency is needed for a time column alone, the ranges for volts alone.
[[nodiscard]] std::string missingInput(const ConversionInputs& inputs, const ExportFormat& format);

/// Whether the time column leaves out the time between records of synchronisation.
[[nodiscard]] bool timeRunsOnOverGaps(const RecordedKeys& described, const ExportFormat& format);

/// Whether the time column counts by the frequency of a channel because that of the packets is not known.
[[nodiscard]] bool lacksPacketFrequency(const RecordedKeys& described, const KnownInputs& known,
                                        const ExportFormat& format);

}  // namespace tarno2
