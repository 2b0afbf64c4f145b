#include "scopera/plot_view.h"

#include <QColor>
#include <QEvent>
#include <QFontMetrics>
#include <QPalette>
#include <QScrollBar>
#include <utility>
#include <vector>

#include "scopera/axis_ticker.h"
#include "scopera/svg_picture.h"

namespace tarno2 {

namespace {

const QString kCurveLayer = QStringLiteral("curves");
const QString kFlagLayer = QStringLiteral("flags");
const QString kCursorLayer = QStringLiteral("cursors");

constexpr int kTicksX = 8;
constexpr uint32_t kFlagColor = 0x2060E0;  // an orange that neither a light nor a dark picture swallows

QColor fromBgr(uint32_t color) {
    return {static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF), static_cast<int>(color >> 16 & 0xFF)};
}

/// `part` of 1 is all `over`.
QColor mixed(const QColor& under, const QColor& over, double part) {
    const auto mix = [part](int a, int b) { return static_cast<int>(a + (b - a) * part); };
    return {mix(under.red(), over.red()), mix(under.green(), over.green()), mix(under.blue(), over.blue())};
}

}  // namespace

PlotView::PlotView(QWidget* parent)
    : QCustomPlot(parent),
      lanes_(yAxis),
      curves_(new Curves(xAxis, yAxis, lanes_)),
      legend_(new Legend(this)),
      cursors_(new Cursors(xAxis, lanes_)),
      flags_(new Flags(xAxis)),
      levels_(new LevelLines(xAxis, lanes_)),
      laneGrid_(new LaneGrid(xAxis, lanes_)),
      heads_(new LaneHeads(this, lanes_)),
      laneScroll_(new QScrollBar(Qt::Vertical, this)),
      font_(QWidget::font()) {
    setAutoAddPlottableToLegend(false);
    addLayer(kCursorLayer, layer(QStringLiteral("overlay")), limBelow);
    // A buffer of its own costs a layer a pass over the whole picture: the cursors get theirs when they are shown.
    layer(QStringLiteral("overlay"))->setMode(QCPLayer::lmLogical);
    // Above the frame, which would hide a curve that runs along an end of the Y axis.
    addLayer(kCurveLayer, layer(QStringLiteral("axes")), limAbove);
    addLayer(kFlagLayer, layer(kCurveLayer), limAbove);
    curves_->setLayer(kCurveLayer);
    flags_->setLayer(kFlagLayer);
    flags_->setParent(this);
    levels_->setLayer(kFlagLayer);
    levels_->setParent(this);
    laneGrid_->setLayer(QStringLiteral("grid"));
    laneGrid_->setParent(this);
    heads_->setLayer(QStringLiteral("axes"));
    heads_->setParent(this);
    cursors_->setLayer(kCursorLayer);
    cursors_->setParent(this);
    cursors_->setVisible(false);
    legend_->setVisible(false);
    plotLayout()->addElement(0, 1, legend_);
    plotLayout()->setColumnSpacing(0);
    // The legend takes what it needs, the picture all the rest.
    plotLayout()->setColumnStretchFactor(0, 1000);
    for (QCPAxis* axis : {xAxis, yAxis}) {
        axis->setTicker(QSharedPointer<QCPAxisTicker>(new AxisTicker));
        axis->grid()->setZeroLinePen(Qt::NoPen);
        axis->setTickLength(0, 5);
        axis->setSubTickLength(0, 2);
    }
    numbers_ = xAxis->ticker();
    numbers_->setTickCount(kTicksX);
    times_.reset(new ClockTicker);
    axisRect()->setupFullAxesBox();
    for (QCPAxis* axis : {xAxis2, yAxis2}) {
        axis->setTickLabels(false);
        axis->setTicks(false);
    }
    xAxis->setRange(0.0, 1.0);
    yAxis->setRange(-1.0, 1.0);
    // The rectangle begins when the base class is told of a press, which it is with Shift alone.
    setSelectionRectMode(QCP::srmCustom);
    connect(selectionRect(), &QCPSelectionRect::accepted, this, [this](const QRect& rect) { zoomInto(rect); });
    laneScroll_->hide();
    connect(laneScroll_, &QScrollBar::valueChanged, this, [this](int pixels) { scrollLanes(pixels); });
    grabGesture(Qt::PinchGesture);
    applyPalette();
    applyFont();
}

void PlotView::makeStale() {
    stale_ = true;
    update();
}

void PlotView::setColumns(const SCOPERAColumn* columns, uint32_t count) {
    columns_.clear();
    for (uint32_t i = 0; i < count; ++i) {
        const SCOPERAColumn& column = columns[i];
        columns_.push_back({QString::fromUtf8(column.m_sName), QString::fromUtf8(column.m_sUnit),
                            fromBgr(column.m_nColor), column.m_nVisible != 0, column.m_nMarked != 0, column.m_nLane,
                            column.m_fScale, column.m_fOffset});
    }
    applyColumns();
}

void PlotView::applyColumns() {
    std::vector<CurveStyle> styles;
    std::vector<Legend::Entry> entries;
    std::vector<LaneHeads::Entry> heads;
    std::vector<LevelLines::Column> levels;
    std::vector<QString> units(columns_.size());
    for (const Column& column : columns_) {
        const size_t lane = lanes_.placeOf(column.lane);
        styles.push_back({column.color.rgba(), column.visible, column.marked, column.scale, column.offset, lane});
        entries.push_back({column.name, column.color, column.visible});
        heads.push_back({column.name, column.unit, column.color, column.visible, column.marked, lane});
        levels.push_back({lane, column.color, column.visible});
        if (lane < units.size() && units[lane].isEmpty()) {
            units[lane] = column.unit;
        }
    }
    curves_->setStyles(std::move(styles));
    legend_->setEntries(std::move(entries));
    heads_->setEntries(std::move(heads));
    levels_->setColumns(std::move(levels));
    cursors_->setLaneUnits(units);
    makeStale();
}

void PlotView::setFrames(const SCOPERAFrames& frames) {
    curves_->setFrames(frames);
    makeStale();
}

void PlotView::setEarlier(const SCOPERAFrames* frames, uint32_t count) {
    curves_->setEarlier(std::vector<SCOPERAFrames>(frames, frames + count));
    makeStale();
}

void PlotView::setClock(const ClockAxis& clock) {
    if (clock == clock_) {
        return;
    }
    clock_ = clock;
    times_->setClock(clock);
    cursors_->setClock(clock);
    xAxis->setTicker(clock.shown() ? times_ : numbers_);
    makeStale();
}

// As many times of day as there is room for.
void PlotView::fitClock() {
    if (clock_.shown()) {
        const int label = QFontMetrics(font_).horizontalAdvance(QStringLiteral("00:00:00.000")) * 4 / 3;
        times_->setTickCount(std::clamp(axisRect()->width() / std::max(label, 1), 1, kTicksX));
    }
}

void PlotView::setFlags(const SCOPERAFlag* flags, uint32_t count) {
    flags_->setFlags(flags, count);
    makeStale();
}

void PlotView::setAxisRange(int32_t axis, const QCPRange& range) {
    if (axisOf(axis)->range() != range) {
        axisOf(axis)->setRange(range);
        makeStale();
    }
}

bool PlotView::setOption(uint32_t option, int32_t value) {
    const bool on = value != 0;
    switch (option) {
        case kScoperaOptionPoints:
            points_ = on;
            curves_->setPoints(on);
            break;
        case kScoperaOptionGrid:
            grid_ = on;
            xAxis->grid()->setVisible(on);
            yAxis->grid()->setVisible(on);
            laneGrid_->setLines(on);
            break;
        case kScoperaOptionLegend:
            legend_->setVisible(on);
            break;
        case kScoperaOptionCursors:
            showCursors(on);
            break;
        case kScoperaOptionDigitsX:
        case kScoperaOptionDigitsY:
            digits_[option - kScoperaOptionDigitsX] = value;
            cursors_->setDigits(digits_[0], digits_[1]);
            break;
        default:
            return false;
    }
    makeStale();
    return true;
}

std::optional<int32_t> PlotView::option(uint32_t option) const {
    switch (option) {
        case kScoperaOptionPoints:
            return points_;
        case kScoperaOptionGrid:
            return grid_;
        case kScoperaOptionLegend:
            return legend_->visible();
        case kScoperaOptionCursors:
            return cursors_->visible();
        case kScoperaOptionDigitsX:
        case kScoperaOptionDigitsY:
            return digits_[option - kScoperaOptionDigitsX];
        default:
            return std::nullopt;
    }
}

bool PlotView::setText(uint32_t code, const QString& text) {
    switch (code) {
        case kScoperaTextLabelX:
            xAxis->setLabel(text);
            break;
        case kScoperaTextLabelY:
            yAxis->setLabel(text);
            break;
        case kScoperaTextUnitX:
        case kScoperaTextUnitY:
            units_[code - kScoperaTextUnitX] = text;
            break;
        case kScoperaTextDifference:
            difference_ = text;
            break;
        default:
            return false;
    }
    cursors_->setTexts(units_[0], units_[1], difference_);
    makeStale();
    return true;
}

void PlotView::setPlotFont(const QString& family, int32_t points) {
    if (!family.isEmpty()) {
        font_.setFamily(family);
    }
    if (points > 0) {
        font_.setPointSize(points);
    }
    applyFont();
    makeStale();
}

void PlotView::setCursors(const SCOPERACursors& places) {
    cursors_->setPlaces(places);
    makeStale();
}

void PlotView::showCursors(bool shown) {
    if (shown && !cursors_->visible()) {
        cursors_->bringIntoView();
    }
    cursors_->setVisible(shown);
    layer(kCursorLayer)->setMode(shown ? QCPLayer::lmBuffered : QCPLayer::lmLogical);
}

void PlotView::applyFont() {
    for (QCPAxis* axis : {xAxis, yAxis}) {
        axis->setTickLabelFont(font_);
        axis->setLabelFont(font_);
    }
    legend_->setFont(font_);
    cursors_->setFont(font_);
    flags_->setFont(font_);
    levels_->setFont(font_);
    heads_->setFont(font_);
    // Room for usual numbers, so that the picture keeps its place when they get a digit more.
    const QFontMetrics metrics(font_);
    const int left = metrics.horizontalAdvance(QStringLiteral("-00.000")) + metrics.height() + 12;
    axisRect()->setMinimumMargins(
        {lanes_.shown() ? heads_->width() : left, metrics.height() / 2 + 4, metrics.averageCharWidth() * 3, 0});
}

void PlotView::applyPalette() {
    const QColor base = palette().color(QPalette::Base);
    const QColor text = palette().color(QPalette::Text);
    setBackground(QBrush(base));
    const QPen line(mixed(base, text, 0.55), 0);
    for (QCPAxis* axis : {xAxis, yAxis, xAxis2, yAxis2}) {
        axis->setBasePen(line);
        axis->setTickPen(line);
        axis->setSubTickPen(line);
        axis->setTickLabelColor(text);
        axis->setLabelColor(text);
        axis->grid()->setPen(QPen(mixed(base, text, 0.18), 0, Qt::DotLine));
    }
    legend_->setColors(text, mixed(base, text, 0.4));
    QColor box = base;
    box.setAlpha(225);
    cursors_->setColors(mixed(base, text, 0.8), text, box);
    flags_->setColors(mixed(base, fromBgr(kFlagColor), 0.85), text);
    levels_->setTextColor(text);
    laneGrid_->setColors(QPen(mixed(base, text, 0.18), 0, Qt::DotLine), line);
    heads_->setColors(text, mixed(base, text, 0.6), line.color(), mixed(base, text, 0.12));
    selectionRect()->setPen(QPen(text, 0, Qt::DashLine));
    QColor shade = palette().color(QPalette::Highlight);
    shade.setAlpha(50);
    selectionRect()->setBrush(shade);
}

void PlotView::updateLayout() {
    QCustomPlot::updateLayout();
    arrangeLanes();
    fitClock();
    const uint32_t width = pixelWidth();
    if (!isVisible() || (!paintWanted_ && width == announcedWidth_)) {
        return;
    }
    paintWanted_ = false;
    announcedWidth_ = width;
    if (events_.m_pPaintWanted != nullptr) {
        tell(events_.m_pPaintWanted, width);
        QCustomPlot::updateLayout();
        arrangeLanes();
    }
}

uint32_t PlotView::pixelWidth() {
    fitViewport();
    return static_cast<uint32_t>(curves_->pixelWidth());
}

std::optional<QCPRange> PlotView::extremes() {
    fitViewport();
    return curves_->extremes();
}

void PlotView::fitViewport() {
    if (viewport() != rect()) {
        setViewport(rect());
        QCustomPlot::updateLayout();
        arrangeLanes();
    }
}

void PlotView::render() {
    // A hidden widget is told of its new size only when it is shown.
    setViewport(rect());
    replot(rpQueuedRefresh);
    stale_ = false;
}

void PlotView::paintEvent(QPaintEvent* event) {
    if (stale_) {
        // What is drawn now is shown now: no further paint is asked for.
        setAttribute(Qt::WA_UpdatesDisabled, true);
        render();
        setAttribute(Qt::WA_UpdatesDisabled, false);
    }
    QCustomPlot::paintEvent(event);
}

void PlotView::resizeEvent(QResizeEvent* /*event*/) {
    setViewport(rect());
    makeStale();
}

void PlotView::showEvent(QShowEvent* event) {
    paintWanted_ = true;
    makeStale();
    QCustomPlot::showEvent(event);
}

void PlotView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        applyPalette();
        makeStale();
    }
    QCustomPlot::changeEvent(event);
}

QByteArray PlotView::svg() {
    fitViewport();
    SvgPicture picture(size());
    QCPPainter painter;
    if (painter.begin(&picture)) {
        toPainter(&painter, width(), height());
        painter.end();
        makeStale();
    }
    return picture.text();
}

QPixmap PlotView::picture() {
    const bool scrolls = !laneScroll_->isHidden();
    laneScroll_->hide();
    QPixmap taken = grab();
    laneScroll_->setVisible(scrolls);
    return taken;
}

}  // namespace tarno2
