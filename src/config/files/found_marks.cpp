#include "config/files/found_marks.h"

#include <algorithm>
#include <utility>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "records/found_passport.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestJoined = 4000;  // bytes of the texts of one frame

/// How many frames of the recording lie in the data files before that piece.
uint64_t framesBefore(const RecordingName& recording, uint32_t piece, uint64_t frameBytes) {
    uint64_t frames = 0;
    for (uint32_t k = 0; k < piece; ++k) {
        frames += plainFileSize(recording.piece(k)).value_or(0) / std::max<uint64_t>(frameBytes, 1);
    }
    return frames;
}

}  // namespace

RecordedMarks findRecordedMarks(const std::string& dataFile, uint64_t frameBytes) {
    RecordingName recording(dataFile);
    if (const auto whole = recording.whole(); whole && !fileExists(recording.marks()) && fileExists(whole->marks())) {
        recording = *whole;
    }
    FoundMarks found = findMarks(recording.marks());
    RecordedMarks recorded;
    recorded.problem = found.problem.empty() ? std::string() : recording.marks() + ": " + found.problem;
    if (found.marks.empty()) {
        return recorded;
    }
    recorded.marks = std::move(found.marks);
    if (const auto passport = findPassport(recording.passport()).passport) {
        recorded.places = StreamPlaces(*passport);
    }
    recorded.firstFrame = framesBefore(recording, recording.pieceOf(dataFile).value_or(0), frameBytes);
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
