#pragma once

#include <QIcon>

namespace tarno2 {

/// The program's own icon: a trace on a dark screen with the red dot of a recording.
[[nodiscard]] QIcon programIcon();

}  // namespace tarno2
