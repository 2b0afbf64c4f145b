#include "config/files/found_marks.h"

#include <optional>

#include "config/files/recording_name.h"
#include "platform/file.h"
#include "records/found_passport.h"
#include "records/mark_list.h"
#include "records/stream_places.h"

namespace tarno2 {

namespace {

constexpr size_t kLongestJoined = 4000;  // bytes of the texts of one frame

/// How many frames of the recording lie in the data files before that piece.
uint64_t framesBefore(const RecordingName& recording, uint32_t piece, uint64_t frameBytes) {
    uint64_t frames = 0;
    for (uint32_t k = 0; k < piece; ++k) {
        frames += plainFileSize(recording.piece(k)).value_or(0) / frameBytes;
    }
    return frames;
}

}  // namespace

FileMarks findFileMarks(const std::string& dataFile, uint64_t frameBytes) {
    RecordingName recording(dataFile);
    FoundMarks found = findMarks(recording.marks());
    if (const auto whole = recording.whole(); !found.there && whole && fileExists(whole->marks())) {
        found = findMarks(whole->marks());
        recording = *whole;
    }
    FileMarks marks;
    marks.problem = found.there ? found.problem : "there is none";
    marks.problem = marks.problem.empty() ? std::string() : recording.marks() + ": " + marks.problem;
    const uint64_t bytes = plainFileSize(dataFile).value_or(0);
    const auto piece = recording.pieceOf(dataFile);
    if (found.marks.empty() || frameBytes == 0 || !piece) {
        return marks;
    }
    const auto passport = findPassport(recording.passport()).passport;
    const StreamPlaces places = passport ? StreamPlaces(*passport) : StreamPlaces();
    const uint64_t begin = framesBefore(recording, *piece, frameBytes);
    for (const RecordingMark& mark : found.marks) {
        const auto frame = places.of(mark.frame);
        if (!frame || *frame < begin || *frame - begin >= bytes / frameBytes) {
            continue;
        }
        std::string& text = marks.texts[*frame - begin];
        const std::string label = cleanMarkText(mark.label());
        if (text.size() + label.size() < kLongestJoined) {
            text += (text.empty() ? "" : "; ") + label;
        }
    }
    return marks;
}

}  // namespace tarno2
