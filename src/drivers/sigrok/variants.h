#pragma once

#include <string>

struct _GVariant;  // NOLINT(bugprone-reserved-identifier): the library's own name

namespace tarno2::drivers {

/// A value of an option as the library takes it; `type` is one of its data types. Owned by whoever takes it (floating).
/// Null when the text is no such value.
[[nodiscard]] _GVariant* variantOf(int type, const std::string& text);

}  // namespace tarno2::drivers
