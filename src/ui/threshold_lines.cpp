#include "ui/threshold_lines.h"

#include <array>
#include <cmath>

#include "sync/synchro_check.h"
#include "sync/synchro_form.h"

namespace tarno2 {

namespace {

/// Where the settings keep a condition.
struct Place {
    TextId role;
    int32_t working;  ///< the mode of the synchronisation that it belongs to
    bool SynchroSettings::*asked;
    int32_t SynchroSettings::*mode;
    int32_t SynchroSettings::*channel;
    double SynchroSettings::*value;
    int32_t SynchroSettings::*unit;
};

using Synchro = SynchroSettings;

constexpr std::array<Place, 4> kPlaces = {
    {{TextId::LevelStart, kModeAnalysis, &Synchro::analysisOnAnalog, &Synchro::AnalyzeAnalogStartMode,
      &Synchro::AnalyzeAnalogStartChannel, &Synchro::AnalyzeAnalogStartValue, &Synchro::AnalyzeAnalogStartUnit},
     {TextId::LevelWrite, kModeAnalysis, &Synchro::analysisOnAnalog, &Synchro::AnalyzeAnalogWriteMode,
      &Synchro::AnalyzeAnalogWriteChannel, &Synchro::AnalyzeAnalogWriteValue, &Synchro::AnalyzeAnalogWriteUnit},
     {TextId::LevelStop, kModeAnalysis, &Synchro::analysisOnAnalog, &Synchro::AnalyzeAnalogStopMode,
      &Synchro::AnalyzeAnalogStopChannel, &Synchro::AnalyzeAnalogStopValue, &Synchro::AnalyzeAnalogStopUnit},
     {TextId::LevelTrigger, kModeSynchronisation, &Synchro::synchroOnAnalog, &Synchro::SynchroAnalogMode,
      &Synchro::SynchroAnalogChannelNumber, &Synchro::SynchroAnalogValue, &Synchro::SynchroAnalogUnit}}};

}  // namespace

std::vector<ThresholdLine> thresholdLines(const SynchroSettings& settings) {
    std::vector<ThresholdLine> lines;
    for (size_t i = 0; i < kPlaces.size(); ++i) {
        const Place& place = kPlaces[i];
        const int32_t mode = settings.*place.mode;
        if (settings.SynchroAnalyzeMode == place.working && settings.*place.asked && mode != kConditionNotUsed &&
            std::isfinite(settings.*place.value)) {
            lines.push_back({i, settings.*place.channel, levelVolts(settings.*place.value, settings.*place.unit),
                             place.role, mode == 0});
        }
    }
    return lines;
}

void setThreshold(SynchroSettings& settings, uint64_t identity, double volts) {
    if (identity < kPlaces.size() && std::isfinite(volts)) {
        const Place& place = kPlaces[identity];
        // Digits that no board resolves would only lengthen the number in its field.
        constexpr double kFinest = 1e9;
        settings.*place.value = std::round(volts / levelVolts(1.0, settings.*place.unit) * kFinest) / kFinest;
    }
}

}  // namespace tarno2
