#include "records/recorded_format.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

namespace tarno2 {

namespace {

constexpr int32_t kBitsPerByte = 8;

bool isWithin(int32_t value, int32_t low, int32_t high) {
    return value >= low && value <= high;
}

bool readLayout(const KeyValueFile& file, SampleLayout& layout) {
    std::array<int32_t, 8> values{};
    uint32_t count = 0;
    if (!file.readInt32Array("DataFormat", values, count) || count != values.size()) {
        return false;
    }
    const auto [bytes, analogShift, analogMask, analogBits, digitalShift, digitalMask, digitalBits, isSigned] = values;
    if (bytes != 2 && bytes != 4) {
        return false;
    }
    const int32_t bits = bytes * kBitsPerByte;
    if (!isWithin(analogShift, 0, bits - 1) || !isWithin(analogBits, 1, bits) || !isWithin(isSigned, 0, 1) ||
        !isWithin(digitalShift, -1, bits - 1) || !isWithin(digitalBits, -1, bits)) {
        return false;
    }
    layout = {bytes,        analogShift, analogMask,  analogBits,
              digitalShift, digitalMask, digitalBits, static_cast<uint8_t>(isSigned)};
    return true;
}

bool codeFits(const SampleLayout& layout) {
    return layout.analogShift + layout.analogBits <= layout.bytesPerSample * kBitsPerByte;
}

/// The channel limits; nothing when one of them is no finite number or a channel has but one.
std::optional<std::vector<std::pair<double, double>>> readRanges(const KeyValueFile& file) {
    // Counted first: how much memory is taken depends on what the file really holds.
    uint32_t count = 0;
    if (!file.readDoubleArray("ChannelsRange", {}, count) || count % 2 != 0) {
        return std::nullopt;
    }
    std::vector<double> limits(count);
    file.readDoubleArray("ChannelsRange", limits, count);
    std::vector<std::pair<double, double>> ranges;
    for (size_t i = 0; i < limits.size(); i += 2) {
        if (!std::isfinite(limits[i]) || !std::isfinite(limits[i + 1])) {
            return std::nullopt;
        }
        ranges.emplace_back(limits[i], limits[i + 1]);
    }
    return ranges;
}

std::optional<int8_t> readInt8(const KeyValueFile& file, const char* key) {
    int32_t value = 0;
    return file.readInt32(key, value, 0) && std::in_range<int8_t>(value) ? std::optional(static_cast<int8_t>(value))
                                                                         : std::nullopt;
}

/// The time of day and the date in a text: six numbers, whatever stands between them.
std::optional<LocalTime> timeIn(std::string_view text) {
    std::array<uint16_t, 6> numbers{};
    size_t found = 0;
    for (size_t i = 0; i < text.size() && found < numbers.size();) {
        const auto [end, error] = std::from_chars(text.data() + i, text.data() + text.size(), numbers.at(found));
        if (error == std::errc()) {
            ++found;
            i = static_cast<size_t>(end - text.data());
        } else {
            ++i;
        }
    }
    const auto [hour, minute, second, day, month, year] = numbers;
    if (found != numbers.size() || hour > 23 || minute > 59 || second > 60 || day < 1 || day > 31 || month < 1 ||
        month > 12) {
        return std::nullopt;
    }
    return LocalTime{year, month, 0, day, hour, minute, second, 0};
}

// All records of a recording have one length, so that the first one tells it.
std::optional<std::pair<uint32_t, uint32_t>> readRecord(const KeyValueFile& file) {
    int32_t before = 0;
    int32_t after = 0;
    uint32_t count = 0;
    if (!file.readInt32Array("SynchroListPrehistory", std::span(&before, 1), count) || count == 0 || before < 0 ||
        !file.readInt32Array("SynchroListHistory", std::span(&after, 1), count) || count == 0 || after <= 0) {
        return std::nullopt;
    }
    return std::pair(static_cast<uint32_t>(before), static_cast<uint32_t>(after));
}

}  // namespace

RecordedKeys readRecordedKeys(const std::string& descriptionFile) {
    RecordedKeys keys;
    KeyValueFile file;
    keys.readable = file.openForReading(descriptionFile);
    if (!keys.readable) {
        keys.error = file.readError();
        return keys;
    }
    file.readString("DriverName", keys.driverName, {});
    std::string created;
    if (file.readString("CreateTime", created, {})) {
        keys.created = timeIn(created);
    }
    if (SampleLayout layout; readLayout(file, layout)) {
        keys.layout = layout;
    }
    double frequency = 0.0;
    if (file.readDouble("Frequency", frequency, 0.0) && std::isfinite(frequency) && frequency > 0.0) {
        keys.frequencyPerChannel = frequency;
    }
    uint64_t count = 0;
    if (file.readUInt64("DataCountPerChannel", count, 0)) {
        keys.frames = count;
    }
    if (file.readUInt64("ChannelNumber", count, 0) && count > 0 && count <= std::numeric_limits<uint32_t>::max()) {
        keys.channelCount = static_cast<uint32_t>(count);
    }
    keys.ranges = readRanges(file);
    int32_t packetMode = 0;
    keys.packetMode = file.readInt32("PacketMode", packetMode, 0) && packetMode == 1;
    keys.packetFrequency = readInt8(file, "PacketFreq");
    keys.externalFrequency = readInt8(file, "ExternalFreqMode");
    keys.synchronousChannels = readInt8(file, "SynchronousChannels");
    int32_t backward = 0;
    keys.backwardOrder = file.readInt32("BackwardOrder", backward, 0) && backward == 1;
    int32_t synchro = 0;
    keys.triggered = file.readInt32("SynchroEnable", synchro, 0) && synchro == 1;
    keys.record = keys.triggered ? readRecord(file) : std::nullopt;
    return keys;
}

bool readRecordedFormat(const std::string& descriptionFile, RecordedFormat& format, std::string& missingKey,
                        OsError* why) {
    missingKey.clear();
    RecordedKeys keys = readRecordedKeys(descriptionFile);
    if (!keys.readable) {
        if (why != nullptr) {
            *why = keys.error;
        }
        return false;
    }
    if (!keys.layout || !codeFits(*keys.layout)) {
        missingKey = "DataFormat";
    } else if (!keys.frequencyPerChannel) {
        missingKey = "Frequency";
    } else if (!keys.frames) {
        missingKey = "DataCountPerChannel";
    } else if (!keys.channelCount || *keys.channelCount > RecordedFormat::kMostChannels) {
        missingKey = "ChannelNumber";
    } else if (!keys.ranges || keys.ranges->size() != *keys.channelCount) {
        missingKey = "ChannelsRange";
    } else {
        format = {*keys.layout,
                  *keys.frequencyPerChannel,
                  *keys.channelCount,
                  *keys.frames,
                  std::move(*keys.ranges),
                  keys.backwardOrder,
                  std::move(keys.driverName),
                  keys.created,
                  !keys.triggered && !keys.packetMode,
                  keys.record};
        return true;
    }
    return false;
}

}  // namespace tarno2
