#include "platform/memory.h"

#include <algorithm>
#include <utility>
#include <windows.h>

// After the system's own.
#include <psapi.h>

namespace tarno2 {

namespace {

constexpr size_t kPage = 4096;

/// What the job leaves that the process may run in.
uint64_t jobRoom() {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION job{};
    PROCESS_MEMORY_COUNTERS own{};
    uint64_t room = UINT64_MAX;
    if (QueryInformationJobObject(nullptr, JobObjectExtendedLimitInformation, &job, sizeof job, nullptr) == 0 ||
        K32GetProcessMemoryInfo(GetCurrentProcess(), &own, sizeof own) == 0) {
        return room;
    }
    const auto left = [&own](uint64_t limit) { return limit - std::min<uint64_t>(own.PagefileUsage, limit); };
    const DWORD limits = job.BasicLimitInformation.LimitFlags;
    if ((limits & JOB_OBJECT_LIMIT_PROCESS_MEMORY) != 0) {
        room = std::min(room, left(job.ProcessMemoryLimit));
    }
    if ((limits & JOB_OBJECT_LIMIT_JOB_MEMORY) != 0) {
        room = std::min(room, left(job.JobMemoryLimit));
    }
    return room;
}

}  // namespace

bool MemoryBlock::reserve(size_t bytes) {
    release();
    mapping_ = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    data_ = static_cast<std::byte*>(mapping_);
    return mapping_ != nullptr;
}

bool MemoryBlock::makeReady(size_t offset, size_t bytes) {
    // What was committed is there; the pages are fetched now and not under the samples.
    for (size_t place = offset; place < offset + bytes; place += kPage) {
        *const_cast<volatile std::byte*>(data_ + place) = std::byte{0};
    }
    return true;
}

void MemoryBlock::release() {
    if (mapping_ != nullptr) {
        VirtualFree(std::exchange(mapping_, nullptr), 0, MEM_RELEASE);
        data_ = nullptr;
    }
}

uint64_t usableMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (GlobalMemoryStatusEx(&status) == 0) {
        return jobRoom();
    }
    return std::min({static_cast<uint64_t>(status.ullAvailPhys), static_cast<uint64_t>(status.ullAvailPageFile),
                     static_cast<uint64_t>(status.ullAvailVirtual), jobRoom()});
}

}  // namespace tarno2
