#include "drivers/common/driver_settings.h"

#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2::drivers {

namespace {

bool looksLikeNumber(std::string_view value) {
    return !value.empty() && value.find_first_not_of("+-.0123456789eE") == std::string_view::npos;
}

/// `Key=Value` as a line of a key/value file.
std::string asLine(std::string_view pair) {
    const size_t equals = pair.find('=');
    if (equals == std::string_view::npos) {
        return {};
    }
    const std::string_view value = pair.substr(equals + 1);
    std::string line = std::string(pair.substr(0, equals)) + " = ";
    if (looksLikeNumber(value) || value.starts_with('"')) {
        return line.append(value) + "\r\n";
    }
    line += '"';
    for (const char c : value) {
        if (c == '"' || c == '\\') {
            line += '\\';
        }
        line += c;
    }
    return line + "\"\r\n";
}

}  // namespace

void DriverSettings::readEnvironment(const char* variable) {
    std::string text;
    const std::string pairs = environmentVariable(variable).value_or("");
    for (size_t begin = 0; begin < pairs.size();) {
        const size_t end = std::min(pairs.find(';', begin), pairs.size());
        text += asLine(std::string_view(pairs).substr(begin, end - begin));
        begin = end + 1;
    }
    environment_.readText(text);
}

bool DriverSettings::readFile(const std::string& path) {
    file_.readText({});
    if (!fileExists(path)) {
        return true;
    }
    std::string contents;
    if (!readWholeFile(path, KeyValueFile::kMaximumSize, FileShare::ReadWrite, contents).ok()) {
        return false;
    }
    file_.readText(contents);
    return true;
}

int64_t DriverSettings::integer(std::string_view key, int64_t defaultValue) const {
    return static_cast<int64_t>(number(key, static_cast<double>(defaultValue)));
}

double DriverSettings::number(std::string_view key, double defaultValue) const {
    double value = defaultValue;
    if (!environment_.readDouble(key, value, defaultValue)) {
        static_cast<void>(file_.readDouble(key, value, defaultValue));
    }
    return value;
}

bool DriverSettings::flag(std::string_view key, bool defaultValue) const {
    return integer(key, defaultValue ? 1 : 0) != 0;
}

std::string DriverSettings::text(std::string_view key, std::string_view defaultValue, bool& misread) const {
    std::string value(defaultValue);
    for (const KeyValueFile* source : {&environment_, &file_}) {
        if (source->readString(key, value, defaultValue)) {
            return value;
        }
        uint32_t count = 0;
        if (source->readInt32Array(key, {}, count)) {
            misread = true;
            break;
        }
    }
    return std::string(defaultValue);
}

}  // namespace tarno2::drivers
