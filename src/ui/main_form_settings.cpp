// The settings: where they come from, which controls show them, and what the board makes of them.

#include <QDockWidget>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <algorithm>

#include "config/files/figure_text.h"
#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/language_choice.h"
#include "config/settings/settings_file.h"
#include "config/settings/window_place.h"
#include "core/recording/recording_need.h"
#include "core/recording/recording_settings.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"
#include "ui/channel_table.h"
#include "ui/color_scheme.h"
#include "ui/main_form.h"
#include "ui/main_status_bar.h"
#include "ui/message_bar.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/measuring_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/panels/program_panel.h"
#include "ui/show_form.h"
#include "ui/state_strip.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

WindowPlace placeOf(const QRect& rectangle) {
    return {rectangle.x(), rectangle.y(), rectangle.width(), rectangle.height()};
}

QRect rectangleOf(const WindowPlace& place) {
    return {place.left, place.top, place.width, place.height};
}

std::vector<WindowPlace> screenPlaces() {
    std::vector<WindowPlace> places;
    if (const QScreen* main = QGuiApplication::primaryScreen()) {
        places.push_back(placeOf(main->availableGeometry()));
    }
    for (const QScreen* screen : QGuiApplication::screens()) {
        places.push_back(placeOf(screen->availableGeometry()));
    }
    return places;
}

// Room for everything, as far as the screen goes; a window's frame needs some of it.
WindowPlace firstPlace() {
    constexpr int32_t kFrame = 40;
    const std::vector<WindowPlace> screens = screenPlaces();
    if (screens.empty()) {
        return {};
    }
    const WindowPlace& screen = screens.front();
    const int32_t width = std::min(1200, screen.width - kFrame / 2);
    const int32_t height = std::min(820, screen.height - kFrame);
    return {screen.left + (screen.width - width) / 2, screen.top + (screen.height - height + kFrame) / 2, width,
            height};
}

}  // namespace

void T_MainForm::loadSettings() {
    settings_.language = languageFromLocale();
    settings_.showFormPos = {0, 0, 0, 0};  // docked
    settings_.wish.frequency = 0.0;        // the board's own, until one is chosen
    const OsError error = LoadConfig(programDirectory_, settings_);
    settings_.renewColors();
    firstStart_ = error.notFound();
    settingsUnread_ = !error.ok() && !firstStart_;
    if (settingsUnread_) {
        host_.showAttention(
            formatText(text(TextId::Attention).c_str(),
                       formatText(text(TextId::SettingsNotRead).c_str(), systemTextToCp1251(error.text()).c_str(),
                                  fileNameOf(keptSettingsName(programDirectory_)).c_str())
                           .c_str()));
    }
    const bool known = error.ok();
    if (known) {
        selectLanguage(settings_.language);
    } else {
        settings_.mainFormPos = firstPlace();
    }
    applyColorScheme(settings_.colorScheme);
    speedTester_.SetEnabled(settings_.checkDiskSpeed);
    selection().setDriverSettings(settings_.driverSettings);
    panels_->load(settings_);
    if (known) {
        lookForBoard([this, saved = settings_] { return selection().applySaved(saved); },
                     [this](ApplyOutcome outcome) { applyBoard(outcome); });
    } else {
        // Nobody has chosen anything yet: a board that is there can be used at once.
        lookForBoard([this] { return selection().chooseFirstUsable(); },
                     [this](ApplyOutcome outcome) { host_.SetErrorCode(statusOf(outcome)); });
    }
    setFileName(host_.naming().NameAtStart(settings_.wish.fileName));
    refreshDisk();
    programPanel_->setProgramFolder(programDirectory_);
    programPanel_->setDebugLog(debugLog().isOpen(), joinPath(programDirectory_, "Tarno2.dbg"));
    menu_.extendedChannels->setChecked(settings_.extendedChannelMode);
    btnAutoStartClick(settings_.wish.cycleStart);
    setWindowFlag(Qt::WindowStaysOnTopHint, settings_.stayOnTop);
}

void T_MainForm::loadConsoleSettings() {
    const RecordingWish& wanted = *host_.console();
    settings_.language = languageFromLocale();
    showWish(wanted, settings_);
    if (!host_.applyConsoleSettings()) {
        return;
    }
    panels_->load(settings_);
    panels_->boardChanged(selection());
    setFileName(wanted.fileName);
    if (wanted.fileName.empty()) {
        control().GenerateFileName();
    }
    DEBUG_LOG("LoadConfig consolemode - Status OK");
}

void T_MainForm::boardChanged() {
    panels_->boardChanged(selection());
    storeControls();
    selection().setHardwareAverage(settings_.wish.hardwareAverage);
    try {
        RecalcChannelCount();
    } catch (...) {
        DEBUG_LOG("!!!    Catching....   RecalcChannelCount");
    }
    if (showForm_ != nullptr) {
        showForm_->setDigitalLines(selection().driver().facts().format.m_nDigitalLines);
    }
    showNeed();
}

void T_MainForm::RecalcChannelCount() {
    DEBUG_LOG("RecalcChannelCount");
    measuringPanel_->setActiveChannels(channelsPanel_->activeCount());
}

void T_MainForm::FileNameEditChange() {
    guarded("FileNameEditChange", [this] {
        findings_ = tarno2::FileNameEditChange(fileName(), speedTester_, [this] {
            QGuiApplication::setOverrideCursor(Qt::BusyCursor);
            filePanel_->showMeasuring();
        });
        if (QGuiApplication::overrideCursor() != nullptr) {
            QGuiApplication::restoreOverrideCursor();
        }
        filePanel_->showFindings(findings_);
        showDisk();
        showNeed();
    });
}

void T_MainForm::HDDTestSpeedClick(bool on) {
    guarded("HDDTestSpeedClick", [this, on] {
        DEBUG_LOG("Disk speed check change : %s", on ? "ON" : "OFF");
        speedTester_.SetEnabled(on);
        FileNameEditChange();
    });
}

void T_MainForm::showNeed() {
    if (search_.busy()) {
        return;
    }
    const RecordingNeed need = recordingNeed(host_.settings(), selection().driver().facts(), findings_.disk);
    filePanel_->showNeed(need);
    QString shown;
    if (need.known()) {
        shown = fromCodePage(formatRate(need.bytesPerSecond));
        const double seconds = diskLastsSeconds(need, findings_.disk.freeBytes);
        if (findings_.diskKnown() && seconds >= 0.0) {
            shown += QStringLiteral(", ") +
                     uiText(TextId::DiskLasts, {fromCodePage(formatDuration(static_cast<uint64_t>(seconds)))});
        }
    }
    const bool slow = findings_.speedKnown() && diskTooSlow(need, findings_.speed);
    statusLine_->setNeed(shown, slow || (findings_.diskKnown() && diskTooSmall(need, findings_.disk.freeBytes)));
}

// What may have changed since the name was checked: the free space.
void T_MainForm::refreshDisk() {
    static_cast<void>(DiskInfo(fileName(), findings_.disk));
    filePanel_->showFindings(findings_);
    showDisk();
    showNeed();
}

void T_MainForm::showDisk() {
    if (!findings_.diskKnown()) {
        statusLine_->setDisk(findings_.problem ? uiText(*findings_.problem) : QString());
        return;
    }
    QString shown = uiText(TextId::FreeSpace, {fromCodePage(findings_.disk.fileSystem),
                                               fromCodePage(formatSize(findings_.disk.freeBytes))});
    if (findings_.speedKnown()) {
        shown +=
            QStringLiteral(", ") + uiText(TextId::DiskSpeed, {fromCodePage(formatRate(findings_.bytesPerSecond()))});
    }
    statusLine_->setDisk(shown);
}

void T_MainForm::storeControls() {
    if (search_.busy()) {
        return;
    }
    panels_->store(settings_);
    settings_.driverSettings = selection().driverSettings();
    const uint32_t channels = selection().driver().facts().channelCount;
    settings_.channelCount = channels > 0 ? static_cast<int32_t>(channels) : kMaximumChannelCount;
}

void T_MainForm::rememberRecording() {
    if (!host_.keptFile().empty()) {
        settings_.wish.fileName = host_.keptFile();
    }
}

void T_MainForm::storePlaces() {
    settings_.formVisible = isMinimized() ? 0 : isMaximized() ? 2 : 1;
    settings_.mainFormPos = placeOf(isMaximized() || isMinimized() ? normalGeometry() : geometry());
    settings_.showFormVisible = menu_.showSignal->isChecked();
    // A view that is docked has no place of its own.
    settings_.showFormPos = signalDock_->isFloating() ? placeOf(signalDock_->geometry()) : WindowPlace{0, 0, 0, 0};
    settings_.showSettingMember = panels_->openMember();
    settings_.hidePanels = panels_->folded() && !foldedForRun_;
    settings_.showMessages = messages_->unfolded();
    settings_.hideTable = !menu_.channelTable->isChecked();
    settings_.showMoreFigures = strip_->more();
    storePartPlaces();
    settings_.extendedChannelMode = menu_.extendedChannels->isChecked();
}

void T_MainForm::placeWindows() {
    const std::vector<WindowPlace> screens = screenPlaces();
    setGeometry(rectangleOf(placeOnScreens(settings_.mainFormPos, screens)));
    if (settings_.hidePanels) {
        panels_->setFolded(true);
    }
    menu_.showPanels->setChecked(panels_->unfolded());
    menu_.channelTable->setChecked(!settings_.hideTable);
    strip_->setMore(settings_.showMoreFigures);
    placeParts();
}

void T_MainForm::placeParts() {
    placeColumns();
    menu_.showMessages->setChecked(settings_.showMessages);
}

// Once the main window is there: a window that is shown before the one it belongs to lies below it.
void T_MainForm::detachSignalView() {
    if (settings_.showFormPos.width > 0) {
        signalDock_->setFloating(true);
        signalDock_->setGeometry(rectangleOf(placeOnScreens(settings_.showFormPos, screenPlaces())));
        activateWindow();
    }
}

void T_MainForm::saveSettings() {
    if (host_.consoleMode()) {
        DEBUG_LOG("WriteConfig consolemode");
        return;
    }
    storeControls();
    storePlaces();
    host_.rememberFile();
    rememberRecording();
    if (WriteConfig(programDirectory_, settings_, settingsUnread_)) {
        settingsUnread_ = false;
    } else if (!host_.ending()) {
        tell(uiText(TextId::SettingsNotSaved, {fromFileName(programDirectory_)}));
    }
}

}  // namespace tarno2
