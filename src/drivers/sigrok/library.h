#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "drivers/sigrok/device_spec.h"

struct sr_channel;
struct sr_channel_group;
struct sr_context;
struct sr_dev_driver;
struct sr_dev_inst;

namespace tarno2::drivers {

/// The library's own state, which a process has once, and the lock under which its calls are made: it knows nothing of
/// threads. Lives as long as somebody uses it.
class Library {
public:
    /// Null with a text in `problem`.
    [[nodiscard]] static std::shared_ptr<Library> instance(std::string& problem);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    [[nodiscard]] std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }
    [[nodiscard]] sr_context* context() const { return context_; }

    // Under the lock:

    /// Looks for devices anew; what was found before is gone, so nothing while a device of that driver is open. Empty
    /// with a text in `problem` when there are none or they can't be looked for.
    std::vector<sr_dev_inst*> scan(const DeviceSpec& spec, std::string& problem);
    /// Counts those who use devices of a driver.
    void use(const std::string& driver, int more);
    [[nodiscard]] bool inUse(const std::string& driver) const;

private:
    Library() = default;
    [[nodiscard]] sr_dev_driver* find(const std::string& driver) const;

    std::mutex mutex_;
    sr_context* context_ = nullptr;
    std::vector<std::string> initialised_;
    std::vector<std::string> used_;
};

/// A device of the library while it is open. All calls under the library's lock.
class OpenDevice {
public:
    OpenDevice() = default;
    ~OpenDevice() { close(); }
    OpenDevice(const OpenDevice&) = delete;
    OpenDevice& operator=(const OpenDevice&) = delete;

    /// The device of that place among those that a scan finds. False with a text in `problem`.
    bool open(const std::shared_ptr<Library>& library, const DeviceSpec& spec, size_t place, std::string& problem);
    void close();

    [[nodiscard]] sr_dev_inst* device() const { return device_; }
    [[nodiscard]] const std::shared_ptr<Library>& library() const { return library_; }
    [[nodiscard]] std::string name() const;
    [[nodiscard]] const std::vector<sr_channel*>& analog() const { return analog_; }
    /// What they are called on the device.
    [[nodiscard]] std::vector<std::string> analogNames() const;
    [[nodiscard]] const std::vector<sr_channel*>& logic() const { return logic_; }

    [[nodiscard]] bool isContinuous() const { return continuous_; }
    [[nodiscard]] bool hasRate() const { return rate_; }
    /// Rates it has, ascending; with `stepped` any from the first to the last.
    struct Rates {
        std::vector<double> values;
        bool stepped = false;
    };
    [[nodiscard]] Rates rates() const;
    /// Sets the nearest of them and returns the one that the device then tells; 0 with a text in `problem`.
    [[nodiscard]] double negotiateRate(double wished, std::string& problem) const;
    /// Volts at the end of an analog channel's screen; 0 where it doesn't tell.
    [[nodiscard]] double range(const sr_channel& channel) const;
    /// False with a text in `problem`.
    [[nodiscard]] bool apply(const DeviceOption& option, std::string& problem) const;
    /// Endless acquisition of these channels (places among the analog ones) and all lines.
    void prepare(const std::vector<int32_t>& channels) const;

private:
    void learn();
    [[nodiscard]] sr_channel_group* groupOf(const sr_channel& channel) const;

    std::shared_ptr<Library> library_;
    DeviceSpec spec_;
    sr_dev_inst* device_ = nullptr;
    std::vector<sr_channel*> analog_;
    std::vector<sr_channel*> logic_;
    bool continuous_ = false;
    bool rate_ = false;
};

}  // namespace tarno2::drivers
