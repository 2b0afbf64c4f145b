// The recording that runs, as the strip shows it.

#include <QPushButton>
#include <cmath>

#include "config/files/figure_text.h"
#include "config/files/recording_name.h"
#include "core/recording/recording_settings.h"
#include "core/storage/loss.h"
#include "platform/clock.h"
#include "ui/main_form.h"
#include "ui/message_list.h"
#include "ui/panels/panel_stack.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr qint64 kDiskPeriodMs = 5000;
constexpr uint32_t kHighLoad = 800;  // thousandths of the ring; what is left is a tenth of a second or so

}  // namespace

// Without a display the toolkit ends the program when a title or a picture is to reach it.
void T_MainForm::updateState() {
    if (displayGone_) {
        return;
    }
    const T_BOARD* session = control_.session();
    if (session != nullptr && session->number() != runNumber_) {
        beginRun();
    } else if (session == nullptr && runNumber_ != 0) {
        endRun();
    }
    start_->setEnabled(session == nullptr && !search_.busy());
    strip_->startButton().setEnabled(start_->isEnabled());
    stop_->setEnabled(session != nullptr);
    strip_->stopButton().setEnabled(session != nullptr);
    if (session == nullptr) {
        setState(idleState());
    }
    showConditions();
    refreshRun();
}

void T_MainForm::beginRun() {
    T_BOARD& session = *control_.session();
    runNumber_ = session.number();
    endState_ = RunState::Ready;
    runSettings_ = settings();
    rememberRecording();
    runFile_ = fileName();
    runInputs_ = {};
    if (const BoardFacts& board = selection_.driver().facts(); board.codeRangeKnown) {
        runInputs_.codeMinimum = int32_t{board.codeRange.m_nMinimum};
        runInputs_.codeMaximum = int32_t{board.codeRange.m_nMaximum};
    }
    if (session.settings.packetMode) {
        runInputs_.packetFrequency = static_cast<double>(session.settings.packetFrequency) / session.decimation;
    }
    figures_ = {};
    frameBytes_ = uint64_t{selection_.driver().facts().sampleWidth()} * session.settings.channelCount();
    runBegun_ = !session.settings.externalStart;
    progress_.begin(runSettings_.stopRule, runSettings_.stopSeconds, runSettings_.stopBytes, tickCount());
    strip_->setLosses(0);
    strip_->setLossList(fromFileName(RecordingName(runFile_).losses()));
    messages_->add(MessageList::Kind::Information, uiText(TextId::RecordingStarted, {fromFileName(runFile_)}));
    SetErrorCode(BoardStatus::Ready);
    showRunningSignal();
    setLocked(true);
    diskClock_.start();
    sleepInhibitor_.hold(uiText(TextId::StatusRecording));
    refreshTimer_.start();
}

RunState T_MainForm::runningState() const {
    if (!runBegun_) {
        return RunState::WaitingForStart;
    }
    if (runSettings_.synchro.SynchroAnalyzeMode != 0 && figures_.bytes == 0) {
        return RunState::WaitingForTrigger;
    }
    return figures_.loadWarns ? RunState::Warning : RunState::Recording;
}

void T_MainForm::showConditions() {
    const int mode = settings_.wish.synchro.SynchroAnalyzeMode;
    strip_->setConditions(mode == 0   ? std::nullopt
                          : mode == 1 ? std::optional(TextId::SynchroAnalysis)
                                      : std::optional(TextId::SynchroSynchronization));
}

void T_MainForm::endRun() {
    runNumber_ = 0;
    // How it ended comes with the last notification.
    if (endState_ == RunState::Ready) {
        endState_ = RunState::Stopped;
    }
    sleepInhibitor_.release();
    showForm_->recordingStopped();
    refreshTimer_.stop();
    setLocked(false);
    setWindowTitle(uiText(TextId::ProgramName));
    refreshDisk();
}

void T_MainForm::refreshRun() {
    T_BOARD* session = control_.session();
    if (session == nullptr || session->number() != runNumber_) {
        return;
    }
    if (!runBegun_ && session->dataBegun()) {
        runBegun_ = true;
        progress_.begin(runSettings_.stopRule, runSettings_.stopSeconds, runSettings_.stopBytes, tickCount());
    }
    if (const auto block = newestBlock_.get(); block && block->session == runNumber_) {
        progress_.block(block->bytes, block->time);
    }
    const uint64_t bytes = session->writer().totalBytes();
    const RecordingFigures progress = progress_.update(bytes, tickCount());
    figures_.elapsedSeconds = runBegun_ ? progress.elapsedSeconds : 0;
    figures_.remainingSeconds = progress.remainingSeconds;
    figures_.percent = progress.percent;
    figures_.bytes = bytes;
    figures_.bytesPerSecond = progress.bytesPerSecond;
    figures_.frames = frameCount(bytes);
    figures_.load = session->worstLoad() / 10;
    figures_.loadWarns = session->worstLoad() >= kHighLoad;
    figures_.files = session->writer().fileCount();
    figures_.events = session->eventCount();
    strip_->setFigures(figures_);
    if (diskClock_.hasExpired(kDiskPeriodMs)) {
        diskClock_.start();
        refreshDisk();
    }
    setState(runningState());
    setWindowTitle(fromCodePage(formatDuration(figures_.elapsedSeconds)) + QLatin1Char(' ') +
                   plainText(stateText(strip_->state())) + QStringLiteral(" - ") + uiText(TextId::ProgramName));
}

// What came in after the strip was refreshed last counts too.
void T_MainForm::showLastFigures(const RecordingResult& result) {
    if (result.bytes == 0) {
        return;
    }
    figures_.bytes = result.bytes;
    figures_.frames = frameCount(result.bytes);
    figures_.files = result.files;
    figures_.events = result.events;
    if (result.sizeReached) {
        showProgress(100);
    }
    strip_->setFigures(figures_);
}

uint64_t T_MainForm::frameCount(uint64_t bytes) const {
    return frameBytes_ == 0 ? 0 : bytes / frameBytes_;
}

// The figures are looked up several times a second.
void T_MainForm::showBytes(uint64_t /*bytes*/) {}

void T_MainForm::showProgress(int percent) {
    figures_.percent = percent;
    // It ended by its own rule. The figures were looked up before its last moment.
    if (percent == 100) {
        figures_.remainingSeconds = 0;
        if (runSettings_.stopRule == StopRule::Time) {
            figures_.elapsedSeconds = static_cast<uint64_t>(std::ceil(runSettings_.stopSeconds));
        }
    }
    strip_->setFigures(figures_);
}

// A board that can't be used is no less an error before the first start.
RunState T_MainForm::idleState() const {
    return endState_ == RunState::Ready && boardStatus_ != BoardStatus::Ready ? RunState::Error : endState_;
}

void T_MainForm::setState(RunState state) {
    strip_->setState(state);
}

void T_MainForm::setLocked(bool locked) {
    panels_->setLocked(locked);
    chooseFile_->setEnabled(!locked);
    openRecording_->setEnabled(!locked);
    additional_->setEnabled(!locked);
}

}  // namespace tarno2
