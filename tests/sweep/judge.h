#pragma once

#include <string>

#include "tests/sweep/field.h"

namespace tarno2::test {

/// What became of the files of a field.
struct Verdict {
    std::string fault;       ///< what no accident excuses: a wrong sample, a torn frame, a file lost; empty: nothing
    std::string unfinished;  ///< what a recovery has still to do or a line has to tell; empty: nothing
    uint64_t recorded = 0;   ///< bytes of the recording `run`
    uint32_t recordedFiles = 0;
    bool earlierMoved = false;  ///< the earlier recording is no longer called `run`
};

/// Looks at every sample of every file. The recordings of the field are: the earlier one, under its own name or moved
/// aside; those that were cut off; and what begins like the counter signal.
[[nodiscard]] Verdict judge(const Field& field);

/// The lines of a text that those of another do not have, numbers aside.
[[nodiscard]] std::string newLines(const std::string& text, const std::string& usual);

}  // namespace tarno2::test
