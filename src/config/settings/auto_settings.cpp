#include "config/settings/auto_settings.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <new>
#include <string_view>
#include <variant>
#include <vector>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/driver_values.h"
#include "config/settings/settings_table.h"
#include "platform/clock.h"
#include "platform/codepage1251.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/channel_label.h"
#include "records/key_value_file.h"
#include "records/key_value_text.h"

namespace tarno2 {

namespace {

constexpr const char* kDebugMode = "DebugMode";
constexpr const char* kFileName = "FileName";

/// Logs why the settings can't be used; false, for the caller to return.
__attribute__((format(printf, 1, 2))) bool abortLoad(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    consoleLog().logV(format, arguments);
    va_end(arguments);
    return false;
}

bool endsLoad(const char* line) {
    return line != nullptr && std::string_view(line).ends_with("Program aborted");
}

std::string filled(std::string line, std::string_view name, const std::string& value) {
    if (const size_t at = line.find(name); at != std::string::npos) {
        line.replace(at, name.size(), value);
    }
    return line;
}

/// Takes what the file says of one key.
class ValueReader {
public:
    ValueReader(const KeyValueFile& file, const std::string& normalised, const SettingRow& row,
                ProgramSettings& settings)
        : file_(file), normalised_(normalised), rule_(row.rule), key_(row.autoKey()), settings_(settings) {}

    // What to log; null for a value that was taken, or nothing to be said of it.
    const char* operator()(const IntegerSetting& setting) {
        start_ = setting.get(settings_);
        highest_ = rule_.anyFromZero ? std::numeric_limits<int32_t>::max() : setting.highest;
        if (!readNumber()) {
            return lineWithoutNumber();
        }
        const bool bounded = rule_.number == AutoNumber::Decimal;
        if (bounded && value_ < (rule_.anyFromZero ? 0 : setting.lowest)) {
            return lineOfElement();
        }
        if (bounded && value_ > highest_) {
            return rule_.odd;
        }
        setting.set(settings_, value_);
        return setting.get(settings_) == value_ ? nullptr : rule_.odd;
    }

    const char* operator()(const RealSetting& setting) {
        double value = 0.0;
        if (!file_.readDouble(key_, value, 0.0) || !std::isfinite(value)) {
            return lineWithoutNumber();
        }
        setting.at(settings_) = value;
        return nullptr;
    }

    // A text ends at a zero byte: no name can hold one, and the system would cut it there.
    const char* operator()(const TextSetting& setting) {
        std::string& value = setting.at(settings_);
        const bool found = file_.readString(key_, value, {});
        value.resize(std::min(value.find('\0'), value.size()));
        if (!found && rule_.strict) {
            return lineWithoutNumber();
        }
        return !found || (value.empty() && !endsLoad(rule_.absent)) ? rule_.absent : nullptr;
    }

    const char* operator()(const IntegerListSetting& setting) {
        std::vector<int32_t> values(setting.count(settings_));
        uint32_t found = 0;
        if (!file_.readInt32Array(key_, values, found)) {
            return rule_.absent;
        }
        if (found != values.size()) {
            return rule_.odd;
        }
        for (size_t i = 0; i < values.size(); ++i) {
            setting.set(settings_, i, values[i]);
        }
        return nullptr;
    }

    const char* operator()(const RealListSetting& /*setting*/) { return nullptr; }  // only the settings file has some

    const char* operator()(const ExactListSetting& setting) {
        std::vector<double> values(setting.count(settings_));
        uint32_t found = 0;
        if (!file_.readDoubleArray(key_, values, found)) {
            return rule_.absent;
        }
        if (found != values.size()) {
            return rule_.odd;
        }
        // What is no number was passed over: the rest would go to other channels.
        const auto text = findKeyValue(normalised_, key_);
        if (text && static_cast<size_t>(std::ranges::count(*text, ',')) + 1 != found) {
            return lineOfElement();
        }
        for (size_t i = 0; i < values.size(); ++i) {
            if (!setting.takes(values[i])) {
                return lineOfElement();
            }
            setting.at(settings_, i) = values[i];
        }
        return nullptr;
    }

    const char* operator()(const NameListSetting& setting) {
        std::string list;
        if (!file_.readString(key_, list, {})) {
            return findKeyValue(normalised_, key_) ? lineOfElement() : rule_.absent;
        }
        std::vector<std::string> names = labelParts(typedToUtf8(list));
        while (names.size() > setting.most(settings_) && names.back().empty()) {
            names.pop_back();
        }
        if (names.size() > setting.most(settings_)) {
            return rule_.odd;
        }
        for (size_t i = 0; i < names.size(); ++i) {
            if (!isLabelText(names[i])) {
                return lineOfElement();
            }
            setting.set(settings_, i, usableLabelText(names[i]));
        }
        return nullptr;
    }

    void log(const char* line) const {
        std::string told = filled(line, "{key}", key_);
        told = filled(told, "{value}", std::to_string(value_));
        told = filled(told, "{start}", std::to_string(start_));
        consoleLog().log("%s", filled(told, "{highest}", std::to_string(highest_)).c_str());
    }

private:
    bool readNumber() {
        if (rule_.number == AutoNumber::Unsigned) {
            uint32_t bits = 0;
            const bool found = file_.readUInt32(key_, bits, 0);
            value_ = static_cast<int32_t>(bits);
            return found;
        }
        return file_.readInt32(key_, value_, 0, rule_.number == AutoNumber::Hexadecimal);
    }
    [[nodiscard]] const char* lineOfElement() const { return rule_.tooLow != nullptr ? rule_.tooLow : rule_.odd; }
    [[nodiscard]] const char* lineWithoutNumber() const {
        return rule_.strict && findKeyValue(normalised_, key_) ? rule_.odd : rule_.absent;
    }

    const KeyValueFile& file_;
    const std::string& normalised_;
    const AutoRule& rule_;
    std::string key_;
    ProgramSettings& settings_;
    int32_t value_ = 0;
    int32_t start_ = 0;
    int32_t highest_ = 0;
};

/// Takes the keys one after the other, and between them what only several of them tell together.
class AutoSettingsReader {
public:
    explicit AutoSettingsReader(const std::string& text) : normalised_(normaliseKeyValueText(text)) {
        file_.readText(text);
        // What a file without keys for them asks.
        constexpr int32_t kNotUsed = 2;
        settings_.wish.packetFrequency = 0.0;
        settings_.wish.synchro.SynchroAnalogMode = kNotUsed;
        settings_.wish.synchro.SynchroPortMode = kNotUsed;
        settings_.wish.synchroSizes = {0, 0};
    }

    [[nodiscard]] bool read() {
        openDebugLog();
        tellUnknownKeys();
        for (size_t i = 0; i < rows_.size(); ++i) {
            const AutoTurn turn = rows_[i]->rule.turn;
            const bool lastOfTurn = i + 1 == rows_.size() || rows_[i + 1]->rule.turn != turn;
            if (!take(*rows_[i]) || (lastOfTurn && !endTurn(turn))) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] const RecordingWish& wish() const { return settings_.wish; }

private:
    void openDebugLog() const;
    void tellUnknownKeys() const;
    [[nodiscard]] bool take(const SettingRow& row);
    [[nodiscard]] bool endTurn(AutoTurn turn);
    void explainBackslashes() const;
    [[nodiscard]] bool endInBaseUnits();

    std::string normalised_;
    KeyValueFile file_;
    std::vector<const SettingRow*> rows_ = autoSettingsRows();
    ProgramSettings settings_;
};

void AutoSettingsReader::openDebugLog() const {
    int32_t debugMode = 0;
    if (file_.readInt32(kDebugMode, debugMode, 0)) {
        debugLog().open(consoleLog().path(), debugMode);
    }
}

// A key that was mistyped leaves its setting at a default, which nobody would notice.
void AutoSettingsReader::tellUnknownKeys() const {
    std::vector<std::string> known = {kDebugMode};
    for (const SettingRow* row : rows_) {
        known.push_back(row->autoKey());
    }
    for (const std::string& key : keysOf(normalised_)) {
        if (std::ranges::find(known, key) == known.end()) {
            consoleLog().log("Unknown parameter \"%s\" ignored", key.c_str());
        }
    }
}

bool AutoSettingsReader::take(const SettingRow& row) {
    if (row.rule.asked != nullptr && !row.rule.asked(settings_.wish)) {
        return true;
    }
    ValueReader reader(file_, normalised_, row, settings_);
    const char* const line = std::visit(reader, row.place);
    if (line != nullptr) {
        reader.log(line);
    }
    return !endsLoad(line);
}

bool AutoSettingsReader::endTurn(AutoTurn turn) {
    if (turn == AutoTurn::Board && !parseDriverValues(settings_.wish.driverSettings)) {
        return abortLoad("Value %s invalid... Program aborted", "DriverSettings");
    }
    if (turn == AutoTurn::Board && !isDirectory(parentFolder(settings_.wish.fileName))) {
        explainBackslashes();
    }
    return turn != AutoTurn::StopValue || endInBaseUnits();
}

/// "C:\data\run.dat" typed without doubling its backslashes names another file; says so when that was likely meant.
void AutoSettingsReader::explainBackslashes() const {
    const std::string_view value = findKeyValue(normalised_, kFileName).value_or("");
    const size_t open = value.find('"');
    const size_t close = value.rfind('"');
    if (open == close) {
        return;
    }
    const std::string typed(value.substr(open + 1, close - open - 1));
    if (typed.find('\\') == std::string::npos || !isDirectory(parentFolder(typed))) {
        return;
    }
    std::string doubled;
    for (const char c : typed) {
        doubled.append(c == '\\' ? 2 : 1, c);
    }
    consoleLog().log(
        "Folder of \"FileName\" not founded: a backslash takes the next character. Write FileName = \"%s\"",
        doubled.c_str());
}

/// The end was read in the unit that the file chose for it.
bool AutoSettingsReader::endInBaseUnits() {
    RecordingWish& wish = settings_.wish;
    wish.stopSeconds = wish.stopRule == StopRule::Time ? settings_.stopValue : 0.0;
    const uint64_t typed = wish.stopBytes;
    for (int32_t step = 0; step < settings_.stopPower; ++step) {
        wish.stopSeconds *= 60.0;
        if (wish.stopBytes > std::numeric_limits<uint64_t>::max() / 1024) {
            return abortLoad(
                "Size is too large (SizeNeedHight = %u, SizeNeedLow = %u, SizeMode = %d)... Program aborted",
                static_cast<uint32_t>(typed >> 32U), static_cast<uint32_t>(typed), settings_.stopPower);
        }
        wish.stopBytes *= 1024;
    }
    return std::isfinite(wish.stopSeconds) || abortLoad("Value %s invalid... Program aborted", "TimeNeed");
}

void startConsoleLog(const std::string& programDirectory) {
    if (const OsError error = consoleLog().open(programDirectory); !error.ok()) {
        std::fprintf(stderr, "The log \"%s\" can not be opened: %s\n", consoleLog().path().c_str(),
                     error.text().c_str());
    }
    const LocalTime now = localTime();
    consoleLog().log("*****************************************************************");
    consoleLog().log("Console start at: %02d:%02d:%02d  %02d.%02d.%04d", now.hour, now.minute, now.second, now.day,
                     now.month, now.year);
}

bool readSettingsText(const std::optional<std::string>& path, std::string& text) {
    if (!path) {
        return abortLoad("Invalid file name for autosettings: Path = NULL... Program aborted");
    }
    if (path->empty()) {
        return abortLoad("Invalid file name for autosettings: Path[0] = 0... Program aborted");
    }
    File probe;
    uint64_t size = 0;
    if (!probe.open(*path, FileMode::OpenExisting, FileAccess::Read, FileShare::None).ok()) {
        return abortLoad("Config file \"%s\" not founded... Program aborted", path->c_str());
    }
    if (probe.size(size).ok() && size > KeyValueFile::kMaximumSize) {
        return abortLoad("Config file \"%s\" is too large... Program aborted", path->c_str());
    }
    probe.close();
    if (!readWholeFile(*path, KeyValueFile::kMaximumSize, FileShare::None, text).ok()) {
        return abortLoad("Config file \"%s\" can not be read... Program aborted", path->c_str());
    }
    // Editors put it in front of what they save as UTF-8.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) {
        text.erase(0, kByteOrderMark.size());
    }
    return true;
}

void logSummary(const RecordingWish& settings) {
    consoleLog().log("Config read OK...");
    consoleLog().log("Driver = \"%s\"", settings.driver.c_str());
    consoleLog().log("Base number = 0x%x", settings.base);
    consoleLog().log("Channel count = %d", static_cast<int32_t>(settings.channels.size()));
    consoleLog().log("Frequency = %lf", settings.frequency);
    consoleLog().log("Board mode = 0x%x", settings.boardMode);
    if ((settings.boardMode & kBoardPacketMode) != 0) {
        consoleLog().log("Packet frequency = %lf", settings.packetFrequency);
    }
}

}  // namespace

std::optional<RecordingWish> readAutoSettings(const std::string& text) {
    AutoSettingsReader reader(text);
    return reader.read() ? std::optional(reader.wish()) : std::nullopt;
}

std::optional<RecordingWish> LoadAutoSettings(const std::optional<std::string>& path,
                                              const std::string& programDirectory) {
    startConsoleLog(programDirectory);
    try {
        std::string text;
        if (!readSettingsText(path, text)) {
            return std::nullopt;
        }
        auto wish = readAutoSettings(text);
        if (wish) {
            logSummary(*wish);
        }
        return wish;
    } catch (const std::bad_alloc&) {
        consoleLog().log("Not enought memory... Program aborted");
        return std::nullopt;
    }
}

}  // namespace tarno2
