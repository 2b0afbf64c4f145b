// Lists of marks.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "records/mark_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const tarno2::MarkList list = tarno2::readMarks({reinterpret_cast<const char*>(data), size});
    // What was read is written and read as the same.
    const tarno2::MarkList again = tarno2::readMarks(tarno2::marksText(list.marks));
    if (!again.problem.empty() || again.marks != list.marks) {
        std::abort();
    }
    return 0;
}
