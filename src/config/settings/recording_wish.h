#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/channel_label.h"
#include "sync/synchro_settings.h"

namespace tarno2 {

/// Most channels that can be recorded.
inline constexpr int32_t kMaximumChannelCount = 160;
/// Most lines of a digital port that can have a name.
inline constexpr size_t kMaximumLineCount = 32;

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

/// What is asked of a recording, in base units: by the operator, by `Tarno2.cfg` and by an autosettings file alike.
/// Whether the board can do it is for the start to tell. Starts as a window does that was never told anything.
struct RecordingWish {
    std::string driver;
    uint32_t base = 1;           ///< number of the board in the driver's list
    std::string driverSettings;  ///< what an unattended recording tells that driver, as `parseDriverValues` reads it
    std::string fileName;  ///< where it goes, empty: a name is generated. Kept between runs: where the last one went

    std::vector<int32_t> channels;       ///< their numbers in recording order
    std::vector<int32_t> gains;          ///< one a channel; 1 where there is none
    std::vector<ChannelLabel> labels;    ///< one a channel; what the driver says counts where there is none
    std::vector<std::string> lineNames;  ///< of the lines of the digital port, as many as have one; UTF-8
    double frequency = 100000.0;         ///< Hz; a start refuses what is not above 0
    uint32_t boardMode = 0;              ///< BoardModeBits
    double packetFrequency = 1000.0;     ///< Hz

    StopRule stopRule = StopRule::Manual;
    double stopSeconds = 0.0;  ///< for StopRule::Time
    uint64_t stopBytes = 0;    ///< for StopRule::Size; all pieces together
    bool cycleStart = false;   ///< begin the next recording when one ended by its rule

    bool cut = false;                                      ///< cut the recording into pieces
    int32_t cutMegabytes = 1024;                           ///< size of a piece, MiB
    bool automaticCut = false;                             ///< pieces as large as the volume holds
    bool passport = true;                                  ///< make a passport beside the data
    std::string comment;                                   ///< what the operator says of it; typed, see `typedToUtf8`
    bool checksums = true;                                 ///< compute checksums of the data files
    int32_t decimation = 1;                                ///< keep the first of so many frames
    int32_t writeBufferMegabytes = kWriteBufferMegabytes;  ///< memory for what waits for the disk, MiB at most
    int32_t longestWriteWaitMs = kLongestWriteWaitMs;      ///< after so long data are on their way to the disk

    SynchroSettings synchro;  ///< which frames to keep; channels are numbered
    SynchroSizes synchroSizes;
    bool useDigitalPort = false;
    bool hardwareAverage = false;  ///< the board averages its samples
    int32_t drqNumber = -1;        ///< of an unattended recording; -1: the board's own
    int32_t markLine = -1;         ///< digital line whose edges are marked; -1: none
    int32_t markEdge = 0;          ///< 0 rising, 1 falling, 2 both

    [[nodiscard]] bool hasMode(BoardModeBits mode) const { return (boardMode & mode) != 0; }
    void setMode(BoardModeBits mode, bool on) { boardMode = on ? boardMode | mode : boardMode & ~uint32_t{mode}; }
};

}  // namespace tarno2
