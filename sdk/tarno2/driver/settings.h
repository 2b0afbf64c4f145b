// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_SETTINGS_H
#define TARNO2_DRIVER_SETTINGS_H

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale>
#include <map>
#include <sstream>
#include <stdint.h>
#include <string>
#include <vector>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/settings_text.h>

namespace tarno2 {
namespace sdk {

/// A number as every settings file has it, whatever the user's language is; false when the text doesn't begin with one.
inline bool readNumber(const std::string& text, double& value) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double number = 0.0;
    if (!(stream >> number)) {
        return false;
    }
    value = number;
    return true;
}

inline std::string numberText(double value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(15);
    stream << value;
    return stream.str();
}

/// One thing that a driver wants to be told. Captions are UTF-8, without a colon.
struct Setting {
    std::string key;
    uint32_t type = kADCSettingText;
    uint32_t flags = 0;
    std::string defaultValue;
    double minimum = 0.0;  ///< of a number; both 0: no bounds
    double maximum = 0.0;
    std::vector<std::string> choices;      ///< values of a choice, name patterns of a file
    std::vector<std::string> choiceTexts;  ///< what the user reads for each; empty: the values
    std::string caption;
    std::string captionRu;

    static Setting text(const std::string& key, const std::string& value, const std::string& caption,
                        const std::string& captionRu) {
        return make(key, kADCSettingText, value, caption, captionRu);
    }
    static Setting integer(const std::string& key, int64_t value, double minimum, double maximum,
                           const std::string& caption, const std::string& captionRu) {
        Setting setting = make(key, kADCSettingInteger, numberText(static_cast<double>(value)), caption, captionRu);
        setting.minimum = minimum;
        setting.maximum = maximum;
        return setting;
    }
    static Setting real(const std::string& key, double value, double minimum, double maximum,
                        const std::string& caption, const std::string& captionRu) {
        Setting setting = integer(key, 0, minimum, maximum, caption, captionRu);
        setting.type = kADCSettingReal;
        setting.defaultValue = numberText(value);
        return setting;
    }
    /// One of `choices`; with kADCSettingFree in `flags` any other value too.
    static Setting choice(const std::string& key, const std::string& value, const std::vector<std::string>& choices,
                          const std::string& caption, const std::string& captionRu) {
        Setting setting = make(key, kADCSettingChoice, value, caption, captionRu);
        setting.choices = choices;
        return setting;
    }
    /// The path of a file; `patterns` as "*.wav".
    static Setting file(const std::string& key, const std::vector<std::string>& patterns, const std::string& caption,
                        const std::string& captionRu) {
        Setting setting = make(key, kADCSettingFile, std::string(), caption, captionRu);
        setting.choices = patterns;
        return setting;
    }
    static Setting folder(const std::string& key, const std::string& caption, const std::string& captionRu) {
        return make(key, kADCSettingFolder, std::string(), caption, captionRu);
    }

private:
    static Setting make(const std::string& key, uint32_t type, const std::string& value, const std::string& caption,
                        const std::string& captionRu) {
        Setting setting;
        setting.key = key;
        setting.type = type;
        setting.defaultValue = value;
        setting.caption = caption;
        setting.captionRu = captionRu;
        return setting;
    }
};

/// The settings of a driver. A value comes from the environment, else from the host, else from the driver's file, else
/// it is the default. File and environment may have keys that were not added; the host doesn't see those.
class Settings {
public:
    void add(const Setting& setting) { settings_.push_back(setting); }
    /// New choices for a setting, as after a search for ports.
    void setChoices(const std::string& key, const std::vector<std::string>& choices,
                    const std::vector<std::string>& choiceTexts) {
        for (size_t i = 0; i < settings_.size(); ++i) {
            if (settings_[i].key == key) {
                settings_[i].choices = choices;
                settings_[i].choiceTexts = choiceTexts;
            }
        }
    }

    void readEnvironment(const std::string& variable) { environment_ = settingsOfEnvironment(variable); }
    /// False when the file is there but can't be read.
    bool readFile(const std::string& path) { return settingsOfFile(path, file_); }
    /// The host's value; an empty one gives it up. False with the reason when there is no such setting or the value is
    /// not one.
    bool set(const std::string& key, const std::string& value, std::string& why) {
        const Setting* setting = find(key);
        if (setting == nullptr) {
            why = "There is no setting \"" + key + "\".";
            return false;
        }
        if (value.empty()) {
            host_.erase(key);
            return true;
        }
        if (!accepts(*setting, value, why)) {
            return false;
        }
        host_[key] = value;
        return true;
    }
    /// The host's value of a key, empty when it gave none.
    std::string hostValue(const std::string& key) const {
        const std::map<std::string, std::string>::const_iterator found = host_.find(key);
        return found != host_.end() ? found->second : std::string();
    }

    /// A word or path, as it stands; of an unknown key `otherwise`.
    std::string text(const std::string& key, const std::string& otherwise = std::string()) const {
        std::string value;
        if (given(key, true, value)) {
            return value;
        }
        const Setting* setting = find(key);
        return setting != nullptr ? setting->defaultValue : otherwise;
    }
    /// A number, brought within the bounds; of an unknown key, or where no number is given, the default.
    double real(const std::string& key, double otherwise = 0.0) const {
        const Setting* setting = find(key);
        double number = otherwise;
        if (setting != nullptr) {
            static_cast<void>(readNumber(setting->defaultValue, number));
        }
        std::string value;
        if (given(key, false, value)) {
            static_cast<void>(readNumber(value, number));
        }
        if (setting != nullptr && bounded(*setting)) {
            number = std::min(std::max(number, setting->minimum), setting->maximum);
        }
        return number;
    }
    int64_t integer(const std::string& key, int64_t otherwise = 0) const {
        const double number = real(key, static_cast<double>(otherwise));
        const double limit = 9.2e18;
        return number >= -limit && number <= limit ? static_cast<int64_t>(number) : otherwise;
    }
    bool flag(const std::string& key, bool otherwise = false) const { return integer(key, otherwise ? 1 : 0) != 0; }
    /// The file has the key, but its text without the double quotes that belong around it.
    bool lacksQuotes(const std::string& key) const {
        const SettingsText::const_iterator found = file_.find(key);
        return environment_.find(key) == environment_.end() && host_.find(key) == host_.end() && found != file_.end() &&
               !found->second.quoted;
    }

    /// Answers kADCGetSettings; 0 when nothing was added.
    int32_t answer(void* result) const {
        if (settings_.empty()) {
            return 0;
        }
        ADCSettingList list;
        std::memcpy(&list, result, sizeof list);
        list.m_nCount = static_cast<uint32_t>(settings_.size());
        for (uint32_t i = 0; list.m_pEntries != nullptr && i < list.m_nCapacity && i < list.m_nCount; ++i) {
            describe(settings_[i], list.m_pEntries[i]);
        }
        std::memcpy(result, &list, sizeof list);
        return 1;
    }

private:
    const Setting* find(const std::string& key) const {
        for (size_t i = 0; i < settings_.size(); ++i) {
            if (settings_[i].key == key) {
                return &settings_[i];
            }
        }
        return nullptr;
    }
    static bool bounded(const Setting& setting) { return setting.minimum < setting.maximum; }

    // Texts in the file stand between double quotes, numbers may.
    bool given(const std::string& key, bool isText, std::string& value) const {
        const SettingsText::const_iterator inEnvironment = environment_.find(key);
        if (inEnvironment != environment_.end()) {
            value = inEnvironment->second.value;
            return true;
        }
        const std::map<std::string, std::string>::const_iterator ofHost = host_.find(key);
        if (ofHost != host_.end()) {
            value = ofHost->second;
            return true;
        }
        const SettingsText::const_iterator inFile = file_.find(key);
        if (inFile != file_.end() && inFile->second.quoted == isText) {
            value = inFile->second.value;
            return true;
        }
        return false;
    }

    static bool accepts(const Setting& setting, const std::string& value, std::string& why) {
        if (value.size() >= sizeof(ADCSetting().m_sValue)) {
            why = setting.caption + ": the value is too long.";
            return false;
        }
        if (setting.type == kADCSettingChoice && (setting.flags & kADCSettingFree) == 0 &&
            std::find(setting.choices.begin(), setting.choices.end(), value) == setting.choices.end()) {
            why = setting.caption + ": there is no choice \"" + value + "\".";
            return false;
        }
        if (setting.type != kADCSettingInteger && setting.type != kADCSettingReal) {
            return true;
        }
        std::istringstream stream(value);
        stream.imbue(std::locale::classic());
        double number = 0.0;
        if (!(stream >> number) || !(stream >> std::ws).eof() ||
            (setting.type == kADCSettingInteger && number != static_cast<double>(static_cast<int64_t>(number)))) {
            why = setting.caption + ": \"" + value + "\" is not a" +
                  (setting.type == kADCSettingInteger ? " whole number." : " number.");
            return false;
        }
        if (bounded(setting) && (number < setting.minimum || number > setting.maximum)) {
            why = setting.caption + ": " + value + " is not within " + numberText(setting.minimum) + " to " +
                  numberText(setting.maximum) + ".";
            return false;
        }
        return true;
    }

    void describe(const Setting& setting, ADCSetting& entry) const {
        entry = ADCSetting();
        copy(setting.key, entry.m_sKey, sizeof entry.m_sKey);
        entry.m_nType = setting.type;
        entry.m_nFlags =
            setting.flags | (environment_.find(setting.key) != environment_.end() ? uint32_t(kADCSettingFixed) : 0U);
        entry.m_fMinimum = setting.minimum;
        entry.m_fMaximum = setting.maximum;
        copy(setting.caption, entry.m_sCaption, sizeof entry.m_sCaption);
        copy(setting.captionRu, entry.m_sCaptionRu, sizeof entry.m_sCaptionRu);
        const bool number = setting.type == kADCSettingInteger || setting.type == kADCSettingReal;
        copy(number ? numberText(real(setting.key)) : text(setting.key), entry.m_sValue, sizeof entry.m_sValue);
        copyLines(setting.choices, entry.m_sChoices, sizeof entry.m_sChoices);
        copyLines(setting.choiceTexts, entry.m_sChoiceTexts, sizeof entry.m_sChoiceTexts);
    }
    static void copy(const std::string& text, char* field, size_t size) {
        std::snprintf(field, size, "%s", text.c_str());
    }
    /// As many whole lines as there is room for.
    static void copyLines(const std::vector<std::string>& lines, char* field, size_t size) {
        std::string text;
        for (size_t i = 0; i < lines.size() && text.size() + lines[i].size() + 1 < size; ++i) {
            text += lines[i] + "\n";
        }
        copy(text, field, size);
    }

    std::vector<Setting> settings_;
    SettingsText environment_;
    SettingsText file_;
    std::map<std::string, std::string> host_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_SETTINGS_H
