#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drivers/common/paced_source.h"
#include "drivers/iio/scan_device.h"
#include "drivers/iio/timestamp_watch.h"

struct iio_buffer;

namespace tarno2::drivers {

struct ScanPlan {
    std::vector<int32_t> channels;  ///< of the device's, in the order of a frame
    double framesPerSecond = 0.0;
    bool watchTimestamps = false;
    double longestSilence = 0.0;  ///< seconds without a sample that mean that the board failed; 0: any
};

/// The samples of a device, by buffers of a tenth of a second. The device and its context have to live longer.
class ScanSource final : public PacedSource {
public:
    /// Null with a text in `problem`.
    [[nodiscard]] static std::unique_ptr<ScanSource> open(const ScanDevice& device, const ScanPlan& plan,
                                                          std::string& problem);
    ~ScanSource() override;

    SourceRead read(std::byte* destination, size_t frames) override;
    void cancel() noexcept override;

private:
    ScanSource(const ScanDevice& device, const ScanPlan& plan);
    bool createBuffer(std::string& problem);
    void enableChannels() const;
    std::optional<SourceRead> refill();
    [[nodiscard]] SourceRead failure(int64_t error, double seconds) const;
    std::optional<TimestampWatch::Loss> findLoss();

    const ScanDevice& device_;
    ScanPlan plan_;
    iio_buffer* buffer_ = nullptr;
    double timeout_ = 0.0;  // seconds without a sample that mean a failure; 0: none
    size_t available_ = 0;  // frames of the buffer that may be read
    size_t next_ = 0;       // the first of them that was not
    std::optional<TimestampWatch> watch_;
    std::vector<int64_t> times_;
    std::optional<SourceRead> end_;  // told once the frames before it were read
    std::atomic<bool> cancelled_{false};
};

}  // namespace tarno2::drivers
