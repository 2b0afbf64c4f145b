#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "drivers/iio/scan_layout.h"

struct iio_channel;
struct iio_context;
struct iio_device;

namespace tarno2::drivers {

struct ContextDeleter {
    void operator()(iio_context* context) const noexcept;
};
using ContextHandle = std::unique_ptr<iio_context, ContextDeleter>;

/// Connects; "local" and everything the library takes as an address. Null with a text in `problem`. May take seconds.
[[nodiscard]] ContextHandle openContext(const std::string& address, std::string& problem);
/// The library's words for an error number, of either sign.
[[nodiscard]] std::string iioError(int64_t error);

/// One channel of a board.
struct ScanChannel {
    iio_channel* channel = nullptr;
    std::string name;
    std::string unit;  ///< empty: volts
    ScanFormat format;
    size_t element = 0;   ///< which of the values of a field that has several
    double scale = 0.0;   ///< volts (or units of another quantity) for a step of the code; 0: not told
    double offset = 0.0;  ///< codes
};

/// A device with a buffer, as a board. Belongs to its context, which has to live longer. One thread at a time.
class ScanDevice {
public:
    /// `trigger` is the name of the one to be used, empty: whichever fits.
    ScanDevice(iio_context& context, iio_device& device, std::string trigger);

    /// The devices of a context that have input channels to be recorded.
    [[nodiscard]] static std::vector<ScanDevice> all(iio_context& context, const std::string& trigger);

    [[nodiscard]] std::string id() const;
    [[nodiscard]] std::string name() const;
    [[nodiscard]] iio_context& context() const { return *context_; }
    [[nodiscard]] iio_device& device() const { return *device_; }
    [[nodiscard]] const std::vector<ScanChannel>& channels() const { return channels_; }
    [[nodiscard]] iio_channel* timestamp() const { return timestamp_; }
    [[nodiscard]] const ScanWord& word() const { return word_; }
    /// The voltages of the lowest and the highest code of the board's word; channels without a scale go to `range`.
    [[nodiscard]] std::pair<double, double> limits(size_t channel, double range) const;

    /// The rates it has; nothing told when it has no attribute for them.
    [[nodiscard]] ScanRates rates() const;
    [[nodiscard]] bool hasRate() const { return !rateOwners_.empty(); }
    /// The frame rate now; 0 when it can't be read.
    [[nodiscard]] double rate() const;
    /// Sets the nearest rate that the board has and returns what it then says; 0 with a text in `problem`.
    [[nodiscard]] double negotiateRate(double wished, std::string& problem) const;
    /// Sees to it that a device that needs a trigger has one. False with a text in `problem`.
    [[nodiscard]] bool connectTrigger(std::string& problem) const;

private:
    struct RateOwner {
        iio_device* device = nullptr;
        iio_channel* channel = nullptr;  // null: the device itself
    };
    void addChannels(iio_channel& channel);
    void findRate();
    bool takesTrigger(const iio_device*& current) const;
    [[nodiscard]] iio_device* fittingTrigger(const iio_device* current) const;

    iio_context* context_;
    iio_device* device_;
    std::string triggerName_;
    std::vector<ScanChannel> channels_;
    iio_channel* timestamp_ = nullptr;
    ScanWord word_;
    std::vector<RateOwner> rateOwners_;
};

}  // namespace tarno2::drivers
