#include "drivers/serial/checksum.h"

#include <algorithm>
#include <array>

namespace tarno2::drivers {

namespace {

constexpr size_t kMostBytes = 4;

/// With the lowest bit first; `polynomial` is reflected.
uint32_t reflectedCrc(std::span<const std::byte> bytes, uint32_t polynomial, uint32_t crc) {
    for (const std::byte byte : bytes) {
        crc ^= static_cast<uint32_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? polynomial : 0U);
        }
    }
    return crc;
}

/// With the highest of `width` bits first.
uint32_t forwardCrc(std::span<const std::byte> bytes, uint32_t width, uint32_t polynomial, uint32_t crc) {
    const uint32_t top = 1U << (width - 1);
    for (const std::byte byte : bytes) {
        crc ^= static_cast<uint32_t>(byte) << (width - 8);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc << 1U) ^ ((crc & top) != 0 ? polynomial : 0U);
        }
    }
    return crc & (top | (top - 1));
}

}  // namespace

Checksum checksumOf(std::string_view name) {
    constexpr std::array<std::string_view, 7> kNames = {"none",         "sum8",        "xor8", "crc8",
                                                        "crc16-modbus", "crc16-ccitt", "crc32"};
    const auto found = std::find(kNames.begin(), kNames.end(), name);
    return found != kNames.end() ? static_cast<Checksum>(found - kNames.begin()) : Checksum::None;
}

size_t checksumBytes(Checksum kind) {
    switch (kind) {
        case Checksum::None:
            return 0;
        case Checksum::Sum8:
        case Checksum::Xor8:
        case Checksum::Crc8:
            return 1;
        case Checksum::Crc16Modbus:
        case Checksum::Crc16Ccitt:
            return 2;
        case Checksum::Crc32:
            break;
    }
    return kMostBytes;
}

uint32_t checksum(Checksum kind, std::span<const std::byte> bytes) {
    uint32_t result = 0;
    switch (kind) {
        case Checksum::None:
            break;
        case Checksum::Sum8:
            for (const std::byte byte : bytes) {
                result += static_cast<uint32_t>(byte);
            }
            return result & 0xFFU;
        case Checksum::Xor8:
            for (const std::byte byte : bytes) {
                result ^= static_cast<uint32_t>(byte);
            }
            break;
        case Checksum::Crc8:
            return forwardCrc(bytes, 8, 0x07U, 0);
        case Checksum::Crc16Modbus:
            return reflectedCrc(bytes, 0xA001U, 0xFFFFU);
        case Checksum::Crc16Ccitt:
            return forwardCrc(bytes, 16, 0x1021U, 0xFFFFU);
        case Checksum::Crc32:
            return ~reflectedCrc(bytes, 0xEDB88320U, 0xFFFFFFFFU);
    }
    return result;
}

void writeChecksum(Checksum kind, uint32_t value, std::byte* out) {
    const size_t size = checksumBytes(kind);
    for (size_t i = 0; i < size; ++i) {
        const size_t place = kind == Checksum::Crc16Ccitt ? size - 1 - i : i;
        out[place] = static_cast<std::byte>((value >> (8 * i)) & 0xFFU);
    }
}

bool checksumFits(Checksum kind, std::span<const std::byte> bytes, const std::byte* stored) {
    std::array<std::byte, kMostBytes> computed{};
    writeChecksum(kind, checksum(kind, bytes), computed.data());
    return std::equal(stored, stored + checksumBytes(kind), computed.data());
}

}  // namespace tarno2::drivers
