#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// A driver of a source that sends by itself, with settings by its variable of the environment.
class StreamingRig {
public:
    StreamingRig(const std::string& library, const char* variable, const std::string& settings);

    /// Chooses the board, sets up a measurement of the first channels, and starts it. False: `error()` says why.
    bool start(const Wish& wish);
    [[nodiscard]] std::string error() const { return driver_.lastError(); }
    [[nodiscard]] const LoadedDriver& driver() const { return driver_; }
    [[nodiscard]] RingReader& reader() { return *reader_; }
    [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

    /// Fetches all samples up to the end of the stream.
    std::vector<uint32_t> readToEnd();
    /// Waits until so many samples are in the ring.
    void waitFor(uint64_t samples) const;
    [[nodiscard]] ADCStreamEnd end() const { return driver_.get<ADCStreamEnd>(kADCGetStreamEnd); }
    /// What the driver shows of a setting.
    [[nodiscard]] std::string setting(const std::string& key) const;

private:
    TemporaryFolder folder_;
    ScopedEnvironment environment_;
    LoadedDriver driver_;
    std::optional<RingReader> reader_;
};

}  // namespace tarno2::test
