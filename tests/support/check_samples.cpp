// check_samples KIND CHANNELS FILE: whether every sample of a recorded file is the one that a bench has sent. Prints
// how many frames there are; the exit status is 1 when a sample is wrong.
//
//   count16, count12, count24   elements that count, each 1000 more than the one before, in words of 2 or 4 bytes
//   counter16, counter24, counter32   the counter signal, 24 bits with the sign extended
//   lines16                     the bytes of 16 lines count, two a word
//   demo                        8 lines that count below codes that repeat every 20 frames

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "drivers/simulator/counter_signal.h"

namespace {

constexpr size_t kPeriod = 20;
constexpr int32_t kTolerance = 1 << 9;  // of the demonstration device's codes, which it computes in floating point

struct Check {
    std::string kind;
    size_t channels = 1;
    std::vector<uint32_t> first;  // frames

    [[nodiscard]] size_t bytes() const { return kind.ends_with("16") || kind == "count12" ? 2 : 4; }

    [[nodiscard]] bool right(uint32_t word, uint64_t sample) {
        const uint64_t frame = sample / channels;
        const uint64_t count = frame + 1000 * (sample % channels);
        if (first.size() < kPeriod * channels) {
            first.push_back(word);
        }
        if (kind == "count16" || kind == "count12") {
            return word == (count & (kind == "count16" ? 0xFFFF : 0xFFF));
        }
        if (kind == "count24") {
            return static_cast<int32_t>(word) == static_cast<int32_t>(static_cast<uint32_t>(count) << 8) >> 8;
        }
        if (kind.starts_with("counter")) {
            const uint32_t bits = kind == "counter16" ? 16 : kind == "counter24" ? 24 : 32;
            const uint32_t code = tarno2::drivers::counterWord(sample, bits);
            return word == (bits == 24 && code >> 23 != 0 ? code | 0xFF000000U : code);
        }
        if (kind == "lines16") {
            const uint64_t low = (first[0] + 2 * frame) % 256;
            return word == low + (low + 1) % 256 * 256;
        }
        const uint32_t same = first[sample % (kPeriod * channels)];
        // Where a saw falls, rounding puts it at either end of the range: the difference goes around.
        const auto difference = static_cast<int32_t>((word & ~0xFFU) - (same & ~0xFFU)) / 256;
        return (word & 0xFF) == ((first[0] & 0xFF) + frame) % 256 && std::abs(difference) <= kTolerance;
    }
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::fprintf(
            stderr,
            "Usage: check_samples count16|count12|count24|counter16|counter24|counter32|lines16|demo CHANNELS FILE\n");
        return 2;
    }
    Check check{.kind = arguments[1], .channels = static_cast<size_t>(std::atoi(arguments[2])), .first = {}};
    std::ifstream file(arguments[3], std::ios::binary);
    std::vector<char> block(size_t{1} << 20);
    uint64_t sample = 0;
    for (size_t bytes = block.size(); bytes == block.size();) {
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        bytes = static_cast<size_t>(file.gcount());
        for (size_t at = 0; at + check.bytes() <= bytes; at += check.bytes(), ++sample) {
            uint32_t word = 0;
            std::memcpy(&word, block.data() + at, check.bytes());
            if (!check.right(word, sample)) {
                std::printf("sample %llu is wrong: 0x%X\n", static_cast<unsigned long long>(sample), word);
                return 1;
            }
        }
    }
    std::printf("%llu\n", static_cast<unsigned long long>(sample / check.channels));
    return sample % check.channels == 0 ? 0 : 1;
}
