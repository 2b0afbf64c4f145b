// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_SETTINGS_TEXT_H
#define TARNO2_DRIVER_SETTINGS_TEXT_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include <tarno2/driver/data_event.h>

namespace tarno2 {
namespace sdk {

struct SettingText {
    std::string value;  ///< without the quotes
    bool quoted;        ///< it stood between double quotes
};
/// Values by key; of a key that is there twice, the first.
typedef std::map<std::string, SettingText> SettingsText;

inline std::string trimmed(const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

/// A value up to its end: the text between double quotes, in which a backslash takes the next character literally, or
/// what stands before a ';', which begins a comment. False when a closing quote is missing.
inline bool readSettingValue(const std::string& text, SettingText& result) {
    const std::string value = trimmed(text);
    result.value.clear();
    result.quoted = !value.empty() && value[0] == '"';
    if (!result.quoted) {
        result.value = trimmed(value.substr(0, value.find(';')));
        return true;
    }
    for (size_t i = 1; i < value.size(); ++i) {
        if (value[i] == '"') {
            return true;
        }
        if (value[i] == '\\' && i + 1 < value.size()) {
            ++i;
        }
        result.value += value[i];
    }
    return false;
}

/// Reads lines `Key = Value ; comment`.
inline SettingsText settingsOfText(const std::string& text) {
    SettingsText settings;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find('\n', begin) == std::string::npos ? text.size() : text.find('\n', begin);
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        const size_t equals = line.find('=');
        const std::string key = trimmed(line.substr(0, equals));
        SettingText value;
        if (equals != std::string::npos && !key.empty() && key[0] != ';' &&
            readSettingValue(line.substr(equals + 1), value)) {
            settings.insert(SettingsText::value_type(key, value));
        }
    }
    return settings;
}

/// A variable of the environment, as it is now; empty when it is not set.
inline std::string environmentText(const std::string& variable) {
#ifdef _WIN32
    std::string text(GetEnvironmentVariableA(variable.c_str(), nullptr, 0), '\0');
    text.resize(text.empty() ? 0
                             : GetEnvironmentVariableA(variable.c_str(), &text[0], static_cast<DWORD>(text.size())));
    return text;
#else
    const char* const text = std::getenv(variable.c_str());
    return text != nullptr ? text : "";
#endif
}

/// Reads `Key=Value;Key=Value`, in which words need no quotes.
inline SettingsText settingsOfEnvironment(const std::string& variable) {
    SettingsText settings;
    const std::string pairs = environmentText(variable);
    for (size_t begin = 0; begin < pairs.size();) {
        const size_t end = pairs.find(';', begin) == std::string::npos ? pairs.size() : pairs.find(';', begin);
        const std::string pair = pairs.substr(begin, end - begin);
        begin = end + 1;
        const size_t equals = pair.find('=');
        SettingText value = {std::string(), true};
        if (equals == std::string::npos) {
            continue;
        }
        value.value = pair.substr(equals + 1);
        if (!value.value.empty() && value.value[0] == '"') {
            static_cast<void>(readSettingValue(value.value, value));
        }
        settings.insert(SettingsText::value_type(pair.substr(0, equals), value));
    }
    return settings;
}

/// Reads a file of such lines, of at most a megabyte; one that isn't there has no settings. False when it can't be
/// read.
inline bool settingsOfFile(const std::string& path, SettingsText& settings) {
    settings.clear();
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return errno == ENOENT || errno == ENOTDIR;
    }
    std::string text(1U << 20, '\0');
    text.resize(std::fread(&text[0], 1, text.size(), file));
    const bool read = std::ferror(file) == 0;
    std::fclose(file);
    if (read) {
        settings = settingsOfText(text);
    }
    return read;
}

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_SETTINGS_TEXT_H
