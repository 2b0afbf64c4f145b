// The marks of a recording, held against its passport and its checksums.

#include <algorithm>
#include <array>

#include "apps/verify/recording_check.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/mark_list.h"

namespace tarno2 {

namespace {

/// What is wrong with the order of the marks; empty when nothing is. Frames of the driver come as it likes.
/// A crash may have taken some.
std::string disorderOf(const std::vector<RecordingMark>& marks, bool whole) {
    std::array<uint64_t, kMarkSources.size()> newest{};
    for (size_t i = 0; i < marks.size(); ++i) {
        const RecordingMark& mark = marks[i];
        if (whole && mark.number != i + 1) {
            return "mark " + std::to_string(i + 1) + " is missing";
        }
        uint64_t& before = newest[static_cast<size_t>(mark.source)];
        if (mark.source != MarkSource::Driver && mark.frame < before) {
            return "mark " + std::to_string(mark.number) + " lies before an earlier one";
        }
        before = mark.frame;
    }
    return {};
}

}  // namespace

bool RecordingCheck::isOwnMarks(const std::string& listed) const {
    return listed == fileNameOf(name_.marks()) || (formerName_ && listed == fileNameOf(formerName_->marks()));
}

void RecordingCheck::checkMarks() {
    const FoundMarks found = findMarks(name_.marks());
    const std::string file = fileNameOf(name_.marks());
    const bool ended = found_.passport && found_.passport->state != Passport::State::Recording;
    const std::optional<PassportMarks> told = ended ? found_.passport->marks : std::nullopt;
    if (!found.there) {
        if (told || !marksSums_.empty()) {
            wrong(file + " is missing");
        }
        return;
    }
    std::string problem =
        found.problem.empty()
            ? disorderOf(found.marks, found_.passport && found_.passport->state == Passport::State::Complete)
            : found.problem;
    if (problem.empty() && told && !isOwnMarks(utf8ToSystem(told->file))) {
        problem = "the passport tells of \"" + utf8ToSystem(told->file) + "\"";
    } else if (problem.empty() && ended && (told ? told->count : 0) != found.marks.size()) {
        problem = "it has " + std::to_string(found.marks.size()) + " marks, the passport tells of " +
                  std::to_string(told ? told->count : 0);
    }
    if (problem.empty()) {
        right(file + ": " + std::to_string(found.marks.size()) + " marks");
    } else {
        wrong(file + ": " + problem);
    }
    noteMarksBehindTheEnd(found.marks);
    compareSums(file, name_.marks(), marksSums_);
}

// One that was set in the moment of the end, or of which a crash has taken the frames.
void RecordingCheck::noteMarksBehindTheEnd(const std::vector<RecordingMark>& marks) {
    if (!found_.passport || found_.passport->synchronisation.mode != "off") {
        return;
    }
    const uint64_t frames = found_.passport->frames();
    const auto behind = std::ranges::count_if(marks, [&](const RecordingMark& mark) { return mark.frame > frames; });
    if (behind > 0) {
        note("marks behind the last frame: " + std::to_string(behind));
    }
}

}  // namespace tarno2
