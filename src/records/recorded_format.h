#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "records/record_description.h"

namespace tarno2 {

/// What a data file's description tells of its samples.
struct RecordedFormat {
    /// The most channels that a frame may have.
    static constexpr uint32_t kMostChannels = 4096;

    SampleLayout layout;
    double frequencyPerChannel = 0.0;  ///< Hz
    uint32_t channelCount = 0;
    uint64_t frames = 0;
    std::vector<std::pair<double, double>> ranges;  ///< upper and lower limit of each channel, volts
    bool backwardOrder = false;                     ///< frames hold the channels in reverse order
    std::string driverName;                         ///< empty when the description names none
    std::optional<LocalTime> created;               ///< when it began, to the second
    bool even = true;  ///< frames follow each other by the frequency: no records, no packets
    /// Frames of each record of synchronisation before its trigger, and from it on; not there without records.
    std::optional<std::pair<uint32_t, uint32_t>> record;
};

/// Each key of a description by itself: what is missing or makes no sense is not there.
struct RecordedKeys {
    bool readable = false;  ///< the file was there and could be read
    OsError error;          ///< why it is not readable
    std::optional<SampleLayout> layout;
    std::optional<double> frequencyPerChannel;  ///< Hz
    std::optional<uint32_t> channelCount;
    std::optional<uint64_t> frames;
    /// Upper and lower limits, volts; as many as the file lists.
    std::optional<std::vector<std::pair<double, double>>> ranges;
    std::string driverName;
    std::optional<LocalTime> created;           ///< when it began, to the second
    bool packetMode = false;                    ///< each frame was taken as a packet
    std::optional<int8_t> packetFrequency;      ///< Hz, as far as the description tells it
    std::optional<int8_t> externalFrequency;    ///< 1: the rate is that of a clock outside, -1: unknown
    std::optional<int8_t> synchronousChannels;  ///< 1: the samples of a frame were taken at once, -1: unknown
    bool backwardOrder = false;                 ///< frames hold the channels in reverse order
    bool triggered = false;                     ///< it holds records of synchronisation, one behind the other
    /// Frames of each of them before its trigger, and from it on.
    std::optional<std::pair<uint32_t, uint32_t>> record;
};

/// Reads what can be read of a description, which may be damaged or missing.
[[nodiscard]] RecordedKeys readRecordedKeys(const std::string& descriptionFile);

/// Reads a description back. False when it can't be used: `missingKey` then names the first key that is missing or
/// whose value makes no sense, or is empty when the file itself can't be read, for which `why` gets the reason;
/// `format` is left as it was.
/// A format that is given has 2 or 4 bytes a sample, a code and shifts within them, 1 to `kMostChannels` channels, a
/// range for each and a positive frequency. Fields of the digital port may be -1, undefined.
[[nodiscard]] bool readRecordedFormat(const std::string& descriptionFile, RecordedFormat& format,
                                      std::string& missingKey, OsError* why = nullptr);

}  // namespace tarno2
