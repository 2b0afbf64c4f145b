#include "drivers/replay/wav_file.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace tarno2::drivers {

namespace {

/// Bytes of sizes that a ds64 chunk has at least.
constexpr uint32_t kLeastSizes = 28;
constexpr uint32_t kUnknownSize = 0xFFFFFFFFU;
constexpr uint16_t kFormatPcm = 1;
constexpr uint16_t kFormatFloat = 3;
constexpr uint16_t kFormatExtensible = 0xFFFE;

struct Chunk {
    char id[4] = {};
    uint32_t size = 0;
    uint64_t begin = 0;  // of what it holds
    [[nodiscard]] bool is(const char* name) const { return std::memcmp(id, name, 4) == 0; }
};

uint16_t word16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | p[1] << 8);
}

uint32_t word32(const uint8_t* p) {
    return uint32_t{word16(p)} | uint32_t{word16(p + 2)} << 16;
}

uint64_t word64(const uint8_t* p) {
    return uint64_t{word32(p)} | uint64_t{word32(p + 4)} << 32;
}

bool readExactly(File& file, uint64_t offset, uint8_t* data, size_t size) {
    size_t done = 0;
    return file.seek(offset).ok() && file.read(data, size, done).ok() && done == size;
}

bool readChunk(File& file, uint64_t offset, Chunk& chunk) {
    uint8_t header[8];
    if (!readExactly(file, offset, header, sizeof header)) {
        return false;
    }
    std::memcpy(chunk.id, header, 4);
    chunk.size = word32(header + 4);
    chunk.begin = offset + sizeof header;
    return true;
}

std::optional<WavSample> sampleOf(uint16_t tag, uint16_t bits) {
    constexpr WavSample kIntegers[] = {WavSample::Unsigned8, WavSample::Signed16, WavSample::Signed24,
                                       WavSample::Signed32};
    if (tag == kFormatPcm && bits % 8 == 0 && bits >= 8 && bits <= 32) {
        return kIntegers[bits / 8 - 1];
    }
    if (tag == kFormatFloat && (bits == 32 || bits == 64)) {
        return bits == 32 ? WavSample::Float32 : WavSample::Float64;
    }
    return std::nullopt;
}

bool readFormat(File& file, const Chunk& chunk, WavInfo& info, std::string& reason) {
    uint8_t format[26] = {};
    const size_t size = std::min<size_t>(chunk.size, sizeof format);
    if (size < 16 || !readExactly(file, chunk.begin, format, size)) {
        reason = "its format chunk is too short";
        return false;
    }
    uint16_t tag = word16(format);
    if (tag == kFormatExtensible && size == sizeof format) {
        tag = word16(format + 24);
    }
    info.channels = word16(format + 2);
    info.rate = word32(format + 4);
    const uint16_t bits = word16(format + 14);
    const std::optional<WavSample> sample = sampleOf(tag, bits);
    info.sample = sample.value_or(WavSample::Signed16);
    if (tag != kFormatPcm && tag != kFormatFloat) {
        reason = "its samples are neither plain PCM nor floats";
    } else if (!sample) {
        reason = "its samples have " + std::to_string(bits) + " bits, not " +
                 (tag == kFormatPcm ? "8, 16, 24 or 32" : "32 or 64 as floats have");
    } else if (info.channels < 1 || info.channels > kMostChannels) {
        reason = "it has " + std::to_string(info.channels) + " channels, 1 to 160 can be played";
    } else if (info.rate == 0) {
        reason = "its rate is 0";
    } else if (word16(format + 12) != info.channels * bytesOf(info.sample)) {
        reason = "its frames have a wrong size";
    }
    return reason.empty();
}

/// The file begins as one of these; those of 64 bits differ in where sizes stand.
bool isWave(const uint8_t* head) {
    const auto is = [head](const char* id) { return std::memcmp(head, id, 4) == 0; };
    return (is("RIFF") || is("RF64") || is("BW64")) && std::memcmp(head + 8, "WAVE", 4) == 0;
}

}  // namespace

bool readWav(File& file, WavInfo& info, std::string& reason) {
    uint64_t fileSize = 0;
    uint8_t head[12];
    reason.clear();
    if (!file.size(fileSize).ok() || !readExactly(file, 0, head, sizeof head) || !isWave(head)) {
        reason = "it is no .wav file";
        return false;
    }
    bool haveFormat = false;
    uint64_t longSize = 0;  // of the data, by the chunk that RF64 has for sizes of 64 bits
    Chunk chunk;
    for (uint64_t offset = sizeof head; readChunk(file, offset, chunk);) {
        if (chunk.is("ds64") && chunk.size >= kLeastSizes) {
            uint8_t sizes[16];
            longSize = readExactly(file, chunk.begin, sizes, sizeof sizes) ? word64(sizes + 8) : 0;
        } else if (chunk.is("fmt ")) {
            if (!readFormat(file, chunk, info, reason)) {
                return false;
            }
            haveFormat = true;
        } else if (chunk.is("data") && haveFormat) {
            const uint64_t rest = fileSize - chunk.begin;
            const uint64_t size = chunk.size == kUnknownSize ? longSize : chunk.size;
            info.dataOffset = chunk.begin;
            info.frames = (size != 0 ? std::min(size, rest) : rest) / (info.channels * bytesOf(info.sample));
            if (info.frames == 0) {
                reason = "it holds no samples";
            }
            return reason.empty();
        }
        offset = chunk.begin + chunk.size + (chunk.size & 1U);  // chunks begin at even places
    }
    reason = haveFormat ? "it has no data chunk" : "it has no format chunk";
    return false;
}

}  // namespace tarno2::drivers
