#include "ui/trigger_text.h"

#include <array>
#include <utility>

#include "sync/synchro_check.h"
#include "sync/synchro_form.h"
#include "ui/label_field.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kDigits = 6;

/// One condition on a level. `mode`: 0 above, or up; 1 below, or down.
struct Level {
    int32_t mode;
    int32_t channel;
    double value;
    int32_t unit;
};

QString levelText(const Level& level, const ChannelLabel& label) {
    double value = level.value;
    QString unit;
    bool above = level.mode == 0;
    if (label.hasUnit()) {
        value = label.inUnit(levelVolts(level.value, level.unit));
        unit = unitOf(label);
        above = above == (label.factor > 0.0);
    } else {
        constexpr std::array kUnits = {TextId::UnitVolts, TextId::UnitMillivolts, TextId::UnitMicrovolts};
        unit = uiText(kUnits.at(static_cast<size_t>(level.unit)));
    }
    const QString name = label.name.empty() ? uiText(TextId::TriggerChannel, {QString::number(level.channel)})
                                            : QString::fromStdString(label.name);
    return name + (above ? QStringLiteral(" > ") : QStringLiteral(" < ")) + QString::number(value, 'g', kDigits) +
           QLatin1Char(' ') + unit;
}

QString bitText(int32_t mode, int32_t bit, const std::vector<std::string>& names) {
    const auto at = static_cast<size_t>(bit);
    const QString name = at < names.size() && !names[at].empty() ? QString::fromStdString(names[at])
                                                                 : uiText(TextId::TriggerBit, {QString::number(bit)});
    return name + (mode == 0 ? QStringLiteral(" = 1") : QStringLiteral(" = 0"));
}

QString analysisText(const RecordingWish& wish, const std::function<ChannelLabel(int32_t)>& labelOf) {
    const SynchroSettings& s = wish.synchro;
    constexpr std::array words = {TextId::TriggerStart, TextId::TriggerWrite, TextId::TriggerStop};
    const std::array<Level, words.size()> levels = {
        {{s.AnalyzeAnalogStartMode, s.AnalyzeAnalogStartChannel, s.AnalyzeAnalogStartValue, s.AnalyzeAnalogStartUnit},
         {s.AnalyzeAnalogWriteMode, s.AnalyzeAnalogWriteChannel, s.AnalyzeAnalogWriteValue, s.AnalyzeAnalogWriteUnit},
         {s.AnalyzeAnalogStopMode, s.AnalyzeAnalogStopChannel, s.AnalyzeAnalogStopValue, s.AnalyzeAnalogStopUnit}}};
    const std::array<std::pair<int32_t, int32_t>, words.size()> bits = {
        {{s.AnalyzePortStartMode, s.AnalyzePortStartBit},
         {s.AnalyzePortWriteMode, s.AnalyzePortWriteBit},
         {s.AnalyzePortStopMode, s.AnalyzePortStopBit}}};
    QStringList parts;
    for (size_t i = 0; i < words.size(); ++i) {
        const int32_t mode = s.analysisOnPort ? bits[i].first : levels[i].mode;
        if (mode != kConditionNotUsed) {
            parts << uiText(words[i], {s.analysisOnPort ? bitText(mode, bits[i].second, wish.lineNames)
                                                        : levelText(levels[i], labelOf(levels[i].channel))});
        }
    }
    return parts.join(QStringLiteral(", "));
}

QString synchronisationText(const RecordingWish& wish, const std::function<ChannelLabel(int32_t)>& labelOf) {
    const SynchroSettings& s = wish.synchro;
    if (s.synchroOnPort) {
        return s.SynchroPortMode == kConditionNotUsed ? QString()
                                                      : bitText(s.SynchroPortMode, s.SynchroPortBit, wish.lineNames);
    }
    return s.SynchroAnalogMode == kConditionNotUsed ? QString()
                                                    : levelText({s.SynchroAnalogMode, s.SynchroAnalogChannelNumber,
                                                                 s.SynchroAnalogValue, s.SynchroAnalogUnit},
                                                                labelOf(s.SynchroAnalogChannelNumber));
}

}  // namespace

QString triggerText(const RecordingWish& wish, const std::function<ChannelLabel(int32_t)>& labelOf) {
    const int32_t mode = wish.synchro.SynchroAnalyzeMode;
    const bool analysis = mode == kModeAnalysis;
    QString what;
    if (analysis) {
        what = analysisText(wish, labelOf);
    } else if (mode == kModeSynchronisation) {
        what = synchronisationText(wish, labelOf);
    } else {
        what = uiText(TextId::TriggerOff);
    }
    if (what.isEmpty()) {
        what = uiText(TextId::SynchroNotUse);
    }
    return uiText(analysis ? TextId::TriggerAnalysis : TextId::TriggerSynchronization, {what});
}

}  // namespace tarno2
