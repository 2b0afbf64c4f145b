#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarno2::drivers {

/// The checks at the end of a frame. Sums and XOR begin with 0; crc8 has the polynomial 0x07, begins with 0;
/// crc16-modbus 0x8005 reflected, begins with 0xFFFF, low byte first; crc16-ccitt 0x1021, begins with 0xFFFF, high byte
/// first; crc32 that of Ethernet, low byte first.
enum class Checksum : uint8_t { None, Sum8, Xor8, Crc8, Crc16Modbus, Crc16Ccitt, Crc32 };

/// Its name in settings; `None` for an unknown one.
[[nodiscard]] Checksum checksumOf(std::string_view name);
/// Bytes that it takes in a frame.
[[nodiscard]] size_t checksumBytes(Checksum kind);
[[nodiscard]] uint32_t checksum(Checksum kind, std::span<const std::byte> bytes);
/// Writes it as it stands in a frame.
void writeChecksum(Checksum kind, uint32_t value, std::byte* out);
/// Whether the bytes at `stored` are it.
[[nodiscard]] bool checksumFits(Checksum kind, std::span<const std::byte> bytes, const std::byte* stored);

}  // namespace tarno2::drivers
