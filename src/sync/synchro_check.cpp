#include "sync/synchro_check.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "platform/memory.h"

namespace tarno2 {

namespace {

class Check {
public:
    Check(const SynchroBoardFacts& board, SynchroFindings& findings)
        : board_(board), findings_(findings), settings_(findings.settings) {}

    [[nodiscard]] bool run(const SynchroSizes& sizes) {
        switch (settings_.SynchroAnalyzeMode) {
            case kModeAnalysis:
                return checkAnalysis();
            case kModeSynchronisation:
                return checkSynchronisation(sizes);
            default:
                settings_.SynchroAnalyzeMode = 0;
                return true;
        }
    }

private:
    [[nodiscard]] bool checkAnalysis();
    [[nodiscard]] bool checkSynchronisation(const SynchroSizes& sizes);
    [[nodiscard]] bool checkSizes(const SynchroSizes& sizes);
    [[nodiscard]] bool convert(const char* what, double value, int32_t unit, int32_t& channel, int32_t& code);
    bool fail(SynchroMistake mistake, std::string detail);
    bool switchOff(SynchroSwitchOff reason, const char* detail);

    const SynchroBoardFacts& board_;
    SynchroFindings& findings_;
    SynchroSettings& settings_;
};

bool Check::checkAnalysis() {
    SynchroSettings& s = settings_;
    if (s.analysisOnAnalog) {
        if (!s.startAnalogEnabled && !s.writeAnalogEnabled && !s.stopAnalogEnabled) {
            return switchOff(SynchroSwitchOff::NoConditions, "Analysis has no condition: every frame is written");
        }
        return (!s.startAnalogEnabled || convert("start", s.AnalyzeAnalogStartValue, s.AnalyzeAnalogStartUnit,
                                                 s.AnalyzeAnalogStartChannel, s.startCode)) &&
               (!s.writeAnalogEnabled || convert("write", s.AnalyzeAnalogWriteValue, s.AnalyzeAnalogWriteUnit,
                                                 s.AnalyzeAnalogWriteChannel, s.writeCode)) &&
               (!s.stopAnalogEnabled || convert("stop", s.AnalyzeAnalogStopValue, s.AnalyzeAnalogStopUnit,
                                                s.AnalyzeAnalogStopChannel, s.stopCode));
    }
    if (s.analysisOnPort && !board_.useDigitalPort) {
        return switchOff(SynchroSwitchOff::PortNotUsed, "The digital port is not in use: every frame is written");
    }
    if (s.analysisOnPort && !s.portStartEnabled && !s.portWriteEnabled && !s.portStopEnabled) {
        return switchOff(SynchroSwitchOff::NoConditions, "Analysis has no condition: every frame is written");
    }
    return true;
}

bool Check::checkSynchronisation(const SynchroSizes& sizes) {
    if (!settings_.synchroOnAnalog && settings_.synchroOnPort && !board_.useDigitalPort) {
        return switchOff(SynchroSwitchOff::PortNotUsed, "The digital port is not in use: every frame is written");
    }
    if (settings_.synchroOnAnalog && settings_.SynchroAnalogMode != 2 &&
        !convert("synchronisation", settings_.SynchroAnalogValue, settings_.SynchroAnalogUnit,
                 settings_.SynchroAnalogChannelNumber, settings_.synchroCode)) {
        return false;
    }
    return checkSizes(sizes);
}

bool Check::checkSizes(const SynchroSizes& sizes) {
    const int64_t buffer = int64_t{sizes.prehistory} + sizes.history;
    const std::string said =
        "buffer = " + std::to_string(buffer) + ", prehistory = " + std::to_string(sizes.prehistory);
    if (buffer < 1) {
        return fail(SynchroMistake::BufferTooSmall, "The synchronisation buffer is under 1 frame: " + said);
    }
    if (sizes.prehistory < 0 || sizes.history < 0) {
        return fail(SynchroMistake::PrehistoryOutsideBuffer, "The prehistory does not fit into the buffer: " + said);
    }
    const auto samples = static_cast<uint64_t>(buffer) * board_.channels.size();
    if (samples <= std::numeric_limits<uint32_t>::max() && samples * board_.sampleWidth <= usableMemory()) {
        return true;
    }
    return fail(SynchroMistake::BufferTooLarge, "Not enough memory for the synchronisation buffer: " + said);
}

// Finds the channel, whose number becomes its position in the frame, and computes the threshold's code.
bool Check::convert(const char* what, double value, int32_t unit, int32_t& channel, int32_t& code) {
    const std::string condition = std::string(" of the ") + what + " condition";
    const auto found = std::find_if(board_.channels.begin(), board_.channels.end(),
                                    [&](const auto& active) { return active.number == channel; });
    if (found == board_.channels.end()) {
        return fail(SynchroMistake::ChannelNotActive,
                    "Channel " + std::to_string(channel) + condition + " is not active");
    }
    if (std::isnan(value)) {
        return fail(SynchroMistake::ThresholdNoNumber, "The threshold" + condition + " is no number");
    }
    const std::optional<int32_t> converted = levelCode(levelVolts(value, unit), *found, board_);
    if (!converted) {
        return fail(SynchroMistake::InputRangeNotPositive,
                    "The input range of channel " + std::to_string(channel) + " is not positive");
    }
    channel = static_cast<int32_t>(found - board_.channels.begin());
    code = *converted;
    return true;
}

bool Check::fail(SynchroMistake mistake, std::string detail) {
    findings_.mistake = mistake;
    findings_.detail = std::move(detail);
    return false;
}

bool Check::switchOff(SynchroSwitchOff reason, const char* detail) {
    settings_.SynchroAnalyzeMode = 0;
    settings_.analysisOnAnalog = false;
    settings_.analysisOnPort = false;
    findings_.switchedOff = reason;
    findings_.detail = detail;
    return true;
}

}  // namespace

std::pair<double, double> SynchroBoardFacts::Channel::limits() const {
    if (inputRange > 0.0F) {
        const double limit = static_cast<double>(inputRange) / std::max(gain, 1);
        return {-limit, limit};
    }
    return {lower, upper};
}

double levelVolts(double value, int32_t unit) {
    constexpr double kFactors[] = {1.0, 0.001, 0.000001};
    return value * (unit == 1 || unit == 2 ? kFactors[unit] : kFactors[0]);
}

std::optional<int32_t> levelCode(double volts, const SynchroBoardFacts::Channel& channel,
                                 const SynchroBoardFacts& board) {
    const double lowest = board.minimumCode;
    const double highest = board.maximumCode;
    double code = 0.0;
    if (const auto range = static_cast<double>(channel.inputRange); std::isfinite(range) && range > 0.0) {
        const double gain = channel.gain == 0 ? 1.0 : channel.gain;
        // The gain comes after the truncation, so that thresholds set on recordings of old stay where they were.
        code = std::trunc((volts + range) * (highest - lowest) / (2.0 * range) + lowest) * gain;
    } else if (channel.inputRange == 0.0F && channel.lower < channel.upper) {
        code = std::trunc((volts - channel.lower) * (highest - lowest) / (channel.upper - channel.lower) + lowest);
    } else {
        return std::nullopt;
    }
    return static_cast<int32_t>(code > highest ? highest : code < lowest ? lowest : code);
}

bool CheckSynchroParameters(const SynchroSettings& settings, const SynchroSizes& sizes, const SynchroBoardFacts& board,
                            SynchroFindings& findings) {
    findings = {};
    findings.settings = settings;
    findings.settings.started = false;
    findings.settings.stopped = false;
    return Check(board, findings).run(sizes);
}

}  // namespace tarno2
