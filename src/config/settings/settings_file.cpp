#include "config/settings/settings_file.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>
#include <vector>

#include "config/logs/debug_log.h"
#include "config/settings/settings_table.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/codepage1251.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/channel_label.h"
#include "records/number_text.h"

namespace tarno2 {

namespace {

std::string settingsPath(const std::string& programDirectory) {
    return joinPath(programDirectory, "Tarno2.cfg");
}

/// Opens the settings for reading. Somebody who holds them for a moment, such as a second program that starts, is
/// waited for once.
OsError openSettings(LineConfigReader& file, const std::string& path) {
    constexpr uint32_t kPatienceMs = 200;
    if (!file.Open(path, false) && !file.openError().notFound()) {
        sleepMilliseconds(kPatienceMs);
        file.Open(path, false);
    }
    return file.openError();
}

/// Renames settings that were never read. True when nothing is left that new ones would replace.
bool putAside(const std::string& path, const std::string& programDirectory) {
    const OsError error = renameFile(path, keptSettingsName(programDirectory));
    return error.ok() || error.notFound();
}

template <typename Setting>
bool inRange(const Setting& setting, int32_t value) {
    return value >= setting.lowest && value <= setting.highest;
}

/// Takes what the file says of one entry.
class SettingReader {
public:
    SettingReader(CConfigWork& file, const SettingRow& row, ProgramSettings& settings)
        : file_(file), key_(row.key()), settings_(settings) {}

    void operator()(const IntegerSetting& setting) {
        int32_t value = setting.get(settings_);
        if (file_.GetInt32(key_.c_str(), value) && inRange(setting, value)) {
            setting.set(settings_, value);
        }
    }

    void operator()(const RealSetting& setting) {
        double value = setting.at(settings_);
        if (file_.GetDouble(key_.c_str(), value) && std::isfinite(value) && value >= setting.lowest) {
            setting.at(settings_) = value;
        }
    }

    void operator()(const TextSetting& setting) {
        if (!setting.rare) {
            file_.GetStringCopy(key_.c_str(), setting.at(settings_));
            return;
        }
        if (std::string text = longText(); !text.empty()) {
            setting.at(settings_) = std::move(text);
        }
    }

    // What a list that is too short does hold counts.
    void operator()(const IntegerListSetting& setting) {
        std::vector<int32_t> values(setting.count(settings_));
        for (size_t i = 0; i < values.size(); ++i) {
            values[i] = setting.get(settings_, i);
        }
        file_.GetInt32Array(key_.c_str(), values);
        for (size_t i = 0; i < values.size(); ++i) {
            if (inRange(setting, values[i])) {
                setting.set(settings_, i, values[i]);
            }
        }
    }

    void operator()(const RealListSetting& setting) {
        std::vector<double>& values = setting.at(settings_);
        file_.GetDoubleArray(key_.c_str(), values);
        std::erase_if(values, [](double value) { return !std::isfinite(value) || value <= 0.0; });
    }

    void operator()(const ExactListSetting& setting) {
        std::vector<std::string> texts(setting.count(settings_));
        file_.GetStringArrayCopy(key_.c_str(), texts);
        for (size_t i = 0; i < texts.size(); ++i) {
            if (const auto value = parseDouble(texts[i]); value && setting.takes(*value)) {
                setting.at(settings_, i) = *value;
            }
        }
    }

    void operator()(const NameListSetting& setting) {
        const std::vector<std::string> names = labelParts(typedToUtf8(longText()));
        for (size_t i = 0; i < std::min(names.size(), setting.most(settings_)); ++i) {
            setting.set(settings_, i, usableLabelText(names[i]));
        }
    }

private:
    /// The whole text of the entry; empty when there is none.
    std::string longText() {
        std::string buffer(file_.FindRaw(key_.c_str(), false).size() + 1, '\0');
        if (!file_.GetString(key_.c_str(), buffer)) {
            return {};
        }
        buffer.resize(buffer.find('\0'));
        return buffer;
    }

    CConfigWork& file_;
    std::string key_;
    ProgramSettings& settings_;
};

/// Writes one entry. Only the file tells failures of the disk; a text that can't be written is left out.
class SettingWriter {
public:
    SettingWriter(CConfigWork& file, const SettingRow& row, ProgramSettings& settings)
        : file_(file), key_(row.key()), comment_(text(row.comment)), settings_(settings) {}

    void operator()(const IntegerSetting& setting) {
        const int32_t value = setting.get(settings_);
        if (setting.rare && value == setting.usual) {
            return;
        }
        if (setting.byte) {
            file_.WriteUInt8(key_.c_str(), static_cast<uint8_t>(value), comment_.c_str(), false);
        } else {
            file_.WriteInt32(key_.c_str(), value, comment_.c_str(), false);
        }
    }

    void operator()(const RealSetting& setting) {
        if (setting.rare && setting.at(settings_) == 0.0) {
            return;
        }
        file_.WriteDouble(key_.c_str(), setting.at(settings_), comment_.c_str());
    }

    void operator()(const TextSetting& setting) {
        if (setting.rare && setting.at(settings_).empty()) {
            return;
        }
        file_.WriteString(key_.c_str(), setting.at(settings_).c_str(), comment_.c_str());
    }

    void operator()(const IntegerListSetting& setting) {
        std::vector<int32_t> values(setting.count(settings_));
        for (size_t i = 0; i < values.size(); ++i) {
            values[i] = setting.get(settings_, i);
        }
        if (setting.rare && std::ranges::all_of(values, [&](int32_t value) { return value == setting.usual; })) {
            return;
        }
        if (setting.byte) {
            const std::vector<uint8_t> bytes(values.begin(), values.end());
            file_.WriteUInt8Array(key_.c_str(), bytes, comment_.c_str(), setting.hex);
        } else {
            file_.WriteInt32Array(key_.c_str(), values, comment_.c_str(), setting.hex);
        }
    }

    void operator()(const RealListSetting& setting) {
        file_.WriteDoubleArray(key_.c_str(), setting.at(settings_), comment_.c_str());
    }

    void operator()(const ExactListSetting& setting) {
        std::vector<std::string> texts(setting.count(settings_));
        std::vector<const char*> values;
        bool usual = true;
        for (size_t i = 0; i < texts.size(); ++i) {
            const double value = setting.at(settings_, i);
            usual = usual && value == setting.usual;
            texts[i] = exactNumberText(value);
            values.push_back(texts[i].c_str());
        }
        if (!usual) {
            file_.WriteStringArray(key_.c_str(), values, comment_.c_str());
        }
    }

    void operator()(const NameListSetting& setting) {
        std::vector<std::string> names(setting.most(settings_));
        for (size_t i = 0; i < names.size(); ++i) {
            names[i] = setting.get(settings_, i);
        }
        if (const std::string list = labelList(names); !list.empty()) {
            file_.WriteString(key_.c_str(), list.c_str(), comment_.c_str());
        }
    }

private:
    CConfigWork& file_;
    std::string key_;
    std::string comment_;
    ProgramSettings& settings_;
};

/// Writes the settings to a new file. True when it is on the disk whole. A copy, for the table leads to places that may
/// be changed.
bool writeSettings(const std::string& path, ProgramSettings settings, SettingFilter takes) {
    CConfigWork file;
    if (!file.Open(path, true)) {
        return false;
    }
    for (const SettingRow& row : settingsTable()) {
        if (takes == nullptr || takes(row)) {
            std::visit(SettingWriter(file, row, settings), row.place);
        }
    }
    return file.close();
}

/// Through a file beside it. `keepIn`: the folder in which the old one is kept under another name; empty: it is not.
bool replaceWhole(const std::string& path, const ProgramSettings& settings, SettingFilter takes,
                  const std::string& keepIn) {
    std::string temporary;
    if (!createTemporaryFile(parentFolder(path), fileNameOf(path), temporary).ok()) {
        return false;
    }
    const bool replaced = writeSettings(temporary, settings, takes) && (keepIn.empty() || putAside(path, keepIn)) &&
                          replaceFile(temporary, path).ok();
    if (!replaced) {
        removeFile(temporary);
    }
    return replaced;
}

}  // namespace

OsError LoadConfig(const std::string& programDirectory, ProgramSettings& settings) {
    const std::string path = settingsPath(programDirectory);
    LineConfigReader file;
    if (const OsError error = openSettings(file, path); !error.ok()) {
        return error;
    }
    int32_t debugMode = 0;
    file.GetInt32("DebugMode", debugMode);
    debugLog().open(path, debugMode);
    readSettings(file, settings);
    return {};
}

void readSettings(LineConfigReader& file, ProgramSettings& settings, SettingFilter takes) {
    for (const SettingRow& row : settingsTable()) {
        if (takes != nullptr && !takes(row)) {
            continue;
        }
        std::visit(SettingReader(file, row, settings), row.place);
        if (row.comment == TextId::CommentLanguage) {
            DEBUG_LOG("Config language = %d", static_cast<int>(settings.language));
        } else if (row.comment == TextId::CommentDriver) {
            DEBUG_LOG("Config driver = %s", settings.wish.driver.c_str());
        }
    }
}

bool WriteConfig(const std::string& programDirectory, const ProgramSettings& settings, bool keepOld) {
    DEBUG_LOG("WriteConfig not console");
    return replaceWhole(settingsPath(programDirectory), settings, nullptr, keepOld ? programDirectory : std::string());
}

bool replaceSettings(const std::string& path, const ProgramSettings& settings, SettingFilter takes) {
    return replaceWhole(path, settings, takes, {});
}

std::string keptSettingsName(const std::string& programDirectory) {
    std::string name;
    uint32_t k = 0;
    do {
        name = joinPath(programDirectory, formatText("Tarno2_old%u.cfg", ++k));
    } while (fileExists(name));
    return name;
}

std::string savedFileName(const std::string& programDirectory) {
    LineConfigReader file;
    std::string name;
    if (openSettings(file, settingsPath(programDirectory)).ok()) {
        file.GetStringCopy("FileName", name);
    }
    return name;
}

}  // namespace tarno2
