#pragma once

namespace tarno2 {

/// Which settings can't be changed for the moment.
enum class SettingsLock {
    None,
    Board,  ///< what the board was set up with: it runs and nothing is recorded
    All     ///< a recording runs
};

}  // namespace tarno2
