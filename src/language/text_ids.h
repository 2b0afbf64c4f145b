#pragma once

#include <cstdint>

namespace tarno2 {

/// The texts of the program by name; the numbers are those of language/texts.inc.
enum class TextId : int32_t {
#define TEXT_ROW(name, id, english, russian) name = id,
#include "language/texts.inc"
#undef TEXT_ROW
};

}  // namespace tarno2
