#include "core/recording/passport_facts.h"

#include <algorithm>
#include <array>

#include "config/logs/program_version.h"
#include "core/storage/loss.h"
#include "platform/clock.h"
#include "platform/codepage1251.h"
#include "platform/computer_name.h"
#include "platform/utf.h"

namespace tarno2 {

namespace {

double voltsOf(double value, int32_t unit) {
    constexpr std::array kVolts = {1.0, 1e-3, 1e-6};
    return value * kVolts[static_cast<size_t>(std::clamp(unit, 0, 2))];
}

/// Gathers conditions: modes 0 and 1 ask for something, 2 for nothing.
class Conditions {
public:
    explicit Conditions(std::vector<PassportCondition>& conditions) : conditions_(conditions) {}

    void level(const char* role, bool asked, int32_t mode, int32_t channel, double volts) {
        add(asked, mode, {role, channel, -1, mode == 0 ? "above" : "below", volts});
    }
    void line(const char* role, bool asked, int32_t mode, int32_t line) {
        add(asked, mode, {role, -1, line, mode == 0 ? "high" : "low", 0.0});
    }
    void add(bool asked, int32_t mode, PassportCondition condition) {
        if (asked && (mode == 0 || mode == 1)) {
            conditions_.push_back(std::move(condition));
        }
    }

private:
    std::vector<PassportCondition>& conditions_;
};

void addAnalysis(const SynchroSettings& s, Conditions& conditions) {
    if (s.analysisOnAnalog) {
        conditions.level("start", s.startAnalogEnabled, s.AnalyzeAnalogStartMode, s.AnalyzeAnalogStartChannel,
                         voltsOf(s.AnalyzeAnalogStartValue, s.AnalyzeAnalogStartUnit));
        conditions.level("write", s.writeAnalogEnabled, s.AnalyzeAnalogWriteMode, s.AnalyzeAnalogWriteChannel,
                         voltsOf(s.AnalyzeAnalogWriteValue, s.AnalyzeAnalogWriteUnit));
        conditions.level("stop", s.stopAnalogEnabled, s.AnalyzeAnalogStopMode, s.AnalyzeAnalogStopChannel,
                         voltsOf(s.AnalyzeAnalogStopValue, s.AnalyzeAnalogStopUnit));
    }
    if (s.analysisOnPort) {
        conditions.line("start", s.portStartEnabled, s.AnalyzePortStartMode, s.AnalyzePortStartBit);
        conditions.line("write", s.portWriteEnabled, s.AnalyzePortWriteMode, s.AnalyzePortWriteBit);
        conditions.line("stop", s.portStopEnabled, s.AnalyzePortStopMode, s.AnalyzePortStopBit);
    }
}

void addTrigger(const SynchroSettings& s, Conditions& conditions) {
    const auto edge = [](int32_t mode) { return mode == 0 ? "rises" : "falls"; };
    conditions.add(s.synchroOnAnalog, s.SynchroAnalogMode,
                   {"trigger", s.SynchroAnalogChannelNumber, -1, edge(s.SynchroAnalogMode),
                    voltsOf(s.SynchroAnalogValue, s.SynchroAnalogUnit)});
    conditions.add(!s.synchroOnAnalog && s.synchroOnPort, s.SynchroPortMode,
                   {"trigger", -1, s.SynchroPortBit, edge(s.SynchroPortMode), 0.0});
}

PassportSynchronisation synchronisationOf(const RecordingWish& wish) {
    PassportSynchronisation told;
    Conditions conditions(told.conditions);
    if (wish.synchro.SynchroAnalyzeMode == kModeAnalysis) {
        told.mode = "analysis";
        addAnalysis(wish.synchro, conditions);
    } else if (wish.synchro.SynchroAnalyzeMode == kModeSynchronisation) {
        told.mode = "records";
        told.prehistory = static_cast<uint32_t>(wish.synchroSizes.prehistory);
        told.history = static_cast<uint32_t>(wish.synchroSizes.history);
        told.stopAfterRecord = wish.synchro.StopAfterTrigged;
        addTrigger(wish.synchro, conditions);
    }
    return told;
}

/// What was asked to be told of the channel in this place. A driver may have corrected the list of channels.
ChannelLabel givenLabel(const RecordingWish& wish, size_t place, int32_t number) {
    const auto& asked = wish.channels;
    if (place >= asked.size() || asked[place] != number) {
        place = static_cast<size_t>(std::ranges::find(asked, number) - asked.begin());
    }
    return place < wish.labels.size() ? wish.labels[place] : ChannelLabel();
}

PassportSample sampleOf(const BoardFacts& board) {
    const ADCSampleFormat& format = board.format;
    PassportSample sample;
    sample.bytes = format.m_nBytes;
    sample.signedCodes = format.m_nSignedCodes != 0;
    sample.codeBits = format.m_nCodeBits;
    sample.codeShift = format.m_nCodeShift;
    sample.codeMask = format.m_nCodeMask;
    sample.codeMinimum = board.codeRange.m_nMinimum;
    sample.codeMaximum = board.codeRange.m_nMaximum;
    sample.lineCount = format.m_nDigitalLines;
    sample.lineShift = format.m_nDigitalShift;
    sample.lineMask = format.m_nDigitalMask;
    sample.backwardOrder = format.m_nBackwardOrder != 0;
    return sample;
}

/// Rates of the board are counted over all channels, or for each.
PassportRate rateOf(const RecordingWish& wish, const T_BOARD& session, const BoardFacts& board) {
    const double channels = std::max<double>(session.settings.channelCount(), 1.0);
    const double share = board.perChannelFrequency ? 1.0 : channels;
    PassportRate rate;
    rate.asked = wish.frequency / share;
    rate.given = static_cast<double>(session.settings.frequency) / share;
    rate.decimation = session.decimation;
    rate.recorded = rate.given / session.decimation;
    rate.externalClock = session.settings.externalClock;
    if (session.settings.packetMode) {
        rate.packetsAsked = wish.packetFrequency;
        rate.packetsGiven = static_cast<double>(session.settings.packetFrequency);
    }
    return rate;
}

const char* reasonOf(const RecordingResult& result, OutsideEnd end) {
    switch (result.code) {
        case StopCode::Running:
        case StopCode::User:
            return end == OutsideEnd::StopTime ? "time" : end == OutsideEnd::SystemEnding ? "shutdown" : "user";
        case StopCode::StopMeasuring:
            return result.diskNearlyFull ? "disk full" : result.sizeReached ? "size" : "condition";
        case StopCode::WriteError:
            return "write error";
        case StopCode::Unplug:
            return "unplugged";
        case StopCode::NoData:
            return "no data";
        case StopCode::AnalyzeError:
            return "evaluation error";
        case StopCode::TransferError:
            return "transfer error";
        case StopCode::Incompatible:
            return "incompatible";
        case StopCode::SourceEnd:
            return "end of source";
        case StopCode::Error:
            break;
    }
    return result.detail == ErrorDetail::Overflow ? "overflow" : "error";
}

}  // namespace

Passport passportAtStart(const RecordingWish& wish, const T_BOARD& session, const RecordingFacts& facts) {
    const T_DRIVER& driver = session.driver();
    Passport passport;
    passport.version = versionText();
    passport.driver = systemToUtf8(driver.name());
    passport.board = systemToUtf8(driver.boardName());
    passport.computer = computerName();
    passport.comment = typedToUtf8(wish.comment);
    passport.start = utcMicroseconds();
    passport.startOffset = utcOffsetMinutes(passport.start);
    passport.rate = rateOf(wish, session, driver.facts());
    passport.sample = sampleOf(driver.facts());
    for (size_t i = 0; i < facts.ranges.size(); ++i) {
        PassportChannel& channel = passport.channels.emplace_back();
        channel.number = session.settings.channels[i];
        const ChannelLabel label = channelLabel(driver.facts(), channel.number, givenLabel(wish, i, channel.number));
        channel.name = label.name;
        channel.unit = label.unitText();
        channel.factor = label.factor;
        channel.offset = label.offset;
        channel.gain = session.settings.gains[i];
        channel.upper = facts.ranges[i].upper;
        channel.lower = facts.ranges[i].lower;
    }
    for (size_t line = 0; line < passport.sample.lineCount; ++line) {
        passport.lines.push_back(
            {static_cast<int32_t>(line), line < wish.lineNames.size() ? wish.lineNames[line] : std::string()});
    }
    passport.synchronisation = synchronisationOf(wish);
    return passport;
}

PassportEnd passportEnd(const RecordingResult& result, OutsideEnd end) {
    PassportEnd told;
    told.utc = utcMicroseconds();
    told.reason = reasonOf(result, end);
    told.words = systemToUtf8(result.problem);
    for (const Loss& loss : result.losses) {
        told.losses.push_back({lossCauseName(loss.cause), loss.sample, loss.count});
    }
    return told;
}

}  // namespace tarno2
