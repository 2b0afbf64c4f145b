#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "core/storage/checksum_thread.h"
#include "core/storage/data_file.h"
#include "core/storage/mark_writer.h"
#include "platform/memory.h"
#include "records/journal_text.h"
#include "records/passport.h"
#include "records/recording_facts.h"

namespace tarno2 {

/// Where and how a recording is written.
struct WriterSetup {
    std::string fileName;      ///< of the first piece
    bool freeName = false;     ///< a data file or description that has come there is left, and the name refused
    uint32_t sampleWidth = 2;  ///< bytes
    uint32_t channelCount = 1;
    uint64_t limitBytes = 0;      ///< size limit of all pieces together; 0: none
    uint64_t pieceBytes = 0;      ///< size of a piece, cut down to whole frames; 0: one file
    double bytesPerSecond = 0.0;  ///< of the kept stream; 0: not known
    RecordingFacts facts;
    std::optional<Passport> passport;  ///< what it tells before the first sample; nothing: none is made

    MarkWriter* marks = nullptr;  ///< finished with the recording; null: nothing is marked. It outlives the writer
    ChecksumThread* checksums = nullptr;  ///< computes those of the files; null: nobody does. It outlives the writer

    uint64_t bufferBytes = 0;       ///< memory for what waits for the disk; a few caches are had in any case
    uint32_t longestWaitMs = 1000;  ///< after so long at most data are on their way to the disk
    uint32_t flushPeriodMs = 4000;  ///< a power cut may cost five seconds; the rest of them is for the disk
    bool keepDiskMargin = false;    ///< the recording ends before it has filled the disk
    DataFileMaker makeFile = makeSystemDataFile;
    std::function<uint64_t()> memoryRoom = usableMemory;  ///< bytes that the process may still take

    [[nodiscard]] uint64_t frameBytes() const { return uint64_t{sampleWidth} * channelCount; }
    /// What the journal says before the first data.
    [[nodiscard]] JournalState journalState() const;
};

/// Memory for ten seconds of a stream (0: of unknown rate), at most `limit` bytes.
[[nodiscard]] uint64_t bufferFor(double bytesPerSecond, uint64_t limit);

}  // namespace tarno2
