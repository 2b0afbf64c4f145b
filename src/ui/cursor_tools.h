#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <array>
#include <memory>
#include <optional>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "config/settings/program_settings.h"
#include "measure/cursor_places.h"
#include "measure/latest_worker.h"
#include "ui/measurement_model.h"
#include "ui/shown_signal.h"
#include "ui/signal_drawing.h"

class QKeyEvent;

namespace tarno2 {

class MeasurementPanel;

/// The two cursors of the signal view: keeps their places, moves them with keys, and has a worker measure between them.
/// The picture draws them. Window thread.
class CursorTools : public QObject {
    Q_OBJECT

public:
    /// `panel` belongs to the view; all outlive the tools.
    CursorTools(ProgramSettings& settings, ISCOPERA& scoper, MeasurementPanel& panel, QObject* parent);
    ~CursorTools() override;

    /// After each drawing of the picture: puts the cursors where they belong, and measures what is new. A running
    /// signal that slides is measured a few times a second, as the worker keeps up; everything else at once.
    void drawn(ShownSignal& signal, const ShownFrames& shown, const SignalDrawing& drawing, bool following);
    /// The user dragged a cursor in the picture.
    void dragged(const SCOPERACursors& places);
    /// A key over the picture. False when it means nothing to the cursors.
    bool keyPressed(const QKeyEvent& event);
    /// Off, the first, the second, off.
    void nextCursor();
    /// The cursor that was taken last goes to the nearest edge of the chosen row.
    void snap();
    /// Ends all work: the signal that was measured goes away.
    void forget();
    void retranslate();

    /// Frames at the cursors, as the picture has them.
    [[nodiscard]] std::array<double, CursorPlaces::kCount> frames() const;
    /// Puts the cursors there, with the next drawing.
    void setFrames(const std::array<double, CursorPlaces::kCount>& frames);
    /// What lies between the cursors; nothing while they are not shown.
    [[nodiscard]] std::optional<FrameSpan> between() const;

signals:
    /// The picture has to be drawn anew.
    void changed();
    /// A text for the user.
    void message(const QString& text);

private:
    /// What was measured last: the same again is no work.
    struct Wanted {
        std::array<std::optional<uint64_t>, 2> at;  ///< none: the cursor is beside the signal
        FrameSpan span;
        friend bool operator==(const Wanted&, const Wanted&) = default;
    };

    void beginWhereNeeded(bool switchedOn);
    void putCursors();
    [[nodiscard]] QString timesAtCursors();
    void request(ShownSignal& signal, bool sliding);
    void startWorker(ShownSignal& signal, const Wanted& wanted);
    void finished(uint64_t number, Measured measured, bool preliminary);
    void showTexts();
    void setOnScreen(bool onScreen);
    [[nodiscard]] double frameOf(double axisX) const;
    [[nodiscard]] double axisOf(double frame) const;

    ProgramSettings& settings_;
    ISCOPERA& scoper_;
    MeasurementPanel& panel_;
    CursorPlaces places_;
    bool shown_ = false;      ///< the cursors
    bool newSignal_ = true;   ///< the cursors have still the places of another one
    bool following_ = false;  ///< the picture follows a running signal
    ShownSignal* signal_ = nullptr;
    PictureEdges edges_;
    double origin_ = 0.0;
    std::optional<WallClock> dayClock_;  ///< that the axis tells
    AxisXUnit unitX_ = AxisXUnit::Samples;
    uint64_t frames_ = 0;  ///< of the signal
    std::optional<Wanted> wanted_;
    QString notice_;       ///< stands in the panel until the cursors move
    uint64_t number_ = 0;  ///< of the newest job
    uint64_t startedAt_ = 0;
    QElapsedTimer clock_;
    QTimer progress_;
    LatestWorker worker_;
};

}  // namespace tarno2
