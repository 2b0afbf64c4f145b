#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace tarno2 {

/// Writer and reader of the commented settings text ("//" comments, `key = value`, lists that run over several lines;
/// docs/formats.md tells its grammar). An object serves one file at a time: it is written in one pass, entry by entry,
/// or loaded whole and searched for every key that is asked for. Numbers are written and read in the "C" locale.
/// Window thread only.
///
/// Operations are true on success. A reader that fails leaves its target as it was, so callers put the default there
/// first. A reader whose text is there but is no number is true and leaves the target too.
class CConfigWork {
public:
    /// Largest file that is loaded, bytes.
    static constexpr uint64_t kMaximumSize = 0x4000000;
    /// Room for a text value and for a token of a list, bytes, with the zero byte that ends it. Longer ones are cut.
    static constexpr size_t kTextRoom = 4000;
    static constexpr size_t kTokenRoom = 1000;

    CConfigWork() = default;
    CConfigWork(const CConfigWork&) = delete;
    CConfigWork& operator=(const CConfigWork&) = delete;

    /// Writes one piece of an entry. Null stands for what is not given; `more` says that elements of a list follow on
    /// the same line. Comment, key and value: the comment's line and the key's; key and value: the key's line; value
    /// alone: an element; nothing: an empty line, or with `more` a line break within a list. Any other choice writes
    /// nothing and fails.
    virtual bool WriteEntry(const char* key, const char* value, const char* comment, bool more);
    /// The value of one line, without blanks at its ends and without tabs.
    virtual bool GetString(const char* key, std::span<char> out);
    /// The first `out.size()` elements of a list. False when there are fewer; those that are there are stored.
    virtual bool GetStringArray(const char* key, std::span<const std::span<char>> out);
    /// The raw text after the "=" of a key; empty when there is none. The first place outside comments counts where the
    /// key is followed by a blank or "=", also at the end of a longer key. `multiline`: with the lines that a backslash
    /// at their start makes continue the value. The last line of a file must have a line end.
    virtual std::string FindRaw(const char* key, bool multiline);
    /// Makes the file anew, empty, or loads an existing one; nobody else may have it open. What was open before is
    /// closed.
    virtual bool Open(const std::string& path, bool forWriting);
    /// Why the last `Open` failed; ok when it didn't.
    [[nodiscard]] const OsError& openError() const { return openError_; }

    // Writers: one entry with its comment line (`comment` may be null). A text with a line end is refused, a list
    // without elements writes nothing. Hexadecimal numbers are written as 32 bits, sign-extended.
    virtual bool WriteString(const char* key, const char* value, const char* comment);
    virtual bool WriteUInt8(const char* key, uint8_t value, const char* comment, bool hex);
    virtual bool WriteInt8(const char* key, int8_t value, const char* comment, bool hex);
    virtual bool WriteInt16(const char* key, int16_t value, const char* comment, bool hex);
    virtual bool WriteInt32(const char* key, int32_t value, const char* comment, bool hex);
    virtual bool WriteFloat(const char* key, float value, const char* comment);
    virtual bool WriteDouble(const char* key, double value, const char* comment);
    virtual bool WriteStringArray(const char* key, std::span<const char* const> values, const char* comment);
    virtual bool WriteUInt8Array(const char* key, std::span<const uint8_t> values, const char* comment, bool hex);
    virtual bool WriteInt8Array(const char* key, std::span<const int8_t> values, const char* comment, bool hex);
    virtual bool WriteInt16Array(const char* key, std::span<const int16_t> values, const char* comment, bool hex);
    virtual bool WriteInt32Array(const char* key, std::span<const int32_t> values, const char* comment, bool hex);
    virtual bool WriteFloatArray(const char* key, std::span<const float> values, const char* comment);
    virtual bool WriteDoubleArray(const char* key, std::span<const double> values, const char* comment);

    // Readers. Digits after an "x" are hexadecimal. Integers of 8 and 16 bits are the low bits of one of 32 bits.
    virtual bool GetStringCopy(const char* key, std::string& out);
    virtual bool GetUInt8(const char* key, uint8_t& out);
    virtual bool GetInt16(const char* key, int16_t& out);
    virtual bool GetInt32(const char* key, int32_t& out);
    virtual bool GetFloat(const char* key, float& out);
    virtual bool GetDouble(const char* key, double& out);
    virtual bool GetStringArrayCopy(const char* key, std::span<std::string> out);
    virtual bool GetUInt8Array(const char* key, std::span<uint8_t> out);
    virtual bool GetInt8Array(const char* key, std::span<int8_t> out);
    virtual bool GetInt16Array(const char* key, std::span<int16_t> out);
    virtual bool GetInt32Array(const char* key, std::span<int32_t> out);
    /// An element that is no number becomes 0.0, here and in `GetDoubleArray`.
    virtual bool GetFloatArray(const char* key, std::span<float> out);
    /// In single precision.
    virtual bool GetDoubleArray(const char* key, std::span<double> out);

    /// As `FindRaw`, but the key must begin a line.
    virtual std::string FindRawAtLineStart(const char* key, bool multiline);

    virtual ~CConfigWork() = default;

    /// Takes a text in place of a file's contents.
    void loadText(std::string_view text);
    /// Ends writing and puts the file on the disk. True when every piece since `Open` reached it.
    bool close();

private:
    [[nodiscard]] std::string valueFrom(size_t position, bool multiline) const;
    bool writeScalar(const char* key, const std::string& value, const char* comment);
    template <typename Value, typename FormatItem>
    bool writeArray(const char* key, std::span<const Value> values, const char* comment, FormatItem format);
    template <typename Value, typename Parse>
    bool readScalar(const char* key, Value& out, Parse parse);
    template <typename Value, typename Store>
    bool readArray(const char* key, std::span<Value> out, Store store);

    std::string path_;
    File file_;
    OsError openError_;
    bool forWriting_ = false;
    std::string contents_;
    bool complete_ = true;  ///< every piece so far reached the file
};

/// A reader of settings whose keys may be the tail of other keys: it finds them at the start of a line only.
class LineConfigReader final : public CConfigWork {
public:
    std::string FindRaw(const char* key, bool multiline) override { return FindRawAtLineStart(key, multiline); }
};

}  // namespace tarno2
