#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// What the operator should be asked before a recording starts. Nobody is asked in console mode, nor by the cycle that
/// starts one recording after another: there it goes on.
struct StartQuestions {
    std::string existingFile;  ///< a recording of that name exists and would be kept under another; empty: none does
    bool diskTooSmall = false;
    uint64_t neededBytes = 0;  ///< of the stop rule
    uint64_t freeBytes = 0;    ///< on the disk of the file
};

/// `fileName` as it stands in the name field, `neededBytes` what the stop rule allows (0: not known). A name that can't
/// be used raises no question, since the start will refuse it.
[[nodiscard]] StartQuestions startQuestions(const std::string& fileName, double neededBytes);

}  // namespace tarno2
