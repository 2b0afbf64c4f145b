#include "ui/show_form.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "config/files/figure_text.h"
#include "config/logs/debug_log.h"
#include "display/axis_x.h"
#include "display/axis_y.h"
#include "display/follow.h"
#include "platform/clock.h"
#include "ui/cursor_tools.h"
#include "ui/digital_signal_settings.h"
#include "ui/measured_text.h"
#include "ui/show_tools.h"
#include "ui/spectrum_pane.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr uint64_t kReadingsPeriodMs = 200;
constexpr double kUnknownRatePage = 1000.0;  ///< frames on screen when the rate, and so the time, is not known
constexpr int kScrollSteps = 1000000000;

TextId unitText(AxisXUnit unit) {
    return unit == AxisXUnit::Samples
               ? TextId::AxisXSamples
               : static_cast<TextId>(static_cast<int32_t>(TextId::UnitMicroseconds) + static_cast<int32_t>(unit) - 1);
}

TextId unitText(AxisYUnit unit) {
    return unit == AxisYUnit::Codes
               ? TextId::AxisYCodes
               : static_cast<TextId>(static_cast<int32_t>(TextId::UnitVolts) + static_cast<int32_t>(unit));
}

}  // namespace

T_ShowForm::T_ShowForm(ProgramSettings& settings, ISCOPERA* scoper, QWidget* parent)
    : QWidget(parent), settings_(settings), scoper_(scoper) {
    clock_.start();
    paintTimer_.setSingleShot(true);
    paintTimer_.setTimerType(Qt::PreciseTimer);
    connect(&paintTimer_, &QTimer::timeout, this, &T_ShowForm::FormPaint);
    stripTimer_.setSingleShot(true);
    connect(&stripTimer_, &QTimer::timeout, this, [this] { guarded("showStrip", [this] { showStrip(); }); });
    build();
    retranslate();
}

T_ShowForm::~T_ShowForm() {
    endWork();
    if (scoper_ != nullptr) {
        scoper_->SetEvents(nullptr);
    }
}

void T_ShowForm::recordingStarted(LiveRecording recording) {
    guarded("recordingStarted", [&] {
        leaveSignal(false);
        file_.reset();
        live_.reset();
        openedFile_.clear();
        held_ = false;
        wholeSpan_.reset();
        position_ = 0.0;
        glide_.reset();
        glided_ = 0;
        liveClock_.reset();
        readingsAt_ = 0;
        live_ = std::make_unique<LiveSignal>(std::move(recording));
        liveMarks_ = {};
        marksSeen_ = 0;
        showMarkList();
        layRecords();
        tap_.setWatched(shown_);
        userChanged();
    });
}

void T_ShowForm::sessionGoes() {
    if (live_) {
        live_->leaveSession();
    }
}

void T_ShowForm::recordingStopped() {
    guarded("recordingStopped", [this] {
        if (live_ && live_->running()) {
            // The last blocks came after the last paint.
            while (shown_ && !file_ && live_->fetch(tap_)) {
            }
            live_->finish();
        }
        if (records_ && !file_) {
            layRecords();
        }
        if (live_) {
            takeFinishedMarks();
        }
        userChanged();
    });
}

// Nobody works with a signal that goes away.
void T_ShowForm::endWork() {
    if (cursorTools_) {
        cursorTools_->forget();
    }
    if (spectrum_ != nullptr) {
        spectrum_->forget();
    }
}

void T_ShowForm::leaveSignal(bool forFile) {
    emit signalLeft();
    endWork();
    if (drawing_) {
        drawing_->clear();
        drawing_->reset();
        if (!forFile) {
            drawing_->setHidden(hiddenChannels());
        }
    }
    beforeSolo_.reset();
    zooms_.clear();
    zoomBack_->setEnabled(false);
    courseFrames_ = 0;
    records_.reset();
}

ShownSignal* T_ShowForm::shownSignal() const {
    return records_ ? records_.get() : file_ ? static_cast<ShownSignal*>(file_.get()) : live_.get();
}

bool T_ShowForm::liveRuns() const {
    return !file_ && live_ && live_->running();
}

bool T_ShowForm::stays() const {
    return fixed() || followMode() == static_cast<int>(FollowMode::None);
}

int T_ShowForm::followMode() const {
    return held_ ? static_cast<int>(FollowMode::None) : settings_.followToData;
}

uint64_t T_ShowForm::frameCount() const {
    ShownSignal* signal = shownSignal();
    return signal != nullptr ? signal->screens().frameCount() : 0;
}

AxisXUnit T_ShowForm::unitX() const {
    const ShownSignal* signal = shownSignal();
    const bool known = signal == nullptr || signal->format().framesPerSecond > 0.0;
    return known ? static_cast<AxisXUnit>(settings_.axisXUnit) : AxisXUnit::Samples;
}

double T_ShowForm::span() const {
    if (fixed()) {
        return fileSpan_;
    }
    const auto wanted = static_cast<AxisXUnit>(settings_.axisXUnit);
    if (!live_ || unitX() != wanted) {
        return kUnknownRatePage;
    }
    return std::clamp(frameOfAxisX(settings_.axisXValue, wanted, live_->format().framesPerSecond), 1.0, kMostSpan);
}

ShownFrames T_ShowForm::shownFrames() const {
    ShownFrames shown;
    shown.clock = tellsClock() ? wallClock() : std::nullopt;
    if (stays()) {
        shown.low = position_;
        shown.high = position_ + span();
        shown.first = static_cast<uint64_t>(std::max(shown.low, 0.0));
        shown.end = shown.high > 0.0 ? static_cast<uint64_t>(std::ceil(shown.high)) + 1 : 0;
        shown.origin = records_ ? static_cast<double>(records_->prehistory()) : file_ ? fileOrigin_ : 0.0;
        return shown;
    }
    const VisibleFrames visible =
        visibleFrames(static_cast<FollowMode>(settings_.followToData), liveRuns() ? glided_ : frameCount(),
                      static_cast<uint64_t>(std::llround(span())), 0);
    shown.first = visible.first;
    shown.end = visible.end;
    shown.low = static_cast<double>(visible.first);
    shown.high = static_cast<double>(visible.end);
    shown.origin = shown.low - visible.axisFirst;
    return shown;
}

int T_ShowForm::digitalLines() const {
    const ShownSignal* signal = shownSignal();
    return static_cast<int>(signal != nullptr ? signal->format().word.digitalLines() : boardLines_);
}

void T_ShowForm::FormPaint() {
    guarded("FormPaint", [this] { paint(false); });
}

// At once, from the data that are there; new ones come when they are due.
void T_ShowForm::redraw() {
    guarded("redraw", [this] {
        showControls();
        paint(true);
    });
}

// Others that show the same are told.
void T_ShowForm::userChanged() {
    redraw();
    guarded("userChanged", [this] { emit changed(); });
}

void T_ShowForm::paint(bool atOnce) {
    if (!shown_) {
        return;
    }
    const LocalTime now = localTime();
    const bool due = rate_.due(now);
    if (due) {
        fetch();
    } else if (!paintTimer_.isActive()) {
        paintTimer_.start(rate_.waitMs(now));
    }
    if (due || atOnce) {
        draw();
    }
    if (due && (liveRuns() || (drawing_ && drawing_->moving()))) {
        paintTimer_.start(rate_.waitMs(localTime()));
    }
}

std::function<void()> T_ShowForm::paintLater() {
    return [this] { QMetaObject::invokeMethod(this, &T_ShowForm::FormPaint, Qt::QueuedConnection); };
}

void T_ShowForm::fetch() {
    if (!liveRuns()) {
        return;
    }
    live_->fetch(tap_);
    if (const uint64_t frames = live_->history().frameCount(); !liveClock_ && frames > 0) {
        liveClock_ = wallClockNow(frames, live_->format().framesPerSecond);
    }
    glided_ = glide_.shown(live_->history().frameCount(), live_->format().framesPerSecond,
                           static_cast<uint64_t>(clock_.elapsed()));
    takeMarks();
    giveReadings();
    followRecords();
}

void T_ShowForm::giveReadings() {
    const auto now = static_cast<uint64_t>(clock_.elapsed());
    const std::vector<ChannelValues>& values = live_->history().values();
    if (values.empty() || (readingsAt_ != 0 && now - readingsAt_ < kReadingsPeriodMs)) {
        return;
    }
    readingsAt_ = now;
    std::vector<ChannelReading> given;
    given.reserve(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        const LinearScale volts = axisYScale(live_->format(), i, AxisYUnit::Volts);
        given.push_back({live_->channelNumber(i), volts.of(values[i].newest), volts.of(values[i].minimum),
                         volts.of(values[i].maximum)});
    }
    if (drawing_) {
        drawing_->showValues(live_->format(), values);
    }
    live_->history().resetExtremes();
    emit readings(given);
}

void T_ShowForm::draw() {
    showScrollBar();
    if (ShownSignal* signal = shownSignal(); drawing_ && signal != nullptr) {
        drawing_->draw(*signal, shownFrames(), static_cast<uint64_t>(clock_.elapsed()));
        showFlags();
        showLevels();
        if (settings_.viewLanes < 0) {
            lanes_->setChecked(drawing_->inLanes());
        }
        const bool following = liveRuns() && !stays();
        cursorTools_->drawn(*signal, shownFrames(), *drawing_, following);
        if (spectrum_ != nullptr) {
            spectrum_->drawn(*signal, shownFrames(), *drawing_, cursorTools_->between(), following);
        }
    }
    showStatus();
    showHeld();
    if (first_ == nullptr) {
        showStrip();
    }
}

void T_ShowForm::showControls() {
    const double span =
        fixed() ? axisXOfFrame(fileSpan_, unitX(), shownSignal()->format().framesPerSecond) : settings_.axisXValue;
    tools_->load(settings_, span, followMode());
    tools_->setFileShown(file_ != nullptr);
    tools_->setClock(tellsClock(), shownSignal() == nullptr || wallClock());
    scrollBar_->setEnabled(stays());
    pixelMode_->setChecked(settings_.pixelsMode);
    for (QAction* action : showModes_->actions()) {
        action->setChecked(action->data().toInt() == settings_.showSignalMode);
    }
    digitalLines_->setEnabled(digitalLines() > 0);
    showParts();
    showTitle();
}

void T_ShowForm::showParts() {
    legend_->setChecked(settings_.viewLegend);
    lanes_->setChecked(settings_.viewLanes >= 0 ? settings_.viewLanes == 1 : drawing_ && drawing_->inLanes());
    commonScale_->setChecked(settings_.viewCommonScale);
    savePart_->setEnabled(canSavePart());
    recordsWanted_ = settings_.viewRecords > 0 ? settings_.viewRecords : recordsWanted_;
    recordsShown_->setChecked(settings_.viewRecords > 0);
    for (QAction* action : recordsMenu_->actions()) {
        action->setChecked(action->data().toInt() == settings_.viewRecords);
    }
    cursorKeys_[1]->setEnabled(settings_.viewCursors);
    cursors_->setChecked(settings_.viewCursors);
    spectrumShown_->setChecked(settings_.viewSpectrum && spectrumShown_->isEnabled());
    if (spectrum_ != nullptr) {
        spectrum_->setVisible(settings_.viewSpectrum);
    }
    if (scoper_ != nullptr) {
        scoper_->SetOption(kScoperaOptionLegend, settings_.viewLegend ? 1 : 0);
        scoper_->SetOption(kScoperaOptionCursors, settings_.viewCursors ? 1 : 0);
    }
}

void T_ShowForm::showTitle() {
    const QString window = uiText(TextId::ViewWindow);
    setWindowTitle(file_ ? window + QStringLiteral(": ") + openedTitle_ : window);
}

// A recording may have more frames than a scroll bar has steps. Keys scroll further than the last whole screen.
void T_ShowForm::showScrollBar() {
    const double low = shownFrames().low - reach().low;
    const double end = std::max(reach().width() - span(), low);
    scrollStep_ = std::max(1.0, end / kScrollSteps);
    const QSignalBlocker silence(scrollBar_);
    scrollBar_->setRange(0, static_cast<int>(end / scrollStep_));
    scrollBar_->setPageStep(std::max(1, static_cast<int>(std::min(span() / scrollStep_, double{kScrollSteps}))));
    scrollBar_->setSingleStep(std::max(1, scrollBar_->pageStep() / 3));
    scrollBar_->setValue(static_cast<int>(low / scrollStep_));
}

void T_ShowForm::showStatus() {
    status_->setText(frameCount() == 0 ? uiText(TextId::ViewNoData) : mousePlace());
    if (!file_) {
        return;
    }
    if (file_->overview().complete()) {
        tools_->setFileStatus(fileFacts());
        return;
    }
    const uint64_t frames = std::max<uint64_t>(frameCount(), 1);
    const auto percent = static_cast<int>(file_->overview().framesDone() * 100 / frames);
    tools_->setFileStatus(uiText(TextId::BuildingOverview, {QString::number(percent)}));
}

// With as many decimals as tell neighbouring pixels apart.
QString T_ShowForm::mousePlace() const {
    AxisRange x;
    AxisRange y;
    const ShownSignal* signal = shownSignal();
    if (!mouse_ || signal == nullptr || !drawing_ || scoper_->GetRange(kScoperaAxisX, &x.low, &x.high) != 1 ||
        scoper_->GetRange(kScoperaAxisY, &y.low, &y.high) != 1) {
        return {};
    }
    if (mouse_->lane >= 0) {
        y = drawing_->rangeOf(static_cast<uint32_t>(mouse_->lane));
    }
    const auto place = [](const AxisRange& range, double value, double pixels) {
        return QString::number(value, 'f', resolvedDecimals(range.high - range.low, pixels));
    };
    const QString unitY = mouse_->lane >= 0
                              ? QString::fromStdString(drawing_->unitTextOf(static_cast<uint32_t>(mouse_->lane)))
                          : drawing_->unitY() == AxisYUnit::Units ? QString::fromStdString(drawing_->unitTextY())
                                                                  : uiText(unitText(drawing_->unitY()));
    const ShownFrames shown = shownFrames();
    const QString placeX = shown.clock ? timeOfDay(*shown.clock, shown.low + mouse_->part * (shown.high - shown.low),
                                                   (shown.high - shown.low) / std::max(scoper_->PixelWidth(), 1U))
                                       : place(x, x.low + mouse_->part * (x.high - x.low), scoper_->PixelWidth()) +
                                             QLatin1Char(' ') + uiText(unitText(drawing_->unitX(signal->format())));
    return QStringLiteral("X %1  Y %2 %3").arg(placeX, place(y, mouse_->value, picture_->height()), unitY);
}

QString T_ShowForm::fileFacts() const {
    const double rate = file_->format().framesPerSecond;
    const uint64_t frames = file_->frames().frameCount();
    const uint64_t seconds = rate > 0.0 ? static_cast<uint64_t>(std::llround(static_cast<double>(frames) / rate)) : 0;
    return uiText(TextId::RecordingFacts, {QString::number(file_->frames().pieceCount()),
                                           fromCodePage(formatCount(frames)), fromCodePage(formatDuration(seconds))});
}

void T_ShowForm::setDigitalLines(uint32_t lines) {
    boardLines_ = lines;
    digitalLines_->setEnabled(digitalLines() > 0);
}

void T_ShowForm::settingsChanged() {
    if (drawing_) {
        drawing_->retranslate();
    }
    userChanged();
}

void T_ShowForm::guarded(const char* name, const std::function<void()>& step) noexcept {
    try {
        step();
    } catch (const std::exception& error) {
        DEBUG_LOG("!!!! %s: %s", name, error.what());
    } catch (...) {
        DEBUG_LOG("!!!! %s", name);
    }
}

}  // namespace tarno2
