#include "drivers/replay/wav_file.h"

#include <algorithm>
#include <cstring>

namespace tarno2::drivers {

namespace {

constexpr uint32_t kUnknownSize = 0xFFFFFFFFU;
constexpr uint16_t kFormatPcm = 1;
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
    if (tag != kFormatPcm) {
        reason = "its samples are not plain PCM";
    } else if (word16(format + 14) != 16) {
        reason = "its samples have " + std::to_string(word16(format + 14)) + " bits, not 16";
    } else if (info.channels < 1 || info.channels > kMostChannels) {
        reason = "it has " + std::to_string(info.channels) + " channels, 1 to 160 can be played";
    } else if (info.rate == 0) {
        reason = "its rate is 0";
    } else if (word16(format + 12) != info.channels * 2) {
        reason = "its frames have a wrong size";
    }
    return reason.empty();
}

}  // namespace

bool readWav(File& file, WavInfo& info, std::string& reason) {
    uint64_t fileSize = 0;
    uint8_t head[12];
    reason.clear();
    if (!file.size(fileSize).ok() || !readExactly(file, 0, head, sizeof head) || std::memcmp(head, "RIFF", 4) != 0 ||
        std::memcmp(head + 8, "WAVE", 4) != 0) {
        reason = "it is no .wav file";
        return false;
    }
    bool haveFormat = false;
    Chunk chunk;
    for (uint64_t offset = sizeof head; readChunk(file, offset, chunk);) {
        if (chunk.is("fmt ")) {
            if (!readFormat(file, chunk, info, reason)) {
                return false;
            }
            haveFormat = true;
        } else if (chunk.is("data") && haveFormat) {
            const uint64_t rest = fileSize - chunk.begin;
            const bool sizeKnown = chunk.size != 0 && chunk.size != kUnknownSize;
            info.dataOffset = chunk.begin;
            info.frames = (sizeKnown ? std::min<uint64_t>(chunk.size, rest) : rest) / (info.channels * 2);
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
