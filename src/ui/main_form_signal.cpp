// The signal view in its dock, and the recordings that are opened there.

#include <QAction>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QMenu>
#include <algorithm>

#include "config/logs/debug_log.h"
#include "display/recorded.h"
#include "display/signal_format.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "ui/additional_mode_window.h"
#include "ui/channel_table.h"
#include "ui/main_form.h"
#include "ui/message_bar.h"
#include "ui/panels/channels_panel.h"
#include "ui/recent_recordings.h"
#include "ui/recording_stack.h"
#include "ui/save_as_text_form.h"
#include "ui/show_form.h"
#include "ui/text.h"

namespace tarno2 {

void T_MainForm::buildSignalView() {
    std::string why;
    if (!scoper_.load(why)) {
        messages_->add(MessageList::Kind::Attention, uiText(TextId::ScoperaNotLoaded));
        messages_->add(MessageList::Kind::Detail, fromMessage(why));
    }
    makeSignalView();
    buildRecordingLists();
    if (firstStart_) {
        showFirstPage();
    }
}

// The view takes the settings when it is made.
void T_MainForm::renewSignalView() {
    std::string opened = showForm_->openedFile();
    if (const std::string& last = host_.watch().facts().file; opened.empty() && fileExists(last)) {
        opened = last;
    }
    control().setLiveTap(nullptr);
    control().setBeforeSessionGoes({});
    delete signalStack_;
    makeSignalView();
    if (!opened.empty()) {
        showForm_->openRecording(opened);
    }
}

void T_MainForm::makeSignalView() {
    signalStack_ = new RecordingStack(settings_, scoper_.object(), signalDock_);
    showForm_ = &signalStack_->first();
    signalDock_->setWidget(signalStack_);
    const auto tell = [this](const QString& line) { messages_->add(MessageList::Kind::Attention, line); };
    connect(showForm_, &T_ShowForm::message, this, tell);
    connect(signalStack_, &RecordingStack::message, this, tell);
    connect(signalStack_, &RecordingStack::savePartWanted, this, &T_MainForm::savePart);
    connect(showForm_, &T_ShowForm::readings, this,
            [this](const std::vector<ChannelReading>& readings) { channelsPanel_->setLive(readings); });
    connect(showForm_, &T_ShowForm::channelShown, &channelsPanel_->table(), &ChannelTable::setShown);
    connect(showForm_, &T_ShowForm::channelMarked, &channelsPanel_->table(), &ChannelTable::markChannel);
    connect(showForm_, &T_ShowForm::thresholdMoved, this, [this] {
        additionalWindow_->ReloadControls();
        showConditions();
    });
    connect(additionalWindow_, &QDialog::finished, signalStack_, &RecordingStack::settingsChanged);
    const auto lock = [this] { showForm_->setThresholdsLocked(!menu_.additional->isEnabled()); };
    connect(menu_.additional, &QAction::changed, showForm_, lock);
    lock();
    connect(showForm_, &QWidget::windowTitleChanged, signalDock_, &QWidget::setWindowTitle);
    signalDock_->setWindowTitle(showForm_->windowTitle());
    showForm_->fillMenu(*menu_.view);
    connect(showForm_, &T_ShowForm::savePartWanted, this, &T_MainForm::savePart);
    control().setLiveTap(&showForm_->tap());
    control().setBeforeSessionGoes([this] { showForm_->sessionGoes(); });
    if (!search_.busy()) {
        showForm_->setDigitalLines(selection().driver().facts().format.m_nDigitalLines);
    }
    menu_.showSignal->setChecked(settings_.showFormVisible);
    signalDock_->setVisible(settings_.showFormVisible);
    orderTabs();
}

void T_MainForm::showRunningSignal() {
    T_BOARD& session = *control().session();
    LiveRecording recording;
    recording.format = signalFormatOf(selection().driver().facts(), control().facts());
    recording.channels = session.settings.channels;
    for (SignalFormat::Channel& channel : recording.format.channels) {
        const int32_t number = recording.channels[channel.listPosition];
        channel.label = channelLabel(selection().driver().facts(), number,
                                     settings_.channels[static_cast<size_t>(number) % settings_.channels.size()].label);
    }
    recording.format.lineNames = settings_.wish.lineNames;
    if (host_.watch().facts().monitored) {
        showForm_->recordingStarted(std::move(recording));
        return;
    }
    recording.fileName = host_.watch().facts().file;
    if (settings_.wish.synchro.SynchroAnalyzeMode == kModeSynchronisation) {
        const SynchroSizes& sizes = settings_.wish.synchroSizes;
        const auto prehistory = static_cast<uint64_t>(std::max(sizes.prehistory, 0));
        recording.records =
            TriggeredRecords{prehistory + static_cast<uint64_t>(std::max(sizes.history, 0)), prehistory};
    }
    recording.everyFrameWritten = !host_.watch().facts().conditions;
    recording.writer = [this, number = session.number()]() -> DataWriter* {
        T_BOARD* running = control().session();
        return running != nullptr && running->number() == number ? &running->writer() : nullptr;
    };
    recording.marks = [this, number = session.number()]() -> const MarkWriter* {
        T_BOARD* running = control().session();
        return running != nullptr && running->number() == number ? &running->marks() : nullptr;
    };
    showForm_->recordingStarted(std::move(recording));
}

void T_MainForm::OpenRecordingClick() {
    guarded("OpenRecordingClick", [this] {
        if (const auto file = askForRecording(TextId::MenuOpenRecording)) {
            showRecording(*file);
        }
    });
}

void T_MainForm::CompareRecordingClick() {
    guarded("CompareRecordingClick", [this] {
        if (const auto file = askForRecording(TextId::MenuCompareRecording)) {
            compareRecording(*file);
        }
    });
}

std::optional<std::string> T_MainForm::askForRecording(TextId title) {
    QFileDialog dialog(this, titleText(title), fromFileName(shownFile()));
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters({uiText(TextId::DataFileFilter), uiText(TextId::AllFilesFilter)});
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return dataFileOf(toFileName(QDir::toNativeSeparators(dialog.selectedFiles().first())));
}

// Listed by its whole name: the next start may have another folder.
void T_MainForm::showRecording(const std::string& dataFile) {
    guarded("showRecording", [&] {
        const std::string file = isAbsolutePath(dataFile) ? dataFile : joinPath(currentFolder(), dataFile);
        endFirstPage();
        signalDock_->show();
        if (showForm_->openRecording(file)) {
            settings_.recentRecordings = withRecent(settings_.recentRecordings, file);
        }
    });
}

// Below the one that is opened, or else the one that has just been made; where there is neither it is opened itself.
void T_MainForm::compareRecording(const std::string& dataFile) {
    guarded("compareRecording", [&] {
        if (const std::string& last = host_.watch().facts().file; showForm_->openedFile().empty()) {
            if (!fileExists(last)) {
                showRecording(dataFile);
                return;
            }
            showRecording(last);
            if (showForm_->openedFile().empty()) {
                return;  // told already
            }
        }
        const std::string file = isAbsolutePath(dataFile) ? dataFile : joinPath(currentFolder(), dataFile);
        signalDock_->show();
        if (signalStack_->add(file)) {
            settings_.recentRecordings = withRecent(settings_.recentRecordings, file);
        }
    });
}

// The last ones in the File menu, and those that are dropped on the window.
void T_MainForm::buildRecordingLists() {
    connect(menu_.recent, &QMenu::aboutToShow, this, [this] {
        fillRecent(*menu_.recent, settings_.recentRecordings, [this](const std::string& file) {
            if (fileExists(file)) {
                showRecording(file);
            } else {
                messages_->add(MessageList::Kind::Attention, uiText(TextId::RecordingGone, {fromFileName(file)}));
            }
        });
    });
    // A dock that floats is a window of its own.
    for (QWidget* window : {static_cast<QWidget*>(this), static_cast<QWidget*>(signalDock_)}) {
        new RecordingDrop(*window, [this](const std::string& file, bool compare) {
            if (menu_.openRecording->isEnabled()) {
                compare ? compareRecording(file) : showRecording(file);
            }
        });
    }
}

// A form that stands idle gives way; one that converts goes on.
void T_MainForm::savePart(const std::string& dataFile, const FrameWish& wish) {
    guarded("savePart", [&] {
        if (textForm_ != nullptr && !textForm_->running()) {
            textForm_->close();
            textForm_ = nullptr;
        }
        saveAsText(dataFile, wish);
    });
}

std::string T_MainForm::shownFile() const {
    if (!showForm_->openedFile().empty()) {
        return showForm_->openedFile();
    }
    const std::string& last = host_.watch().facts().file;
    return last.empty() ? settings_.wish.fileName : last;
}

void T_MainForm::DigitalSettingsClick() {
    guarded("DigitalSettingsClick", [this] { showForm_->DigitalSignalSettingsClick(); });
}

}  // namespace tarno2
