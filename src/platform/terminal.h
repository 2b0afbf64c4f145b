#pragma once

namespace tarno2 {

/// Whether what is written to the program's error output is seen by somebody at once, and a line can be drawn again.
[[nodiscard]] bool errorOutputIsTerminal();

}  // namespace tarno2
