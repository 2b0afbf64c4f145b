#pragma once

#include <QString>
#include <QWidget>
#include <optional>

#include "core/recording/run_watch.h"
#include "core/storage/checksum_thread.h"
#include "language/text_ids.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace tarno2 {

class FigureCell;
class MarkControls;

/// The word for a state.
[[nodiscard]] TextId stateText(RunState state);

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
    /// How far the checksums of finished recordings are; nothing when none is computed.
    void setChecksums(const std::optional<ChecksumThread::Progress>& progress);
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
    [[nodiscard]] MarkControls& marks() { return *marks_; }
    [[nodiscard]] QPushButton& noChecksumsButton() { return *noChecksums_; }
    [[nodiscard]] QToolButton& conditionsButton() { return *conditions_; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildUpperRow(QVBoxLayout* column);
    void buildLowerRow(QVBoxLayout* column);
    void buildChecksums(QVBoxLayout* column);
    void drawIcons();
    void showState();
    void showFigures();

    RunState state_ = RunState::Ready;
    RunFigures figures_;
    QPushButton* start_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* cycle_ = nullptr;
    MarkControls* marks_ = nullptr;
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
    QLabel* checksums_ = nullptr;
    QPushButton* noChecksums_ = nullptr;
    QLabel* attention_ = nullptr;
    QString lossList_;
};

}  // namespace tarno2
