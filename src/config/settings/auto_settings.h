#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config/settings/auto_synchro.h"

namespace tarno2 {

/// Most channels that can be recorded.
inline constexpr int32_t kMaximumChannelCount = 160;

/// How a recording ends by itself.
enum class StopRule { Manual = 0, Time = 1, Size = 2 };

/// How much of a recording may wait in memory for the disk, MiB, and how long, ms. What the keys of both settings files
/// say is taken within these bounds.
inline constexpr int32_t kWriteBufferMegabytes = 256;
inline constexpr int32_t kLeastWriteBufferMegabytes = 1;
inline constexpr int32_t kMostWriteBufferMegabytes = 65536;
inline constexpr int32_t kLongestWriteWaitMs = 1000;
inline constexpr int32_t kLeastWriteWaitMs = 10;
inline constexpr int32_t kMostWriteWaitMs = 600000;

/// Modes of a board, in the driver's capabilities and in `BoardMode` alike.
enum BoardModeBits : uint32_t {
    kBoardExternalStart = 0x1,
    kBoardDifferential = 0x2,
    kBoardPacketMode = 0x4,
    kBoardExternalClock = 0x8
};

/// What an autosettings file says, checked and in base units.
struct AutoSettings {
    std::string driverName;
    uint32_t baseNumber = 1;
    std::string fileName;           ///< empty: a name is generated
    std::vector<int32_t> channels;  ///< channel numbers in recording order
    std::vector<int32_t> gains;     ///< one a channel
    double frequency = 0.0;         ///< Hz
    int32_t cutMode = 0;            ///< size of a piece, MiB; 0: not cut
    StopRule stopRule = StopRule::Manual;
    double timeNeed = 0.0;         ///< seconds
    uint64_t sizeNeed = 0;         ///< bytes
    uint32_t boardMode = 0;        ///< BoardModeBits
    double packetFrequency = 0.0;  ///< Hz
    int32_t decimation = 1;        ///< keep the first of so many frames
    int32_t writeBufferMegabytes = kWriteBufferMegabytes;
    int32_t longestWriteWaitMs = kLongestWriteWaitMs;
    AutoSynchro synchro;
};

/// Reads an autosettings file for console mode (docs/formats.md tells its keys). Opens AutoLog.txt in
/// `programDirectory` first and writes every finding to it; opens the debug log AutoLog.dbg beside it when the file
/// asks for it. Both stay open. Nothing when the file can't be used; the log says why. A number that can't be parsed
/// counts as absent, a real that is not finite too. Whether the board can do what is asked is for the start to tell.
/// `path`: nothing when none was given. Window thread only.
[[nodiscard]] std::optional<AutoSettings> LoadAutoSettings(const std::optional<std::string>& path,
                                                           const std::string& programDirectory);

}  // namespace tarno2
