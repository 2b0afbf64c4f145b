#include "core/recording/recording_settings.h"

#include <algorithm>
#include <cmath>

#include "core/devices/board_options.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

void takeChannels(const ProgramSettings& settings, const BoardFacts& board, RecordingWish& wish) {
    wish.channels.clear();
    wish.gains.clear();
    wish.labels.clear();
    // Without a board the start is refused, and says why, after the channels were counted.
    const auto known = static_cast<size_t>(std::max(settings.channelCount, 0));
    const size_t count = std::min(board.channelCount != 0 ? board.channelCount : known, settings.channels.size());
    for (size_t i = 0; i < count; ++i) {
        if (settings.channels[i].active) {
            wish.channels.push_back(static_cast<int32_t>(i));
            wish.gains.push_back(usableGain(board, settings.channels[i].gain));
            wish.labels.push_back(settings.channels[i].label);
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

void takeBoardSettings(const RecordingWish& running, RecordingWish& wish) {
    if (wish.channels != running.channels) {
        wish.channels = running.channels;
        wish.labels = running.labels;
    }
    wish.gains = running.gains;
    wish.frequency = running.frequency;
    wish.boardMode = running.boardMode;
    wish.packetFrequency = running.packetFrequency;
    wish.decimation = running.decimation;
    wish.useDigitalPort = running.useDigitalPort;
    wish.hardwareAverage = running.hardwareAverage;
    wish.markLine = running.markLine;
    wish.markEdge = running.markEdge;
}

std::optional<BeyondBoard> beyondBoard(const RecordingWish& wish, const BoardFacts& board) {
    if (const uint32_t lacking = wish.boardMode & ~offeredModes(board); lacking != 0) {
        return BeyondBoard{TextId::BoardModeNotOffered, formatText("Board mode 0x%x is not offered by the board: %s",
                                                                   lacking, modesIn(lacking).c_str())};
    }
    for (const int32_t channel : wish.channels) {
        // A driver need not tell how many channels there are.
        if (channel < 0 || (board.channelCount != 0 && static_cast<uint32_t>(channel) >= board.channelCount)) {
            return BeyondBoard{TextId::NoSuchChannel,
                               formatText("Channel %d is none of the board's %u", channel, board.channelCount)};
        }
    }
    for (const int32_t gain : wish.gains) {
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

RecordingWish recordingWish(const ProgramSettings& settings, const BoardFacts& board) {
    RecordingWish wish = settings.wish;
    takeChannels(settings, board, wish);
    wish.boardMode &= offeredModes(board);
    wish.stopSeconds = wish.stopRule == StopRule::Time ? stopSeconds(settings.stopValue, settings.stopPower) : 0.0;
    wish.stopBytes = wish.stopRule == StopRule::Size ? stopBytes(settings.stopValue, settings.stopPower) : 0;
    wish.cut = wish.cut && offers(board, BoardOption::CutMode);
    wish.useDigitalPort = wish.useDigitalPort && offers(board, BoardOption::DigitalPort);
    wish.hardwareAverage = wish.hardwareAverage && offers(board, BoardOption::HardwareAverage);
    return wish;
}

void showWish(const RecordingWish& wish, ProgramSettings& shown) {
    shown.wish = wish;
    shown.stopPower = 0;
    shown.stopValue = wish.stopRule == StopRule::Size ? static_cast<double>(wish.stopBytes) : wish.stopSeconds;
    for (ChannelSettings& channel : shown.channels) {
        channel.active = false;
    }
    for (size_t i = 0; i < wish.channels.size(); ++i) {
        const auto number = static_cast<size_t>(wish.channels[i]);
        if (number < shown.channels.size()) {
            shown.channels[number].active = true;
            shown.channels[number].gain = i < wish.gains.size() ? wish.gains[i] : 1;
            shown.channels[number].label = i < wish.labels.size() ? wish.labels[i] : ChannelLabel();
        }
    }
}

}  // namespace tarno2
