#include "ui/cursor_tools.h"

#include <QKeyEvent>
#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "config/files/figure_text.h"
#include "measure/nearest_edge.h"
#include "measure/statistics.h"
#include "ui/measured_text.h"
#include "ui/measurement_panel.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr uint64_t kSlidingPeriodMs = 200;
constexpr int kProgressMs = 100;
constexpr size_t kExtremeBuckets = 2048;

/// One frame of a source, when it is there.
std::optional<FrameValues> frameAt(FrameSource& source, const SignalFormat& format, uint64_t frame) {
    std::vector<std::byte> bytes(format.frameBytes());
    return source.read(frame, 1, bytes.data()) == 1 ? std::optional(valuesOf(format, bytes.data())) : std::nullopt;
}

}  // namespace

CursorTools::CursorTools(ProgramSettings& settings, ISCOPERA& scoper, MeasurementPanel& panel, QObject* parent)
    : QObject(parent), settings_(settings), scoper_(scoper), panel_(panel) {
    clock_.start();
    progress_.setInterval(kProgressMs);
    connect(&progress_, &QTimer::timeout, this, &CursorTools::showTexts);
    connect(&panel_, &MeasurementPanel::onScreenChanged, this, &CursorTools::setOnScreen);
    connect(&panel_, &MeasurementPanel::folded, this, [this](bool folded) {
        settings_.hideMeasurements = folded;
        panel_.load(!settings_.cursorsOnSignal, folded);
    });
    connect(&panel_, &MeasurementPanel::snapWanted, this, &CursorTools::snap);
    connect(&panel_, &MeasurementPanel::message, this, &CursorTools::message);
    panel_.load(!settings_.cursorsOnSignal, settings_.hideMeasurements);
    panel_.hide();
}

CursorTools::~CursorTools() = default;

double CursorTools::frameOf(double axisX) const {
    return origin_ + frameOfAxisX(axisX, unitX_, signal_->format().framesPerSecond);
}

double CursorTools::axisOf(double frame) const {
    return axisXOfFrame(frame - origin_, unitX_, signal_->format().framesPerSecond);
}

std::optional<FrameSpan> CursorTools::between() const {
    return shown_ && signal_ != nullptr ? std::optional(places_.between(edges_, frames_)) : std::nullopt;
}

std::array<double, CursorPlaces::kCount> CursorTools::frames() const {
    return {places_.frame(0, edges_), places_.frame(1, edges_)};
}

// They are where they belong, if that is beside the signal, too.
void CursorTools::setFrames(const std::array<double, CursorPlaces::kCount>& frames) {
    for (size_t i = 0; i < frames.size(); ++i) {
        places_.place(i, frames[i], edges_);
    }
    shown_ = settings_.viewCursors;
    newSignal_ = false;
}

void CursorTools::drawn(ShownSignal& signal, const ShownFrames& shown, const SignalDrawing& drawing, bool following) {
    const bool switchedOn = settings_.viewCursors && !shown_;
    shown_ = settings_.viewCursors;
    panel_.setVisible(shown_);
    panel_.load(!settings_.cursorsOnSignal, settings_.hideMeasurements);
    if (!shown_) {
        if (signal_ != nullptr) {
            forget();
        }
        return;
    }
    // Frames that were gone while it ran can be read from its file.
    if (following_ && !following) {
        wanted_.reset();
    }
    following_ = following;
    signal_ = &signal;
    edges_ = {shown.low, shown.high};
    origin_ = shown.origin;
    dayClock_ = shown.clock;
    unitX_ = drawing.unitX(signal.format());
    frames_ = signal.screens().frameCount();
    if (const bool onScreen = following && !settings_.cursorsOnSignal; onScreen != places_.onScreen()) {
        places_.fixOnScreen(onScreen, edges_);
    }
    beginWhereNeeded(switchedOn);
    putCursors();
    panel_.model().setColumns(measuredColumns(signal, drawing));
    request(signal, places_.onScreen());
    showTexts();
}

// Cursors that are seen nowhere help nobody, nor do places of an earlier signal that this one does not have.
void CursorTools::beginWhereNeeded(bool switchedOn) {
    bool begin = switchedOn && places_.lost(edges_);
    if (newSignal_ && frames_ > 0) {
        newSignal_ = false;
        const bool there = places_.onFrame(0, edges_, frames_) && places_.onFrame(1, edges_, frames_);
        begin = begin || (!places_.onScreen() && !there);
    }
    if (begin) {
        places_.begin(edges_);
    }
}

// The values of Y are the picture's own.
void CursorTools::putCursors() {
    SCOPERACursors places{};
    static_cast<void>(scoper_.GetCursors(&places));
    bool moved = false;
    for (size_t i = 0; i < CursorPlaces::kCount; ++i) {
        const double x = axisOf(places_.frame(i, edges_));
        moved = moved || places.m_fX[i] != x;
        places.m_fX[i] = x;
    }
    if (moved) {
        static_cast<void>(scoper_.SetCursors(&places));
    }
    panel_.setActive(places_.active());
}

void CursorTools::dragged(const SCOPERACursors& places) {
    if (!shown_ || signal_ == nullptr) {
        return;
    }
    for (size_t i = 0; i < CursorPlaces::kCount; ++i) {
        const double frame = frameOf(places.m_fX[i]);
        // The one that was not dragged comes back as it was handed over.
        if (std::abs(frame - places_.frame(i, edges_)) > edges_.width() * 1e-9) {
            places_.place(i, frame, edges_);
            places_.activate(i);
        }
    }
    emit changed();
}

void CursorTools::request(ShownSignal& signal, bool sliding) {
    if (frames_ == 0) {
        return;
    }
    Wanted wanted;
    wanted.span = places_.between(edges_, frames_);
    for (size_t i = 0; i < CursorPlaces::kCount; ++i) {
        if (places_.onFrame(i, edges_, frames_)) {
            wanted.at[i] = static_cast<uint64_t>(std::llround(places_.frame(i, edges_)));
        }
    }
    if (wanted_ == wanted) {
        return;
    }
    const auto now = static_cast<uint64_t>(clock_.elapsed());
    if (sliding && wanted_ && (worker_.busy() || now - startedAt_ < kSlidingPeriodMs)) {
        return;
    }
    wanted_ = wanted;
    startedAt_ = now;
    notice_.clear();
    startWorker(signal, wanted);
}

// What is left as minima and maxima alone is measured at once.
void CursorTools::startWorker(ShownSignal& signal, const Wanted& wanted) {
    const uint64_t number = ++number_;
    // First the long one: a copy of it has most often the frames at the cursors too.
    std::shared_ptr<FrameSource> source = wanted.span.count() > 0 ? signal.rawFrames(wanted.span) : nullptr;
    std::array<std::shared_ptr<FrameSource>, 2> points;
    for (size_t i = 0; i < points.size(); ++i) {
        points[i] = wanted.at[i] ? signal.rawFrames({*wanted.at[i], *wanted.at[i] + 1}) : nullptr;
    }
    std::optional<SpanStatistics> rough;
    Screen screen;
    if (!source && wanted.span.count() > 0 &&
        signal.screens().build(wanted.span.first, wanted.span.end, kExtremeBuckets, screen)) {
        rough = measureExtremes(screen, signal.format(), wanted.span);
    }
    worker_.start([this, number, wanted, points, source, rough = std::move(rough),
                   format = signal.format()](WorkProgress& progress) {
        const auto tell = [this, number](const Measured& measured, bool preliminary) {
            QMetaObject::invokeMethod(
                this, [this, number, measured, preliminary] { finished(number, measured, preliminary); },
                Qt::QueuedConnection);
        };
        Measured measured;
        try {
            for (size_t i = 0; i < points.size(); ++i) {
                measured.at[i] = points[i] ? frameAt(*points[i], format, *wanted.at[i]) : std::nullopt;
            }
            measured.span = rough;
            if (source) {
                tell(measured, true);
                SpanStatistics out;
                const ReadEnd end = measure(*source, format, wanted.span, progress, out);
                measured.notRead = end == ReadEnd::NotRead;
                if (end == ReadEnd::Whole) {
                    measured.span = std::move(out);
                }
            }
        } catch (const std::exception&) {
            measured = {};
            measured.notRead = true;
        }
        if (!progress.cancelled()) {
            tell(measured, false);
        }
    });
    progress_.start();
}

// Until the statistics are there the earlier ones stay, so that a table of a running signal does not flicker.
void CursorTools::finished(uint64_t number, Measured measured, bool preliminary) {
    if (number != number_ || !shown_) {
        return;
    }
    if (preliminary) {
        measured.span = panel_.model().measured().span;
    }
    panel_.model().setMeasured(std::move(measured));
    showTexts();
}

void CursorTools::showTexts() {
    const bool busy = worker_.busy();
    if (!busy) {
        progress_.stop();
    }
    if (signal_ == nullptr) {
        panel_.setTexts({}, {});
        return;
    }
    const Measured& measured = panel_.model().measured();
    QString state = uiText(TextId::MeasuredSpan, {fromCodePage(formatCount(places_.between(edges_, frames_).count()))});
    if (!notice_.isEmpty()) {
        state = notice_;
    } else if (measured.notRead) {
        state = uiText(TextId::MeasuredNotRead);
    } else if (busy && static_cast<uint64_t>(clock_.elapsed()) - startedAt_ > kSlidingPeriodMs) {
        state = uiText(TextId::MeasuredProgress, {QString::number(static_cast<int>(worker_.part() * 100.0))});
    } else if (measured.span && measured.span->fromExtremes) {
        state = uiText(TextId::MeasuredApproximately);
    }
    const double frames = places_.frame(1, edges_) - places_.frame(0, edges_);
    panel_.setTexts(timesAtCursors() + timeBetween(frames, signal_->format().framesPerSecond, unitX_), state);
}

// In the table's own words for a file, to be read in a line above it.
QString CursorTools::timesAtCursors() {
    if (!dayClock_) {
        panel_.model().setTimes({});
        return {};
    }
    QString line;
    std::array<int64_t, CursorPlaces::kCount> times{};
    for (size_t i = 0; i < CursorPlaces::kCount; ++i) {
        const double frame = places_.frame(i, edges_);
        times[i] = dayClock_->at(frame);
        line += QStringLiteral("%1: %2   ").arg(QString::number(i + 1), timeOfDay(*dayClock_, frame, 1.0));
    }
    panel_.model().setTimes(times);
    return line;
}

void CursorTools::forget() {
    ++number_;
    worker_.stop();
    progress_.stop();
    signal_ = nullptr;
    wanted_.reset();
    newSignal_ = true;
    panel_.model().setMeasured({});
}

void CursorTools::retranslate() {
    panel_.retranslate();
}

void CursorTools::setOnScreen(bool onScreen) {
    settings_.cursorsOnSignal = !onScreen;
    emit changed();
}

void CursorTools::nextCursor() {
    if (!settings_.viewCursors) {
        settings_.viewCursors = true;
        places_.activate(0);
    } else if (places_.active() + 1 < CursorPlaces::kCount) {
        places_.activate(places_.active() + 1);
    } else {
        settings_.viewCursors = false;
        places_.activate(0);
    }
    emit changed();
}

bool CursorTools::keyPressed(const QKeyEvent& event) {
    if ((event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != Qt::NoModifier) {
        return false;
    }
    if (!shown_ || signal_ == nullptr) {
        return false;
    }
    if (event.key() != Qt::Key_Left && event.key() != Qt::Key_Right) {
        return false;
    }
    const double pixel = edges_.width() / std::max(scoper_.PixelWidth(), 1U);
    const double step = std::max(1.0, std::round(pixel)) * (event.modifiers().testFlag(Qt::ShiftModifier) ? 10.0 : 1.0);
    places_.move(event.key() == Qt::Key_Left ? -step : step, edges_, frames_);
    emit changed();
    return true;
}

// Among the frames of the picture, those that are still there as they were recorded.
void CursorTools::snap() {
    const int row = panel_.chosenRow();
    if (!shown_ || signal_ == nullptr || row < 0) {
        return;
    }
    const MeasuredColumn& column = panel_.model().columns()[static_cast<size_t>(row)];
    FrameSpan span{static_cast<uint64_t>(std::max(edges_.low, 0.0)),
                   std::min(static_cast<uint64_t>(std::max(edges_.high, 0.0)) + 1, frames_)};
    span.first = std::min(std::max(span.first, signal_->firstRawFrame()), span.end);
    const double place = places_.frame(places_.active(), edges_);
    std::optional<double> edge;
    if (const auto source = span.count() > 0 ? signal_->rawFrames(span) : nullptr) {
        edge = column.line ? nearestLineEdge(*source, signal_->format(), span, column.index, place)
                           : nearestEdge(*source, signal_->format(), span, column.index, place);
    }
    if (!edge) {
        notice_ = uiText(TextId::NoEdgeHere);
        showTexts();
        return;
    }
    places_.place(places_.active(), *edge, edges_);
    emit changed();
}

}  // namespace tarno2
