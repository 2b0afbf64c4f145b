#include "config/settings/setup_file.h"

#include <algorithm>
#include <array>
#include <variant>

#include "config/settings/driver_values.h"
#include "config/settings/settings_file.h"
#include "config/settings/settings_table.h"
#include "platform/ascii_case.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

/// What stays as it is on this computer, whatever is measured.
bool describesMeasurement(const SettingRow& row) {
    static constexpr std::array kOthers = {
        "Language",          "HDDTestSpeed",       "AutoStartOnRun", "AxisFontName",   "AxisFontSize",    "StayOnTop",
        "ShowSettingMember", "MainFormPos",        "FormVisible",    "ShowFormPos",    "ShowFormVisible", "WriteBuffer",
        "WriteAge",          "HidePanels",         "PanelsOpen",     "FoldOnStart",    "ShowMessages",    "HideTable",
        "ShowMoreFigures",   "PanelsWidth",        "TableWidth",     "MessagesHeight", "SpectrumHeight",  "ColorScheme",
        "RecentRecordings",  "FrequencyListCount", "FrequencyList"};
    return std::ranges::find(kOthers, row.key()) == kOthers.end();
}

/// Takes one entry over from other settings.
struct EntryCopier {
    ProgramSettings& from;
    ProgramSettings& to;

    void operator()(const IntegerSetting& setting) const { setting.set(to, setting.get(from)); }
    void operator()(const RealSetting& setting) const { setting.at(to) = setting.at(from); }
    void operator()(const TextSetting& setting) const { setting.at(to) = setting.at(from); }
    void operator()(const RealListSetting& setting) const { setting.at(to) = setting.at(from); }
    void operator()(const IntegerListSetting& setting) const {
        for (size_t i = 0; i < std::min(setting.count(from), setting.count(to)); ++i) {
            setting.set(to, i, setting.get(from, i));
        }
    }
    void operator()(const ExactListSetting& setting) const {
        for (size_t i = 0; i < std::min(setting.count(from), setting.count(to)); ++i) {
            setting.at(to, i) = setting.at(from, i);
        }
    }
    void operator()(const NameListSetting& setting) const {
        for (size_t i = 0; i < std::min(setting.most(from), setting.most(to)); ++i) {
            setting.set(to, i, setting.get(from, i));
        }
    }
};

/// Windows has devices of these names in every folder, whatever their ending.
bool isDeviceName(std::string_view name) {
    static constexpr std::array kDevices = {"con", "nul", "prn", "aux"};
    static constexpr std::array kPorts = {"com", "lpt"};
    std::string_view stem = name.substr(0, name.find('.'));
    stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const auto is = [](std::string_view a) { return [a](const char* b) { return sameIgnoringCase(a, b); }; };
    return std::ranges::any_of(kDevices, is(stem)) ||
           (stem.size() == 4 && stem[3] >= '1' && stem[3] <= '9' && std::ranges::any_of(kPorts, is(stem.substr(0, 3))));
}

std::string setupFolder(const std::string& programDirectory) {
    return joinPath(programDirectory, "Setups");
}

}  // namespace

bool isSetupName(std::string_view name) {
    return !name.empty() && name.front() != '.' && name.back() != '.' && name.back() != ' ' && !isDeviceName(name) &&
           name.find_first_of("/\\:*?\"<>|") == std::string_view::npos &&
           std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) >= ' '; });
}

std::string setupPath(const std::string& programDirectory, const std::string& name) {
    return joinPath(setupFolder(programDirectory), name + std::string(kSetupEnding));
}

std::vector<std::string> setupNames(const std::string& programDirectory) {
    std::vector<std::string> names;
    for (const std::string& file : listDirectory(setupFolder(programDirectory))) {
        if (file.size() > kSetupEnding.size() && file.ends_with(kSetupEnding)) {
            names.push_back(file.substr(0, file.size() - kSetupEnding.size()));
        }
    }
    std::ranges::sort(names);
    return names;
}

bool writeSetup(const std::string& path, const ProgramSettings& settings) {
    ProgramSettings kept = settings;
    kept.driverSettings = withDriverValuesOf({}, kept.wish.driver, settings.driverSettings);
    return createFolders(parentFolder(path)).ok() && replaceSettings(path, kept, describesMeasurement);
}

SetupRead readSetup(const std::string& path, ProgramSettings& settings, OsError& why) {
    LineConfigReader file;
    if (!file.Open(path, false)) {
        why = file.openError();
        return SetupRead::NotOpened;
    }
    std::string driver;
    if (!file.GetStringCopy("Driver", driver)) {
        return SetupRead::NoSetup;
    }
    ProgramSettings loaded;
    readSettings(file, loaded, describesMeasurement);
    for (const SettingRow& row : settingsTable()) {
        if (!describesMeasurement(row)) {
            std::visit(EntryCopier{settings, loaded}, row.place);
        }
    }
    loaded.channelCount = settings.channelCount;
    loaded.driverSettings = withDriverValuesOf(settings.driverSettings, loaded.wish.driver, loaded.driverSettings);
    settings = std::move(loaded);
    return SetupRead::Done;
}

}  // namespace tarno2
