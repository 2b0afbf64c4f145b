#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarno2::test {

/// The kinds of system calls that the fault library can fail, by what they do; "any" is all but "memory".
inline constexpr std::array kCallKinds{"any",    "open", "read",   "write",  "truncate", "flush", "rename",
                                       "remove", "link", "lock",   "close",  "seek",     "look",  "list",
                                       "space",  "poll", "thread", "memory", "folder"};
constexpr size_t callKind(std::string_view name) {
    size_t kind = 0;
    while (kind < kCallKinds.size() && kCallKinds[kind] != name) {
        ++kind;
    }
    return kind;
}

/// What the library tells of a program that ran with it: a file of this form, mapped by both, so that nothing is lost
/// when the program is killed.
struct FaultReport {
    std::array<std::atomic<uint32_t>, kCallKinds.size()> calls;  ///< how many there were
    std::atomic<uint32_t> struck;                                ///< how many were failed, shortened or torn
    std::array<char, 500> what;                                  ///< the first of these: function and file
};

/// Which call fails and how: "KIND NUMBER ACTION". NUMBER counts from 1. ACTION is the number of an error, with a `+`
/// when all later ones fail too; or `short` (half is read or written), `torn` (half is written, then the disk is full),
/// `kill` (before the call), `tornkill` (half is written first).
inline constexpr const char* kFaultVariable = "TARNO2_FAULT";
/// The name of the report's file, which is there and has its size.
inline constexpr const char* kFaultReportVariable = "TARNO2_FAULT_REPORT";

}  // namespace tarno2::test
