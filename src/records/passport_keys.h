#pragma once

#include <array>
#include <cstddef>

namespace tarno2 {

// What the writing and the reading of a passport have in common.
inline constexpr const char* kPassportFormat = "Tarno2 passport";
inline constexpr int kPassportVersion = 1;
/// In the order of `Passport::State`.
inline constexpr std::array<const char*, 3> kPassportStates = {"recording", "complete", "recovered"};
/// Records whose triggers are kept and that are listed one by one; of more the pieces tell the number.
inline constexpr size_t kMostPassportTriggers = 1'000'000;

}  // namespace tarno2
