#pragma once

#include <map>
#include <string>

#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// Writes files into a folder of `folder` that look like those of a recording `run`, of its neighbours and journals,
/// and are somebody's own. A recovery has nothing to say of them.
void layOwnFiles(const TemporaryFolder& folder, const std::string& into);

/// The same with what is made to mislead: journals whose checksums are right and whose lines are not, journals of a
/// later version, and links into the folder `outside` beside it, which is made and filled too. POSIX.
void laySnares(const TemporaryFolder& folder, const std::string& into, const std::string& outside);

}  // namespace tarno2::test
