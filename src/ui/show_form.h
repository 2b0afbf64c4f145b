#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "config/settings/program_settings.h"
#include "core/recording/live_tap.h"
#include "display/axis_x.h"
#include "display/channel_reading.h"
#include "display/glide.h"
#include "display/repaint.h"
#include "display/shown_marks.h"
#include "exports/frame_wish.h"
#include "language/text_ids.h"
#include "measure/cursor_places.h"
#include "ui/records_signal.h"
#include "ui/shown_signal.h"
#include "ui/signal_drawing.h"
#include "ui/view_icons.h"
#include "ui/view_pictures.h"
#include "ui/zoom_history.h"

class QAction;
class QActionGroup;
class QHBoxLayout;
class QLabel;
class QMenu;
class QScrollBar;
class QSplitter;
class QToolBar;

namespace tarno2 {

class CursorTools;
class MarkListWindow;
class OverviewStrip;
class ShowTools;
class SpectrumPane;
class T_DigitalSignalSettings;

/// What the views of several recordings show together, in frames of the one that is told.
struct SharedPart {
    PictureEdges edges;
    double origin = 0.0;  ///< that the X axis counts from
    bool clock = false;   ///< the axis tells the time of day
    std::array<double, CursorPlaces::kCount> cursors{};
};

/// The signal view: the newest frames of the running recording, older ones by its scroll bar, or a recording that was
/// opened. It sits in a dock of the main window, which is detached to be a window of its own.
///
/// New data are fetched and drawn at most once in 40 ms; what the user changes is drawn at once. While it is hidden
/// nothing is fetched or converted. Its settings are those of the program, written as the user changes them. A handler
/// that fails is a line in the debug log, and the view goes on. Window thread.
class T_ShowForm : public QWidget {
    Q_OBJECT

public:
    /// Without `scoper` a text stands in place of the signal. Both outlive the view, and `scoper` draws nothing else.
    T_ShowForm(ProgramSettings& settings, ISCOPERA* scoper, QWidget* parent = nullptr);
    ~T_ShowForm() override;

    /// Where recordings put their frames for the view.
    [[nodiscard]] LiveTap& tap() { return tap_; }
    /// A recording has begun; what was opened is closed.
    void recordingStarted(LiveRecording recording);
    /// Its session goes, with all that is not in files.
    void sessionGoes();
    /// It is over. Its frames stay on screen.
    void recordingStopped();
    /// Shows a finished recording, by its first data file, over its whole length. False, after a message, when it can't
    /// be opened.
    bool openRecording(const std::string& dataFile);
    /// Closes what was opened.
    void backToLive();
    /// The data file of the recording that was opened; empty while none is.
    [[nodiscard]] const std::string& openedFile() const { return openedFile_; }
    /// Another board is chosen: it has so many digital lines.
    void setDigitalLines(uint32_t lines);
    /// Sets all texts again, in the language chosen last.
    void retranslate();
    /// The font of the axes, or the colour of a channel was changed elsewhere.
    void settingsChanged();
    /// Thresholds of the synchronisation can't be dragged meanwhile.
    void setThresholdsLocked(bool locked);
    /// Channels were switched on or off in the settings.
    void shownChannelsChanged();
    /// That channel is drawn in front.
    void markChannel(int channel);
    /// Frames that can be looked at.
    [[nodiscard]] uint64_t frameCount() const;

    // What happens to the window.
    void FormPaint();
    void FormResize();
    void FormShow();
    void FormHide();
    void FormClose();
    void Splitter1Moved();

    // Scrolling; `key` is a ScrollKey.
    void ScrollBar1Change(int value);
    void ScrollBar1KeyDown(int key);

    // The mouse over the picture, in the units of the axes.
    void PaintBox1DblClick();
    void PaintBox1MouseDown(int button);
    /// `lane`: the one that the place is in; -1 while the curves lie one upon the other.
    void PaintBox1MouseMove(double x, double y, bool inside, int lane);

    // How it is drawn and followed.
    void PixelModeClick(bool points);
    /// 0 does not follow, 1 recorder, 2 recorder with zeroing.
    void DoNotFolowForDataClick(int mode);
    void ShowModeButtonClick();
    /// Shows digital lines beside the channels, or channels alone.
    void ShowDigitalClick(bool digital);
    void OnlyDigitalDataClick();
    void ShowSettingsClick();
    void DigitalSignalSettingsClick();
    /// The list of marks.
    void MarksClick();
    /// The flag of that mark was clicked.
    void FlagClick(uint64_t number);

    // The trigger (show_form_records.cpp).
    /// So many records over each other; 0: the signal in its course.
    void RecordsClick(int count);

    /// What lies between the cursors, or what is in the picture, is to be saved: of an opened recording.
    void SavePartClick();

    // One above the other with other recordings (show_form_compare.cpp).
    /// This view lies below `first`, which outlives it, and shows another recording. It has no bars of its own, and
    /// tells the place of the mouse in `head`.
    void lieBelow(T_ShowForm& first, QHBoxLayout& head);
    /// The recording that was opened, while it is shown in its course; null when there is none.
    [[nodiscard]] const RecordedFrames* shownRecording() const;
    [[nodiscard]] const QString& openedTitle() const { return openedTitle_; }
    [[nodiscard]] SharedPart sharedPart() const;
    void setSharedPart(const SharedPart& part);
    /// Frames that can be gone to, also where another recording has some; nothing: its own.
    void setReach(const std::optional<PictureEdges>& reach);
    [[nodiscard]] bool showsWhole() const;
    /// All of it on the X axis.
    void fitTime();
    /// What *Save picture* takes: asked each time. Without it this view alone.
    void setPictures(std::function<std::vector<ViewPicture>()> pictures) { pictures_ = std::move(pictures); }
    /// This view alone.
    [[nodiscard]] ViewPicture picture() const { return {openedTitle_, scoper_}; }

    // Lanes (show_form_lanes.cpp).
    /// Curves in lanes, or one upon the other.
    void LanesClick(bool lanes);
    void CommonScaleClick(bool common);
    void ShowAllClick();

    // What is in the picture (show_form_zoom.cpp).
    /// The part that was in the picture before the last zoom or move.
    void ZoomBackClick();
    /// All of it, on both axes; a running signal is followed again.
    void FitClick();
    void ZoomInClick();
    void ZoomOutClick();
    void SampleAPixelClick();
    void FirstFrameClick();
    /// The end; a running signal is followed again.
    void NewestFrameClick();

    // The time of the picture (show_form_clock.cpp).
    /// The X axis tells the time of day, or the unit again.
    void ClockClick(bool on);
    /// Asks where to go.
    void GoToTimeClick();

    // Keys (show_form_keys.cpp).
    /// The next cursor, and the cursor to the nearest edge.
    void CursorClick();
    void SnapClick();
    /// Shows what the keys do.
    void KeysClick();
    /// Puts the commands of the view into a menu, with their icons and keys.
    void fillMenu(QMenu& menu);

    // The axes.
    /// X unit: 0 samples, 1 us, 2 ms, 3 s, 4 min, 5 h. What is on screen stays.
    void Samples1Click(int tag);
    /// Y unit: -1 automatic, 0 V, 1 mV, 2 uV, 3 codes, 4 those of the channels.
    void ADCCodes1Click(int tag);
    void AxisXButtonClick();
    /// Enter (13) applies the span of X that was typed.
    void AxisXEditKeyDown(int key);
    void AxisYEditKeyDown(int key);
    void AxisYAutoClick(bool automatic);

signals:
    /// What is in the picture, or how, was changed.
    void changed();
    /// The signal is about to be another one.
    void signalLeft();
    /// A text for the user's list of messages.
    void message(const QString& text);
    /// The user switched a channel on or off in the picture.
    void channelShown(int channel, bool on);
    /// The user dragged a threshold of the synchronisation, which has its new value.
    void thresholdMoved();
    /// Those frames and channels of a data file are to be saved.
    void savePartWanted(const std::string& dataFile, const FrameWish& wish);
    /// The user clicked the head of a channel.
    void channelMarked(int channel);
    /// The newest values and the extremes since the last ones, a few times a second while a shown recording runs.
    void readings(const std::vector<ChannelReading>& readings);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // Construction (show_form_build.cpp).
    void build();
    void buildPicture();
    void buildActions();
    void connectTools();
    using QWidget::addAction;
    QAction* addAction(TextId text, std::function<void()> handler);
    /// An action of the bar above the picture, with its key.
    QAction* addBarAction(TextId text, ViewIcon icon, const QKeySequence& key, std::function<void()> handler);
    void drawIcons();
    void buildRecordsButton();
    void listenToScoper();
    void buildCursorTools();
    void buildSpectrum();

    /// Runs a step; what it throws is logged, and the view goes on.
    void guarded(const char* name, const std::function<void()>& step) noexcept;

    /// Nobody works on the frames of the shown signal any more.
    void endWork();
    /// The shown signal goes, and with it what belongs to it alone; a running one or a file comes.
    void leaveSignal(bool forFile);
    [[nodiscard]] ShownSignal* shownSignal() const;
    [[nodiscard]] bool liveRuns() const;
    /// Not one that goes on: an opened recording, or the last records.
    [[nodiscard]] bool fixed() const { return file_ || records_; }
    void showWhole();
    /// Stays where it is: an opened recording, or a live one that is not followed.
    [[nodiscard]] bool stays() const;
    [[nodiscard]] int followMode() const;
    /// Frames from one edge of the picture to the other.
    [[nodiscard]] double span() const;
    void setSpan(double frames);
    void setPosition(double frame);
    /// From beyond the last frame.
    void comeBack();
    /// Frames that can be gone to.
    [[nodiscard]] PictureEdges reach() const;
    [[nodiscard]] ShownFrames shownFrames() const;
    [[nodiscard]] AxisXUnit unitX() const;
    [[nodiscard]] int digitalLines() const;

    void paint(bool atOnce);
    /// Has it painted, from the thread of a worker that has more to show.
    [[nodiscard]] std::function<void()> paintLater();
    void fetch();
    void giveReadings();
    void draw();
    void redraw();
    void userChanged();
    void showControls();
    void showScrollBar();
    void showStatus();
    void showTitle();
    [[nodiscard]] QString mousePlace() const;
    void forgetZoomY();
    void showParts();
    [[nodiscard]] QString fileFacts() const;
    void setShowMode(int mode);
    void zoomedY(double lower, double upper);
    void savePicture();
    void copyPicture();
    void tell(const std::optional<PictureProblem>& problem);
    [[nodiscard]] std::vector<ViewPicture> pictures() const;
    [[nodiscard]] bool canSavePart() const { return file_ && !records_ && frameCount() > 0; }
    void rangeChanged(int axis, double lower, double upper, int cause);
    void zoomedX(double lower, double upper, int cause);
    void buildBar();
    // What is in the picture (show_form_zoom.cpp).
    [[nodiscard]] ShownPart shownPart() const;
    void leavePart(int cause);
    void zoomTo(double frames);
    void showHeld();
    void showStrip();
    void stripWanted(double frame);
    // The trigger (show_form_records.cpp).
    void showLevels();
    void levelMoved(uint64_t identity, double y, bool done);
    void layRecords();
    void followRecords();
    // The time of the picture (show_form_clock.cpp).
    [[nodiscard]] std::optional<WallClock> wallClock() const;
    [[nodiscard]] bool tellsClock() const;
    /// What keeps the picture from going there, or an empty text.
    [[nodiscard]] QString goTo(const QString& place);
    // Lanes (show_form_lanes.cpp).
    void listenToLanes(SCOPERAEvents& events);
    /// Those of the settings.
    [[nodiscard]] std::set<int32_t> hiddenChannels() const;
    void switchColumn(uint32_t column, bool visible);
    void setHidden(const std::set<int32_t>& hidden);
    void solo(uint32_t column);
    // Marks (show_form_marks.cpp).
    void takeMarks();
    void takeFinishedMarks();
    void readMarks(const std::string& dataFile);
    [[nodiscard]] ShownMarks& shownMarks() { return file_ ? fileMarks_ : liveMarks_; }
    void showFlags();
    void showMarkList();
    void goToFrame(uint64_t frame);
    void openProblem(const std::string& dataFile, const OpenProblem& problem);

    ProgramSettings& settings_;
    ISCOPERA* scoper_;
    LiveTap tap_;
    std::unique_ptr<SignalDrawing> drawing_;  ///< null without the plotting library
    std::unique_ptr<LiveSignal> live_;
    std::unique_ptr<RecordedSignal> file_;    ///< shown instead of the live signal
    std::unique_ptr<RecordsSignal> records_;  ///< shown instead of either

    /// A threshold as it was handed to the picture last.
    struct ShownLevel {
        uint32_t column;
        double y;
        std::string text;
        uint64_t identity;
        friend bool operator==(const ShownLevel&, const ShownLevel&) = default;
    };
    std::vector<ShownLevel> levels_;
    bool levelsLocked_ = false;  ///< when they were handed over, and now
    bool thresholdsLocked_ = false;

    ShownMarks liveMarks_;
    ShownMarks fileMarks_;
    size_t marksSeen_ = 0;      ///< of those that the running recording has told
    bool marksToList_ = false;  ///< the list of marks is older than they are
    uint64_t marksListedAt_ = 0;

    static constexpr double kMostSpan = 1e15;
    double position_ = 0.0;    ///< frame at the left edge while the picture stays
    double scrollStep_ = 1.0;  ///< frames in a step of the scroll bar
    double fileSpan_ = 1.0;    ///< frames on screen of an opened recording
    double fileOrigin_ = 0.0;  ///< its frame that the axis counts from
    std::optional<PictureEdges> fileReach_;
    T_ShowForm* first_ = nullptr;  ///< that this one lies below
    std::function<std::vector<ViewPicture>()> pictures_;
    bool fileClock_ = false;  ///< the axis of an opened recording tells the time of day
    std::optional<WallClock> liveClock_;
    bool held_ = false;                ///< the user holds the picture with the mouse, however it is followed
    std::optional<double> wholeSpan_;  ///< frames on screen before the user zoomed with the mouse
    uint32_t boardLines_ = 0;
    std::string openedFile_;
    QString openedTitle_;
    /// Where the mouse is: the part of the picture to the left of it, and the value in its lane or on the Y axis.
    struct MousePlace {
        double part;
        double value;
        int lane;
    };
    std::optional<MousePlace> mouse_;
    std::optional<std::set<int32_t>> beforeSolo_;  ///< what was hidden

    ZoomHistory zooms_;
    Glide glide_;
    uint64_t glided_ = 0;  ///< frames of the running signal that are shown
    RepaintRate rate_;
    QTimer paintTimer_;
    QTimer stripTimer_;
    QElapsedTimer clock_;
    uint64_t readingsAt_ = 0;
    bool shown_ = false;

    QSplitter* splitter_ = nullptr;
    QSplitter* rows_ = nullptr;         ///< the picture and what lies below it
    SpectrumPane* spectrum_ = nullptr;  ///< null where there are no transforms, or no plotting library
    QWidget* picture_ = nullptr;
    QToolBar* bar_ = nullptr;
    QLabel* heldChip_ = nullptr;  ///< over the picture
    OverviewStrip* strip_ = nullptr;
    Screen course_;
    uint64_t courseFrames_ = 0;  ///< that the strip shows, and when it was given them
    uint64_t courseAt_ = 0;
    QScrollBar* scrollBar_ = nullptr;
    QLabel* status_ = nullptr;  ///< where the mouse is, or that there are no data
    ShowTools* tools_ = nullptr;
    std::unique_ptr<CursorTools> cursorTools_;  ///< null without the plotting library
    QMenu* menu_ = nullptr;
    QActionGroup* showModes_ = nullptr;
    QAction* pixelMode_ = nullptr;
    QAction* legend_ = nullptr;
    QAction* cursors_ = nullptr;
    QAction* zoomBack_ = nullptr;
    QAction* goToTime_ = nullptr;
    QAction* marksAction_ = nullptr;
    QAction* savePicture_ = nullptr;
    QAction* copyPicture_ = nullptr;
    QAction* savePart_ = nullptr;
    QAction* lanes_ = nullptr;
    QAction* commonScale_ = nullptr;
    QAction* spectrumShown_ = nullptr;
    QAction* recordsShown_ = nullptr;
    QMenu* recordsMenu_ = nullptr;
    int recordsWanted_ = 10;  ///< when they are switched on
    std::array<QAction*, 2> cursorKeys_{};
    QAction* digitalLines_ = nullptr;
    std::vector<std::pair<QAction*, TextId>> actions_;
    std::vector<std::pair<QAction*, ViewIcon>> icons_;
    QPointer<T_DigitalSignalSettings> digitalSettings_;
    QPointer<MarkListWindow> markList_;
};

}  // namespace tarno2
