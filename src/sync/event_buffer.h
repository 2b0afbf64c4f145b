#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tarno2 {

/// Gathers the record of one synchronisation event: a ring with the newest frames before the trigger, behind it the
/// frames from the trigger on. One object serves one event after the other. Frames are bytes here, of any sample width.
class EventBuffer {
public:
    /// Makes room for a record of so many frames, memory that is really there, and begins the first event. Throws
    /// std::bad_alloc, also when a record would have more than 2^32 - 1 samples.
    void allocate(size_t channels, size_t sampleBytes, uint32_t prehistory, uint32_t history);
    /// Begins the next event: the prehistory is gathered anew.
    void restart();

    [[nodiscard]] bool allocated() const { return data_ != nullptr; }
    [[nodiscard]] size_t frameBytes() const { return frameBytes_; }
    /// The prehistory has been filled once, so that a trigger may come.
    [[nodiscard]] bool ringFull() const { return ringFull_; }
    [[nodiscard]] bool triggered() const { return triggered_; }
    [[nodiscard]] bool complete() const { return triggered_ && historyCount_ == history_; }

    /// Before the ring is full: takes as many of `count` frames as still fit; returns how many.
    size_t fillRing(const std::byte* frames, size_t count);
    /// Once it is full: takes frames in place of the oldest.
    void push(const std::byte* frames, size_t count);
    /// The next frame is the first of the history.
    void trigger() { triggered_ = true; }
    /// Takes as many of `count` frames as the history still needs; returns how many.
    size_t addHistory(const std::byte* frames, size_t count);
    /// The complete record, prehistory in time order, then history; valid until the next event is begun.
    [[nodiscard]] std::span<const std::byte> record();

private:
    /// Lies behind the record: what is put aside while the prehistory is brought into order.
    static constexpr size_t kAside = 0x10000;

    void bringToFront(size_t bytes);

    std::unique_ptr<std::byte[]> data_;
    size_t frameBytes_ = 0;
    size_t prehistory_ = 0;    ///< frames
    size_t history_ = 0;       ///< frames
    size_t ringIndex_ = 0;     ///< next frame slot of the ring
    size_t historyCount_ = 0;  ///< frames of history so far
    bool ringFull_ = false;
    bool triggered_ = false;
};

}  // namespace tarno2
