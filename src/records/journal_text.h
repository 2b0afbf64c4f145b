#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "records/record_description.h"
#include "records/recording_facts.h"

namespace tarno2 {

/// What is known of one data file of a recording, beside the facts that hold for all of them and its size.
struct PieceState {
    uint32_t number = 0;
    std::optional<LocalTime> createTime;  ///< of its first sample
    uint64_t recordBytes = 0;             ///< of a record with an event; 0: there was none
    SynchroEvent firstEvent;              ///< when there was one; the others follow from it
    bool dropped = false;                 ///< a recovery found no whole frame in it, and removes it
};

/// What a journal says of a recording: enough to describe the file that was being written when the program ended.
struct JournalState {
    uint64_t sequence = 0;  ///< grows with every change
    std::string extension;  ///< of the data files, with its "."
    uint32_t sampleWidth = 2;
    uint32_t channelCount = 1;
    RecordingFacts facts;
    /// Before there is a piece: files of an earlier recording of that name are being moved to the `old` one of this
    /// number.
    std::optional<uint32_t> aside;
    std::vector<PieceState> undescribed;  ///< earlier data files whose descriptions could not be written yet
    std::optional<PieceState> piece;      ///< the current data file; nothing before the first one has data

    [[nodiscard]] uint64_t frameBytes() const { return uint64_t{sampleWidth} * channelCount; }
};

/// A journal holds its two last states, so that a crash in the middle of a change leaves the one before: two texts of
/// this size, each padded with line ends.
inline constexpr size_t kJournalHalf = size_t{32} * 1024;

/// One padded state; nothing when it is too long. Of files without a description the last ones are in it, as many as
/// fit. docs/formats.md tells the form.
[[nodiscard]] std::optional<std::string> journalText(const JournalState& state);

/// A half with these lines: their checksum and the padding are added. Nothing when they are too many.
[[nodiscard]] std::optional<std::string> sealedJournalHalf(std::string lines);

/// The newest state in a journal's contents. Nothing when they are not those of a journal of this version: its size,
/// its first line and a right checksum in one half at least, with nothing in that half that no recorder writes.
[[nodiscard]] std::optional<JournalState> readJournal(std::string_view contents);

}  // namespace tarno2
