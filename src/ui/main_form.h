#pragma once

#include <QElapsedTimer>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "config/files/disk_speed.h"
#include "config/files/file_name_check.h"
#include "config/settings/program_settings.h"
#include "config/settings/recording_wish.h"
#include "core/devices/scoper_library.h"
#include "core/recording/session_host.h"
#include "ui/board_search.h"
#include "ui/main_menu.h"
#include "ui/sleep_inhibitor.h"

class QDockWidget;
class QSplitter;
class QToolButton;

namespace tarno2 {

class BoardPanel;
class ChannelsPanel;
class FilePanel;
class FirstPage;
struct FrameWish;
class MainStatusBar;
class MeasuringPanel;
class MessageBar;
class PanelStack;
class ProgramPanel;
class RecordingStack;
class StateStrip;
class T_AdditionalModeWindow;
class T_SaveAsTextForm;
class T_ShowForm;

/// The main window: the operator's settings, the state of the recording, and everything that starts from its menus. It
/// shows what its `SessionHost` does and hands on what the operator does, and holds no rules of its own. What fails in
/// a handler is a line in the debug log, and the window goes on. Window thread, except `post` and `faultFound`.
class T_MainForm : public QMainWindow, public SessionFront {
    Q_OBJECT

public:
    /// With `console` settings it records once, minimised, and closes itself. The logs are open already then.
    T_MainForm(std::string programDirectory, std::optional<RecordingWish> console);
    ~T_MainForm() override;

    /// Shows the window in the place that it had. In console mode, or when the operator wants it, the recording starts
    /// in the first turn of the event loop.
    void present();
    /// Shows a finished recording in the signal view; one that can't be opened is told in a box.
    void showRecording(const std::string& dataFile);
    /// Shows it below the one that is opened.
    void compareRecording(const std::string& dataFile);
    /// The system or a signal asks the program to end: stops the recording without a question and closes.
    void requestEnd();
    /// To be called when the toolkit's display is gone: the recording in console mode goes on to its end, another one
    /// is ended. Returns when the form is closed; nothing of the toolkit may be used afterwards.
    void runWithoutDisplay();
    /// The same, and the logs say that the system is ending.
    void requestShutdown();

    [[nodiscard]] ProgramSettings& programSettings() { return settings_; }
    [[nodiscard]] RecordingControl& control() { return host_.control(); }
    [[nodiscard]] SessionHost& host() { return host_; }
    [[nodiscard]] BoardSelection& selection() { return host_.selection(); }
    /// A driver looks for its board: until it has come back nobody else may ask it.
    [[nodiscard]] bool looksForBoard() const { return search_.busy(); }
    /// The driver searches for boards by itself, and the window follows.
    [[nodiscard]] bool followsSearch() const { return searchTimer_.isActive(); }

    // What the operator did.
    void StartButtonClick();
    void MonitorClick();
    void StopButtonClick();
    void btnAutoStartClick(bool down);
    void MarkClick();
    void DriverBoxChange(const QString& name);
    void BaseBoxChange(uint32_t number);
    void DrqBoxChange(int number);
    void DriverSettingChange(const QString& key, const QString& value);
    void SearchAgainClick();
    void FileNameEditChange();
    void ButtonSetFileNameClick();
    void HDDTestSpeedClick(bool on);
    void AdditionalFileModeClick();
    void SaveAsTextButtonClick();
    void SelectLanguageButtonClick();
    void RussianChooseClick();
    void EnglishChooseClick();
    void OpenRecordingClick();
    void CompareRecordingClick();
    void RecoverRecordingsClick();
    void DigitalSettingsClick();
    void SetupsClick();
    void AutoSettingsClick();
    void HelpClick();
    void AboutClick();
    /// True when the window may close: nothing is recorded, or the operator wants it to end.
    [[nodiscard]] bool FormCloseQuery();
    /// Sets every text of the window in the language chosen last.
    void SetCaptions();

    // The front of the session.
    void post(std::function<void()> step) override;
    void faultFound(const std::string& fault) override;
    [[nodiscard]] RecordingWish settings() override;
    [[nodiscard]] std::string fileName() override;
    void setFileName(const std::string& name) override;
    void startTimer(uint32_t milliseconds) override { stopTimer_.start(static_cast<int>(milliseconds)); }
    void killTimer() override { stopTimer_.stop(); }
    void quit() override;
    void showAttention(const std::string& message) override;
    void showDetail(const std::string& detail) override;
    void showMessage(const std::string& message) override;
    void synchronisationSwitchedOff() override;
    void showBoard() override;
    void showState() override;
    void runBegun() override;
    void runEnded() override;
    void showEnd(const RecordingResult& result, const RunEnd& end) override;
    void showRun() override;

signals:
    /// The window is closed and everything is saved.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    // Construction (main_form.cpp, main_form_actions.cpp).
    void buildPanels();
    void buildCenter();
    void buildColumns();
    void buildRows();
    void connectMenu();
    void connectPanels();
    void connectProgramPanel();
    void connectStrip();

    // The parts of the window, which fold (main_form_parts.cpp).
    void connectParts();
    void showPanels(bool shown);
    void showMessageList(bool shown);
    void showTable(bool shown);
    void foldForRun(bool running);
    void placeColumns();
    void placeColumns(int width);
    void makeRoomForTable();
    void storePartPlaces();

    // The signal view (main_form_signal.cpp).
    void buildSignalView();
    void renewSignalView();
    void makeSignalView();
    void orderTabs();
    void showRunningSignal();
    void buildRecordingLists();
    void savePart(const std::string& dataFile, const FrameWish& wish);
    [[nodiscard]] std::string shownFile() const;
    /// The data file that the user chooses.
    [[nodiscard]] std::optional<std::string> askForRecording(TextId title);

    // The first start (main_form_first.cpp).
    void showFirstPage();
    void endFirstPage();
    void tryBoard(int choice);

    // Setups (main_form_setups.cpp).
    void saveSetup(const QString& name);
    bool loadSetup(const QString& name);
    [[nodiscard]] bool boardTellsAll();
    void showLoaded();

    // The end of a recording (main_form_end.cpp).
    void connectEnd();
    [[nodiscard]] QString endFacts(const RecordingResult& result);
    void notice(const QString& message);
    void saveAsText(const std::string& dataFile, const FrameWish& wish);
    /// False: there is none.
    bool raiseTextForm();

    // Settings (main_form_settings.cpp).
    void loadSettings();
    void loadConsoleSettings();
    void applyBoard(ApplyOutcome outcome);
    void showDriverNotLoaded();
    void lookForBoard(std::function<ApplyOutcome()> search, std::function<void(ApplyOutcome)> found);
    /// Looks for the driver's board, tells of it, then `chosen`; `whenFound` as `whenFound_`.
    void chooseDriver(const QString& name, void (T_MainForm::*whenFound)(),
                      const std::function<void(ApplyOutcome)>& chosen);
    void followSearch();
    void showLooking(bool looking);
    void showChosenBoard(ApplyOutcome outcome);
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
    void chooseLanguage(InterfaceLanguage language);

    // Recording (main_form_recording.cpp).
    void startRecording();
    void startMonitoring();
    void withBoard(void (T_MainForm::*step)());
    void doWhenFound(void (T_MainForm::*step)());
    [[nodiscard]] bool answersAllowStart();
    void begin();
    void recover(const std::string& folder, const QString& nothingFound);
    void showRecovered(const std::vector<RecoveryReport>& reports, const QString& nothingFound);
    [[nodiscard]] bool ask(const QString& question, TextId go);
    void tell(const QString& message);
    void showConditions();
    void allowStarts();

    /// Runs a step; what it throws is logged, and the window goes on.
    template <typename Step>
    void guarded(const char* name, Step step) noexcept {
        host_.guarded(name, step);
    }

    std::string programDirectory_;
    ProgramSettings settings_;
    DiskSpeedTester speedTester_;
    FileNameFindings findings_;
    ScoperLibrary scoper_;  ///< outlives the view
    SessionHost host_;
    BoardSearch search_;                             ///< goes before what it looks with
    void (T_MainForm::*whenFound_)() = nullptr;      ///< the start that waits for the board; null: none does
    QPointer<QWidget> focusBeforeSearch_;            ///< what the search has taken the keys from
    QTimer searchTimer_;                             ///< runs while the driver searches for boards by itself
    std::function<void(ApplyOutcome)> afterSearch_;  ///< waits for the board; null: nobody does

    QTimer stopTimer_;
    SleepInhibitor sleepInhibitor_;
    QTimer refreshTimer_;
    QTimer checksumTimer_;
    QElapsedTimer diskClock_;      ///< since the free space was looked at
    bool settingsUnread_ = false;  ///< those of the last run are there, but could not be read
    bool firstStart_ = false;      ///< there are no settings yet
    bool closed_ = false;
    std::string recorded_;  ///< first data file of what the end line tells of
    bool displayGone_ = false;
    bool foldedForRun_ = false;  ///< the settings come back when the recording ends
    bool begun_ = false;         ///< looks for unfinished recordings, and has started what starts by itself

    MainMenu menu_;
    StateStrip* strip_ = nullptr;
    PanelStack* panels_ = nullptr;
    BoardPanel* boardPanel_ = nullptr;
    MeasuringPanel* measuringPanel_ = nullptr;
    FilePanel* filePanel_ = nullptr;
    ChannelsPanel* channelsPanel_ = nullptr;
    ProgramPanel* programPanel_ = nullptr;
    QMainWindow* right_ = nullptr;  ///< where the signal docks
    QToolButton* tableButton_ = nullptr;
    QDockWidget* signalDock_ = nullptr;
    RecordingStack* signalStack_ = nullptr;
    T_ShowForm* showForm_ = nullptr;  ///< the first one of the stack
    FirstPage* firstPage_ = nullptr;  ///< in its place; null: it is there itself
    MessageBar* messages_ = nullptr;
    MainStatusBar* statusLine_ = nullptr;
    T_AdditionalModeWindow* additionalWindow_ = nullptr;
    QPointer<T_SaveAsTextForm> textForm_;  ///< while it is open
    QSplitter* columns_ = nullptr;
    QSplitter* rows_ = nullptr;
};

}  // namespace tarno2
