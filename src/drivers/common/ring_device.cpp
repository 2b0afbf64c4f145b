#include "drivers/common/ring_device.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace tarno2::drivers {

namespace {

constexpr int32_t kMostChannels = 160;
constexpr double kSmallestRing = 32.0;  // that a host wishes for

float nearest(const BoardFacts& board, float wished) {
    if (board.frequencies.empty()) {
        return std::clamp(wished, board.minimumFrequency, board.maximumFrequency);
    }
    return *std::min_element(board.frequencies.begin(), board.frequencies.end(),
                             [wished](float a, float b) { return std::fabs(a - wished) < std::fabs(b - wished); });
}

}  // namespace

void* RingDevice::QueryInterface(const char* name) noexcept {
    return name != nullptr && std::strcmp(name, TARNO2_DEVICE_INTERFACE) == 0 ? static_cast<IADCDevice*>(this)
                                                                              : nullptr;
}

void RingDevice::Release() noexcept {
    Stop();
    delete this;
}

void RingDevice::setBoards(std::vector<BoardFacts> boards) {
    boards_ = std::move(boards);
}

int32_t RingDevice::SelectBoard(uint32_t number) noexcept {
    return guarded([&] {
        producer_.stop();
        board_ = nullptr;
        configured_ = false;
        if (number == 0 || number > boards_.size()) {
            return fail("There is no board %u.", number);
        }
        board_ = &boards_[number - 1];
        return 1;
    });
}

int32_t RingDevice::CloseBoard() noexcept {
    return guarded([&] {
        producer_.stop();
        board_ = nullptr;
        configured_ = false;
        return 1;
    });
}

int32_t RingDevice::Setup(int32_t apply, void* block, int32_t) noexcept {
    return guarded([&] {
        if (board_ == nullptr) {
            return fail("No board is chosen.");
        }
        if (block == nullptr) {
            return fail("There is no parameter block.");
        }
        if (apply != 0 && producer_.running()) {
            return fail("A measurement is running.");
        }
        int32_t type = 0;
        std::memcpy(&type, block, sizeof type);
        if (type == kADCTypeDMA) {
            return setupBase(apply != 0, *static_cast<ADCParametersDMA*>(block));
        }
        if (type == kADCTypeDMAEX) {
            return setupExtended(apply != 0, *static_cast<ADCParametersDMAEX*>(block));
        }
        return fail("Parameter block of unknown type %d.", type);
    });
}

int32_t RingDevice::setupBase(bool apply, ADCParametersDMA& block) {
    if (block.m_nSizeOf != static_cast<int32_t>(sizeof block)) {
        return fail("Base block of %d bytes, %d expected.", block.m_nSizeOf, static_cast<int>(sizeof block));
    }
    if (block.m_nChannelNumber < 1 || block.m_nChannelNumber > static_cast<int32_t>(board_->channels)) {
        return fail("%d channels asked for, the board has %u.", block.m_nChannelNumber, board_->channels);
    }
    if (block.m_nFirstChannel < 0 || block.m_nFirstChannel >= static_cast<int32_t>(board_->channels)) {
        return fail("The board has no channel %d.", block.m_nFirstChannel);
    }
    int32_t gain = block.m_nGain;
    if (!correctGain(gain) || !checkModes(block) || !correctFrequency(block)) {
        return 0;
    }
    block.m_nGain = gain;
    const uint32_t ring = ringFor(*board_, wishedRing(block), static_cast<uint32_t>(block.m_nChannelNumber));
    if (ring == 0) {
        return fail("The largest ring, %u samples, is less than two frames.", board_->maximumRing);
    }
    block.m_nDMABlockSize = static_cast<int32_t>(ring);
    if (apply) {
        applyBase(block, ring);
    }
    return 1;
}

bool RingDevice::checkModes(const ADCParametersDMA& block) {
    const bool external = (block.m_nStartOf & kADCStartExternal) != 0;
    const bool clock = external && block.m_fFreqStart == 0.0F;
    if (clock && (board_->modes & kADCModeExternalClock) == 0) {
        return fail("The board takes no external clock.") != 0;
    }
    if (external && !clock && (board_->modes & kADCModeExternalStart) == 0) {
        return fail("The board takes no external start.") != 0;
    }
    if (block.m_nTimerPack == 1 && (board_->modes & kADCModePacket) == 0) {
        return fail("The board has no packet mode.") != 0;
    }
    return true;
}

bool RingDevice::correctFrequency(ADCParametersDMA& block) {
    const bool clock = (block.m_nStartOf & kADCStartExternal) != 0 && block.m_fFreqStart == 0.0F;
    if (!clock && (!std::isfinite(block.m_fFreqStart) || block.m_fFreqStart <= 0.0F)) {
        return fail("The frequency is not a positive number.") != 0;
    }
    const auto channels = static_cast<double>(block.m_nChannelNumber);
    if (!clock) {
        block.m_fFreqStart = board_->channelFrequency > 0.0 ? static_cast<float>(board_->channelFrequency * channels)
                                                            : nearest(*board_, block.m_fFreqStart);
    }
    if (block.m_nTimerPack != 1) {
        return true;
    }
    if (!std::isfinite(block.m_fFreqPack) || block.m_fFreqPack <= 0.0F) {
        return fail("The packet frequency is not a positive number.") != 0;
    }
    // A packet begins when the one before is complete.
    const double rate = clock ? double{board_->externalClockRate} : double{block.m_fFreqStart};
    block.m_fFreqPack = std::min(block.m_fFreqPack, static_cast<float>(rate / channels));
    return true;
}

bool RingDevice::correctGain(int32_t& gain) {
    if (gain == 0) {
        gain = 1;
    }
    const std::vector<int32_t>& gains = board_->gains;
    if (gains.empty() ? gain == 1 : std::find(gains.begin(), gains.end(), gain) != gains.end()) {
        return true;
    }
    return fail("The board has no gain %d.", gain) != 0;
}

/// The host wishes for half a second's worth at the frequency asked for. Packets, and an external clock, bring fewer
/// samples: half a second's worth of those is enough.
int32_t RingDevice::wishedRing(const ADCParametersDMA& block) const {
    const bool clock = (block.m_nStartOf & kADCStartExternal) != 0 && block.m_fFreqStart == 0.0F;
    const double channels = block.m_nChannelNumber;
    double rate = 0.0;
    if (block.m_nTimerPack == 1) {
        rate = double{block.m_fFreqPack} * channels;
    } else if (clock) {
        rate = board_->externalClockRate;
    } else {
        return block.m_nDMABlockSize;
    }
    const double step = 2.0 * channels;
    const double enough = std::ceil(std::max(rate / 2.0, kSmallestRing) / step) * step;
    return static_cast<int32_t>(std::min(static_cast<double>(block.m_nDMABlockSize), enough));
}

uint32_t RingDevice::ringFor(const BoardFacts& board, int32_t wished, uint32_t channels) const {
    const uint64_t step = uint64_t{2} * channels;
    const uint64_t up = (static_cast<uint64_t>(std::max(wished, 1)) + step - 1) / step * step;
    return static_cast<uint32_t>(up <= board.maximumRing ? up : board.maximumRing / step * step);
}

void RingDevice::applyBase(const ADCParametersDMA& block, uint32_t ring) {
    const auto channels = static_cast<uint32_t>(block.m_nChannelNumber);
    configured_ = false;
    producer_.configure(ring, channels, board_->format.m_nBytes);
    measurement_ = {};
    // Without an extended block after this one the channels follow each other.
    for (uint32_t i = 0; i < channels; ++i) {
        measurement_.channels.push_back(
            static_cast<int32_t>((static_cast<uint32_t>(block.m_nFirstChannel) + i) % board_->channels));
    }
    measurement_.gains.assign(channels, block.m_nGain);
    measurement_.externalClock = (block.m_nStartOf & kADCStartExternal) != 0 && block.m_fFreqStart == 0.0F;
    measurement_.externalStart =
        measurement_.externalClock ? externalStartChecked_ : (block.m_nStartOf & kADCStartExternal) != 0;
    measurement_.frequency = measurement_.externalClock       ? double{board_->externalClockRate}
                             : board_->channelFrequency > 0.0 ? board_->channelFrequency * channels
                                                              : double{block.m_fFreqStart};
    measurement_.packetFrequency = block.m_nTimerPack == 1 ? double{block.m_fFreqPack} : 0.0;
    configured_ = true;
}

int32_t RingDevice::setupExtended(bool apply, ADCParametersDMAEX& block) {
    if (block.m_nSizeOf != static_cast<int32_t>(sizeof block)) {
        return fail("Extended block of %d bytes, %d expected.", block.m_nSizeOf, static_cast<int>(sizeof block));
    }
    if (block.m_nSize < 1 || block.m_nSize > std::min(kMostChannels, static_cast<int32_t>(board_->channels))) {
        return fail("%d channels asked for, the board has %u.", block.m_nSize, board_->channels);
    }
    if (block.m_pnChannels == nullptr || block.m_pnGains == nullptr) {
        return fail("The extended block has no list of channels or gains.");
    }
    if ((block.m_nControl & kADCControlDifferential) != 0 && (board_->modes & kADCModeDifferential) == 0) {
        return fail("The board has no differential inputs.");
    }
    if ((block.m_nControl & kADCControlExternalStart) != 0 && (board_->modes & kADCModeExternalStart) == 0) {
        return fail("The board takes no external start.");
    }
    for (int32_t i = 0; i < block.m_nSize; ++i) {
        if (block.m_pnChannels[i] < 0 || block.m_pnChannels[i] >= static_cast<int32_t>(board_->channels)) {
            return fail("The board has no channel %d.", block.m_pnChannels[i]);
        }
        if (!correctGain(block.m_pnGains[i])) {
            return 0;
        }
    }
    if (!apply) {
        externalStartChecked_ = (block.m_nControl & kADCControlExternalStart) != 0;
        return 1;
    }
    if (!configured_ || measurement_.channels.size() != static_cast<size_t>(block.m_nSize)) {
        return fail("The extended block lists %d channels, the base block %d.", block.m_nSize,
                    configured_ ? static_cast<int>(measurement_.channels.size()) : 0);
    }
    measurement_.channels.assign(block.m_pnChannels, block.m_pnChannels + block.m_nSize);
    measurement_.gains.assign(block.m_pnGains, block.m_pnGains + block.m_nSize);
    measurement_.differential = (block.m_nControl & kADCControlDifferential) != 0;
    return 1;
}

int32_t RingDevice::Start() noexcept {
    return guarded([&] { return startMeasurement(); });
}

int32_t RingDevice::startMeasurement() {
    if (board_ == nullptr || !configured_) {
        return fail("The board was not set up.");
    }
    if (producer_.running()) {
        return fail("A measurement is running.");
    }
    if (producer_.ringSamples() % (2 * measurement_.channels.size()) != 0) {
        return fail("The ring of %u samples does not hold whole frames.", producer_.ringSamples());
    }
    StreamPlan plan;
    plan.framesPerSecond = measurement_.framesPerSecond();
    std::unique_ptr<SampleSource> source = prepare(*board_, measurement_, plan);
    if (source == nullptr) {
        return 0;
    }
    return producer_.start(std::move(source), plan) ? 1 : fail("The system gave no thread or event.");
}

void RingDevice::Stop() noexcept {
    guarded([&] {
        producer_.stop();
        return 1;
    });
}

int32_t RingDevice::GetData(int32_t mode, void* destination, uint32_t count, uint32_t offset) noexcept {
    if (destination == nullptr || board_ == nullptr || !configured_) {
        fail("There is no ring to read, or nowhere to put the samples.");
        return kADCDataFailed;
    }
    if (mode != (board_->format.m_nBytes == 2 ? kADCDataShort : kADCDataLong)) {
        fail("Data mode 0x%X does not fit samples of %u bytes.", static_cast<unsigned>(mode), board_->format.m_nBytes);
        return kADCDataFailed;
    }
    if (producer_.read(destination, count, offset)) {
        return 1;
    }
    fail("%u samples from %u on do not lie in the ring of %u.", count, offset, producer_.ringSamples());
    return kADCDataFailed;
}

int32_t RingDevice::fail(const char* format, ...) noexcept {
    const std::lock_guard lock(errorMutex_);
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(error_, sizeof error_, format, arguments);
    va_end(arguments);
    return 0;
}

int32_t RingDevice::LastError(char* text, uint32_t size) noexcept {
    if (text == nullptr || size == 0) {
        return 0;
    }
    const std::lock_guard lock(errorMutex_);
    std::snprintf(text, size, "%s", error_);
    return error_[0] != 0 ? 1 : 0;
}

int32_t RingDevice::Set(uint32_t, const void*) noexcept {
    return fail("The board has no such option.");
}

int32_t RingDevice::ReadPort(uint32_t*) noexcept {
    return fail("The board has no digital inputs outside the samples.");
}

int32_t RingDevice::WritePort(uint32_t) noexcept {
    return fail("The board has no digital outputs.");
}

int32_t RingDevice::WriteAnalog(uint32_t, float) noexcept {
    return fail("The board has no analog outputs.");
}

}  // namespace tarno2::drivers
