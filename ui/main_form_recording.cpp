// The window as the shell in which recordings run.

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include "config/console_log.h"
#include "config/debug_log.h"
#include "config/disk_info.h"
#include "config/figure_text.h"
#include "config/file_naming.h"
#include "config/program_version.h"
#include "config/settings_file.h"
#include "core/auto_recording.h"
#include "core/recording_need.h"
#include "core/recording_settings.h"
#include "core/start_questions.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "ui/additional_mode_window.h"
#include "ui/main_form.h"
#include "ui/message_list.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/measuring_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/panels/program_panel.h"
#include "ui/save_as_text_form.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr qint64 kDiskPeriodMs = 5000;
constexpr uint32_t kHighLoad = 800;  // thousandths of the ring; what is left is a tenth of a second or so

}  // namespace

void T_MainForm::present() {
    if (ending_) {
        return;
    }
    if (consoleMode()) {
        consoleLog().log("Console mode ENABLED Tarno2 version %s", versionText().c_str());
        showMinimized();
    } else {
        settings_.formVisible == 2 ? showMaximized() : show();
        detachSignalView();
    }
    guarded("RecoverUnfinished", [this] { showRecovered(recoverFoldersOf({fileName(), savedFileName()})); });
    if (consoleMode() || settings_.autoStartOnRun)
        QMetaObject::invokeMethod(this, &T_MainForm::StartButtonClick, Qt::QueuedConnection);
}

void T_MainForm::RecoverRecordingsClick() {
    guarded("RecoverRecordingsClick", [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, plainText(TextId::MenuRecover),
                                                                 fromFileName(parentFolder(fileName())));
        if (folder.isEmpty())
            return;
        const auto reports = recoverFolder(toFileName(QDir::toNativeSeparators(folder)));
        showRecovered(reports);
        if (reports.empty())
            messages_->add(MessageList::Kind::Information, uiText(TextId::NothingToRecover, {folder}));
    });
}

void T_MainForm::showRecovered(const std::vector<RecoveryReport>& reports) {
    for (const RecoveryReport& report : reports) {
        consoleLog().log("%s", report.text().c_str());
        const QString name = fromFileName(report.name);
        switch (report.outcome) {
            case RecoveryReport::Outcome::Recovered:
                messages_->add(MessageList::Kind::Information,
                               uiText(TextId::RecordingRecovered, {name, fromCodePage(formatCount(report.frames))}));
                break;
            case RecoveryReport::Outcome::InProgress:
                messages_->add(MessageList::Kind::Information, uiText(TextId::RecordingInProgress, {name}));
                break;
            case RecoveryReport::Outcome::Failed:
                messages_->add(MessageList::Kind::Attention,
                               uiText(TextId::RecordingNotRecovered, {name, fromFileName(report.problem)}));
                break;
        }
    }
}

void T_MainForm::StartButtonClick() {
    guarded("StartButtonClick", [this] {
        if (!control_.running() && !answersAllowStart())
            return;
        setState(RunState::Starting);
        strip_->setAttention({});
        strip_->repaint();
        endState_ = RunState::Ready;
        if (control_.StartButtonClick())
            consoleLog().log("Save to file \"%s\"", fileName().c_str());
    });
    guarded("StartButtonClick", [this] { updateState(); });
}

void T_MainForm::StopButtonClick() {
    guarded("StopButtonClick", [this] {
        if (control_.running()) {
            setState(RunState::Stopping);
            strip_->repaint();
        }
        control_.StopButtonClick();
    });
    guarded("StopButtonClick", [this] { updateState(); });
}

void T_MainForm::btnAutoStartClick(bool down) {
    settings_.cycleStart = down;
    cycle_->setChecked(down);
    strip_->cycleButton().setChecked(down);
    programPanel_->setCycleStart(down);
}

bool T_MainForm::answersAllowStart() {
    if (consoleMode())
        return true;
    if (speedTester_.wouldWrite(fileName().c_str()))
        FileNameEditChange();
    const RecordingNeed need = recordingNeed(settings(), selection_.driver().facts(), findings_.disk);
    const StartQuestions questions = startQuestions(fileName(), need.totalBytes);
    if (!questions.existingFile.empty() &&
        !ask(uiText(TextId::FileExistsQuestion, {fromFileName(questions.existingFile)}), TextId::KeepAndStart))
        return false;
    return !questions.diskTooSmall ||
           ask(uiText(TextId::DiskTooSmallQuestion, {fromCodePage(formatFreeSpace(questions.neededBytes)),
                                                     fromCodePage(formatFreeSpace(questions.freeBytes))}),
               TextId::StartAnyway);
}

bool T_MainForm::ask(const QString& question, TextId go) {
    QMessageBox box(QMessageBox::Question, uiText(TextId::ProgramName), question, QMessageBox::NoButton, this);
    box.setObjectName(QStringLiteral("QuestionBox"));
    QPushButton* yes = box.addButton(uiText(go), QMessageBox::AcceptRole);
    QPushButton* back = box.addButton(uiText(TextId::GoBack), QMessageBox::RejectRole);
    box.setDefaultButton(back);
    box.setEscapeButton(back);
    box.exec();
    return box.clickedButton() == yes;
}

void T_MainForm::tell(const QString& message) {
    QMessageBox box(QMessageBox::Information, uiText(TextId::ProgramName), message, QMessageBox::NoButton, this);
    box.addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    box.exec();
}

bool T_MainForm::FormCloseQuery() {
    DEBUG_LOG("FormCloseQuery");
    if (closed_)
        return true;
    if (control_.running()) {
        if (!consoleMode() && !ending_ && !ask(uiText(TextId::CloseQuestion), TextId::StopAndClose))
            return false;
        StopButtonClick();
        // What its thread still has to say belongs into the logs.
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    }
    if (textForm_ != nullptr)
        textForm_->close();
    saveSettings();
    return true;
}

void T_MainForm::post(const Notification& notification) {
    // Progress is looked up in the session: this thread must not allocate for it.
    if (notification.result.code != StopCode::Running)
        QMetaObject::invokeMethod(
            this, [this, notification] { handle(notification); }, Qt::QueuedConnection);
}

void T_MainForm::handle(const Notification& notification) {
    guarded("Notification", [this, &notification] {
        // Late news of a recording must not touch what the strip shows of the next one.
        if (!control_.running() || control_.session()->number() == notification.session)
            showLastFigures(notification.result);
        control_.OnNotification(notification);
        if (notification.result.code == StopCode::Unplug)
            SetErrorCode(BoardStatus::Unplugged);
    });
    guarded("Notification", [this] { updateState(); });
}

RecordingSettings T_MainForm::settings() {
    if (console_)
        return recordingSettings(*console_);
    storeControls();
    return recordingSettings(settings_, selection_.driver().facts(), measuringPanel_->frequencyText());
}

std::string T_MainForm::fileName() {
    return filePanel_->fileName();
}

void T_MainForm::setFileName(const std::string& name) {
    filePanel_->setFileName(name);
}

std::string T_MainForm::savedFileName() {
    return tarno2::savedFileName(programDirectory_);
}

// The strip shows the state by itself, in the language of the window; the text is for logs.
void T_MainForm::showStatus(const std::string& status) {
    consoleLog().log("%s", status.c_str());
}

void T_MainForm::showAttention(const std::string& message) {
    consoleLog().log("%s", message.c_str());
    strip_->setAttention(fromCodePage(message));
    messages_->add(MessageList::Kind::Attention, fromCodePage(message));
}

void T_MainForm::showDetail(const std::string& detail) {
    consoleLog().log("%s", detail.c_str());
    messages_->add(MessageList::Kind::Detail, fromMessage(detail));
}

void T_MainForm::showMessage(const std::string& message) {
    consoleLog().log("%s", message.c_str());
    messages_->add(MessageList::Kind::Attention, fromCodePage(message));
    if (consoleMode())
        return;
    auto* box = new QMessageBox(QMessageBox::Warning, QString(), fromCodePage(message), QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    box->open();
}

void T_MainForm::synchronisationSwitchedOff() {
    additionalWindow_->SwitchOff();
}

void T_MainForm::recordingEnded(const RecordingResult& result) {
    if (consoleMode())
        RecordingShell::recordingEnded(result);
    endState_ = RunState::Error;
    const auto attention = [this](TextId id) {
        showAttention(formatText(text(TextId::Attention).c_str(), text(id).c_str()));
    };
    switch (result.code) {
        case StopCode::User:
            endState_ = RunState::Stopped;
            break;
        case StopCode::StopMeasuring:
            endState_ = RunState::Stopped;
            if (!result.diskNearlyFull)
                messages_->add(MessageList::Kind::Information, uiText(TextId::EndedByCondition));
            break;
        case StopCode::WriteError:
            attention(TextId::DataWriteError);
            break;
        case StopCode::Unplug:
            attention(TextId::BoardUnplugged);
            break;
        default:
            break;
    }
    strip_->setLosses(result.losses.size());
    messages_->add(MessageList::Kind::Information,
                   uiText(TextId::RecordingEnded,
                          {fromCodePage(formatCount(frameCount(result.bytes))), QString::number(result.files)}));
}

// What came in after the strip was refreshed last counts too.
void T_MainForm::showLastFigures(const RecordingResult& result) {
    if (result.bytes == 0)
        return;
    figures_.bytes = result.bytes;
    figures_.frames = frameCount(result.bytes);
    figures_.files = result.files;
    figures_.events = result.events;
    if (result.sizeReached)
        showProgress(100);
    strip_->setFigures(figures_);
}

uint64_t T_MainForm::frameCount(uint64_t bytes) const {
    return frameBytes_ == 0 ? 0 : bytes / frameBytes_;
}

// The figures are looked up several times a second.
void T_MainForm::showBytes(uint64_t /*bytes*/) {}

void T_MainForm::showProgress(int percent) {
    figures_.percent = percent;
    if (percent == 100)
        figures_.remainingSeconds = 0;
    strip_->setFigures(figures_);
}

void T_MainForm::startTimer(uint32_t milliseconds) {
    tickPeriod_ = std::max(milliseconds, 1U);
    ticksGiven_ = 0;
    stopClock_.start();
    stopTimer_.start(static_cast<int>(tickPeriod_));
}

void T_MainForm::killTimer() {
    stopTimer_.stop();
}

// Ticks that came late, because something kept the window busy, are made up for.
void T_MainForm::timerTick() {
    while (stopTimer_.isActive() && ticksGiven_ < stopClock_.elapsed() / tickPeriod_) {
        ++ticksGiven_;
        control_.StopTimerTick();
    }
    updateState();
}

void T_MainForm::quit() {
    QMetaObject::invokeMethod(this, &T_MainForm::requestEnd, Qt::QueuedConnection);
}

void T_MainForm::updateState() {
    const T_BOARD* session = control_.session();
    if (session != nullptr && session->number() != runNumber_)
        beginRun();
    else if (session == nullptr && runNumber_ != 0)
        endRun();
    start_->setEnabled(session == nullptr);
    strip_->startButton().setEnabled(session == nullptr);
    stop_->setEnabled(session != nullptr);
    strip_->stopButton().setEnabled(session != nullptr);
    if (session == nullptr)
        setState(idleState());
    refreshRun();
}

void T_MainForm::beginRun() {
    T_BOARD& session = *control_.session();
    runNumber_ = session.number();
    endState_ = RunState::Ready;
    runSettings_ = settings();
    runFile_ = fileName();
    runInputs_ = {};
    if (const BoardFacts& board = selection_.driver().facts(); board.codeRangeKnown) {
        runInputs_.codeMinimum = int32_t{board.codeRange.m_nMinimum};
        runInputs_.codeMaximum = int32_t{board.codeRange.m_nMaximum};
    }
    if (session.settings.packetMode)
        runInputs_.packetFrequency = static_cast<double>(session.settings.packetFrequency) / session.decimation;
    frameBytes_ = uint64_t{selection_.driver().facts().sampleWidth()} * session.settings.channelCount();
    runBegun_ = !session.settings.externalStart;
    progress_.begin(runSettings_.stopRule, runSettings_.stopSeconds, runSettings_.stopBytes, tickCount());
    strip_->setLosses(0);
    strip_->setLossList(fromFileName(lossLedgerNameFor(runFile_)));
    messages_->add(MessageList::Kind::Information, uiText(TextId::RecordingStarted, {fromFileName(runFile_)}));
    SetErrorCode(BoardStatus::Ready);
    showRunningSignal();
    setLocked(true);
    diskClock_.start();
    sleepInhibitor_.hold(uiText(TextId::StatusRecording));
    refreshTimer_.start();
}

void T_MainForm::endRun() {
    runNumber_ = 0;
    // How it ended comes with the last notification.
    if (endState_ == RunState::Ready)
        endState_ = RunState::Stopped;
    sleepInhibitor_.release();
    showForm_->recordingStopped();
    refreshTimer_.stop();
    setLocked(false);
    setWindowTitle(uiText(TextId::ProgramName));
    refreshDisk();
}

void T_MainForm::refreshRun() {
    T_BOARD* session = control_.session();
    if (session == nullptr || session->number() != runNumber_)
        return;
    if (!runBegun_ && session->dataBegun()) {
        runBegun_ = true;
        progress_.begin(runSettings_.stopRule, runSettings_.stopSeconds, runSettings_.stopBytes, tickCount());
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
    setState(!runBegun_ ? RunState::WaitingForStart : figures_.loadWarns ? RunState::Warning : RunState::Recording);
    setWindowTitle(fromCodePage(formatDuration(figures_.elapsedSeconds)) + QLatin1Char(' ') +
                   plainText(stateText(strip_->state())) + QStringLiteral(" - ") + uiText(TextId::ProgramName));
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
