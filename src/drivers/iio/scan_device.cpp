#include "drivers/iio/scan_device.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iio.h>

namespace tarno2::drivers {

namespace {

constexpr const char* kRate = "sampling_frequency";
constexpr const char* kRates = "sampling_frequency_available";
constexpr size_t kMostChannels = 160;

/// Steps of a code in volts, or in the unit of another quantity, for the kernel's unit of that quantity.
double baseUnits(iio_chan_type type) {
    switch (type) {
        case IIO_VOLTAGE:
        case IIO_ALTVOLTAGE:
        case IIO_CURRENT:
        case IIO_POWER:
        case IIO_TEMP:
        case IIO_HUMIDITYRELATIVE:
            return 1e-3;
        default:
            return 1.0;
    }
}

/// The unit in which a channel of that kind is recorded; empty for volts and where the kernel knows none.
const char* unitOf(iio_chan_type type) {
    switch (type) {
        case IIO_CURRENT:
            return "A";
        case IIO_POWER:
            return "W";
        case IIO_TEMP:
            return "\xC2\xB0"
                   "C";
        case IIO_HUMIDITYRELATIVE:
            return "%";
        case IIO_ACCEL:
            return "m/s\xC2\xB2";
        case IIO_ANGL_VEL:
            return "rad/s";
        case IIO_MAGN:
            return "G";
        case IIO_PRESSURE:
            return "kPa";
        case IIO_RESISTANCE:
            return "Ohm";
        case IIO_LIGHT:
            return "lx";
        default:
            return "";
    }
}

/// As the board's author calls it, or else the kernel.
std::string nameOf(const iio_channel& channel) {
    const char* const name = iio_channel_get_name(&channel);
    const char* const id = iio_channel_get_id(&channel);
    return name != nullptr ? name : id != nullptr ? id : "";
}

double numberOf(const iio_channel& channel, const char* attribute, double otherwise) {
    double value = 0.0;
    if (iio_channel_find_attr(&channel, attribute) == nullptr ||
        iio_channel_attr_read_double(&channel, attribute, &value) < 0 || !std::isfinite(value)) {
        return otherwise;
    }
    return value;
}

const char* nameOf(const iio_device& device) {
    const char* const name = iio_device_get_name(&device);
    return name != nullptr ? name : "";
}

/// As whole numbers without a point: some boards read no other.
std::string plainNumber(double value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    return {text, end.ptr};
}

}  // namespace

void ContextDeleter::operator()(iio_context* context) const noexcept {
    iio_context_destroy(context);
}

std::string iioError(int64_t error) {
    char text[256] = "";
    iio_strerror(static_cast<int>(std::abs(error)), text, sizeof text);
    return text;
}

ContextHandle openContext(const std::string& address, std::string& problem) {
    errno = 0;
    ContextHandle context(address == "local"
                              ? iio_create_local_context()
                              : iio_create_context_from_uri(std::string(address).c_str()));  // it writes there
    if (context != nullptr) {
        return context;
    }
    const std::string kind = address.substr(0, address.find(':'));
    if (!iio_has_backend(kind.c_str())) {
        problem = "The IIO library of this system knows no contexts \"" + kind + "\".";
    } else if (kind == "local" && errno == ENOENT) {
        problem = "This computer has no IIO devices.";
    } else {
        problem = "The IIO context " + address + " can't be reached: " + iioError(errno) + ".";
    }
    return nullptr;
}

std::vector<ScanDevice> ScanDevice::all(iio_context& context, const std::string& trigger) {
    std::vector<ScanDevice> devices;
    for (unsigned i = 0; i < iio_context_get_devices_count(&context); ++i) {
        iio_device* const device = iio_context_get_device(&context, i);
        if (iio_device_is_trigger(device)) {
            continue;
        }
        ScanDevice scan(context, *device, trigger);
        if (!scan.channels().empty()) {
            devices.push_back(std::move(scan));
        }
    }
    return devices;
}

ScanDevice::ScanDevice(iio_context& context, iio_device& device, std::string trigger)
    : context_(&context), device_(&device), triggerName_(std::move(trigger)) {
    for (unsigned i = 0; i < iio_device_get_channels_count(device_); ++i) {
        iio_channel* const channel = iio_device_get_channel(device_, i);
        if (!iio_channel_is_output(channel) && iio_channel_is_scan_element(channel)) {
            addChannels(*channel);
        }
    }
    std::vector<ScanFormat> formats;
    for (const ScanChannel& channel : channels_) {
        formats.push_back(channel.format);
    }
    word_ = wordFor(formats);
    findRate();
}

void ScanDevice::addChannels(iio_channel& channel) {
    if (iio_channel_get_type(&channel) == IIO_TIMESTAMP) {
        timestamp_ = &channel;
        return;
    }
    const iio_data_format& data = *iio_channel_get_data_format(&channel);
    ScanChannel scan{.channel = &channel,
                     .name = nameOf(channel),
                     .unit = unitOf(iio_channel_get_type(&channel)),
                     .format = {.bits = data.bits,
                                .length = data.length,
                                .shift = data.shift,
                                .isSigned = data.is_signed,
                                .bigEndian = data.is_be}};
    if (!isReadable(scan.format)) {
        return;
    }
    const double units = baseUnits(iio_channel_get_type(&channel));
    scan.scale = std::max(0.0, units * numberOf(channel, "scale", data.with_scale ? data.scale : 0.0));
    scan.offset = numberOf(channel, "offset", 0.0);
    const size_t values = std::max(1U, data.repeat);
    for (scan.element = 0; scan.element < values && channels_.size() < kMostChannels; ++scan.element) {
        channels_.push_back(scan);
    }
}

/// The rate is set on the device, on its channels, or on the trigger that paces it.
void ScanDevice::findRate() {
    if (iio_device_find_attr(device_, kRate) != nullptr) {
        rateOwners_.push_back({.device = device_});
        return;
    }
    for (const ScanChannel& channel : channels_) {
        if (iio_channel_find_attr(channel.channel, kRate) != nullptr) {
            rateOwners_.push_back({.device = device_, .channel = channel.channel});
        }
    }
    const iio_device* current = nullptr;
    if (rateOwners_.empty() && takesTrigger(current)) {
        iio_device* const trigger = fittingTrigger(current);
        if (trigger != nullptr && iio_device_find_attr(trigger, kRate) != nullptr) {
            rateOwners_.push_back({.device = trigger});
        }
    }
}

/// Whether a trigger paces the device at all, and which one does so now (null: none yet).
bool ScanDevice::takesTrigger(const iio_device*& current) const {
    const int result = iio_device_get_trigger(device_, &current);
    return result >= 0 || result == -ENXIO;  // ENXIO: one that the library doesn't know
}

std::string ScanDevice::id() const {
    return iio_device_get_id(device_);
}

std::string ScanDevice::name() const {
    const char* const label = iio_device_get_label(device_);
    const std::string name = label != nullptr ? label : nameOf(*device_);
    return name.empty() ? id() : name + " (" + id() + ")";
}

std::pair<double, double> ScanDevice::limits(size_t channel, double range) const {
    const ScanChannel& scan = channels_[channel];
    const double offset = scan.scale > 0.0 ? scan.offset : 0.0;
    double scale = scan.scale;
    if (scale <= 0.0) {
        const int halves = scan.format.isSigned ? -1 : 0;
        scale = range / std::ldexp(1.0, static_cast<int>(scan.format.bits) + halves);
    }
    return {(deviceCode(scan.format, word_.minimum) + offset) * scale,
            (deviceCode(scan.format, word_.maximum) + offset) * scale};
}

ScanRates ScanDevice::rates() const {
    char text[4096] = "";
    for (const RateOwner& owner : rateOwners_) {
        const int64_t size = owner.channel != nullptr
                                 ? iio_channel_attr_read(owner.channel, kRates, text, sizeof text - 1)
                                 : iio_device_attr_read(owner.device, kRates, text, sizeof text - 1);
        if (size > 0) {
            return readRates(text).value_or(ScanRates{});
        }
    }
    return {};
}

double ScanDevice::rate() const {
    double rate = 0.0;
    if (rateOwners_.empty()) {
        return 0.0;
    }
    const RateOwner& owner = rateOwners_.front();
    const int result = owner.channel != nullptr ? iio_channel_attr_read_double(owner.channel, kRate, &rate)
                                                : iio_device_attr_read_double(owner.device, kRate, &rate);
    return result >= 0 && std::isfinite(rate) && rate > 0.0 ? rate : 0.0;
}

double ScanDevice::negotiateRate(double wished, std::string& problem) const {
    const ScanRates known = rates();
    double nearest = wished;
    if (!known.values.empty()) {
        nearest = *std::min_element(known.values.begin(), known.values.end(),
                                    [&](double a, double b) { return std::abs(a - wished) < std::abs(b - wished); });
    } else if (known.maximum > 0.0) {
        nearest = std::clamp(wished, known.minimum, known.maximum);
    }
    const std::string text = plainNumber(nearest);
    int64_t written = 0;
    for (const RateOwner& owner : rateOwners_) {
        written = owner.channel != nullptr ? iio_channel_attr_write(owner.channel, kRate, text.c_str())
                                           : iio_device_attr_write(owner.device, kRate, text.c_str());
    }
    // A board that refuses a rate goes on with the one it has.
    const double taken = rate();
    if (taken <= 0.0) {
        problem = "The rate of " + name() + " can't be set" + (written < 0 ? ": " + iioError(written) : "") + ".";
    }
    return taken;
}

bool ScanDevice::connectTrigger(std::string& problem) const {
    const iio_device* current = nullptr;
    if (!takesTrigger(current)) {
        return true;
    }
    const iio_device* const trigger = fittingTrigger(current);
    if (trigger == nullptr) {
        problem = triggerName_.empty() ? name() + " needs a trigger, and its context has none."
                                       : "There is no trigger " + triggerName_ + ".";
        return false;
    }
    const int result = trigger == current ? 0 : iio_device_set_trigger(device_, trigger);
    if (result < 0) {
        problem = std::string("The trigger ") + nameOf(*trigger) + " can't be used: " + iioError(result) + ".";
    }
    return result >= 0;
}

/// The one that was chosen, else the one in use, else the device's own ("NAME-devN"), else the first.
iio_device* ScanDevice::fittingTrigger(const iio_device* current) const {
    iio_device* fitting = nullptr;
    const std::string own = std::string(nameOf(*device_)) + "-dev";
    for (unsigned i = 0; i < iio_context_get_devices_count(context_); ++i) {
        iio_device* const device = iio_context_get_device(context_, i);
        if (!iio_device_is_trigger(device)) {
            continue;
        }
        const std::string name = nameOf(*device);
        if (!triggerName_.empty()) {
            if (name == triggerName_ || triggerName_ == iio_device_get_id(device)) {
                return device;
            }
        } else if (device == current) {
            return device;
        } else if (fitting == nullptr || name.starts_with(own)) {
            fitting = device;
        }
    }
    return fitting;
}

}  // namespace tarno2::drivers
