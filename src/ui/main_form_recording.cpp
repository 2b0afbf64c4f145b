// What the operator does with recordings, and what the window shows of them.

#include <QAction>
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
#include "core/recording/recording_need.h"
#include "core/recording/recording_settings.h"
#include "core/recording/start_questions.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/paths.h"
#include "ui/main_form.h"
#include "ui/message_bar.h"
#include "ui/panels/board_panel.h"
#include "ui/panels/driver_settings_form.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/measuring_panel.h"
#include "ui/panels/program_panel.h"
#include "ui/recording_stack.h"
#include "ui/save_as_text_form.h"
#include "ui/state_strip.h"
#include "ui/text.h"

namespace tarno2 {

void T_MainForm::present() {
    if (host_.ending()) {
        return;
    }
    if (host_.consoleMode()) {
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
    guarded("RecoverUnfinished", [this] { recover({}, {}); });
    if (host_.consoleMode() || settings_.autoStartOnRun) {
        QMetaObject::invokeMethod(this, &T_MainForm::StartButtonClick, Qt::QueuedConnection);
    }
}

void T_MainForm::RecoverRecordingsClick() {
    guarded("RecoverRecordingsClick", [this] {
        const QString folder = QFileDialog::getExistingDirectory(this, titleText(TextId::MenuRecover),
                                                                 fromFileName(parentFolder(fileName())));
        if (folder.isEmpty()) {
            return;
        }
        recover(toFileName(QDir::toNativeSeparators(folder)), uiText(TextId::NothingToRecover, {folder}));
    });
}

void T_MainForm::recover(const std::string& folder, const QString& nothingFound) {
    // The reports come on another thread; what they say is shown here once the window gets to it.
    const auto told = [this, nothingFound](const std::vector<RecoveryReport>& reports) {
        QMetaObject::invokeMethod(this, [this, reports, nothingFound] { showRecovered(reports, nothingFound); });
    };
    host_.recover(told, folder);
}

void T_MainForm::showRecovered(const std::vector<RecoveryReport>& reports, const QString& nothingFound) {
    using Kind = MessageList::Kind;
    logRecovered(reports);
    for (const RecoveryReport& report : reports) {
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

void T_MainForm::StartButtonClick() {
    withBoard(&T_MainForm::startRecording);
}

void T_MainForm::MonitorClick() {
    withBoard(&T_MainForm::startMonitoring);
    // The click has changed what shows whether it is on.
    guarded("MonitorClick", [this] { allowStarts(); });
}

// A board that could not be used may have been switched on or plugged in since.
void T_MainForm::withBoard(void (T_MainForm::*step)()) {
    if (!control().running()) {
        boardPanel_->driverSettings().finish();
    }
    if (search_.busy() || afterSearch_) {
        doWhenFound(step);
        return;
    }
    if (boardPanel_->driverSettings().refused()) {
        host_.showAttention(formatText(text(TextId::Attention).c_str(), text(TextId::DriverSettingToCorrect).c_str()));
        return;
    }
    if (!host_.startNeedsBoard()) {
        (this->*step)();
        return;
    }
    guarded("StartButtonClick", [this, step] {
        storeControls();
        whenFound_ = step;
        lookForBoard([this, driver = settings_.wish.driver, base = settings_.wish.base,
                      drq = settings_.drqNumber] { return selection().apply(driver, base, drq); },
                     [this](ApplyOutcome outcome) {
                         if (!host_.boardFoundForStart(outcome)) {
                             whenFound_ = nullptr;
                         }
                     });
        if (afterSearch_) {
            doWhenFound(step);
        }
    });
}

void T_MainForm::doWhenFound(void (T_MainForm::*step)()) {
    whenFound_ = step;
    messages_->add(MessageList::Kind::Information, uiText(TextId::StartsWhenFound));
}

void T_MainForm::startRecording() {
    bool goes = false;
    guarded("StartButtonClick", [this, &goes] {
        const bool monitored = control().monitoring();
        const bool recording = control().running() && !monitored;
        // What was monitored may have ended while the question stood: its end was told, and it is not begun anew.
        goes = recording || (answersAllowStart() && monitored == control().monitoring());
        if (goes) {
            strip_->setAttention({});
        }
    });
    if (!goes) {
        return;
    }
    const auto inSignal = [this] {
        const QWidget* focused = focusWidget();
        return focused != nullptr && signalStack_->isAncestorOf(focused);
    };
    const bool wasInSignal = inSignal();
    host_.start();
    guarded("StartButtonClick", [&] {
        if (!control().running() || inSignal()) {
            return;
        }
        // Who works in the signal goes on there, also when a recording that was compared has made way.
        if (wasInSignal) {
            showForm_->setFocus();
        } else {
            strip_->stopButton().setFocus();
        }
    });
}

void T_MainForm::startMonitoring() {
    strip_->setAttention({});
    host_.monitor();
}

void T_MainForm::StopButtonClick() {
    host_.stop();
}

void T_MainForm::btnAutoStartClick(bool down) {
    settings_.wish.cycleStart = down;
    menu_.cycle->setChecked(down);
    strip_->cycleButton().setChecked(down);
    programPanel_->setCycleStart(down);
}

bool T_MainForm::answersAllowStart() {
    if (host_.consoleMode()) {
        return true;
    }
    if (speedTester_.wouldWrite(fileName().c_str())) {
        FileNameEditChange();
    }
    const RecordingNeed need = recordingNeed(host_.settings(), selection().driver().facts(), findings_.disk);
    const StartQuestions questions = startQuestions(fileName(), need.totalBytes);
    if (!questions.existingFile.empty() &&
        !ask(uiText(TextId::FileExistsQuestion, {fromFileName(questions.existingFile)}), TextId::KeepAndStart)) {
        return false;
    }
    return !questions.diskTooSmall ||
           ask(uiText(TextId::DiskTooSmallQuestion,
                      {fromCodePage(formatSize(questions.neededBytes)), fromCodePage(formatSize(questions.freeBytes))}),
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
    if (control().running()) {
        const bool asks = !host_.ending() && !host_.consoleMode() && !control().monitoring();
        if (asks && !ask(uiText(TextId::CloseQuestion), TextId::StopAndClose)) {
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

void T_MainForm::post(std::function<void()> step) {
    QMetaObject::invokeMethod(this, std::move(step), Qt::QueuedConnection);
}

void T_MainForm::faultFound(const std::string& fault) {
    QMetaObject::invokeMethod(this, [this, fault] { host_.showMessage(fault); });
}

RecordingWish T_MainForm::settings() {
    storeControls();
    RecordingWish wish = recordingWish(settings_, selection().driver().facts());
    wish.frequency = measuringPanel_->frequency();
    return wish;
}

std::string T_MainForm::fileName() {
    return filePanel_->fileName();
}

void T_MainForm::setFileName(const std::string& name) {
    filePanel_->setFileName(name);
}

void T_MainForm::quit() {
    QMetaObject::invokeMethod(this, &T_MainForm::requestEnd, Qt::QueuedConnection);
}

}  // namespace tarno2
