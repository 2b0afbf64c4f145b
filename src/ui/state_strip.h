#pragma once

#include <QString>
#include <QWidget>
#include <cstdint>
#include <optional>

#include "language/text_ids.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace tarno2 {

class FigureCell;

/// What the program is doing, as it is read from two metres.
enum class RunState {
    Ready,
    Starting,
    WaitingForStart,
    WaitingForTrigger,
    Recording,
    Warning,
    Stopping,
    Stopped,
    Error
};

/// The word for a state.
[[nodiscard]] TextId stateText(RunState state);

/// The figures of a recording.
struct RunFigures {
    uint64_t elapsedSeconds = 0;
    std::optional<uint64_t> remainingSeconds;  ///< nothing without an end
    std::optional<int> percent;                ///< of the progress bar; nothing hides it
    uint64_t bytes = 0;
    std::optional<double> bytesPerSecond;  ///< nothing while it is not known
    uint64_t frames = 0;
    uint32_t load = 0;  ///< of the ring at its worst, percent
    bool loadWarns = false;
    uint32_t files = 0;
    uint64_t events = 0;
};

/// The upper part of the main window: start, stop and cycle buttons, the state in a colour and a word, time, progress
/// and figures of the recording, and the last thing that needs attention. Window thread.
class StateStrip : public QWidget {
    Q_OBJECT

public:
    explicit StateStrip(QWidget* parent = nullptr);

    void setState(RunState state);
    [[nodiscard]] RunState state() const { return state_; }
    void setFigures(const RunFigures& figures);
    /// Stays until the next one; empty takes it away.
    void setAttention(const QString& message);
    /// Conditions choose what is recorded: the word for them stands beside the start button. Nothing: all is recorded.
    void setConditions(std::optional<TextId> word);
    /// How many losses the recording has had.
    void setLosses(size_t count);
    /// The file that lists them, for their hint.
    void setLossList(const QString& fileName);
    void retranslate();

    [[nodiscard]] QPushButton& startButton() { return *start_; }
    [[nodiscard]] QPushButton& stopButton() { return *stop_; }
    [[nodiscard]] QPushButton& cycleButton() { return *cycle_; }
    [[nodiscard]] QToolButton& conditionsButton() { return *conditions_; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildUpperRow(QVBoxLayout* column);
    void buildLowerRow(QVBoxLayout* column);
    void drawIcons();
    void showState();
    void showFigures();

    RunState state_ = RunState::Ready;
    RunFigures figures_;
    QPushButton* start_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* cycle_ = nullptr;
    QToolButton* conditions_ = nullptr;
    std::optional<TextId> conditionsWord_;
    QLabel* word_ = nullptr;
    FigureCell* elapsed_ = nullptr;
    FigureCell* remaining_ = nullptr;
    QProgressBar* progress_ = nullptr;
    FigureCell* written_ = nullptr;
    FigureCell* rate_ = nullptr;
    FigureCell* frames_ = nullptr;
    FigureCell* load_ = nullptr;
    FigureCell* files_ = nullptr;
    FigureCell* events_ = nullptr;
    FigureCell* losses_ = nullptr;
    QLabel* attention_ = nullptr;
    QString lossList_;
};

}  // namespace tarno2
