#pragma once

#include <string>

#include "core/devices/driver.h"
#include "core/recording/board.h"
#include "records/recording_facts.h"

namespace tarno2 {

/// Gathers from the driver what a description has to tell of the board as the session has set it up: sample layout,
/// code range, input range of every channel. False when the driver doesn't answer; `missing` names what.
/// Window thread, between the start of the session's thread and its release.
[[nodiscard]] bool calculateStaticParameters(T_DRIVER& driver, const T_BOARD& session, RecordingFacts& facts,
                                             std::string& missing);

}  // namespace tarno2
