#pragma once

#include "core/recording/board.h"
#include "core/recording/recording_shell.h"
#include "records/recording_facts.h"
#include "sync/synchro_check.h"

namespace tarno2 {

/// Checks the synchronisation settings against the board as the session has set it up and gives the session the
/// evaluator that they ask for. False when they can't be used; `findings` tells why. `facts` are those of the session.
/// Window thread, between the start of the session's thread and its release. Throws std::bad_alloc.
[[nodiscard]] bool prepareSynchronisation(const RecordingWish& settings, const RecordingFacts& facts, T_BOARD& session,
                                          SynchroFindings& findings);

}  // namespace tarno2
