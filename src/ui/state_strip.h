#pragma once

#include <QString>
#include <QWidget>
#include <optional>

#include "core/recording/run_watch.h"
#include "core/storage/checksum_thread.h"
#include "language/text_ids.h"

class QFrame;
class QHBoxLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace tarno2 {

class FigureCell;
class NeedLine;
class TriggerButton;

/// The word for a state.
[[nodiscard]] TextId stateText(RunState state);

/// The upper part of the main window. One row: buttons to monitor, start, stop and go on, the state in a colour and a
/// word, time, progress and figures of the recording, and what triggers it; a line in the state's colour below. Further
/// figures unfold, and what needs attention stands below it all. Window thread.
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
    /// What chooses the frames that are recorded, in words. `active`: it does so, else all are recorded.
    void setTrigger(const QString& text, bool active);
    /// How many losses the recording has had.
    void setLosses(size_t count);
    /// The file that lists them, for their hint.
    void setLossList(const QString& fileName);
    /// The figures that are looked at now and then.
    void setMore(bool shown);
    [[nodiscard]] bool more() const;
    void retranslate();

    [[nodiscard]] QPushButton& startButton() { return *start_; }
    [[nodiscard]] QPushButton& monitorButton() { return *monitor_; }
    [[nodiscard]] QPushButton& stopButton() { return *stop_; }
    [[nodiscard]] QPushButton& cycleButton() { return *cycle_; }
    /// What the chosen driver needs before a recording can start.
    [[nodiscard]] NeedLine& need() { return *need_; }
    [[nodiscard]] QPushButton& noChecksumsButton() { return *noChecksums_; }
    [[nodiscard]] QToolButton& conditionsButton();

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildRow(QVBoxLayout* column);
    void buildButtons(QHBoxLayout* row);
    void buildFigures(QHBoxLayout* row);
    void buildMore(QVBoxLayout* column);
    void buildChecksums(QVBoxLayout* column);
    void drawIcons();
    void fitState();
    void showCaptions(bool shown);
    void showState();
    void showFigures();

    RunState state_ = RunState::Ready;
    RunFigures figures_;
    QPushButton* monitor_ = nullptr;
    QPushButton* start_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* cycle_ = nullptr;
    TriggerButton* trigger_ = nullptr;
    QToolButton* unfold_ = nullptr;
    QWidget* moreFigures_ = nullptr;
    QFrame* line_ = nullptr;  ///< in the state's colour
    bool roomy_ = false;      ///< the window is wide enough for larger letters
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
    NeedLine* need_ = nullptr;
    QLabel* attention_ = nullptr;
    QString lossList_;
};

}  // namespace tarno2
