#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "records/channel_label.h"
#include "sync/synchro_settings.h"

namespace tarno2 {

/// What the check of the synchronisation settings has to know of the board as it is set up.
struct SynchroBoardFacts {
    struct Channel {
        int32_t number = 0;  ///< physical
        int32_t gain = 1;
        float inputRange = 0.0F;  ///< R, volts at gain 1: the input goes from -R / gain to +R / gain
        double lower = 0.0;       ///< where R is 0: volts of the lowest code at this gain
        double upper = 0.0;       ///< and of the highest
        ChannelLabel label = {};  ///< in which a window tells its levels; the check doesn't look at it

        /// The voltages that the input goes from and to; both the same when they are not known.
        [[nodiscard]] std::pair<double, double> limits() const;
    };
    std::vector<Channel> channels;  ///< the active ones, in recording order
    int32_t minimumCode = 0;
    int32_t maximumCode = 0;
    uint32_t sampleWidth = 2;     ///< bytes
    bool useDigitalPort = false;  ///< the user has switched the digital port on
};

/// Why the settings can't be used.
enum class SynchroMistake {
    None,
    ChannelNotActive,
    ThresholdNoNumber,
    InputRangeNotPositive,
    BufferTooSmall,
    PrehistoryOutsideBuffer,
    BufferTooLarge
};

/// Why the check switched the synchronisation off.
enum class SynchroSwitchOff { None, PortNotUsed, NoConditions };

/// What the check found.
struct SynchroFindings {
    SynchroSettings settings;  ///< for the evaluator: channels as positions in the frame, thresholds as codes
    SynchroMistake mistake = SynchroMistake::None;
    SynchroSwitchOff switchedOff = SynchroSwitchOff::None;
    std::string detail;  ///< what stands behind either, one line for the logs; empty when there is nothing to say
};

/// A level as it is typed, in volts.
[[nodiscard]] double levelVolts(double value, int32_t unit);

/// The code of a level of so many volts at the input, held within the board's codes. Nothing when the channel's range
/// is not positive or not known.
[[nodiscard]] std::optional<int32_t> levelCode(double volts, const SynchroBoardFacts::Channel& channel,
                                               const SynchroBoardFacts& board);

/// Makes the evaluator's copy of the user's settings, in which channels are numbers. False when they can't be used;
/// `findings` tells why. Settings that could only lose frames, or that ask a port that is not in use, are switched off:
/// that is no mistake. Only what the chosen mode and source use is looked at. Throws std::bad_alloc.
[[nodiscard]] bool CheckSynchroParameters(const SynchroSettings& settings, const SynchroSizes& sizes,
                                          const SynchroBoardFacts& board, SynchroFindings& findings);

}  // namespace tarno2
