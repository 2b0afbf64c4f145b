#include "ui/main_form.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDockWidget>
#include <QPushButton>
#include <QToolButton>
#include <utility>

#include "config/logs/debug_log.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/paths.h"
#include "ui/additional_mode_window.h"
#include "ui/channel_table.h"
#include "ui/color_scheme.h"
#include "ui/mark_controls.h"
#include "ui/message_bar.h"
#include "ui/panels/board_panel.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/driver_settings_form.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/measuring_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/panels/program_panel.h"
#include "ui/program_icon.h"
#include "ui/recording_stack.h"
#include "ui/show_form.h"
#include "ui/state_strip.h"
#include "ui/text.h"
#include "ui/wheel_guard.h"

namespace tarno2 {

namespace {

constexpr int kRefreshPeriodMs = 100;
constexpr int kSearchPeriodMs = 250;
constexpr int kChecksumPeriodMs = 500;
constexpr uint32_t kDisplaylessPeriodMs = 20;

}  // namespace

T_MainForm::T_MainForm(std::string programDirectory, std::optional<RecordingWish> console)
    : programDirectory_(std::move(programDirectory)),
      host_(*this, programDirectory_, std::move(console)),
      menu_(*this) {
    setObjectName(QStringLiteral("T_MainForm"));
    setWindowIcon(programIcon());
    buildPanels();
    buildCenter();
    connectMenu();
    connectParts();
    connectEnd();
    connectStrip();
    connectPanels();
    connectProgramPanel();
    stopTimer_.setTimerType(Qt::PreciseTimer);
    connect(&stopTimer_, &QTimer::timeout, this, [this] { host_.timerTick(); });
    refreshTimer_.setInterval(kRefreshPeriodMs);
    searchTimer_.setInterval(kSearchPeriodMs);
    connect(&searchTimer_, &QTimer::timeout, this, [this] { guarded("FollowSearch", [this] { followSearch(); }); });
    connect(&search_, &BoardSearch::slow, this, [this] { showLooking(true); });
    connect(&refreshTimer_, &QTimer::timeout, this, [this] { guarded("Refresh", [this] { host_.follow(); }); });
    checksumTimer_.setInterval(kChecksumPeriodMs);
    connect(&checksumTimer_, &QTimer::timeout, this, [this] { strip_->setChecksums(host_.checksumProgress()); });
    checksumTimer_.start();
    additionalWindow_ = new T_AdditionalModeWindow(settings_.wish.synchro, settings_.wish.synchroSizes, this);
    additionalWindow_->setQuiet(host_.consoleMode());
    connect(additionalWindow_, &QDialog::finished, this, &T_MainForm::showConditions);
    new WheelGuard(this);
    guarded("LoadConfig", [this] { host_.consoleMode() ? loadConsoleSettings() : loadSettings(); });
    guarded("SignalView", [this] { buildSignalView(); });
    guarded("Places", [this] { placeWindows(); });
    guarded("SetCaptions", [this] {
        additionalWindow_->ReloadControls();
        SetCaptions();
    });
}

T_MainForm::~T_MainForm() {
    if (control().running()) {
        control().StopButtonClick();
    }
    // The view reads from recordings and draws with a library that go before the window's other parts.
    control().setLiveTap(nullptr);
    control().setBeforeSessionGoes({});
    signalDock_->disconnect(this);
    delete signalStack_;
    DEBUG_LOG("Destructor");
}

void T_MainForm::buildPanels() {
    panels_ = new PanelStack(this);
    boardPanel_ = new BoardPanel;
    measuringPanel_ = new MeasuringPanel;
    filePanel_ = new FilePanel;
    channelsPanel_ = new ChannelsPanel;
    programPanel_ = new ProgramPanel;
    for (SettingsPanel* panel : std::initializer_list<SettingsPanel*>{boardPanel_, measuringPanel_, filePanel_,
                                                                      channelsPanel_, programPanel_}) {
        panels_->add(panel);
    }
}

void T_MainForm::connectStrip() {
    connect(&strip_->monitorButton(), &QPushButton::clicked, this, &T_MainForm::MonitorClick);
    connect(&strip_->startButton(), &QPushButton::clicked, this, &T_MainForm::StartButtonClick);
    connect(&strip_->noChecksumsButton(), &QPushButton::clicked, this, [this] { host_.giveUpChecksums(); });
    connect(&strip_->stopButton(), &QPushButton::clicked, this, &T_MainForm::StopButtonClick);
    connect(&strip_->cycleButton(), &QPushButton::toggled, this, &T_MainForm::btnAutoStartClick);
    connect(&strip_->conditionsButton(), &QToolButton::clicked, menu_.additional, &QAction::trigger);
    connect(&messages_->marks().button(), &QPushButton::clicked, this, &T_MainForm::MarkClick);
    const auto tell = [this](void (MarkWriter::*told)(RecordingMark)) {
        return [this, told](const RecordingMark& mark) {
            if (T_BOARD* session = control().session(); session != nullptr) {
                (session->marks().*told)(mark);
            }
        };
    };
    connect(&messages_->marks(), &MarkControls::typed, this, tell(&MarkWriter::setDraft));
    connect(&messages_->marks(), &MarkControls::taken, this, tell(&MarkWriter::setText));
}

void T_MainForm::connectPanels() {
    connect(panels_, &PanelStack::changed, this, [this] {
        guarded("ParamsIsChange", [this] {
            DEBUG_LOG("ParamsIsChange");
            showNeed();
            DEBUG_LOG("~ParamsIsChange");
        });
    });
    connect(boardPanel_, &BoardPanel::driverChosen, this, &T_MainForm::DriverBoxChange);
    connect(boardPanel_, &BoardPanel::baseChosen, this, &T_MainForm::BaseBoxChange);
    connect(boardPanel_, &BoardPanel::searchAsked, this, &T_MainForm::SearchAgainClick);
    connect(boardPanel_, &BoardPanel::needChanged, &strip_->need(), &NeedLine::setNeed);
    connect(&strip_->need(), &NeedLine::asked, this, [this] {
        panels_->setFolded(false);
        panels_->open(0);
        boardPanel_->meetNeed();
    });
    connect(&boardPanel_->driverSettings(), &DriverSettingsForm::edited, this, &T_MainForm::DriverSettingChange);
    connect(boardPanel_, &BoardPanel::drqChosen, this, &T_MainForm::DrqBoxChange);
    connect(boardPanel_, &BoardPanel::hardwareAverageChanged, this,
            [this](bool on) { guarded("HardwareAverage", [this, on] { selection().setHardwareAverage(on); }); });
    connect(filePanel_, &FilePanel::fileNameEdited, this, &T_MainForm::FileNameEditChange);
    connect(filePanel_, &FilePanel::chooseFileName, this, &T_MainForm::ButtonSetFileNameClick);
    connect(filePanel_, &FilePanel::diskSpeedCheckChanged, this, &T_MainForm::HDDTestSpeedClick);
    connect(channelsPanel_, &ChannelsPanel::extendedViewChanged, menu_.extendedChannels, &QAction::setChecked);
    connect(&channelsPanel_->table(), &ChannelTable::shownChanged, this, [this](int channel, bool on) {
        settings_.channels[static_cast<size_t>(channel)].shown = on;
        showForm_->shownChannelsChanged();
    });
    connect(&channelsPanel_->table(), &ChannelTable::channelMarked, this,
            [this](int channel) { showForm_->markChannel(channel); });
    connect(&channelsPanel_->table(), &ChannelTable::changed, this, [this] {
        measuringPanel_->setActiveChannels(channelsPanel_->activeCount());
        storeControls();
        signalStack_->settingsChanged();
    });
}

void T_MainForm::connectProgramPanel() {
    connect(programPanel_, &ProgramPanel::russianChosen, this, &T_MainForm::RussianChooseClick);
    connect(programPanel_, &ProgramPanel::englishChosen, this, &T_MainForm::EnglishChooseClick);
    connect(programPanel_, &ProgramPanel::colorSchemeChanged, this, &applyColorScheme);
    connect(programPanel_, &ProgramPanel::cycleStartChanged, this, &T_MainForm::btnAutoStartClick);
    connect(programPanel_, &ProgramPanel::axisFontChanged, this, [this] {
        storeControls();
        signalStack_->settingsChanged();
    });
    connect(programPanel_, &ProgramPanel::debugLogChanged, this, [this](bool on) {
        on ? debugLog().open(joinPath(programDirectory_, "Tarno2.cfg"), 1) : debugLog().close();
        programPanel_->setDebugLog(debugLog().isOpen(), joinPath(programDirectory_, "Tarno2.dbg"));
    });
    connect(programPanel_, &ProgramPanel::stayOnTopChanged, this, [this](bool on) {
        const bool shown = isVisible();
        setWindowFlag(Qt::WindowStaysOnTopHint, on);
        if (shown) {
            show();
        }
    });
}

void T_MainForm::closeEvent(QCloseEvent* event) {
    bool mayClose = true;
    guarded("FormCloseQuery", [this, &mayClose] { mayClose = FormCloseQuery(); });
    event->setAccepted(mayClose);
    if (mayClose && !closed_) {
        closed_ = true;
        emit closed();
    }
}

void T_MainForm::requestEnd() {
    host_.setEnding();
    if (displayGone_) {
        QCloseEvent event;
        closeEvent(&event);
    } else {
        close();
    }
}

// The toolkit's loop needs the display. Everything that keeps a recording going is posted to the form or to the search
// for its board, and its timer goes by a clock.
void T_MainForm::runWithoutDisplay() {
    const bool again = std::exchange(displayGone_, true);
    if (!again) {
        guarded("DisplayGone", [this] {
            host_.showAttention(formatText(text(TextId::Attention).c_str(), text(TextId::DisplayGone).c_str()));
        });
    }
    if (!host_.consoleMode() || again) {
        requestEnd();  // nobody could end it any more, or the toolkit was used all the same
    }
    if (!begun_ && !host_.ending()) {
        begin();
    }
    while (!closed_) {
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
        QCoreApplication::sendPostedEvents(&search_, QEvent::MetaCall);
        host_.timerTick();
        sleepMilliseconds(kDisplaylessPeriodMs);
    }
}

void T_MainForm::requestShutdown() {
    host_.shutdown();
    guarded("Shutdown", [this] {
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);  // the system may not wait for the event loop
    });
    requestEnd();
}

}  // namespace tarno2
