// Boards of the kernel's industrial I/O, of this computer or of another one. docs/boards.md lists the settings.

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "drivers/common/pump_driver.h"
#include "drivers/iio/scan_device.h"
#include "drivers/iio/scan_source.h"

namespace tarno2::drivers {

namespace {

constexpr float kLowestRate = 0.001F;  // of boards that don't tell their limits
constexpr float kHighestRate = 1e8F;
constexpr uint32_t kMaximumRing = 1U << 26;

class IioDriver final : public PumpDriver {
public:
    IioDriver();

protected:
    std::vector<sdk::Board> search(const sdk::Settings& settings) override;
    bool searchTakesLong() const override { return true; }
    bool open(sdk::Board& board) override;
    void close() override;
    bool configure(const sdk::Board& board, sdk::Measurement& measurement) override;
    bool inputLimits(const sdk::Board& board, int32_t channel, int32_t gain, sdk::InputLimits& limits) override;
    uint32_t ringFor(const sdk::Board& board, int32_t wished, uint32_t channels) const override;
    std::unique_ptr<PacedSource> connect(const sdk::Board& board, const sdk::Measurement& measurement) override;

private:
    ContextHandle context_;
    std::optional<ScanDevice> device_;
    double framesPerSecond_ = 0.0;  // that the board was last set up for
    std::mutex mutex_;              // the limits are asked for by any thread
    std::vector<sdk::InputLimits> limits_;
};

std::vector<sdk::InputLimits> limitsOf(const ScanDevice& device, const sdk::Settings& settings) {
    std::vector<sdk::InputLimits> all;
    for (size_t i = 0; i < device.channels().size(); ++i) {
        const auto [lower, upper] = device.limits(i, settings.real("Range"));
        all.push_back({lower, upper});
    }
    return all;
}

sdk::Board describe(const ScanDevice& device, const sdk::Settings& settings) {
    sdk::Board board;
    board.id = device.id();
    board.name = device.name();
    board.format = sdk::plainWords(device.word().bytes, 8 * device.word().bytes, device.word().isSigned);
    board.codes = {device.word().minimum, device.word().maximum};
    board.channels = static_cast<uint32_t>(device.channels().size());
    for (const ScanChannel& channel : device.channels()) {
        board.channelNames.push_back(channel.name);
        board.channelUnits.push_back(channel.scale > 0.0 ? channel.unit : std::string());
    }
    board.range = 0.0;
    for (const sdk::InputLimits& limits : limitsOf(device, settings)) {
        board.range = std::max({board.range, std::abs(limits.lower), std::abs(limits.upper)});
    }
    board.perChannelFrequency = true;
    board.synchronousChannels = false;  // many boards have one converter and a switch
    board.maximumRing = kMaximumRing;
    const double rate = device.hasRate() ? device.rate() : 0.0;
    board.usualFrequency = static_cast<float>(rate > 0.0 ? rate : settings.real("Rate"));
    const ScanRates rates = device.hasRate() ? device.rates() : ScanRates{.values = {board.usualFrequency}};
    board.frequencies.assign(rates.values.begin(), rates.values.end());
    board.minimumFrequency = rates.minimum > 0.0 ? static_cast<float>(rates.minimum) : kLowestRate;
    board.maximumFrequency = rates.maximum > 0.0 ? static_cast<float>(rates.maximum) : kHighestRate;
    return board;
}

IioDriver::IioDriver() : PumpDriver("IIO") {
    settings().add(sdk::Setting::text("Context", "local", "Context (local, ip:host, usb:, serial:)",
                                      "Контекст (local, ip:узел, usb:, serial:)"));
    settings().add(sdk::Setting::text("Trigger", "", "Trigger (empty: chosen automatically)",
                                      "Триггер (пусто: выбирается автоматически)"));
    settings().add(sdk::Setting::real("Rate", 1000.0, 0.001, 1e8, "Channel rate of boards that don't tell theirs, Hz",
                                      "Частота канала, если плата её не сообщает, Гц"));
    settings().add(sdk::Setting::real("Range", 1.0, 1e-9, 1e9, "Range of channels without a scale, V",
                                      "Диапазон каналов без масштаба, В"));
    settings().add(sdk::Setting::integer("WatchTimestamps", 1, 0, 1, "Find losses by timestamps",
                                         "Искать потери по меткам времени"));
    settings().add(sdk::Setting::real("Timeout", 5.0, 0.0, 86400.0, "Longest silence of a board, s (0: any)",
                                      "Наибольшее молчание платы, с (0: любое)"));
}

std::vector<sdk::Board> IioDriver::search(const sdk::Settings& settings) {
    std::vector<sdk::Board> boards;
    std::string problem;
    const std::string address = settings.text("Context");
    const ContextHandle context = openContext(address, problem);
    if (context == nullptr) {
        fail("%s", problem.c_str());
        return boards;
    }
    for (const ScanDevice& device : ScanDevice::all(*context, settings.text("Trigger"))) {
        boards.push_back(describe(device, settings));
    }
    if (boards.empty()) {
        fail("The IIO context %s has no device that can be recorded.", address.c_str());
    }
    return boards;
}

bool IioDriver::open(sdk::Board& board) {
    close();
    std::string problem;
    context_ = openContext(settings().text("Context"), problem);
    if (context_ == nullptr) {
        return fail("%s", problem.c_str());
    }
    for (ScanDevice& device : ScanDevice::all(*context_, settings().text("Trigger"))) {
        if (device.id() == board.id) {
            device_.emplace(std::move(device));
        }
    }
    if (!device_.has_value()) {
        close();
        return fail("%s is not there any more.", board.name.c_str());
    }
    board = describe(*device_, settings());
    const std::lock_guard lock(mutex_);
    limits_ = limitsOf(*device_, settings());
    return true;
}

void IioDriver::close() {
    device_.reset();
    context_.reset();
}

bool IioDriver::configure(const sdk::Board&, sdk::Measurement& measurement) {
    std::string problem;
    const double rate =
        device_->hasRate() ? device_->negotiateRate(measurement.framesPerSecond(), problem) : settings().real("Rate");
    if (rate <= 0.0) {
        return fail("%s", problem.c_str());
    }
    framesPerSecond_ = rate;
    measurement.frequency = rate * static_cast<double>(measurement.channels.size());
    return true;
}

bool IioDriver::inputLimits(const sdk::Board&, int32_t channel, int32_t, sdk::InputLimits& limits) {
    const std::lock_guard lock(mutex_);
    const auto index = static_cast<size_t>(channel);
    if (index >= limits_.size()) {
        return false;
    }
    limits = limits_[index];
    return true;
}

/// Whatever rate was wished for, a ring takes what comes in half a second: samples come by tenths of one.
uint32_t IioDriver::ringFor(const sdk::Board& board, int32_t wished, uint32_t channels) const {
    const double enough = std::min(framesPerSecond_ / 2.0 * channels, static_cast<double>(board.maximumRing));
    return PumpDriver::ringFor(board, std::max(wished, static_cast<int32_t>(enough)), channels);
}

std::unique_ptr<PacedSource> IioDriver::connect(const sdk::Board&, const sdk::Measurement& measurement) {
    const ScanPlan plan{.channels = measurement.channels,
                        .framesPerSecond = measurement.framesPerSecond(),
                        .watchTimestamps = settings().integer("WatchTimestamps") != 0,
                        .longestSilence = settings().real("Timeout")};
    std::string problem;
    std::unique_ptr<PacedSource> source = ScanSource::open(*device_, plan, problem);
    if (source == nullptr) {
        fail("%s", problem.c_str());
    }
    return source;
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::IioDriver)
