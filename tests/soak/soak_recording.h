#pragma once

#include <cstdint>
#include <string>

#include "core/recording/stop_code.h"
#include "tests/soak/plan.h"

namespace tarno2::test {

/// How a planned recording went, and what is to be said against it.
struct SoakResult {
    RecordingResult recording;
    double worstLoad = 0.0;  ///< of the ring, 0 to 1
    uint64_t bytes = 0;      ///< in files, every sample of them checked
    uint32_t files = 0;      ///< data files
    std::string fault;       ///< what is wrong with the program; empty: nothing
};

/// Records into a folder of its own, which is gone afterwards, then checks everything that was left there.
[[nodiscard]] SoakResult recordAndCheck(const Plan& plan);

}  // namespace tarno2::test
