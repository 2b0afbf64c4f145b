#pragma once

#include <cstdint>
#include <functional>
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

    /// Reads the whole file and normalises it; it is closed again at once. Others may have it open meanwhile. False
    /// when it can't be opened or read, is larger than `kMaximumSize`, is a folder, or memory is short; nothing is held
    /// then.
    bool openForReading(const std::string& fileName);
    /// Why the last `openForReading` failed; ok when it didn't.
    [[nodiscard]] const OsError& readError() const { return readError_; }
    /// Takes a text in place of a file's contents.
    void readText(std::string_view text);
    /// Makes the file anew, empty; others may read and write it meanwhile. A file that is there already is replaced
    /// only when it is a regular one, reached by no link and of no second name, that holds nothing or begins with this
    /// line (or the beginning of it): anything else is somebody else's, and stays.
    bool createForWriting(const std::string& fileName, std::string_view firstLine = {});
    /// Ends writing. True when every line since `createForWriting` is on the disk, or when no file was open. Else the
    /// file is removed: half a text would mislead its reader.
    bool close();
    /// The system's answer to what failed first since `createForWriting`.
    [[nodiscard]] const OsError& writeError() const { return writeError_; }

    /// Values of an array in one line; 0 counts as 4.
    void setValuesPerLine(uint32_t count);

    // Writers. An entry is its comment line (if any), its value and an empty line, each line written at once. `comment`
    // is one line of UTF-8 without ";" and is written in code page 1251; empty for none. True when the whole entry
    // reached the file; after a failure the next entry is tried all the same.
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
    bool writeDoubleArray(std::string_view key, std::span<const double> values, std::string_view comment = {});
    /// Values that are made one by one, as text.
    bool writeArray(std::string_view key, uint64_t count, std::string_view comment,
                    const std::function<std::string(uint64_t)>& textOf);

    // Readers. The default is stored first; false when the key is missing or its value can't be parsed. Of a number the
    // longest valid prefix counts ("12 mV" is 12); one that is out of range can't be parsed. Hexadecimal numbers may
    // begin with "0x". A minus sign before an unsigned or hexadecimal number counts modulo its width.
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
    bool writeScalar(std::string_view key, std::string_view value, std::string_view comment);
    bool keep(const OsError& error);
    template <typename Value, typename Parse>
    bool readArray(std::string_view key, std::span<Value> capacity, uint32_t& count, Parse parse) const;

    File output_;
    OsError readError_;
    std::string name_;  ///< of the file that is written
    OsError writeError_;
    std::string text_;
    uint32_t valuesPerLine_;
    bool complete_ = true;  ///< every line so far reached the file
};

}  // namespace tarno2
