#include "core/recording/recording_settings.h"

#include <algorithm>
#include <cmath>

#include "config/settings/field_text.h"
#include "core/devices/board_options.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

uint32_t chosenModes(const ProgramSettings& settings, const BoardFacts& board) {
    uint32_t modes = 0;
    modes |= settings.externalStart ? kBoardExternalStart : 0U;
    modes |= settings.differentialMode ? kBoardDifferential : 0U;
    modes |= settings.packetMode ? kBoardPacketMode : 0U;
    modes |= settings.externalFrequency ? kBoardExternalClock : 0U;
    return modes & offeredModes(board);
}

void takeChannels(const ProgramSettings& settings, const BoardFacts& board, RecordingSettings& recording) {
    // Without a board the start is refused, and says why, after the channels were counted.
    const auto known = static_cast<size_t>(std::max(settings.channelCount, 0));
    const size_t count = std::min(board.channelCount != 0 ? board.channelCount : known, settings.channels.size());
    for (size_t i = 0; i < count; ++i) {
        if (settings.channels[i].active) {
            recording.channels.push_back(static_cast<int32_t>(i));
            recording.gains.push_back(usableGain(board, settings.channels[i].gain));
        }
    }
}

std::string modesIn(uint32_t bits) {
    struct Mode {
        uint32_t bit;
        const char* name;
    };
    constexpr Mode kModes[] = {{kBoardExternalStart, "external start"},
                               {kBoardDifferential, "differential inputs"},
                               {kBoardPacketMode, "packet mode"},
                               {kBoardExternalClock, "external clock"}};
    std::string names;
    const auto add = [&names](const std::string& name) { names += (names.empty() ? "" : ", ") + name; };
    for (const Mode& mode : kModes) {
        if ((bits & mode.bit) != 0) {
            add(mode.name);
            bits &= ~mode.bit;
        }
    }
    if (bits != 0) {
        add("unknown mode");
    }
    return names;
}

}  // namespace

std::optional<BeyondBoard> beyondBoard(const RecordingSettings& settings, const BoardFacts& board) {
    if (const uint32_t lacking = settings.boardMode & ~offeredModes(board); lacking != 0) {
        return BeyondBoard{TextId::BoardModeNotOffered, formatText("Board mode 0x%x is not offered by the board: %s",
                                                                   lacking, modesIn(lacking).c_str())};
    }
    for (const int32_t channel : settings.channels) {
        // A driver need not tell how many channels there are.
        if (channel < 0 || (board.channelCount != 0 && static_cast<uint32_t>(channel) >= board.channelCount)) {
            return BeyondBoard{TextId::NoSuchChannel,
                               formatText("Channel %d is none of the board's %u", channel, board.channelCount)};
        }
    }
    for (const int32_t gain : settings.gains) {
        if (gain <= 0) {
            return BeyondBoard{TextId::GainIncorrect, formatText("Gain %d is not above 0", gain)};
        }
    }
    return std::nullopt;
}

double stopSeconds(double value, int32_t unit) {
    constexpr double kUnits[] = {1.0, 60.0, 3600.0};
    return value * kUnits[std::clamp(unit, 0, 2)];
}

uint64_t stopBytes(double value, int32_t unit) {
    constexpr double kUnits[] = {1.0, 1024.0, 1024.0 * 1024.0};
    constexpr double kMost = 9e18;
    const double bytes = value * kUnits[std::clamp(unit, 0, 2)];
    return bytes > 0.0 ? static_cast<uint64_t>(std::min(std::round(bytes), kMost)) : 0;
}

RecordingSettings recordingSettings(const ProgramSettings& settings, const BoardFacts& board,
                                    std::string_view frequencyField) {
    RecordingSettings recording;
    takeChannels(settings, board, recording);
    recording.frequencyText = plainNumber(frequencyField);
    recording.boardMode = chosenModes(settings, board);
    recording.packetFrequency = settings.packetFrequency;
    recording.stopRule = settings.stopMode;
    if (settings.stopMode == StopRule::Time) {
        recording.stopSeconds = stopSeconds(settings.stopValue, settings.stopPower);
    } else if (settings.stopMode == StopRule::Size) {
        recording.stopBytes = stopBytes(settings.stopValue, settings.stopPower);
    }
    recording.cutMode = settings.cutModeActive && offers(board, BoardOption::CutMode);
    recording.cutNumberText = std::to_string(settings.cutModeValue);
    recording.automaticCut = settings.autoModeCut;
    recording.decimation = settings.decimation;
    recording.writeBufferMegabytes = static_cast<uint32_t>(settings.writeBufferMegabytes);
    recording.longestWriteWaitMs = static_cast<uint32_t>(settings.longestWriteWaitMs);
    recording.autoStart = settings.cycleStart;
    recording.synchro = settings.synchro;
    recording.synchroSizes = settings.synchroSizes;
    recording.useDigitalPort = settings.useDigitalPort && offers(board, BoardOption::DigitalPort);
    return recording;
}

RecordingSettings recordingSettings(const ProgramSettings& settings, const BoardFacts& board) {
    return recordingSettings(settings, board, frequencyText(settings.frequency));
}

}  // namespace tarno2
