#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace tarno2 {

/// A typed "key = value" text: single-byte, CR LF line ends, ";" comments. The description of a recording is written
/// through it and the autosettings file is read through it. docs/formats.md tells its grammar.
///
/// An object is used by one thread. Numbers are written and read in the "C" locale.
class KeyValueFile {
public:
    /// Largest file that is read, bytes.
    static constexpr uint64_t kMaximumSize = 0x1400000;

    explicit KeyValueFile(uint32_t valuesPerLine = 4);

    /// Reads the whole file and normalises it; it is closed again at once. False when it can't be opened (exclusively),
    /// is larger than `kMaximumSize` or is a folder; nothing is held then.
    bool openForReading(const std::string& fileName);
    /// Takes a text in place of a file's contents.
    void readText(std::string_view text);
    /// Makes the file anew, empty; others may read and write it meanwhile.
    bool createForWriting(const std::string& fileName);
    void close();

    /// Values of an array in one line; 0 counts as 4.
    void setValuesPerLine(uint32_t count);

    // Writers. `comment` is UTF-8 without ";" and is written in code page 1251; empty for none. True when the whole
    // entry reached the file.
    bool writeComment(std::string_view comment);
    bool writeEmptyLine();
    bool writeInt8(std::string_view key, int8_t value, std::string_view comment = {}, bool hex = false);
    bool writeUInt32(std::string_view key, uint32_t value, std::string_view comment = {}, bool hex = false);
    bool writeUInt64(std::string_view key, uint64_t value, std::string_view comment = {}, bool hex = false);
    bool writeDouble(std::string_view key, double value, std::string_view comment = {});
    /// `value` is written as it is, single-byte, between double quotes.
    bool writeString(std::string_view key, std::string_view value, std::string_view comment = {});
    bool writeInt32Array(std::string_view key, std::span<const int32_t> values, std::string_view comment = {},
                         bool hex = false);
    bool writeUInt32Array(std::string_view key, std::span<const uint32_t> values, std::string_view comment = {},
                          bool hex = false);
    bool writeUInt64Array(std::string_view key, std::span<const uint64_t> values, std::string_view comment = {},
                          bool hex = false);
    bool writeDoubleArray(std::string_view key, std::span<const double> values, std::string_view comment = {});

    // Readers. The default is stored first; false when the key is missing or its value can't be parsed.
    bool readInt32(std::string_view key, int32_t& value, int32_t defaultValue, bool hex = false) const;
    bool readUInt32(std::string_view key, uint32_t& value, uint32_t defaultValue, bool hex = false) const;
    bool readUInt64(std::string_view key, uint64_t& value, uint64_t defaultValue) const;
    bool readDouble(std::string_view key, double& value, double defaultValue) const;
    bool readString(std::string_view key, std::string& value, std::string_view defaultValue) const;
    /// Splits at commas, skips pieces that can't be parsed and stores at most `capacity.size()` values; `count` gets
    /// how many pieces could be parsed in all. False when the key is missing.
    bool readInt32Array(std::string_view key, std::span<int32_t> capacity, uint32_t& count, bool hex = false) const;
    bool readDoubleArray(std::string_view key, std::span<double> capacity, uint32_t& count) const;

private:
    bool writeLine(std::string_view line);
    [[nodiscard]] bool findValue(std::string_view key, std::string_view& value) const;

    File output_;
    std::string text_;
    uint32_t valuesPerLine_;
};

}  // namespace tarno2
