#include "platform/memory.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

#include "platform/posix/memory_groups.h"

namespace tarno2 {

namespace {

constexpr size_t kHugePage = size_t{2} << 20;

size_t pageSize() {
    static const auto size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

/// For systems that can't be asked for it: a page is there once something was written into it.
void touch(std::byte* data, size_t bytes) {
    for (size_t place = 0; place < bytes; place += pageSize()) {
        *const_cast<volatile std::byte*>(data + place) = std::byte{0};
    }
}

uint64_t limitRoom(__rlimit_resource resource, uint64_t taken) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return kNoMemoryLimit;
    }
    return limit.rlim_cur > taken ? limit.rlim_cur - taken : 0;
}

/// What the limits on the address space and on the data of the process leave.
uint64_t processRoom() {
    uint64_t total = 0;
    uint64_t skipped = 0;
    uint64_t data = 0;
    std::ifstream file("/proc/self/statm");
    file >> total >> skipped >> skipped >> skipped >> skipped >> data;
    return std::min(limitRoom(RLIMIT_AS, total * pageSize()), limitRoom(RLIMIT_DATA, data * pageSize()));
}

}  // namespace

bool MemoryBlock::reserve(size_t bytes) {
    release();
    const size_t mapped = bytes + kHugePage;  // so that it begins where a huge page may
    void* const mapping = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) {
        return false;
    }
    mapping_ = mapping;
    mappedBytes_ = mapped;
    const auto address = reinterpret_cast<uintptr_t>(mapping);
    data_ = static_cast<std::byte*>(mapping) + (kHugePage - address % kHugePage) % kHugePage;
    static_cast<void>(madvise(data_, bytes, MADV_HUGEPAGE));
    return true;
}

bool MemoryBlock::makeReady(size_t offset, size_t bytes) {
    std::byte* const begin = data_ + offset / pageSize() * pageSize();
    const auto size = static_cast<size_t>(data_ + offset + bytes - begin);
    int done = 0;
    do {
        done = madvise(begin, size, MADV_POPULATE_WRITE);
    } while (done != 0 && (errno == EINTR || errno == EAGAIN));
    if (done != 0 && errno == EINVAL) {
        touch(begin, size);
        return true;
    }
    return done == 0;
}

void MemoryBlock::release() {
    if (mapping_ != nullptr) {
        munmap(std::exchange(mapping_, nullptr), mappedBytes_);
        data_ = nullptr;
    }
}

uint64_t usableMemory() {
    return std::min(processRoom(), systemMemoryRoom(""));
}

}  // namespace tarno2
