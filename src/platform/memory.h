#pragma once

#include <cstddef>
#include <cstdint>

namespace tarno2 {

/// A large piece of memory, in huge pages where the system has them. It is promised when it is reserved and there once
/// it was made ready: what was never ready may turn out not to exist when it is used.
class MemoryBlock {
public:
    MemoryBlock() = default;
    ~MemoryBlock() { release(); }
    MemoryBlock(const MemoryBlock&) = delete;
    MemoryBlock& operator=(const MemoryBlock&) = delete;

    /// Takes the place of an earlier block. False when the system refuses; the object is empty then.
    [[nodiscard]] bool reserve(size_t bytes);
    /// Has the system really give a part of it. Any thread; parts that do not overlap at the same time. False when the
    /// memory is not there.
    [[nodiscard]] bool makeReady(size_t offset, size_t bytes);
    [[nodiscard]] std::byte* data() const { return data_; }

private:
    void release();

    std::byte* data_ = nullptr;
    void* mapping_ = nullptr;
    size_t mappedBytes_ = 0;  ///< where the system asks for them back
};

/// Bytes that this process may still take before the system refuses, swaps, or ends it: the least of what the machine
/// has free and of the limits on the process and on the group that it runs in.
[[nodiscard]] uint64_t usableMemory();

}  // namespace tarno2
