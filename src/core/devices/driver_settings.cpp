#include "core/devices/driver_settings.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "config/logs/debug_log.h"

namespace tarno2 {

namespace {

DriverSetting::Type typeOf(uint32_t number) {
    switch (number) {
        case kADCSettingInteger:
            return DriverSetting::Type::Integer;
        case kADCSettingReal:
            return DriverSetting::Type::Real;
        case kADCSettingChoice:
            return DriverSetting::Type::Choice;
        case kADCSettingFile:
            return DriverSetting::Type::File;
        case kADCSettingFolder:
            return DriverSetting::Type::Folder;
        default:
            return DriverSetting::Type::Text;
    }
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

DriverSetting settingOf(const ADCSetting& told) {
    DriverSetting setting;
    setting.key = told.m_sKey;
    setting.type = typeOf(told.m_nType);
    setting.fixed = (told.m_nFlags & kADCSettingFixed) != 0;
    setting.free = (told.m_nFlags & kADCSettingFree) != 0;
    setting.minimum = told.m_fMinimum;
    setting.maximum = told.m_fMaximum;
    const bool none = setting.minimum == 0.0 && setting.maximum == 0.0;
    setting.bounded =
        !none && std::isfinite(setting.minimum) && std::isfinite(setting.maximum) && setting.minimum <= setting.maximum;
    setting.caption = told.m_sCaption[0] != '\0' ? told.m_sCaption : told.m_sKey;
    setting.captionRussian = told.m_sCaptionRu[0] != '\0' ? told.m_sCaptionRu : setting.caption;
    setting.value = told.m_sValue;
    setting.choices = linesOf(told.m_sChoices);
    setting.choiceTexts = linesOf(told.m_sChoiceTexts);
    for (size_t i = setting.choiceTexts.size(); i < setting.choices.size(); ++i) {
        setting.choiceTexts.push_back(setting.choices[i]);
    }
    setting.choiceTexts.resize(setting.choices.size());
    return setting;
}

void log(const DriverRefusal& refusal) {
    const char* const verdict = refusal.kind == DriverRefusal::Kind::Refused   ? "refused"
                                : refusal.kind == DriverRefusal::Kind::Unknown ? "unknown"
                                                                               : "fixed by the environment";
    DEBUG_LOG("!!!! Driver setting %s = \"%s\" %s: %s", refusal.value.key.c_str(), refusal.value.value.c_str(), verdict,
              refusal.why.c_str());
}

}  // namespace

std::vector<DriverSetting> readDriverSettings(Device& device) {
    std::vector<DriverSetting> settings;
    for (const ADCSetting& told : device.settings()) {
        const bool known = std::ranges::find(settings, told.m_sKey, &DriverSetting::key) != settings.end();
        if (known || !isDriverKey(told.m_sKey)) {
            DEBUG_LOG("!!!! Driver setting \"%s\" left out", told.m_sKey);
            continue;
        }
        settings.push_back(settingOf(told));
    }
    return settings;
}

std::optional<std::string> tellDriver(Device& device, const DriverValue& value) {
    // Settings files hold one line a value.
    if (std::ranges::any_of(value.value, [](char c) { return static_cast<unsigned char>(c) < ' '; })) {
        return "the value holds a control character";
    }
    const ADCSettingValue told{value.key.c_str(), value.value.c_str()};
    if (device.set(kADCSetSetting, &told)) {
        DEBUG_LOG("Driver setting %s = \"%s\"", value.key.c_str(), value.value.c_str());
        return std::nullopt;
    }
    std::string why = device.lastError();
    return why.empty() ? "the driver does not take it" : why;
}

std::vector<DriverRefusal> tellDriver(Device& device, const std::vector<DriverValue>& values) {
    std::vector<DriverRefusal> refusals;
    for (const DriverValue& value : values) {
        // One value may change what the driver says of the next.
        const std::vector<DriverSetting> settings = readDriverSettings(device);
        const auto setting = std::ranges::find(settings, value.key, &DriverSetting::key);
        const bool known = setting != settings.end();
        DriverRefusal refusal{DriverRefusal::Kind::Refused, value, {}};
        if (known && setting->fixed) {
            if (setting->value == value.value) {
                continue;
            }
            refusal.kind = DriverRefusal::Kind::Fixed;
            refusal.why = setting->value;
        } else if (auto why = tellDriver(device, value)) {
            refusal.kind = known ? DriverRefusal::Kind::Refused : DriverRefusal::Kind::Unknown;
            refusal.why = std::move(*why);
        } else {
            continue;
        }
        log(refusal);
        refusals.push_back(std::move(refusal));
    }
    return refusals;
}

}  // namespace tarno2
