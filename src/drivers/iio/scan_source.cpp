#include "drivers/iio/scan_source.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <iio.h>

#include "platform/clock.h"

namespace tarno2::drivers {

namespace {

constexpr double kBufferSeconds = 0.1;
constexpr unsigned kKernelBuffers = 4;
constexpr double kLongestTimeout = 2e6;  // seconds; longer ones don't fit the library's milliseconds

bool meansGone(int64_t error) {
    switch (-error) {
        case ENODEV:
        case ENXIO:
        case ESHUTDOWN:
        case EPIPE:
        case ECONNRESET:
        case ECONNABORTED:
        case ECONNREFUSED:
        case ENETDOWN:
        case ENETRESET:
        case EHOSTUNREACH:
            return true;
        default:
            return false;
    }
}

}  // namespace

std::unique_ptr<ScanSource> ScanSource::open(const ScanDevice& device, const ScanPlan& plan, std::string& problem) {
    std::unique_ptr<ScanSource> source(new ScanSource(device, plan));
    return device.connectTrigger(problem) && source->createBuffer(problem) ? std::move(source) : nullptr;
}

ScanSource::ScanSource(const ScanDevice& device, const ScanPlan& plan) : device_(device), plan_(plan) {
    if (plan.watchTimestamps && device.timestamp() != nullptr) {
        watch_.emplace(plan.framesPerSecond);
    }
}

ScanSource::~ScanSource() {
    if (buffer_ != nullptr) {
        iio_buffer_destroy(buffer_);
    }
}

/// Fields of unlike lengths are padded at the end of a frame, of which library and kernel have unlike ideas; a
/// timestamp behind them, of the greatest length, leaves nothing to be padded.
void ScanSource::enableChannels() const {
    for (unsigned i = 0; i < iio_device_get_channels_count(&device_.device()); ++i) {
        iio_channel* const channel = iio_device_get_channel(&device_.device(), i);
        if (iio_channel_is_scan_element(channel)) {
            iio_channel_disable(channel);
        }
    }
    bool mixed = false;
    for (const int32_t number : plan_.channels) {
        const ScanChannel& channel = device_.channels()[static_cast<size_t>(number)];
        const ScanChannel& first = device_.channels()[static_cast<size_t>(plan_.channels.front())];
        mixed = mixed || channel.format.length != first.format.length;
        iio_channel_enable(channel.channel);
    }
    if (device_.timestamp() != nullptr && (mixed || watch_.has_value())) {
        iio_channel_enable(device_.timestamp());
    }
}

bool ScanSource::createBuffer(std::string& problem) {
    enableChannels();
    const double seconds = std::max(kBufferSeconds, 1.0 / plan_.framesPerSecond);
    const auto frames = static_cast<size_t>(std::max(1.0, std::floor(plan_.framesPerSecond * kBufferSeconds)));
    timeout_ = plan_.longestSilence > 0.0 ? std::min(plan_.longestSilence + 2.0 * seconds, kLongestTimeout) : 0.0;
    // Both are wishes: a board that can't fulfil them records all the same.
    (void)!iio_context_set_timeout(&device_.context(), static_cast<unsigned>(timeout_ * 1000.0));
    (void)!iio_device_set_kernel_buffers_count(&device_.device(), kKernelBuffers);
    errno = 0;
    buffer_ = iio_device_create_buffer(&device_.device(), frames, false);
    if (buffer_ == nullptr) {
        problem = device_.name() +
                  (errno == EBUSY ? " is in use by another program." : " can't be started: " + iioError(errno) + ".");
    }
    return buffer_ != nullptr;
}

void ScanSource::cancel() noexcept {
    cancelled_.store(true);
    iio_buffer_cancel(buffer_);
}

/// The library doesn't tell a time that ran out from a connection that broke.
SourceRead ScanSource::failure(int64_t error, double seconds) const {
    if (timeout_ > 0.0 && seconds >= timeout_) {
        return SourceRead::end(SourceRead::Kind::Failed, device_.name() + " sends no samples.");
    }
    const auto kind = meansGone(error) ? SourceRead::Kind::Unplugged : SourceRead::Kind::Failed;
    return SourceRead::end(kind, device_.name() + " does not answer any more: " + iioError(error) + ".");
}

/// Fetches the next buffer. Nothing: there are frames now.
std::optional<SourceRead> ScanSource::refill() {
    const uint64_t begun = monotonicNanoseconds();
    const int64_t bytes = iio_buffer_refill(buffer_);
    const double seconds = static_cast<double>(monotonicNanoseconds() - begun) / 1e9;
    if (cancelled_.load() || bytes == -EAGAIN || bytes == -EINTR) {
        return SourceRead::some(0);
    }
    const int64_t step = bytes > 0 ? iio_buffer_step(buffer_) : 0;
    if (bytes < 0 || step <= 0) {
        return failure(bytes < 0 ? bytes : -EIO, seconds);
    }
    next_ = 0;
    available_ = static_cast<size_t>(bytes / step);
    if (const std::optional<TimestampWatch::Loss> loss = findLoss()) {
        available_ = loss->frame;
        end_ = SourceRead::loss(loss->frames * plan_.channels.size());
    }
    return std::nullopt;
}

std::optional<TimestampWatch::Loss> ScanSource::findLoss() {
    if (!watch_.has_value()) {
        return std::nullopt;
    }
    times_.resize(available_);
    const auto* const first = static_cast<const std::byte*>(iio_buffer_first(buffer_, device_.timestamp()));
    const auto step = static_cast<size_t>(iio_buffer_step(buffer_));
    readTimes(iio_channel_get_data_format(device_.timestamp())->is_be, first, step, times_);
    return watch_->look(times_);
}

SourceRead ScanSource::read(std::byte* destination, size_t frames) {
    while (next_ >= available_) {
        if (end_.has_value()) {
            return *end_;
        }
        if (std::optional<SourceRead> other = refill()) {
            return *other;
        }
    }
    const size_t count = std::min(frames, available_ - next_);
    const auto step = static_cast<size_t>(iio_buffer_step(buffer_));
    const uint32_t bytes = device_.word().bytes;
    for (size_t i = 0; i < plan_.channels.size(); ++i) {
        const ScanChannel& channel = device_.channels()[static_cast<size_t>(plan_.channels[i])];
        const auto* const first = static_cast<const std::byte*>(iio_buffer_first(buffer_, channel.channel));
        convertChannel(channel.format, first + channel.element * channel.format.length / 8 + next_ * step, step, count,
                       bytes, destination + i * bytes, plan_.channels.size() * bytes);
    }
    next_ += count;
    return SourceRead::some(count);
}

}  // namespace tarno2::drivers
