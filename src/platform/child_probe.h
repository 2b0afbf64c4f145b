#pragma once

#include <functional>

namespace tarno2 {

/// Tries something that may end the process: in a child of its own, whose outputs are thrown away. True when the trial
/// came to its end within ten seconds and returned true. A system that can't part in two tries it in this process.
/// Before any thread is started.
[[nodiscard]] bool succeedsInChild(const std::function<bool()>& trial);

}  // namespace tarno2
