#include "drivers/network/network_sources.h"

#include <algorithm>
#include <utility>

namespace tarno2::drivers {

namespace {

using Kind = SourceRead::Kind;

constexpr uint32_t kReadMilliseconds = 200;
constexpr size_t kFramesAtOnce = 16384;
constexpr size_t kLargestDatagram = 65536;

uint64_t loadNumber(const std::byte* bytes, const SequenceLayout& layout) {
    uint64_t number = 0;
    for (uint32_t i = 0; i < layout.bytes; ++i) {
        const uint32_t place = layout.bigEndian ? i : layout.bytes - 1 - i;
        number = (number << 8U) | static_cast<uint64_t>(bytes[place]);
    }
    return number;
}

uint64_t numberMask(const SequenceLayout& layout) {
    return layout.bytes == 4 ? 0xFFFFFFFFU : ~uint64_t{0};
}

}  // namespace

TcpSource::TcpSource(std::unique_ptr<TcpStream> stream, FrameDecoder decoder)
    : stream_(std::move(stream)), assembler_(std::move(decoder), kFramesAtOnce) {}

SourceRead TcpSource::read(std::byte* destination, size_t frames) {
    const std::span<std::byte> space = assembler_.space(frames);
    const TimedRead got = stream_->read(space.data(), space.size(), kReadMilliseconds);
    switch (got.end) {
        case ReadEnd::Data:
            if (const size_t whole = assembler_.take(got.bytes, destination); whole > 0) {
                return SourceRead::some(whole);
            }
            break;
        case ReadEnd::TimedOut:
        case ReadEnd::Cancelled:
            break;
        case ReadEnd::Closed:
            return SourceRead::end(Kind::Ended,
                                   assembler_.begun() == 0
                                       ? "The sender has closed the connection."
                                       : "The sender has closed the connection in the middle of a frame: " +
                                             std::to_string(assembler_.begun()) + " bytes were left out.");
        case ReadEnd::Gone:
            return SourceRead::end(Kind::Unplugged, "The connection was broken off: " + got.error.text());
        case ReadEnd::Failed:
            return SourceRead::end(Kind::Failed, "The connection can't be read: " + got.error.text());
    }
    return {};
}

UdpSource::UdpSource(std::unique_ptr<UdpReceiver> receiver, SequenceLayout sequence, FrameDecoder decoder,
                     uint32_t channels)
    : receiver_(std::move(receiver)),
      sequence_(sequence),
      decoder_(std::move(decoder)),
      channels_(channels),
      packet_(kLargestDatagram) {}

SourceRead UdpSource::read(std::byte* destination, size_t frames) {
    if (position_ == end_) {
        const TimedRead got = receiver_->read(packet_.data(), packet_.size(), kReadMilliseconds);
        if (got.end == ReadEnd::Gone || got.end == ReadEnd::Failed) {
            return SourceRead::end(Kind::Failed, "Nothing more can be received: " + got.error.text());
        }
        if (got.end != ReadEnd::Data) {
            return {};
        }
        if (SourceRead taken = takePacket(got.bytes); taken.kind != Kind::Frames) {
            return taken;
        }
    }
    return deliver(destination, frames);
}

/// Looks at a packet that has come. `Frames`: it is there to be delivered.
SourceRead UdpSource::takePacket(size_t bytes) {
    const size_t frameBytes = decoder_.frameBytes();
    if (bytes < sequence_.bytes || (bytes - sequence_.bytes) % frameBytes != 0) {
        return SourceRead::end(Kind::Failed, "A packet of " + std::to_string(bytes) +
                                                 " bytes does not hold whole frames of " + std::to_string(frameBytes) +
                                                 " bytes.");
    }
    const size_t frames = (bytes - sequence_.bytes) / frameBytes;
    uint64_t missing = receiver_->dropped() - std::exchange(dropped_, receiver_->dropped());
    if (sequence_.bytes > 0) {
        const uint64_t number = loadNumber(packet_.data(), sequence_);
        if (isLate(number)) {
            return {};
        }
        missing = missingPackets(number);
        expected_ = (number + 1) & numberMask(sequence_);
    }
    const bool sameSize = packetFrames_.value_or(frames) == frames;
    if (missing > 0) {
        const uint64_t samples = sameSize && packetFrames_ ? missing * frames * channels_ : 0;
        return SourceRead::loss(samples);
    }
    packetFrames_ = sameSize ? frames : 0;
    position_ = sequence_.bytes;
    end_ = bytes;
    return {frames > 0 ? Kind::Frames : Kind::Nothing, 0, 0, {}};
}

/// A packet that was there already, or whose place has passed: it lies in the half of the numbers behind the last one.
bool UdpSource::isLate(uint64_t number) const {
    return expected_ && missingPackets(number) > numberMask(sequence_) / 2;
}

uint64_t UdpSource::missingPackets(uint64_t number) const {
    return expected_ ? (number - *expected_) & numberMask(sequence_) : 0;
}

SourceRead UdpSource::deliver(std::byte* destination, size_t frames) {
    const size_t whole = std::min(frames, (end_ - position_) / decoder_.frameBytes());
    decoder_.decode(packet_.data() + position_, destination, whole);
    position_ += whole * decoder_.frameBytes();
    return SourceRead::some(whole);
}

}  // namespace tarno2::drivers
