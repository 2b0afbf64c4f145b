#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include <tarno2/driver.h>

#include "drivers/common/paced_source.h"
#include "platform/thread.h"

namespace tarno2::drivers {

/// A driver whose samples come at a pace of their own: a thread reads the source and fills the ring. It reads no more
/// than there is room for, so what a late host has not fetched is never overwritten: the source's own buffer holds the
/// rest, and tells when it has run over. Nothing is locked while a read waits.
class PumpDriver : public sdk::Driver {
protected:
    using Driver::Driver;

    /// Opens the source of a measurement; null after `fail`. In `Start`, on the host's acquisition thread.
    virtual std::unique_ptr<PacedSource> connect(const sdk::Board& board, const sdk::Measurement& measurement) = 0;

    bool begin(const sdk::Board& board, const sdk::Measurement& measurement) final;
    void end() final;
    void fetched() final;

public:
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override;

private:
    void run();
    void release(uint64_t position);
    [[nodiscard]] size_t roomForHost() const;
    bool waitForRoom();
    bool take(const SourceRead& read);

    std::unique_ptr<PacedSource> source_;
    std::vector<std::byte> buffer_;
    size_t channels_ = 1;
    size_t chunk_ = 1;                   ///< frames
    uint64_t fetched_ = 0;               ///< how far the host had come with its last transfer
    std::atomic<uint64_t> released_{0};  ///< all before may be overwritten
    Thread thread_;
    std::atomic<bool> stop_{false};
    std::mutex roomMutex_;
    std::condition_variable roomMade_;
};

}  // namespace tarno2::drivers
