// The window as the shell in which recordings run.

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include "config/files/disk_info.h"
#include "config/files/figure_text.h"
#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/logs/program_version.h"
#include "config/settings/settings_file.h"
#include "core/recording/recording_need.h"
#include "core/recording/recording_settings.h"
#include "core/recording/start_questions.h"
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

void T_MainForm::present() {
    if (ending_) {
        return;
    }
    if (consoleMode()) {
        consoleLog().log("Console mode ENABLED Tarno2 version %s", versionText().c_str());
        showMinimized();
    } else {
        settings_.formVisible == 2 ? showMaximized() : show();
        placeParts();
        detachSignalView();
    }
    begin();
}

// What the program does by itself once it is there, with a window or without one.
void T_MainForm::begin() {
    begun_ = true;
    guarded("RecoverUnfinished", [this] { recover(foldersOf({fileName(), savedFileName()}), {}); });
    if (consoleMode() || settings_.autoStartOnRun) {
        QMetaObject::invokeMethod(this, &T_MainForm::StartButtonClick, Qt::QueuedConnection);
    }
}

void T_MainForm::RecoverRecordingsClick() {
    guarded("RecoverRecordingsClick", [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, plainText(TextId::MenuRecover),
                                                                 fromFileName(parentFolder(fileName())));
        if (folder.isEmpty()) {
            return;
        }
        recover({toFileName(QDir::toNativeSeparators(folder))}, uiText(TextId::NothingToRecover, {folder}));
    });
}

void T_MainForm::recover(const std::set<std::string>& folders, const QString& nothingFound) {
    // The reports come on another thread; what they say is shown here once the window gets to it.
    recovery_.recover(folders, [this, nothingFound](const std::vector<RecoveryReport>& reports) {
        QMetaObject::invokeMethod(this, [this, reports, nothingFound] { showRecovered(reports, nothingFound); });
    });
}

void T_MainForm::showRecovered(const std::vector<RecoveryReport>& reports, const QString& nothingFound) {
    using Kind = MessageList::Kind;
    for (const RecoveryReport& report : reports) {
        consoleLog().log("%s", report.text().c_str());
        const QString name = fromFileName(report.name);
        switch (report.outcome) {
            case RecoveryReport::Outcome::Recovered:
                messages_->add(Kind::Information,
                               uiText(TextId::RecordingRecovered, {name, fromCodePage(formatCount(report.frames))}));
                break;
            case RecoveryReport::Outcome::InProgress:
                messages_->add(Kind::Information, uiText(TextId::RecordingInProgress, {name}));
                break;
            case RecoveryReport::Outcome::OtherUsers:
                messages_->add(Kind::Information, uiText(TextId::JournalOfOtherUser, {name}));
                break;
            case RecoveryReport::Outcome::LeftAlone:
                messages_->add(Kind::Information, uiText(TextId::JournalLeftAlone, {name}));
                break;
            case RecoveryReport::Outcome::Failed:
                messages_->add(Kind::Attention,
                               uiText(TextId::RecordingNotRecovered, {name, fromFileName(report.problem)}));
                break;
        }
    }
    if (reports.empty() && !nothingFound.isEmpty()) {
        messages_->add(Kind::Information, nothingFound);
    }
}

// A board that could not be used may have been switched on or plugged in since.
void T_MainForm::StartButtonClick() {
    if (search_.busy()) {
        startWhenFound_ = true;
        return;
    }
    const bool usable = boardStatus_ == BoardStatus::Ready && selection_.driver().startAllowed();
    if (usable || consoleMode() || control_.running()) {
        startRecording();
        return;
    }
    guarded("StartButtonClick", [this] {
        storeControls();
        startWhenFound_ = true;
        lookForBoard(
            [this, driver = settings_.wish.driver, base = settings_.wish.base, drq = settings_.drqNumber] {
                const ApplyOutcome outcome = selection_.apply(driver, base);
                if (outcome == ApplyOutcome::Done) {
                    static_cast<void>(selection_.setDrqNumber(drq));
                }
                return outcome;
            },
            [this](ApplyOutcome outcome) {
                SetErrorCode(statusOf(outcome));
                if (outcome == ApplyOutcome::Done) {
                    return;
                }
                startWhenFound_ = false;
                showAttention(formatText(text(TextId::Attention).c_str(), text(TextId::InitError).c_str()));
                if (!selection_.problem().empty()) {
                    showDetail(selection_.problem());
                }
            });
    });
}

void T_MainForm::startRecording() {
    guarded("StartButtonClick", [this] {
        if (!control_.running() && !answersAllowStart()) {
            return;
        }
        setState(RunState::Starting);
        strip_->setAttention({});
        if (!displayGone_) {
            strip_->repaint();
        }
        endState_ = RunState::Ready;
        if (control_.StartButtonClick()) {
            consoleLog().log("Save to file \"%s\"", fileName().c_str());
        }
    });
    guarded("StartButtonClick", [this] {
        updateState();
        if (control_.running()) {
            strip_->stopButton().setFocus();
        }
    });
}

void T_MainForm::StopButtonClick() {
    guarded("StopButtonClick", [this] {
        if (control_.running()) {
            setState(RunState::Stopping);
            if (!displayGone_) {
                strip_->repaint();
            }
        }
        control_.StopButtonClick();
    });
    guarded("StopButtonClick", [this] { updateState(); });
}

void T_MainForm::btnAutoStartClick(bool down) {
    settings_.wish.cycleStart = down;
    cycle_->setChecked(down);
    strip_->cycleButton().setChecked(down);
    programPanel_->setCycleStart(down);
}

bool T_MainForm::answersAllowStart() {
    if (consoleMode()) {
        return true;
    }
    if (speedTester_.wouldWrite(fileName().c_str())) {
        FileNameEditChange();
    }
    const RecordingNeed need = recordingNeed(settings(), selection_.driver().facts(), findings_.disk);
    const StartQuestions questions = startQuestions(fileName(), need.totalBytes);
    if (!questions.existingFile.empty() &&
        !ask(uiText(TextId::FileExistsQuestion, {fromFileName(questions.existingFile)}), TextId::KeepAndStart)) {
        return false;
    }
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
    if (closed_) {
        return true;
    }
    if (control_.running()) {
        if (!consoleMode() && !ending_ && !ask(uiText(TextId::CloseQuestion), TextId::StopAndClose)) {
            return false;
        }
        StopButtonClick();
        // What its thread still has to say belongs into the logs.
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    }
    if (textForm_ != nullptr) {
        textForm_->close();
    }
    saveSettings();
    return true;
}

void T_MainForm::post(const Notification& notification) {
    // Progress is looked up ten times a second: this thread must not allocate for it.
    if (notification.result.code == StopCode::Running) {
        newestBlock_.put({notification.session, notification.result.bytes, tickCount()});
    }
    if (notification.result.isNews()) {
        QMetaObject::invokeMethod(
            this, [this, notification] { handle(notification); }, Qt::QueuedConnection);
    }
}

void T_MainForm::handle(const Notification& notification) {
    guarded("Notification", [this, &notification] {
        // Late news of a recording must not touch what the strip shows of the next one.
        const bool own = !control_.running() || control_.session()->number() == notification.session;
        if (own && notification.result.code != StopCode::Running) {
            showLastFigures(notification.result);
        }
        control_.OnNotification(notification);
        if (notification.result.code == StopCode::Unplug) {
            SetErrorCode(BoardStatus::Unplugged);
        }
    });
    // An end that could not be told in full is an end all the same.
    if (consoleMode() && notification.result.code != StopCode::Running && control_.running() &&
        control_.session()->number() == notification.session) {
        requestEnd();
    }
    guarded("Notification", [this] { updateState(); });
}

RecordingWish T_MainForm::settings() {
    if (console_) {
        return *console_;
    }
    storeControls();
    RecordingWish wish = recordingWish(settings_, selection_.driver().facts());
    wish.frequency = measuringPanel_->frequency();
    return wish;
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
    if (displayGone_) {
        return;
    }
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
    if (consoleMode()) {
        return;
    }
    auto* box = new QMessageBox(QMessageBox::Warning, QString(), fromCodePage(message), QMessageBox::NoButton, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->addButton(uiText(TextId::ButtonOk), QMessageBox::AcceptRole);
    box->open();
}

void T_MainForm::synchronisationSwitchedOff() {
    additionalWindow_->SwitchOff();
}

void T_MainForm::recordingEnded(const RecordingResult& result) {
    if (consoleMode()) {
        RecordingShell::recordingEnded(result);
    }
    endState_ = RunState::Error;
    switch (result.code) {
        case StopCode::User:
            endState_ = RunState::Stopped;
            break;
        case StopCode::StopMeasuring:
            endState_ = RunState::Stopped;
            if (!result.diskNearlyFull) {
                messages_->add(MessageList::Kind::Information, uiText(TextId::EndedByCondition));
            }
            break;
        default:
            break;
    }
    strip_->setLosses(result.losses.size());
    messages_->add(MessageList::Kind::Information,
                   result.bytes == 0
                       ? uiText(TextId::NothingRecorded)
                       : uiText(TextId::RecordingEnded,
                                {fromCodePage(formatCount(frameCount(result.bytes))), QString::number(result.files)}));
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

}  // namespace tarno2
