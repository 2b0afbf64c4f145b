#include "records/key_value_file.h"

#include <algorithm>
#include <bit>
#include <cinttypes>
#include <new>
#include <optional>
#include <utility>

#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "records/key_value_text.h"
#include "records/number_text.h"

namespace tarno2 {

namespace {

constexpr uint32_t kDefaultValuesPerLine = 4;

template <typename Value>
bool store(const std::optional<Value>& parsed, Value& value, Value defaultValue) {
    value = parsed.value_or(defaultValue);
    return parsed.has_value();
}

std::optional<int32_t> parseSigned(std::string_view text, bool hex) {
    if (!hex) {
        return parseInt32(text);
    }
    const std::optional<uint32_t> bits = parseHex32(text);
    return bits ? std::optional(std::bit_cast<int32_t>(*bits)) : std::nullopt;
}

}  // namespace

KeyValueFile::KeyValueFile(uint32_t valuesPerLine) : valuesPerLine_(kDefaultValuesPerLine) {
    setValuesPerLine(valuesPerLine);
}

bool KeyValueFile::openForReading(const std::string& fileName) {
    text_.clear();
    try {
        std::string contents;
        readError_ = readWholeFile(fileName, kMaximumSize, FileShare::ReadWrite, contents);
        if (readError_.ok()) {
            readText(contents);
        }
    } catch (const std::bad_alloc&) {
        readError_ = OsError::tooLarge();
    }
    return readError_.ok();
}

void KeyValueFile::readText(std::string_view text) {
    text_ = normaliseKeyValueText(text);
}

bool KeyValueFile::createForWriting(const std::string& fileName, std::string_view firstLine) {
    complete_ = true;
    writeError_ = {};
    name_ = fileName;
    if (!keep(output_.openPlain(name_, FileMode::OpenAlways, FileAccess::ReadWriteRemove, FileShare::ReadWrite))) {
        return false;
    }
    std::string begin(firstLine.size(), '\0');
    size_t done = 0;
    if (!keep(output_.read(begin.data(), begin.size(), done))) {
        output_.close();
        return false;
    }
    if (!firstLine.starts_with(std::string_view(begin).substr(0, done)) || output_.hasOtherNames()) {
        output_.close();
        return keep(output_.openPlain(name_, FileMode::CreateNew, FileAccess::ReadWriteRemove, FileShare::ReadWrite));
    }
    return keep(output_.truncate(0));
}

bool KeyValueFile::keep(const OsError& error) {
    if (!error.ok() && writeError_.ok()) {
        writeError_ = error;
    }
    return error.ok();
}

bool KeyValueFile::close() {
    if (output_.isOpen()) {
        if (!complete_) {
            static_cast<void>(output_.removeNamed(name_));
        }
        // What is whole stays, although the disk may not have all of it.
        complete_ = complete_ && keep(output_.flush());
        complete_ = keep(output_.close()) && complete_;
    }
    return std::exchange(complete_, true);
}

void KeyValueFile::setValuesPerLine(uint32_t count) {
    valuesPerLine_ = count == 0 ? kDefaultValuesPerLine : count;
}

bool KeyValueFile::writeLine(std::string_view line) {
    std::string bytes(line);
    bytes += "\r\n";
    size_t done = 0;
    const bool written = keep(output_.write(bytes.data(), bytes.size(), done)) && done == bytes.size();
    complete_ = complete_ && written;
    return written;
}

bool KeyValueFile::writeComment(std::string_view comment) {
    return writeLine(std::string(";").append(utf8ToCp1251(comment).value_or(std::string(comment))));
}

bool KeyValueFile::writeEmptyLine() {
    return writeLine({});
}

bool KeyValueFile::writeScalar(std::string_view key, std::string_view value, std::string_view comment) {
    const bool commented = comment.empty() || writeComment(comment);
    const bool written = writeLine(std::string(key).append(" = ").append(value));
    return writeEmptyLine() && written && commented;
}

bool KeyValueFile::writeInt8(std::string_view key, int8_t value, std::string_view comment, bool hex) {
    const unsigned bits = static_cast<uint8_t>(value);
    return writeScalar(key, hex ? formatText("0x%.2X", bits) : formatText("%d", value), comment);
}

bool KeyValueFile::writeUInt32(std::string_view key, uint32_t value, std::string_view comment, bool hex) {
    return writeScalar(key, hex ? formatText("0x%.8" PRIX32, value) : formatText("%" PRIu32, value), comment);
}

bool KeyValueFile::writeUInt64(std::string_view key, uint64_t value, std::string_view comment, bool hex) {
    return writeScalar(key, hex ? formatText("0x%.16" PRIX64, value) : formatText("%" PRIu64, value), comment);
}

bool KeyValueFile::writeDouble(std::string_view key, double value, std::string_view comment) {
    return writeScalar(key, formatText("%f", value), comment);
}

bool KeyValueFile::writeString(std::string_view key, std::string_view value, std::string_view comment) {
    return writeScalar(key, std::string("\"").append(value).append("\""), comment);
}

bool KeyValueFile::writeArray(std::string_view key, uint64_t count, std::string_view comment,
                              const std::function<std::string(uint64_t)>& textOf) {
    bool written = comment.empty() || writeComment(comment);
    std::string line = std::string(key) + " = ";
    const std::string indent(line.size(), ' ');
    for (uint64_t i = 0; i < count; ++i) {
        if (i > 0 && i % valuesPerLine_ == 0) {
            written = writeLine(line + ",\\") && written;
            line = indent;
        }
        const bool lastOfLine = i + 1 == count || (i + 1) % valuesPerLine_ == 0;
        line += textOf(i);
        line += lastOfLine ? " " : " , ";
    }
    written = writeLine(line) && written;
    return writeEmptyLine() && written;
}

bool KeyValueFile::writeInt32Array(std::string_view key, std::span<const int32_t> values, std::string_view comment,
                                   bool hex) {
    return writeArray(key, values.size(), comment, [&](uint64_t i) {
        return hex ? formatText("0x%.8" PRIX32, static_cast<uint32_t>(values[i])) : formatText("%" PRId32, values[i]);
    });
}

bool KeyValueFile::writeDoubleArray(std::string_view key, std::span<const double> values, std::string_view comment) {
    return writeArray(key, values.size(), comment, [&](uint64_t i) { return formatText("%f", values[i]); });
}

bool KeyValueFile::readInt32(std::string_view key, int32_t& value, int32_t defaultValue, bool hex) const {
    const auto text = findKeyValue(text_, key);
    return store(text ? parseSigned(*text, hex) : std::nullopt, value, defaultValue);
}

bool KeyValueFile::readUInt32(std::string_view key, uint32_t& value, uint32_t defaultValue, bool hex) const {
    const auto text = findKeyValue(text_, key);
    const auto parse = hex ? parseHex32 : parseUInt32;
    return store(text ? parse(*text) : std::nullopt, value, defaultValue);
}

bool KeyValueFile::readUInt64(std::string_view key, uint64_t& value, uint64_t defaultValue) const {
    const auto text = findKeyValue(text_, key);
    return store(text ? parseUInt64(*text) : std::nullopt, value, defaultValue);
}

bool KeyValueFile::readDouble(std::string_view key, double& value, double defaultValue) const {
    const auto text = findKeyValue(text_, key);
    return store(text ? parseDouble(*text) : std::nullopt, value, defaultValue);
}

bool KeyValueFile::readString(std::string_view key, std::string& value, std::string_view defaultValue) const {
    const auto text = findKeyValue(text_, key);
    return store(text ? unquoteValue(*text) : std::nullopt, value, std::string(defaultValue));
}

template <typename Value, typename Parse>
bool KeyValueFile::readArray(std::string_view key, std::span<Value> capacity, uint32_t& count, Parse parse) const {
    count = 0;
    const auto text = findKeyValue(text_, key);
    if (!text) {
        return false;
    }
    for (size_t start = 0; start <= text->size();) {
        const size_t comma = std::min(text->find(',', start), text->size());
        if (const std::optional<Value> value = parse(text->substr(start, comma - start))) {
            if (count < capacity.size()) {
                capacity[count] = *value;
            }
            ++count;
        }
        start = comma + 1;
    }
    return true;
}

bool KeyValueFile::readInt32Array(std::string_view key, std::span<int32_t> capacity, uint32_t& count, bool hex) const {
    return readArray(key, capacity, count, [hex](std::string_view piece) { return parseSigned(piece, hex); });
}

bool KeyValueFile::readDoubleArray(std::string_view key, std::span<double> capacity, uint32_t& count) const {
    return readArray(key, capacity, count, parseDouble);
}

}  // namespace tarno2
