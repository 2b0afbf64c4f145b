#include "records/recorded_format.h"

#include <array>
#include <cmath>
#include <limits>

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

bool readFrequency(const KeyValueFile& file, double& frequency) {
    return file.readDouble("Frequency", frequency, 0.0) && std::isfinite(frequency) && frequency > 0.0;
}

bool readChannelCount(const KeyValueFile& file, uint32_t& channels) {
    uint64_t count = 0;
    if (!file.readUInt64("ChannelNumber", count, 0) || count == 0 || count > std::numeric_limits<uint32_t>::max()) {
        return false;
    }
    channels = static_cast<uint32_t>(count);
    return true;
}

bool readRanges(const KeyValueFile& file, uint32_t channels, std::vector<std::pair<double, double>>& ranges) {
    // Counted first: a damaged channel count must not decide how much memory is taken.
    uint32_t count = 0;
    if (!file.readDoubleArray("ChannelsRange", {}, count) || count != uint64_t{channels} * 2) {
        return false;
    }
    std::vector<double> limits(count);
    file.readDoubleArray("ChannelsRange", limits, count);
    ranges.clear();
    for (size_t i = 0; i < limits.size(); i += 2) {
        if (!std::isfinite(limits[i]) || !std::isfinite(limits[i + 1])) {
            return false;
        }
        ranges.emplace_back(limits[i], limits[i + 1]);
    }
    return true;
}

}  // namespace

bool readRecordedFormat(const std::string& descriptionFile, RecordedFormat& format, std::string& missingKey) {
    missingKey.clear();
    KeyValueFile file;
    if (!file.openForReading(descriptionFile)) {
        return false;
    }
    RecordedFormat read;
    file.readString("DriverName", read.driverName, {});
    if (!readLayout(file, read.layout)) {
        missingKey = "DataFormat";
    } else if (!readFrequency(file, read.frequencyPerChannel)) {
        missingKey = "Frequency";
    } else if (!file.readUInt64("DataCountPerChannel", read.frames, 0)) {
        missingKey = "DataCountPerChannel";
    } else if (!readChannelCount(file, read.channelCount)) {
        missingKey = "ChannelNumber";
    } else if (!readRanges(file, read.channelCount, read.ranges)) {
        missingKey = "ChannelsRange";
    } else {
        format = std::move(read);
        return true;
    }
    return false;
}

}  // namespace tarno2
