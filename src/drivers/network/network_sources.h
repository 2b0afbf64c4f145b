#pragma once

#include <memory>
#include <optional>
#include <string>

#include "drivers/common/frame_assembler.h"
#include "drivers/common/paced_source.h"
#include "platform/socket.h"

namespace tarno2::drivers {

/// A connection whose bytes are samples.
class TcpSource final : public PacedSource {
public:
    TcpSource(std::unique_ptr<TcpStream> stream, FrameDecoder decoder);
    SourceRead read(std::byte* destination, size_t frames) override;
    void cancel() noexcept override { stream_->cancel(); }

private:
    std::unique_ptr<TcpStream> stream_;
    FrameAssembler assembler_;
};

/// The number at the head of each datagram.
struct SequenceLayout {
    uint32_t bytes = 0;  ///< 4 or 8; 0: there is none
    bool bigEndian = false;
};

/// Datagrams of whole frames. Where some are missing the stream ends: by their numbers, else by the system's count of
/// those that it had no room for.
class UdpSource final : public PacedSource {
public:
    /// `channels`: of a recorded frame.
    UdpSource(std::unique_ptr<UdpReceiver> receiver, SequenceLayout sequence, FrameDecoder decoder, uint32_t channels);
    SourceRead read(std::byte* destination, size_t frames) override;
    void cancel() noexcept override { receiver_->cancel(); }

private:
    SourceRead takePacket(size_t bytes);
    [[nodiscard]] bool isLate(uint64_t number) const;
    [[nodiscard]] uint64_t missingPackets(uint64_t number) const;
    SourceRead deliver(std::byte* destination, size_t frames);

    std::unique_ptr<UdpReceiver> receiver_;
    SequenceLayout sequence_;
    FrameDecoder decoder_;
    uint32_t channels_;
    std::vector<std::byte> packet_;
    size_t position_ = 0;  ///< of the first byte of the packet that was not delivered
    size_t end_ = 0;
    std::optional<uint64_t> expected_;    ///< number of the next packet
    std::optional<size_t> packetFrames_;  ///< of each packet; 0: they differ
    uint64_t dropped_ = 0;
};

}  // namespace tarno2::drivers
