#include "config/files/found_marks.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/found_passport.h"
#include "records/record_description.h"
#include "records/recorded_format.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestJoined = 4000;  // bytes of the texts of one frame

/// How many frames of the recording lie in the data files before that piece; nothing when one of them is not there. A
/// number in a file's name need not be that of a piece, and may be long.
std::optional<uint64_t> framesBefore(const RecordingName& recording, uint32_t piece, uint64_t frameBytes) {
    std::set<uint32_t> pieces;
    for (const std::string& file : listDirectory(recording.folder().empty() ? "." : recording.folder())) {
        const auto k = recording.pieceOf(file);
        if (k && *k < piece && file == fileNameOf(recording.piece(*k))) {
            pieces.insert(*k);
        }
    }
    if (pieces.size() != piece) {
        return std::nullopt;
    }
    uint64_t frames = 0;
    for (const uint32_t k : pieces) {
        frames += plainFileSize(recording.piece(k)).value_or(0) / std::max<uint64_t>(frameBytes, 1);
    }
    return frames;
}

}  // namespace

RecordedMarks findRecordedMarks(const std::string& dataFile, uint64_t frameBytes) {
    RecordingName recording(dataFile);
    RecordedMarks recorded;
    if (const auto whole = recording.whole(); whole && !fileExists(recording.marks()) && fileExists(whole->marks())) {
        if (const auto before = framesBefore(*whole, whole->pieceOf(fileNameOf(dataFile)).value_or(0), frameBytes)) {
            recorded.firstFrame = *before;
            recording = *whole;
        }
    }
    FoundMarks found = findMarks(recording.marks());
    recorded.problem = found.problem.empty() ? std::string() : recording.marks() + ": " + found.problem;
    if (found.marks.empty()) {
        return recorded;
    }
    recorded.marks = std::move(found.marks);
    if (const auto passport = findPassport(recording.passport()).passport) {
        recorded.places = StreamPlaces(*passport);
    } else if (readRecordedKeys(RecordDescription::fileNameFor(recording.data())).triggered) {
        recorded.places = StreamPlaces(false);
        recorded.problem = "where the marks lie is not known without the passport";
    }
    return recorded;
}

std::map<uint64_t, std::string> marksOfFile(const RecordedMarks& recorded, const std::string& dataFile,
                                            uint64_t frameBytes) {
    const uint64_t frames = plainFileSize(dataFile).value_or(0) / std::max<uint64_t>(frameBytes, 1);
    std::map<uint64_t, std::string> texts;
    for (const RecordingMark& mark : recorded.marks) {
        const auto frame = recorded.places.of(mark.frame);
        if (!frame || *frame < recorded.firstFrame || *frame - recorded.firstFrame >= frames) {
            continue;
        }
        std::string& text = texts[*frame - recorded.firstFrame];
        const std::string label = cleanMarkText(mark.label());
        if (text.size() + label.size() < kLongestJoined) {
            text += (text.empty() ? "" : "; ") + label;
        }
    }
    return texts;
}

}  // namespace tarno2
