#include "sync/synchro_form.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace tarno2 {

namespace {

constexpr int32_t kLastUnit = 2;
constexpr int32_t kBufferSamples = 0x500000;  // that the buffer's bar reaches
constexpr int32_t kSmallestBuffer = 20;
constexpr int32_t kBufferWithoutChannels = 1000;

/// The members of the settings that an analog condition fills.
struct AnalogMembers {
    bool SynchroSettings::*enabled;
    int32_t SynchroSettings::*mode;
    int32_t SynchroSettings::*channel;
    double SynchroSettings::*value;
    int32_t SynchroSettings::*unit;
    SynchroField channelField;
    SynchroField valueField;
};

using S = SynchroSettings;
using F = SynchroField;

constexpr AnalogMembers kAnalog[] = {
    {&S::startAnalogEnabled, &S::AnalyzeAnalogStartMode, &S::AnalyzeAnalogStartChannel, &S::AnalyzeAnalogStartValue,
     &S::AnalyzeAnalogStartUnit, F::StartChannel, F::StartValue},
    {&S::writeAnalogEnabled, &S::AnalyzeAnalogWriteMode, &S::AnalyzeAnalogWriteChannel, &S::AnalyzeAnalogWriteValue,
     &S::AnalyzeAnalogWriteUnit, F::WriteChannel, F::WriteValue},
    {&S::stopAnalogEnabled, &S::AnalyzeAnalogStopMode, &S::AnalyzeAnalogStopChannel, &S::AnalyzeAnalogStopValue,
     &S::AnalyzeAnalogStopUnit, F::StopChannel, F::StopValue},
};
// The edge has no flag of its own: the source's flag says that it is used.
constexpr AnalogMembers kSynchroAnalog = {&S::synchroOnAnalog,    &S::SynchroAnalogMode, &S::SynchroAnalogChannelNumber,
                                          &S::SynchroAnalogValue, &S::SynchroAnalogUnit, F::SynchroChannel,
                                          F::SynchroValue};

struct PortMembers {
    bool SynchroSettings::*enabled;
    int32_t SynchroSettings::*mode;
    int32_t SynchroSettings::*bit;
    SynchroField bitField;
};

constexpr PortMembers kPort[] = {
    {&S::portStartEnabled, &S::AnalyzePortStartMode, &S::AnalyzePortStartBit, F::PortStartBit},
    {&S::portWriteEnabled, &S::AnalyzePortWriteMode, &S::AnalyzePortWriteBit, F::PortWriteBit},
    {&S::portStopEnabled, &S::AnalyzePortStopMode, &S::AnalyzePortStopBit, F::PortStopBit},
};
constexpr PortMembers kSynchroPort = {&S::synchroOnPort, &S::SynchroPortMode, &S::SynchroPortBit, F::SynchroPortBit};

/// Reads a form field by field, up to the first mistake.
class FormReader {
public:
    FormReader(const SynchroForm& form, SynchroSettings& settings, SynchroSizes& sizes)
        : form_(form), settings_(settings), sizes_(sizes) {}

    SynchroReading read() {
        if (form_.mode == 1 ? !readAnalysis() : form_.mode == 2 && !readSynchronisation()) {
            return reading_;
        }
        if (form_.mode == 0) {
            switchSynchronisationOff(settings_);
        }
        settings_.StopAfterTrigged = form_.stopAfterTrigged;
        return reading_;
    }

private:
    [[nodiscard]] bool readAnalysis();
    [[nodiscard]] bool readSynchronisation();
    [[nodiscard]] bool readSizes();
    [[nodiscard]] bool readLevel(const AnalogConditionForm& condition, const AnalogMembers& to);
    [[nodiscard]] bool readBit(const PortConditionForm& condition, const PortMembers& to);

    bool mistake(SynchroField field) {
        reading_.mistake = field;
        return false;
    }
    void clearAnalysis() {
        settings_.analysisOnAnalog = false;
        settings_.analysisOnPort = false;
    }

    const SynchroForm& form_;
    SynchroSettings& settings_;
    SynchroSizes& sizes_;
    SynchroReading reading_;
};

bool FormReader::readLevel(const AnalogConditionForm& condition, const AnalogMembers& to) {
    const auto channel = typedInteger(condition.channel);
    if (!channel) {
        return mistake(to.channelField);
    }
    settings_.*to.channel = *channel;
    const auto value = typedReal(condition.value);
    if (!value) {
        return mistake(to.valueField);
    }
    settings_.*to.value = *value;
    settings_.*to.unit = kLastUnit - condition.unitTag;
    return true;
}

bool FormReader::readBit(const PortConditionForm& condition, const PortMembers& to) {
    const auto bit = typedInteger(condition.bit);
    if (!bit || *bit < 0 || *bit > kLastPortBit) {
        return mistake(to.bitField);
    }
    settings_.*to.bit = *bit;
    return true;
}

bool FormReader::readAnalysis() {
    clearAnalysis();
    bool asked = false;
    for (size_t i = 0; i < std::size(kAnalog); ++i) {
        const int32_t mode = form_.analysisOnPort ? form_.port[i].mode : form_.analog[i].mode;
        settings_.*(form_.analysisOnPort ? kPort[i].mode : kAnalog[i].mode) = mode;
        settings_.*(form_.analysisOnPort ? kPort[i].enabled : kAnalog[i].enabled) = mode != kConditionNotUsed;
        if (form_.analysisOnPort ? !readBit(form_.port[i], kPort[i]) : !readLevel(form_.analog[i], kAnalog[i])) {
            return false;
        }
        asked = asked || mode != kConditionNotUsed;
    }
    reading_.nothingAsked = !asked;
    settings_.SynchroAnalyzeMode = asked ? 1 : 0;
    settings_.analysisOnAnalog = asked && !form_.analysisOnPort;
    settings_.analysisOnPort = asked && form_.analysisOnPort;
    return true;
}

bool FormReader::readSizes() {
    const auto buffer = typedInteger(form_.buffer);
    if (!buffer) {
        return mistake(F::BufferSize);
    }
    const auto prehistory = typedInteger(form_.prehistory);
    const int64_t history = int64_t{*buffer} - prehistory.value_or(0);
    if (!prehistory || history > std::numeric_limits<int32_t>::max() || history < std::numeric_limits<int32_t>::min()) {
        return mistake(F::PrehistorySize);
    }
    sizes_ = {*prehistory, static_cast<int32_t>(history)};
    return true;
}

bool FormReader::readSynchronisation() {
    if (!readSizes()) {
        return false;
    }
    settings_.synchroOnAnalog = false;
    settings_.synchroOnPort = false;
    const bool onPort = form_.synchroOnPort;
    const int32_t mode = onPort ? form_.synchroPort.mode : form_.synchroAnalog.mode;
    settings_.*(onPort ? kSynchroPort.mode : kSynchroAnalog.mode) = mode;
    if (mode == kConditionNotUsed) {
        reading_.nothingAsked = true;
        clearAnalysis();
    } else {
        if (onPort ? !readBit(form_.synchroPort, kSynchroPort) : !readLevel(form_.synchroAnalog, kSynchroAnalog)) {
            return false;
        }
        settings_.*(onPort ? kSynchroPort.enabled : kSynchroAnalog.enabled) = true;
    }
    settings_.SynchroAnalyzeMode = 2;
    return true;
}

std::string realText(double value) {
    char text[32];
    const auto result = std::to_chars(std::begin(text), std::end(text), value);
    return {text, result.ptr};
}

AnalogConditionForm formOf(const SynchroSettings& settings, const AnalogMembers& from) {
    return {settings.*from.mode, std::to_string(settings.*from.channel), realText(settings.*from.value),
            kLastUnit - settings.*from.unit};
}

PortConditionForm formOf(const SynchroSettings& settings, const PortMembers& from) {
    return {settings.*from.mode, std::to_string(settings.*from.bit)};
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    return text;
}

template <typename Number>
std::optional<Number> wholeNumber(std::string_view text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

SynchroReading readSynchroForm(const SynchroForm& form, SynchroSettings& settings, SynchroSizes& sizes) {
    return FormReader(form, settings, sizes).read();
}

void switchSynchronisationOff(SynchroSettings& settings) {
    settings.SynchroAnalyzeMode = 0;
    settings.analysisOnAnalog = false;
    settings.analysisOnPort = false;
}

void fillSynchroForm(const SynchroSettings& settings, const SynchroSizes& sizes, SynchroForm& form) {
    form.mode = settings.SynchroAnalyzeMode;
    for (size_t i = 0; i < std::size(kAnalog); ++i) {
        form.analog[i] = formOf(settings, kAnalog[i]);
        form.port[i] = formOf(settings, kPort[i]);
    }
    form.synchroAnalog = formOf(settings, kSynchroAnalog);
    form.synchroPort = formOf(settings, kSynchroPort);
    if (settings.analysisOnAnalog != settings.analysisOnPort) {
        form.analysisOnPort = settings.analysisOnPort;
    }
    if (settings.synchroOnAnalog != settings.synchroOnPort) {
        form.synchroOnPort = settings.synchroOnPort;
    }
    form.buffer = std::to_string(int64_t{sizes.prehistory} + sizes.history);
    form.prehistory = std::to_string(sizes.prehistory);
    form.stopAfterTrigged = settings.StopAfterTrigged;
}

std::optional<int32_t> typedInteger(std::string_view text) {
    return wholeNumber<int32_t>(trimmed(text));
}

std::optional<double> typedReal(std::string_view text) {
    std::string pointed(trimmed(text));
    std::replace(pointed.begin(), pointed.end(), ',', '.');
    const auto number = wholeNumber<double>(pointed);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

int32_t BarRange::clamped(int64_t position) const {
    return static_cast<int32_t>(std::clamp<int64_t>(position, minimum, maximum));
}

BarRange bufferBarRange(size_t channels) {
    const int32_t maximum =
        channels == 0 ? kBufferWithoutChannels : static_cast<int32_t>(kBufferSamples / static_cast<int64_t>(channels));
    return {kSmallestBuffer, std::max(maximum, kSmallestBuffer)};
}

TypedSize bufferTyped(std::string_view text, BarRange bar) {
    const auto typed = typedInteger(text);
    if (!typed) {
        const int32_t fallback = bar.minimum < 0 ? bar.maximum : bar.minimum;
        return {fallback, fallback};
    }
    const int32_t position = bar.clamped(*typed);
    return {position, position == *typed ? std::nullopt : std::optional(position)};
}

TypedSize prehistoryTyped(std::string_view text, int32_t buffer, int32_t percentage) {
    const auto typed = typedInteger(text);
    if (!typed) {
        return {percentage, prehistoryFrames(buffer, percentage)};
    }
    if (*typed < 0) {
        return {0, 0};
    }
    if (*typed > buffer) {
        return {100, buffer};
    }
    return {buffer > 0 ? static_cast<int32_t>(int64_t{*typed} * 100 / buffer) : 0, std::nullopt};
}

int32_t prehistoryFrames(int32_t buffer, int32_t percentage) {
    return static_cast<int32_t>(int64_t{buffer} * percentage / 100);
}

}  // namespace tarno2
