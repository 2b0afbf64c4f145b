#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "config/files/disk_speed.h"
#include "config/files/file_name_check.h"
#include "config/files/file_naming.h"
#include "config/settings/program_settings.h"
#include "config/settings/recording_wish.h"
#include "core/devices/board_selection.h"
#include "core/devices/scoper_library.h"
#include "core/recording/recording_control.h"
#include "core/recording/recording_progress.h"
#include "core/recording/recording_shell.h"
#include "core/storage/recovery_thread.h"
#include "records/conversion_inputs.h"
#include "ui/board_search.h"
#include "ui/sleep_inhibitor.h"
#include "ui/state_strip.h"

class QAction;
class QDockWidget;
class QMenu;
class QSplitter;

namespace tarno2 {

class BoardPanel;
class ChannelsPanel;
class FilePanel;
class MainStatusBar;
class MeasuringPanel;
class MessageList;
class PanelStack;
class ProgramPanel;
class T_AdditionalModeWindow;
class T_SaveAsTextForm;
class T_ShowForm;

/// The main window: the operator's settings, the state of the recording, and everything that starts from its menus. It
/// is the shell in which the recording logic runs, and holds no rules of its own. What fails in a handler is a line in
/// the debug log, and the window goes on. Window thread, except `post`.
class T_MainForm : public QMainWindow, public RecordingShell {
    Q_OBJECT

public:
    /// With `console` settings it records once, minimised, and closes itself. The logs are open already then.
    T_MainForm(std::string programDirectory, std::optional<RecordingWish> console);
    ~T_MainForm() override;

    /// Shows the window in the place that it had. In console mode, or when the operator wants it, the recording starts
    /// in the first turn of the event loop.
    void present();
    /// The system or a signal asks the program to end: stops the recording without a question and closes.
    void requestEnd();
    /// To be called when the toolkit's display is gone: the recording in console mode goes on to its end, another one
    /// is ended. Returns when the form is closed; nothing of the toolkit may be used afterwards.
    void runWithoutDisplay();
    /// The same, and the logs say that the system is ending.
    void requestShutdown();

    [[nodiscard]] ProgramSettings& programSettings() { return settings_; }
    [[nodiscard]] RecordingControl& control() { return control_; }
    [[nodiscard]] BoardSelection& selection() { return selection_; }
    /// A driver looks for its board: until it has come back nobody else may ask it.
    [[nodiscard]] bool looksForBoard() const { return search_.busy(); }

    // What the operator did.
    void StartButtonClick();
    void StopButtonClick();
    void btnAutoStartClick(bool down);
    void DriverBoxChange(const QString& name);
    void BaseBoxChange(uint32_t number);
    void DrqBoxChange(int number);
    void FileNameEditChange();
    void ButtonSetFileNameClick();
    void HDDTestSpeedClick(bool on);
    void AdditionalFileModeClick();
    void SaveAsTextButtonClick();
    void SelectLanguageButtonClick();
    void RussianChooseClick();
    void EnglishChooseClick();
    void OpenRecordingClick();
    void RecoverRecordingsClick();
    void DigitalSettingsClick();
    void HelpClick();
    void AboutClick();
    /// True when the window may close: nothing is recorded, or the operator wants it to end.
    [[nodiscard]] bool FormCloseQuery();
    /// Sets every text of the window in the language chosen last.
    void SetCaptions();
    /// Shows the board's state; the fatal ones end console mode.
    void SetErrorCode(BoardStatus status);

    // The shell of the recording logic.
    void post(const Notification& notification) override;
    [[nodiscard]] RecordingWish settings() override;
    [[nodiscard]] std::string fileName() override;
    void setFileName(const std::string& name) override;
    [[nodiscard]] std::string savedFileName() override;
    void showStatus(const std::string& status) override;
    void showAttention(const std::string& message) override;
    void showDetail(const std::string& detail) override;
    void showMessage(const std::string& message) override;
    void synchronisationSwitchedOff() override;
    void recordingEnded(const RecordingResult& result) override;
    void showBytes(uint64_t bytes) override;
    void showProgress(int percent) override;
    void startTimer(uint32_t milliseconds) override;
    void killTimer() override;
    [[nodiscard]] bool consoleMode() override { return console_.has_value(); }
    void quit() override;

signals:
    /// The window is closed and everything is saved.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // Construction (main_form.cpp, main_form_actions.cpp).
    void buildPanels();
    void buildCenter();
    void buildActions();
    void buildMenus();
    void connectPanels();
    void connectStrip();
    QAction* addAction(TextId text, void (T_MainForm::*handler)(), const QKeySequence& key = {});
    QAction* addToggle(TextId text, std::function<void(bool)> toggled);
    QMenu* addMenu(TextId text);

    // The signal view (main_form_signal.cpp).
    void buildSignalView();
    void showRunningSignal();
    [[nodiscard]] std::string shownFile() const;

    // Settings (main_form_settings.cpp).
    void loadSettings();
    void loadConsoleSettings();
    void applyBoard(ApplyOutcome outcome);
    void showDriverSettings();
    [[nodiscard]] ApplyOutcome chooseFirstUsableDriver();
    void lookForBoard(std::function<ApplyOutcome()> search, std::function<void(ApplyOutcome)> found);
    void showLooking(bool looking);
    void saveSettings();
    void rememberRecording();
    void storeControls();
    void placeWindows();
    void placeParts();
    void detachSignalView();
    void storePlaces();
    void boardChanged();
    void RecalcChannelCount();
    void showNeed();
    void showDisk();
    void refreshDisk();
    void showBoardStatus();
    void chooseLanguage(InterfaceLanguage language);

    // Recording (main_form_recording.cpp, main_form_run.cpp).
    void handle(const Notification& notification);
    void timerTick();
    void startRecording();
    [[nodiscard]] bool answersAllowStart();
    void begin();
    void recover(const std::set<std::string>& folders, const QString& nothingFound);
    void showRecovered(const std::vector<RecoveryReport>& reports, const QString& nothingFound);
    [[nodiscard]] bool ask(const QString& question, TextId go);
    void tell(const QString& message);
    void updateState();
    void beginRun();
    void endRun();
    [[nodiscard]] bool isOfLastRun(const std::string& dataFile) const;
    void refreshRun();
    [[nodiscard]] RunState runningState() const;
    void showConditions();
    void showLastFigures(const RecordingResult& result);
    [[nodiscard]] uint64_t frameCount(uint64_t bytes) const;
    [[nodiscard]] RunState idleState() const;
    void setState(RunState state);
    void setLocked(bool locked);

    /// Runs a step; what it throws is logged, and the window goes on.
    template <typename Step>
    void guarded(const char* name, Step step) noexcept;
    static void logException(const char* name, const char* what) noexcept;

    std::string programDirectory_;
    std::optional<RecordingWish> console_;
    ProgramSettings settings_;
    FileNaming naming_;
    DiskSpeedTester speedTester_;
    FileNameFindings findings_;
    ScoperLibrary scoper_;  ///< outlives the view
    BoardSelection selection_;
    RecordingControl control_;
    BoardStatus boardStatus_ = BoardStatus::Ready;
    BoardSearch search_;           ///< goes before what it looks with
    bool startWhenFound_ = false;  ///< a start waits for the board

    // The recording that is shown.
    NewestBlock newestBlock_;
    RecordingProgress progress_;
    RecordingWish runSettings_;
    uint32_t runNumber_ = 0;  ///< of its session; 0: none runs
    uint64_t frameBytes_ = 0;
    RunFigures figures_;     ///< as they were shown last
    bool runBegun_ = false;  ///< the board has begun to measure
    RunState endState_ = RunState::Ready;
    std::string runFile_;
    KnownInputs runInputs_;  ///< what the driver tells of it more exactly than the description

    QTimer stopTimer_;
    QElapsedTimer stopClock_;
    int64_t ticksGiven_ = 0;
    uint32_t tickPeriod_ = 0;
    SleepInhibitor sleepInhibitor_;
    QTimer refreshTimer_;
    QElapsedTimer diskClock_;      ///< since the free space was looked at
    bool settingsUnread_ = false;  ///< those of the last run are there, but could not be read
    bool ending_ = false;          ///< closes without a question
    bool closed_ = false;
    bool displayGone_ = false;
    bool begun_ = false;  ///< looks for unfinished recordings, and has started what starts by itself

    StateStrip* strip_ = nullptr;
    PanelStack* panels_ = nullptr;
    BoardPanel* boardPanel_ = nullptr;
    MeasuringPanel* measuringPanel_ = nullptr;
    FilePanel* filePanel_ = nullptr;
    ChannelsPanel* channelsPanel_ = nullptr;
    ProgramPanel* programPanel_ = nullptr;
    QMainWindow* right_ = nullptr;  ///< channel table with the docked signal below it
    QDockWidget* signalDock_ = nullptr;
    T_ShowForm* showForm_ = nullptr;
    MessageList* messages_ = nullptr;
    MainStatusBar* statusLine_ = nullptr;
    T_AdditionalModeWindow* additionalWindow_ = nullptr;
    QPointer<T_SaveAsTextForm> textForm_;  ///< while it is open
    QSplitter* columns_ = nullptr;
    QSplitter* rows_ = nullptr;

    std::vector<std::pair<QAction*, TextId>> actions_;
    std::vector<std::pair<QMenu*, TextId>> menus_;
    RecoveryThread recovery_;  ///< ends before everything that it reports to
    QMenu* selectLanguageMenu_ = nullptr;
    QAction* start_ = nullptr;
    QAction* stop_ = nullptr;
    QAction* cycle_ = nullptr;
    QAction* openRecording_ = nullptr;
    QAction* chooseFile_ = nullptr;
    QAction* additional_ = nullptr;
    QAction* saveAsText_ = nullptr;
    QAction* showSignal_ = nullptr;
    QAction* detachSignal_ = nullptr;
    QAction* digitalLines_ = nullptr;
    QAction* showPanels_ = nullptr;
    QAction* showMessages_ = nullptr;
    QAction* extendedChannels_ = nullptr;
    QAction* russianChoose_ = nullptr;
    QAction* englishChoose_ = nullptr;
};

template <typename Step>
void T_MainForm::guarded(const char* name, Step step) noexcept {
    try {
        step();
    } catch (const std::exception& error) {
        logException(name, error.what());
    } catch (...) {
        logException(name, "unknown");
    }
}

}  // namespace tarno2
