// The marks of what the signal view shows: as flags in the picture, and as a list.

#include <utility>
#include <vector>

#include "config/files/found_marks.h"
#include "config/files/recording_name.h"
#include "display/axis_x.h"
#include "ui/mark_list_window.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr uint64_t kListPeriodMs = 200;

}  // namespace

void T_ShowForm::takeMarks() {
    const MarkWriter* writer = live_ && live_->running() ? live_->marks() : nullptr;
    if (writer == nullptr) {
        return;
    }
    std::vector<RecordingMark> taken;
    writer->read(marksSeen_, taken);
    liveMarks_.add(taken);
    marksToList_ = marksToList_ || !taken.empty();
    // Very many of them in a list cost time.
    if (const auto now = static_cast<uint64_t>(clock_.elapsed());
        marksToList_ && now - marksListedAt_ >= kListPeriodMs) {
        marksListedAt_ = now;
        showMarkList();
    }
}

// The last ones came when nobody could be asked for them any more.
void T_ShowForm::takeFinishedMarks() {
    if (!live_->fileName().empty()) {
        liveMarks_.add(findMarks(RecordingName(live_->fileName()).marks()).marks);
    }
    showMarkList();
}

void T_ShowForm::readMarks(const std::string& dataFile) {
    RecordedMarks recorded = findRecordedMarks(dataFile, file_->frames().frameBytes());
    if (!recorded.problem.empty()) {
        emit message(uiText(TextId::MarksNotRead, {fromFileName(recorded.problem)}));
    }
    fileMarks_ = ShownMarks(std::move(recorded.places), recorded.firstFrame);
    fileMarks_.add(recorded.marks);
}

void T_ShowForm::showFlags() {
    const ShownSignal* signal = shownSignal();
    if (!drawing_ || signal == nullptr) {
        return;
    }
    const ShownFrames shown = shownFrames();
    const double end = std::min(shown.high, static_cast<double>(frameCount()));
    const std::vector<MarkFlag> marks =
        records_ ? std::vector<MarkFlag>() : shownMarks().flags(shown.low, end, scoper_->PixelWidth());
    std::vector<SCOPERAFlag> flags;
    flags.reserve(marks.size());
    for (const MarkFlag& mark : marks) {
        const double x = axisXOfFrame(static_cast<double>(mark.frame) - shown.origin, drawing_->unitX(signal->format()),
                                      signal->format().framesPerSecond);
        flags.push_back({x, mark.label.c_str(), mark.number});
    }
    scoper_->SetFlags(flags.data(), static_cast<uint32_t>(flags.size()));
}

void T_ShowForm::MarksClick() {
    guarded("MarksClick", [this] {
        if (!markList_) {
            markList_ = new MarkListWindow(this);
            markList_->setAttribute(Qt::WA_DeleteOnClose);
            connect(markList_, &MarkListWindow::jump, this, &T_ShowForm::goToFrame);
            showMarkList();
        }
        markList_->show();
        markList_->raise();
        markList_->activateWindow();
    });
}

void T_ShowForm::FlagClick(uint64_t number) {
    MarksClick();
    if (markList_) {
        markList_->choose(number);
    }
}

void T_ShowForm::showMarkList() {
    marksToList_ = false;
    if (markList_) {
        const ShownSignal* signal = shownSignal();
        markList_->setMarks(shownMarks().all(), signal != nullptr ? signal->format().framesPerSecond : 0.0);
    }
}

// To the middle of the picture, which stays there.
void T_ShowForm::goToFrame(uint64_t frame) {
    guarded("goToFrame", [&] {
        held_ = held_ || !stays();
        setPosition(static_cast<double>(frame) - span() / 2.0);
        userChanged();
    });
}

}  // namespace tarno2
