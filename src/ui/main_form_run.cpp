// The recording that runs, as the window shows it.

#include <QAction>
#include <QDockWidget>
#include <QMessageBox>
#include <QPushButton>

#include "config/files/figure_text.h"
#include "config/files/recording_name.h"
#include "core/devices/input_limits.h"
#include "ui/additional_mode_window.h"
#include "ui/main_form.h"
#include "ui/mark_controls.h"
#include "ui/message_bar.h"
#include "ui/panels/panel_stack.h"
#include "ui/show_form.h"
#include "ui/state_strip.h"
#include "ui/text.h"
#include "ui/trigger_text.h"

namespace tarno2 {

namespace {

constexpr qint64 kDiskPeriodMs = 5000;

}  // namespace

// What takes a moment keeps the event loop waiting, so it is painted before. Without a display the toolkit ends the
// program when a title or a picture is to reach it.
void T_MainForm::MarkClick() {
    guarded("MarkClick", [this] {
        T_BOARD* session = control().session();
        if (session == nullptr) {
            return;
        }
        if (const auto mark = session->mark()) {
            messages_->marks().begin(*mark);
        } else {
            messages_->add(MessageList::Kind::Attention, uiText(TextId::MarkRefused));
        }
    });
}

void T_MainForm::showState() {
    strip_->setState(host_.watch().state());
    if (!displayGone_) {
        strip_->repaint();
    }
}

void T_MainForm::runBegun() {
    if (displayGone_) {
        return;
    }
    rememberRecording();
    endFirstPage();
    const RunFacts& facts = host_.watch().facts();
    messages_->clearEnd();
    strip_->setLosses(0);
    strip_->setLossList(facts.monitored ? QString() : fromFileName(RecordingName(facts.file).losses()));
    messages_->add(MessageList::Kind::Information, facts.monitored
                                                       ? uiText(TextId::MonitoringStarted)
                                                       : uiText(TextId::RecordingStarted, {fromFileName(facts.file)}));
    showRunningSignal();
    messages_->marks().end();
    messages_->marks().setVisible(!facts.monitored);
    const SettingsLock lock = facts.monitored ? SettingsLock::Board : SettingsLock::All;
    panels_->setLocked(lock);
    foldForRun(!facts.monitored);
    menu_.setLocked(lock);
    diskClock_.start();
    sleepInhibitor_.hold(uiText(facts.monitored ? TextId::StatusMonitoring : TextId::StatusRecording));
    refreshTimer_.start();
}

void T_MainForm::runEnded() {
    if (displayGone_) {
        return;
    }
    sleepInhibitor_.release();
    messages_->marks().end();
    messages_->marks().hide();
    showForm_->recordingStopped();
    refreshTimer_.stop();
    panels_->setLocked(SettingsLock::None);
    foldForRun(false);
    menu_.setLocked(SettingsLock::None);
    setWindowTitle(uiText(TextId::ProgramName));
    refreshDisk();
}

void T_MainForm::showRun() {
    if (displayGone_) {
        return;
    }
    const bool running = host_.watch().running();
    allowStarts();
    menu_.stop->setEnabled(running);
    menu_.mark->setEnabled(running && !host_.watch().facts().monitored);
    strip_->stopButton().setEnabled(running);
    showConditions();
    const RunFigures& figures = host_.watch().figures();
    strip_->setFigures(figures);
    strip_->setState(host_.watch().state());
    if (!running) {
        return;
    }
    if (diskClock_.hasExpired(kDiskPeriodMs)) {
        diskClock_.start();
        refreshDisk();
    }
    setWindowTitle(fromCodePage(formatDuration(figures.elapsedSeconds)) + QLatin1Char(' ') +
                   plainText(stateText(strip_->state())) + QStringLiteral(" - ") + uiText(TextId::ProgramName));
}

// What is monitored can be recorded, or ended; what is recorded can be ended alone.
void T_MainForm::allowStarts() {
    const bool monitoring = control().monitoring();
    const bool allowed = (!control().running() || monitoring) && !search_.busy();
    menu_.start->setEnabled(allowed);
    strip_->startButton().setEnabled(allowed);
    menu_.monitor->setEnabled(allowed && !host_.consoleMode());
    menu_.monitor->setChecked(monitoring);
    strip_->monitorButton().setEnabled(menu_.monitor->isEnabled());
    strip_->monitorButton().setChecked(monitoring);
}

void T_MainForm::showConditions() {
    const RecordingWish& wish = settings_.wish;
    const auto labelOf = [this](int32_t channel) {
        const ChannelLabel& given = settings_.channels[static_cast<size_t>(channel) % settings_.channels.size()].label;
        return search_.busy() ? given : channelLabel(selection().driver().facts(), channel, given);
    };
    const int32_t mode = wish.synchro.SynchroAnalyzeMode;
    strip_->setTrigger(triggerText(wish, labelOf), mode == kModeAnalysis || mode == kModeSynchronisation);
}

void T_MainForm::showAttention(const std::string& message) {
    if (displayGone_) {
        return;
    }
    strip_->setAttention(fromCodePage(message));
    messages_->add(MessageList::Kind::Attention, fromCodePage(message));
    if (!control().running()) {
        notice(fromCodePage(message));
    }
}

void T_MainForm::showDetail(const std::string& detail) {
    messages_->add(MessageList::Kind::Detail, fromMessage(detail));
}

void T_MainForm::showMessage(const std::string& message) {
    messages_->add(MessageList::Kind::Attention, fromCodePage(message));
    if (host_.consoleMode()) {
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

}  // namespace tarno2
