#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/devices/driver.h"
#include "core/devices/parameter_blocks.h"
#include "core/recording/live_tap.h"
#include "core/recording/stop_code.h"
#include "core/storage/writer_setup.h"

namespace tarno2::bench {

/// Whether the board delivers as fast as the reader takes it, or as fast as its frequency says.
enum class Pace { Reader, RealTime };

/// What the board gives.
enum class Signal {
    Level,    ///< stays in the ring once it is there: no processor time goes into making samples, as with a board
    Counter,  ///< tells a lost sample
    Noise     ///< fills the height of the signal view
};

/// How a recording went.
struct RecordedRun {
    RecordingResult result;
    double seconds = 0.0;    ///< from the making of the file to the thread's last word, files closed and described
    double worstPass = 0.0;  ///< s that the acquisition thread took for one block at most, to evaluate and write it
    double worstLoad = 0.0;  ///< of the ring, 0 to 1
};

/// The simulator's board with 160 channels, loaded through the catalogue. Everything throws std::runtime_error when it
/// does not work.
class SimulatedBoard {
public:
    /// `halfBytes`: about how much the board announces at once, half a ring, which is a quarter of a second of its
    /// stream. `folder` takes the driver's settings.
    SimulatedBoard(const std::string& folder, uint32_t channels, uint64_t halfBytes, Pace pace = Pace::Reader,
                   Signal signal = Signal::Level);

    /// Bytes of a half; recordings are whole halves.
    [[nodiscard]] uint64_t halfBytes() const { return halfBytes_; }
    /// The nearest number of bytes from `bytes` down that is whole halves.
    [[nodiscard]] uint64_t wholeHalves(uint64_t bytes) const { return bytes / halfBytes_ * halfBytes_; }

    /// A recording as the programs make it: board session, acquisition thread, writer, description. File, size limit
    /// and what concerns the disk are the set-up's. `tap`: gets the frames as well, when it is given.
    [[nodiscard]] RecordedRun run(WriterSetup setup, LiveTap* tap = nullptr);
    /// One by size that ends as it should. Seconds.
    [[nodiscard]] double record(const std::string& file, uint64_t bytes, LiveTap* tap = nullptr);
    /// From pressing start until the board has put its first samples into its ring; the recording is then ended.
    /// Seconds.
    [[nodiscard]] double start(const std::string& file);
    /// The least that a host can do: fetches half after half and writes each with one call. Seconds.
    [[nodiscard]] double fetchAndWrite(const std::string& file, uint64_t bytes);
    /// Fetches half after half and writes nothing: what the board itself can give. Seconds.
    [[nodiscard]] double fetch(uint64_t bytes);

private:
    template <typename Take>
    double stream(uint64_t bytes, Take take);

    T_DRIVER driver_;
    BoardSettings settings_;
    uint64_t halfBytes_ = 0;
    Pace pace_;
};

}  // namespace tarno2::bench
