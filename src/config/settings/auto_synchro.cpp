#include "config/settings/auto_synchro.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <string>

#include "config/logs/console_log.h"
#include "records/key_value_text.h"

namespace tarno2 {

namespace {

constexpr int32_t kNotUsed = 2;
constexpr int32_t kLastBit = 15;
constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

struct IntegerKey {
    const char* key;
    int32_t lowest;
    int32_t highest;
    int32_t SynchroSettings::*field;
};

constexpr IntegerKey kIntegerKeys[] = {
    {"SynchroAnalyzeMode", 0, 2, &SynchroSettings::SynchroAnalyzeMode},
    {"AnalyzeAnalogStartMode", 0, kNotUsed, &SynchroSettings::AnalyzeAnalogStartMode},
    {"AnalyzeAnalogWriteMode", 0, kNotUsed, &SynchroSettings::AnalyzeAnalogWriteMode},
    {"AnalyzeAnalogStopMode", 0, kNotUsed, &SynchroSettings::AnalyzeAnalogStopMode},
    {"AnalyzeAnalogStartChannel", 0, kLargest, &SynchroSettings::AnalyzeAnalogStartChannel},
    {"AnalyzeAnalogWriteChannel", 0, kLargest, &SynchroSettings::AnalyzeAnalogWriteChannel},
    {"AnalyzeAnalogStopChannel", 0, kLargest, &SynchroSettings::AnalyzeAnalogStopChannel},
    {"AnalyzeAnalogStartUnit", 0, 2, &SynchroSettings::AnalyzeAnalogStartUnit},
    {"AnalyzeAnalogWriteUnit", 0, 2, &SynchroSettings::AnalyzeAnalogWriteUnit},
    {"AnalyzeAnalogStopUnit", 0, 2, &SynchroSettings::AnalyzeAnalogStopUnit},
    {"AnalyzePortStartMode", 0, kNotUsed, &SynchroSettings::AnalyzePortStartMode},
    {"AnalyzePortWriteMode", 0, kNotUsed, &SynchroSettings::AnalyzePortWriteMode},
    {"AnalyzePortStopMode", 0, kNotUsed, &SynchroSettings::AnalyzePortStopMode},
    {"AnalyzePortStartBit", 0, kLastBit, &SynchroSettings::AnalyzePortStartBit},
    {"AnalyzePortWriteBit", 0, kLastBit, &SynchroSettings::AnalyzePortWriteBit},
    {"AnalyzePortStopBit", 0, kLastBit, &SynchroSettings::AnalyzePortStopBit},
    {"SynchroAnalogMode", 0, kNotUsed, &SynchroSettings::SynchroAnalogMode},
    {"SynchroAnalogChannelNumber", 0, kLargest, &SynchroSettings::SynchroAnalogChannelNumber},
    {"SynchroAnalogUnit", 0, 2, &SynchroSettings::SynchroAnalogUnit},
    {"SynchroPortMode", 0, kNotUsed, &SynchroSettings::SynchroPortMode},
    {"SynchroPortBit", 0, kLastBit, &SynchroSettings::SynchroPortBit},
};

struct RealKey {
    const char* key;
    double SynchroSettings::*field;
};

constexpr RealKey kRealKeys[] = {
    {"AnalyzeAnalogStartValue", &SynchroSettings::AnalyzeAnalogStartValue},
    {"AnalyzeAnalogWriteValue", &SynchroSettings::AnalyzeAnalogWriteValue},
    {"AnalyzeAnalogStopValue", &SynchroSettings::AnalyzeAnalogStopValue},
    {"SynchroAnalogValue", &SynchroSettings::SynchroAnalogValue},
};

struct Reader {
    const KeyValueFile& file;
    std::string_view normalised;

    /// Leaves `value` alone when the key is absent.
    [[nodiscard]] bool integer(const char* key, int32_t lowest, int32_t highest, int32_t& value) const {
        if (!findKeyValue(normalised, key)) {
            return true;
        }
        int32_t found = 0;
        if (!file.readInt32(key, found, 0) || found < lowest || found > highest) {
            return invalid(key);
        }
        value = found;
        return true;
    }
    [[nodiscard]] bool real(const char* key, double& value) const {
        if (!findKeyValue(normalised, key)) {
            return true;
        }
        return (file.readDouble(key, value, 0.0) && std::isfinite(value)) || invalid(key);
    }
    [[nodiscard]] bool flag(const char* key, bool& value) const {
        int32_t number = value ? 1 : 0;
        const bool valid = integer(key, 0, 1, number);
        value = number != 0;
        return valid;
    }
    static bool invalid(const char* key) {
        consoleLog().log("Value %s invalid... Program aborted", key);
        return false;
    }
};

void chooseSources(SynchroSettings& s, bool analysisOnPort, bool synchroOnPort) {
    s.startAnalogEnabled = s.AnalyzeAnalogStartMode != kNotUsed;
    s.writeAnalogEnabled = s.AnalyzeAnalogWriteMode != kNotUsed;
    s.stopAnalogEnabled = s.AnalyzeAnalogStopMode != kNotUsed;
    s.portStartEnabled = s.AnalyzePortStartMode != kNotUsed;
    s.portWriteEnabled = s.AnalyzePortWriteMode != kNotUsed;
    s.portStopEnabled = s.AnalyzePortStopMode != kNotUsed;
    s.analysisOnAnalog = !analysisOnPort;
    s.analysisOnPort = analysisOnPort;
    s.synchroOnAnalog = !synchroOnPort;
    s.synchroOnPort = synchroOnPort;
}

}  // namespace

bool isAutoSynchroKey(std::string_view key) {
    constexpr std::string_view kOthers[] = {"AnalyzeMode",           "SynchroMode",      "SynchroAllSize",
                                            "SynchroPrehistorySize", "StopAfterTrigged", "UseDigitalPort"};
    const auto is = [key](const auto& entry) { return key == entry.key; };
    return std::any_of(std::begin(kIntegerKeys), std::end(kIntegerKeys), is) ||
           std::any_of(std::begin(kRealKeys), std::end(kRealKeys), is) ||
           std::find(std::begin(kOthers), std::end(kOthers), key) != std::end(kOthers);
}

bool readAutoSynchro(const KeyValueFile& file, std::string_view normalised, RecordingWish& wish) {
    const Reader reader{file, normalised};
    SynchroSettings& settings = wish.synchro;
    settings.SynchroAnalogMode = kNotUsed;
    settings.SynchroPortMode = kNotUsed;
    for (const IntegerKey& key : kIntegerKeys) {
        if (!reader.integer(key.key, key.lowest, key.highest, settings.*key.field)) {
            return false;
        }
    }
    for (const RealKey& key : kRealKeys) {
        if (!reader.real(key.key, settings.*key.field)) {
            return false;
        }
    }
    bool analysisOnPort = false;
    bool synchroOnPort = false;
    int32_t all = 0;
    int32_t prehistory = 0;
    if (!reader.flag("AnalyzeMode", analysisOnPort) || !reader.flag("SynchroMode", synchroOnPort) ||
        !reader.integer("SynchroAllSize", 0, kLargest, all) ||
        !reader.integer("SynchroPrehistorySize", 0, all, prehistory) ||
        !reader.flag("StopAfterTrigged", settings.StopAfterTrigged) ||
        !reader.flag("UseDigitalPort", wish.useDigitalPort)) {
        return false;
    }
    wish.synchroSizes = {prehistory, all - prehistory};
    chooseSources(settings, analysisOnPort, synchroOnPort);
    return true;
}

}  // namespace tarno2
