#pragma once

#include <memory>
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

private:
    void run();
    bool take(const SourceRead& read);

    std::unique_ptr<PacedSource> source_;
    std::vector<std::byte> buffer_;
    size_t channels_ = 1;
    size_t chunk_ = 1;  ///< frames
    Thread thread_;
};

}  // namespace tarno2::drivers
