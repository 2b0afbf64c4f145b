#include "config/settings/auto_settings.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/auto_synchro.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/key_value_file.h"
#include "records/key_value_text.h"

namespace tarno2 {

namespace {

/// Logs why the settings can't be used; false, for the caller to return.
__attribute__((format(printf, 1, 2))) bool abortLoad(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    consoleLog().logV(format, arguments);
    va_end(arguments);
    return false;
}

/// Takes the keys one after the other; each reader logs what it misses and is false when the load ends there.
class AutoSettingsReader {
public:
    explicit AutoSettingsReader(const std::string& text) : text_(text) {
        file_.readText(text);
        settings_.packetFrequency = 0.0;
    }

    [[nodiscard]] bool read() {
        openDebugLog();
        tellUnknownKeys();
        if (!readBoard()) {
            return false;
        }
        readFileName();
        if (!readChannels() || !readRates() || !readStopRule() || !readBoardMode()) {
            return false;
        }
        readDecimation();
        readWriteBuffer();
        return readAutoSynchro(file_, normaliseKeyValueText(text_), settings_);
    }
    [[nodiscard]] const RecordingWish& settings() const { return settings_; }

private:
    void openDebugLog();
    void tellUnknownKeys() const;
    [[nodiscard]] bool readBoard();
    void readFileName();
    void explainBackslashes() const;
    [[nodiscard]] bool readChannels();
    [[nodiscard]] bool readGains();
    [[nodiscard]] bool readRates();
    [[nodiscard]] bool readStopRule();
    [[nodiscard]] bool readTimeRule();
    [[nodiscard]] bool readSizeRule();
    [[nodiscard]] bool readBoardMode();
    void readDecimation();
    void readWriteBuffer();

    [[nodiscard]] bool readText(std::string_view key, std::string& value) const;
    [[nodiscard]] bool readReal(std::string_view key, double& value) const;

    const std::string& text_;
    KeyValueFile file_;
    RecordingWish settings_;
};

/// A text ends at a zero byte: no name can hold one, and the system would cut it there.
bool AutoSettingsReader::readText(std::string_view key, std::string& value) const {
    const bool found = file_.readString(key, value, {});
    value.resize(std::min(value.find('\0'), value.size()));
    return found;
}

bool AutoSettingsReader::readReal(std::string_view key, double& value) const {
    return file_.readDouble(key, value, 0.0) && std::isfinite(value);
}

void AutoSettingsReader::openDebugLog() {
    int32_t debugMode = 0;
    if (file_.readInt32("DebugMode", debugMode, 0)) {
        debugLog().open(consoleLog().path(), debugMode);
    }
}

// A key that was mistyped leaves its setting at a default, which nobody would notice.
void AutoSettingsReader::tellUnknownKeys() const {
    constexpr std::string_view kKeys[] = {
        "DebugMode", "DriverName", "BaseNumber", "FileName",        "ChannelCount", "ChannelsNumber", "ChannelsGain",
        "Frequency", "CutMode",    "TimeNeed",   "TimeMode",        "SizeNeedLow",  "SizeNeedHight",  "SizeMode",
        "BoardMode", "PacketFreq", "Decimation", "MeasureFileMode", "WriteBuffer",  "WriteAge"};
    for (const std::string& key : keysOf(normaliseKeyValueText(text_))) {
        if (std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys) && !isAutoSynchroKey(key)) {
            consoleLog().log("Unknown parameter \"%s\" ignored", key.c_str());
        }
    }
}

bool AutoSettingsReader::readBoard() {
    if (!readText("DriverName", settings_.driver)) {
        return abortLoad("Required parameters \"%s\" is absent... Program aborted", "DriverName");
    }
    if (!file_.readUInt32("BaseNumber", settings_.base, 1, true)) {
        consoleLog().log("Parameters \"BaseNumber\" absent - Use 1");
    }
    return true;
}

void AutoSettingsReader::readFileName() {
    if (!readText("FileName", settings_.fileName) || settings_.fileName.empty()) {
        consoleLog().log("Parameters \"FileName\" absent - Generated default");
    }
    if (!isDirectory(parentFolder(settings_.fileName))) {
        explainBackslashes();
    }
}

/// "C:\data\run.dat" typed without doubling its backslashes names another file; says so when that was likely meant.
void AutoSettingsReader::explainBackslashes() const {
    const std::string normalised = normaliseKeyValueText(text_);
    const std::string_view value = findKeyValue(normalised, "FileName").value_or("");
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

bool AutoSettingsReader::readChannels() {
    int32_t channelCount = 0;
    if (!file_.readInt32("ChannelCount", channelCount, 0)) {
        return abortLoad("Required parameters \"%s\" is absent... Program aborted", "ChannelCount");
    }
    if (channelCount <= 0) {
        return abortLoad("Parameters \"%s\" <= 0 (ChannelCount = %d)... Program aborted", "ChannelCount", channelCount);
    }
    if (channelCount > kMaximumChannelCount) {
        return abortLoad("Parameters \"%s\" > %d (ChannelCount = %d)... Program aborted", "ChannelCount",
                         kMaximumChannelCount, channelCount);
    }
    settings_.channels.resize(static_cast<size_t>(channelCount));
    uint32_t found = 0;
    if (!file_.readInt32Array("ChannelsNumber", settings_.channels, found)) {
        return abortLoad("Required parameters \"%s\" is absent... Program aborted", "ChannelsNumber");
    }
    if (found != settings_.channels.size()) {
        return abortLoad("ChannelsNumber elements count != ChannelCount... Program aborted");
    }
    return readGains();
}

bool AutoSettingsReader::readGains() {
    settings_.gains.resize(settings_.channels.size());
    uint32_t found = 0;
    if (!file_.readInt32Array("ChannelsGain", settings_.gains, found)) {
        consoleLog().log("Parameters \"%s\" is absent... Use gain 1 to all channels", "ChannelsGain");
        settings_.gains.assign(settings_.channels.size(), 1);
        return true;
    }
    if (found != settings_.gains.size()) {
        return abortLoad("ChannelsGain elements count != ChannelCount... Program aborted");
    }
    return true;
}

bool AutoSettingsReader::readRates() {
    if (!readReal("Frequency", settings_.frequency)) {
        return abortLoad("Required parameters \"%s\" is absent... Program aborted", "Frequency");
    }
    int32_t cutMode = 0;
    file_.readInt32("CutMode", cutMode, 0);
    if (cutMode < 0) {
        consoleLog().log("Cut mode <0... Cut mode disable");
    }
    settings_.cut = cutMode > 0;
    settings_.cutMegabytes = settings_.cut ? cutMode : settings_.cutMegabytes;
    return true;
}

bool AutoSettingsReader::readStopRule() {
    int32_t mode = 0;
    if (!file_.readInt32("MeasureFileMode", mode, 0)) {
        consoleLog().log("Parameter \"MeasureFileMode\" is absent - Set to 0(Manual mode)");
    }
    if (mode < 0 || mode > 2) {
        consoleLog().log("Invalid value for \"MeasureFileMode\" ... MeasureFileMode = 0(Manual mode)");
        mode = 0;
    }
    settings_.stopRule = static_cast<StopRule>(mode);
    switch (settings_.stopRule) {
        case StopRule::Time:
            return readTimeRule();
        case StopRule::Size:
            return readSizeRule();
        case StopRule::Manual:
            break;
    }
    return true;
}

bool AutoSettingsReader::readTimeRule() {
    if (!readReal("TimeNeed", settings_.stopSeconds)) {
        return abortLoad("Choose time mode, but required parameters \"%s\" is absent... Program aborted", "TimeNeed");
    }
    int32_t unit = 0;
    if (!file_.readInt32("TimeMode", unit, 0)) {
        consoleLog().log("Parameter \"TimeMode\" is absent - Set to 0(Second)");
    }
    if (unit < 0 || unit > 2) {
        consoleLog().log("Value %s invalid... Use 0(Second)", "TimeMode");
        unit = 0;
    }
    for (int32_t step = 0; step < unit; ++step) {
        settings_.stopSeconds *= 60.0;
    }
    if (!std::isfinite(settings_.stopSeconds)) {
        return abortLoad("Value %s invalid... Program aborted", "TimeNeed");
    }
    return true;
}

bool AutoSettingsReader::readSizeRule() {
    uint32_t high = 0;
    uint32_t low = 0;
    if (!file_.readUInt32("SizeNeedHight", high, 0)) {
        consoleLog().log("Parameter \"SizeNeedHight\" is absent - Use only SizeNeedLow");
    }
    if (!file_.readUInt32("SizeNeedLow", low, 0)) {
        return abortLoad("Choose size mode, but required parameters \"%s\" is absent... Program aborted",
                         "SizeNeedLow");
    }
    int32_t unit = 0;
    file_.readInt32("SizeMode", unit, 0);
    if (unit < 0 || unit > 2) {
        consoleLog().log("Value %s invalid... Use 0(Byte)", "SizeMode");
        unit = 0;
    }
    settings_.stopBytes = uint64_t{high} << 32U | low;
    for (int32_t step = 0; step < unit; ++step) {
        if (settings_.stopBytes > std::numeric_limits<uint64_t>::max() / 1024) {
            return abortLoad(
                "Size is too large (SizeNeedHight = %u, SizeNeedLow = %u, SizeMode = %d)... Program aborted", high, low,
                unit);
        }
        settings_.stopBytes *= 1024;
    }
    return true;
}

bool AutoSettingsReader::readBoardMode() {
    if (!file_.readUInt32("BoardMode", settings_.boardMode, 0, true)) {
        consoleLog().log("Parameter \"BoardMode\" is absent - Set to 0(Free mode)");
    }
    if ((settings_.boardMode & kBoardPacketMode) != 0 && !readReal("PacketFreq", settings_.packetFrequency)) {
        return abortLoad("Choose packet mode but required parameter \"%s\" is absent... Program aborted", "PacketFreq");
    }
    return true;
}

void AutoSettingsReader::readDecimation() {
    file_.readInt32("Decimation", settings_.decimation, 1);
    if (settings_.decimation < 1) {
        consoleLog().log("Decimation <1... Decimation disable");
        settings_.decimation = 1;
    }
}

void AutoSettingsReader::readWriteBuffer() {
    file_.readInt32("WriteBuffer", settings_.writeBufferMegabytes, kWriteBufferMegabytes);
    if (settings_.writeBufferMegabytes < kLeastWriteBufferMegabytes ||
        settings_.writeBufferMegabytes > kMostWriteBufferMegabytes) {
        consoleLog().log("Value %s invalid... Use %d", "WriteBuffer", kWriteBufferMegabytes);
        settings_.writeBufferMegabytes = kWriteBufferMegabytes;
    }
    file_.readInt32("WriteAge", settings_.longestWriteWaitMs, kLongestWriteWaitMs);
    if (settings_.longestWriteWaitMs < kLeastWriteWaitMs || settings_.longestWriteWaitMs > kMostWriteWaitMs) {
        consoleLog().log("Value %s invalid... Use %d", "WriteAge", kLongestWriteWaitMs);
        settings_.longestWriteWaitMs = kLongestWriteWaitMs;
    }
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

std::optional<RecordingWish> LoadAutoSettings(const std::optional<std::string>& path,
                                              const std::string& programDirectory) {
    startConsoleLog(programDirectory);
    try {
        std::string text;
        if (!readSettingsText(path, text)) {
            return std::nullopt;
        }
        AutoSettingsReader reader(text);
        if (!reader.read()) {
            return std::nullopt;
        }
        logSummary(reader.settings());
        return reader.settings();
    } catch (const std::bad_alloc&) {
        consoleLog().log("Not enought memory... Program aborted");
        return std::nullopt;
    }
}

}  // namespace tarno2
