// Recordings that are opened in the signal view.

#include <QFileInfo>
#include <algorithm>
#include <utility>

#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

QString titleOf(const std::string& dataFile, const std::optional<LocalTime>& created) {
    QString name = QFileInfo(fromFileName(dataFile)).fileName();
    if (!created) {
        return name;
    }
    return name + QString::asprintf(", %04d-%02d-%02d %02d:%02d:%02d", created->year, created->month, created->day,
                                    created->hour, created->minute, created->second);
}

constexpr double kLongSeconds = 600.0;

/// Of a long recording one asks when something was, not how long after its beginning.
bool isLong(const RecordedFrames& frames) {
    return frames.wallClock() &&
           static_cast<double>(frames.frameCount()) > kLongSeconds * frames.recordedFormat().frequencyPerChannel;
}

}  // namespace

bool T_ShowForm::openRecording(const std::string& dataFile) {
    OpenProblem problem;
    std::unique_ptr<RecordedFrames> frames;
    guarded("openRecording", [&] { frames = RecordedFrames::open(dataFile, problem); });
    if (!frames) {
        openProblem(dataFile, problem);
        return false;
    }
    for (const std::string& name : frames->cutFiles()) {
        emit message(uiText(TextId::LastFrameIncomplete, {fromFileName(name)}));
    }
    bool opened = false;
    guarded("openRecording", [&] {
        auto signal = std::make_unique<RecordedSignal>(std::move(frames), paintLater());
        leaveSignal(true);
        fileClock_ = settings_.viewClock || isLong(signal->frames());
        openedFile_ = dataFile;
        openedTitle_ = titleOf(dataFile, signal->frames().recordedFormat().created);
        file_ = std::move(signal);
        readMarks(dataFile);
        showMarkList();
        opened = true;
        tap_.setWatched(false);
        showWhole();
        layRecords();
        userChanged();
    });
    if (!opened) {
        openProblem(dataFile, {});
    }
    return opened;
}

void T_ShowForm::openProblem(const std::string& dataFile, const OpenProblem& problem) {
    const QString name = fromFileName(dataFile);
    const QString detail = fromFileName(problem.detail);
    switch (problem.kind) {
        case OpenProblem::DescriptionMissing:
            emit message(uiText(TextId::DescriptionMissing, {name}));
            break;
        case OpenProblem::DescriptionDamaged:
            emit message(uiText(TextId::DescriptionKeyWrong, {name, detail}));
            break;
        case OpenProblem::DescriptionNotRead:
        case OpenProblem::FileNotRead:
            emit message(uiText(TextId::RecordingNotRead, {name, detail}));
            break;
        case OpenProblem::None:  // it was thrown that there is no memory
            emit message(uiText(TextId::RecordingNotRead, {name, uiText(TextId::NotEnoughMemory)}));
            break;
    }
}

void T_ShowForm::backToLive() {
    guarded("backToLive", [this] {
        leaveSignal(false);
        file_.reset();
        fileMarks_ = {};
        openedFile_.clear();
        position_ = 0.0;
        tap_.setWatched(shown_ && live_ != nullptr);
        showMarkList();
        layRecords();
        userChanged();
    });
}

}  // namespace tarno2
