#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/driver.h"
#include "core/live_tap.h"
#include "core/parameter_blocks.h"

namespace tarno2::bench {

/// Whether the board delivers as fast as the reader takes it, or as fast as its frequency says.
enum class Pace { Reader, RealTime };

/// The simulator's board with 160 channels, loaded through the catalogue, giving levels. Everything throws
/// std::runtime_error when it does not work.
class SimulatedBoard {
public:
    /// `halfBytes`: about how much the board announces at once, half a ring. `folder` takes the driver's settings.
    SimulatedBoard(const std::string& folder, uint32_t channels, uint64_t halfBytes, Pace pace = Pace::Reader);

    /// Bytes of a half; recordings are whole halves.
    [[nodiscard]] uint64_t halfBytes() const { return halfBytes_; }
    /// The nearest number of bytes from `bytes` down that is whole halves.
    [[nodiscard]] uint64_t wholeHalves(uint64_t bytes) const { return bytes / halfBytes_ * halfBytes_; }

    /// A recording by size as the programs make it: board session, acquisition thread, writer, description. The seconds
    /// from the making of the file to the thread's last word, files closed and described.
    /// `tap`: gets the frames as well, when it is given.
    [[nodiscard]] double record(const std::string& file, uint64_t bytes, LiveTap* tap = nullptr);
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
};

}  // namespace tarno2::bench
