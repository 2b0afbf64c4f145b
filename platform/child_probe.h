#pragma once

#include <functional>

namespace tarno2 {

/// Tries something that may end the process: in a child of its own, whose outputs are thrown away. True when the child
/// came to the end of it within ten seconds. Systems that can't part in two so only return true. Before any thread is
/// started.
[[nodiscard]] bool survivesInChild(const std::function<void()>& trial);

}  // namespace tarno2
