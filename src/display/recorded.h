#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "config/files/found_labels.h"
#include "display/frame_source.h"
#include "display/signal_format.h"
#include "display/wall_clock.h"
#include "platform/file.h"
#include "records/recorded_format.h"
#include "records/recorded_labels.h"

namespace tarno2 {

/// Why a recording can't be opened.
struct OpenProblem {
    enum Kind {
        None,
        DescriptionMissing,  ///< there is no description; `detail` is its file name
        DescriptionNotRead,  ///< it is there; `detail` are the system's words
        DescriptionDamaged,  ///< `detail` is the first key that is missing or makes no sense
        FileNotRead          ///< `detail` are the system's words
    };
    Kind kind = None;
    std::string detail;
};

/// Records of synchronisation that lie one behind the other, all of one length, frames.
struct TriggeredRecords {
    uint64_t frames = 0;      ///< of a record
    uint64_t prehistory = 0;  ///< of them, before the trigger

    /// Whole ones among so many frames.
    [[nodiscard]] uint64_t count(uint64_t of) const { return frames > 0 ? of / frames : 0; }
};

/// The data file that a file name which the user has chosen stands for: a description stands for what it describes.
[[nodiscard]] std::string dataFileOf(const std::string& name);

/// A finished recording: its data file and the pieces `<base>_1.dat`, `<base>_2.dat`, … that follow as long as the next
/// one exists and its description tells the same format and channels.
class RecordedFrames final : public FrameSource {
public:
    /// Opens a recording by its (first) data file. Null when it can't be opened; `problem` tells why. Throws
    /// std::bad_alloc.
    [[nodiscard]] static std::unique_ptr<RecordedFrames> open(const std::string& dataFile, OpenProblem& problem);

    [[nodiscard]] const RecordedFormat& recordedFormat() const { return recorded_; }
    [[nodiscard]] const SignalFormat& format() const { return format_; }
    /// Numbers of the board's inputs in the order of the channel list; none when no passport tells them.
    [[nodiscard]] const std::vector<int32_t>& numbers() const { return numbers_; }
    /// When its frames came; nothing when nobody knows.
    [[nodiscard]] const std::optional<WallClock>& wallClock() const { return wallClock_; }
    /// Its records of synchronisation; nothing when it has none, or nobody knows.
    [[nodiscard]] const std::optional<TriggeredRecords>& records() const { return records_; }
    [[nodiscard]] size_t pieceCount() const { return pieces_.size(); }
    /// The data file that holds this frame, and which frames those of it are.
    struct PieceFrames {
        std::string file;
        uint64_t first = 0;
        uint64_t end = 0;
    };
    [[nodiscard]] PieceFrames pieceOf(uint64_t frame) const;
    /// Data files whose size is no whole number of frames: their last bytes are left out. For a warning.
    [[nodiscard]] const std::vector<std::string>& cutFiles() const { return cutFiles_; }

    [[nodiscard]] size_t frameBytes() const override { return format_.frameBytes(); }
    [[nodiscard]] uint64_t frameCount() const override { return frameCount_; }
    [[nodiscard]] uint64_t read(uint64_t firstFrame, uint64_t count, std::byte* out) override;

private:
    /// Files that stay open; those of a longer series are opened when they are read, so that a recording that runs
    /// beside it finds enough of the system's handles.
    static constexpr size_t kMostOpenFiles = 64;

    struct Piece {
        std::string name;
        File file;  ///< closed beyond `kMostOpenFiles`
        uint64_t firstFrame = 0;
        uint64_t frames = 0;
    };

    RecordedFrames() = default;
    void takeLabels(const RecordedLabels& labels);
    void takePassport(const FoundLabels& found);
    [[nodiscard]] OpenProblem addPiece(const std::string& dataFile);
    [[nodiscard]] File& fileOf(Piece& piece);

    RecordedFormat recorded_;
    SignalFormat format_;
    std::vector<int32_t> numbers_;
    std::optional<WallClock> wallClock_;
    std::optional<TriggeredRecords> records_;
    std::vector<Piece> pieces_;
    std::vector<std::string> cutFiles_;
    uint64_t frameCount_ = 0;
    File passing_;  ///< of the piece that was read last, beyond those that stay open
    const Piece* passingPiece_ = nullptr;
    std::mutex mutex_;
};

}  // namespace tarno2
