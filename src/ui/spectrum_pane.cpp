#include "ui/spectrum_pane.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QTableWidget>
#include <QToolButton>
#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <utility>

#include "config/files/figure_text.h"
#include "measure/spectrum_figures.h"
#include "ui/measured_text.h"
#include "ui/shortened_label.h"
#include "ui/spectrum_picture.h"
#include "ui/text.h"
#include "ui/typed_keys.h"

namespace tarno2 {

namespace {

constexpr uint64_t kSpectrumPeriodMs = 200;
constexpr size_t kPeaks = 8;
constexpr double kDeepestDb = -220.0;
constexpr std::array kWindows = {TextId::SpectrumHann, TextId::SpectrumFlatTop, TextId::SpectrumBlackmanHarris,
                                 TextId::SpectrumRectangular};
constexpr int kLengths = 6;  // beside the automatic one, 1024 to 1048576
constexpr size_t kMostAutomatic = size_t{1} << 18;

size_t lengthOf(int32_t setting) {
    return size_t{1024} << (2 * std::clamp(setting - 1, 0, kLengths - 1));
}

/// The automatic length gives seven blocks to average, or takes all there is.
size_t lengthFor(const ProgramSettings& settings, uint64_t frames) {
    const size_t most = settings.spectrumLength > 0 ? lengthOf(settings.spectrumLength) : kMostAutomatic;
    const bool divided = settings.spectrumLength <= 0 && !settings.spectrumSingle;
    return spectrumLength(most, std::max<uint64_t>(divided ? frames / 4 : frames, kLeastSpectrum));
}

QComboBox* comboBox(const char* name, QWidget* parent) {
    auto* box = new QComboBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    return box;
}

QAction* checkedAction(const char* name, QMenu* menu) {
    QAction* action = menu->addAction(QString());
    action->setObjectName(QString::fromLatin1(name));
    action->setCheckable(true);
    return action;
}

double fullScaleOf(const SignalFormat::Channel& channel) {
    return std::abs(channel.upper - channel.lower) / 2.0;
}

}  // namespace

SpectrumPane::SpectrumPane(ProgramSettings& settings, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      window_(comboBox("SpectrumWindow", this)),
      scale_(comboBox("SpectrumScale", this)),
      length_(comboBox("SpectrumLength", this)),
      more_(new QToolButton(this)),
      facts_(new ShortenedLabel(this)),
      channel_(comboBox("SpectrumChannel", this)),
      peaks_(new QTableWidget(0, 2, this)),
      figures_(new QLabel(this)),
      picture_(new SpectrumPicture(this)) {
    setObjectName(QStringLiteral("SpectrumPane"));
    clock_.start();
    build();
    new TypedKeys(this);
    retranslate();
    loadSettings();
    connectAll();
}

SpectrumPane::~SpectrumPane() = default;

void SpectrumPane::build() {
    auto* menu = new QMenu(this);
    averaged_ = checkedAction("SpectrumAveraged", menu);
    logarithmic_ = checkedAction("SpectrumLogarithmic", menu);
    whole_ = checkedAction("SpectrumWhole", menu);
    more_->setObjectName(QStringLiteral("SpectrumMore"));
    more_->setText(QStringLiteral("…"));
    more_->setMenu(menu);
    more_->setPopupMode(QToolButton::InstantPopup);
    more_->setFocusPolicy(Qt::StrongFocus);
    length_->addItem(QString());
    for (int i = 1; i <= kLengths; ++i) {
        length_->addItem(fromCodePage(formatCount(lengthOf(i))));
    }
    facts_->setObjectName(QStringLiteral("SpectrumFacts"));
    figures_->setObjectName(QStringLiteral("SpectrumFigures"));
    figures_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    peaks_->setObjectName(QStringLiteral("SpectrumPeaks"));
    peaks_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    peaks_->setSelectionBehavior(QAbstractItemView::SelectRows);
    peaks_->verticalHeader()->hide();
    peaks_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    peaks_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    peaks_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    auto* head = new QHBoxLayout;
    head->setContentsMargins(4, 1, 4, 1);
    for (QWidget* widget : {static_cast<QWidget*>(window_), static_cast<QWidget*>(scale_),
                            static_cast<QWidget*>(length_), static_cast<QWidget*>(more_)}) {
        head->addWidget(widget);
    }
    head->addSpacing(8);
    head->addWidget(facts_, 1);
    auto* beside = new QVBoxLayout;
    beside->setContentsMargins(0, 0, 0, 0);
    beside->setSpacing(2);
    beside->addWidget(channel_);
    beside->addWidget(peaks_, 1);
    beside->addWidget(figures_);
    auto* side = new QWidget(this);
    side->setLayout(beside);
    side->setFixedWidth(fontMetrics().averageCharWidth() * 34);
    auto* body = new QHBoxLayout;
    body->setSpacing(2);
    body->addWidget(picture_, 1);
    body->addWidget(side);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(head);
    layout->addLayout(body, 1);
}

void SpectrumPane::connectAll() {
    for (QComboBox* box : {window_, scale_, length_}) {
        connect(box, &QComboBox::activated, this, &SpectrumPane::keepSettings);
    }
    for (QAction* action : {averaged_, logarithmic_, whole_}) {
        connect(action, &QAction::triggered, this, &SpectrumPane::keepSettings);
    }
    connect(channel_, &QComboBox::activated, this, &SpectrumPane::showFigures);
}

void SpectrumPane::loadSettings() {
    window_->setCurrentIndex(settings_.spectrumWindow);
    scale_->setCurrentIndex(settings_.spectrumScale);
    length_->setCurrentIndex(settings_.spectrumLength);
    averaged_->setChecked(!settings_.spectrumSingle);
    logarithmic_->setChecked(settings_.spectrumLogarithmic);
    whole_->setChecked(settings_.spectrumWhole);
    picture_->setLogarithmic(settings_.spectrumLogarithmic);
}

void SpectrumPane::keepSettings() {
    settings_.spectrumWindow = window_->currentIndex();
    settings_.spectrumScale = scale_->currentIndex();
    settings_.spectrumLength = length_->currentIndex();
    settings_.spectrumSingle = !averaged_->isChecked();
    settings_.spectrumLogarithmic = logarithmic_->isChecked();
    settings_.spectrumWhole = whole_->isChecked();
    picture_->setLogarithmic(settings_.spectrumLogarithmic);
    showSpectrum();
    emit changed();
}

// Of a signal that runs, what is still there as it came; of one block, its samples alone.
FrameSpan SpectrumPane::spanOf(ShownSignal& signal, const ShownFrames& shown,
                               const std::optional<FrameSpan>& between) const {
    const uint64_t frames = signal.screens().frameCount();
    FrameSpan span{static_cast<uint64_t>(std::max(shown.low, 0.0)),
                   static_cast<uint64_t>(std::max(std::ceil(shown.high), 0.0))};
    if (between && !settings_.spectrumWhole) {
        span = *between;
    }
    span.end = std::min(span.end, frames);
    span.first = std::min(std::max(span.first, signal.firstRawFrame()), span.end);
    if (settings_.spectrumSingle) {
        span.first = span.end - std::min<uint64_t>(lengthFor(settings_, span.count()), span.count());
    }
    return span;
}

void SpectrumPane::takeColumns(const ShownSignal& signal, const SignalDrawing& drawing) {
    std::vector<MeasuredColumn> columns = measuredColumns(signal, drawing);
    std::erase_if(columns, [](const MeasuredColumn& column) { return column.line; });
    for (MeasuredColumn& column : columns) {
        column.unit = uiText(TextId::UnitVolts);
        column.scale = axisYScale(signal.format(), column.index, AxisYUnit::Volts);
    }
    if (columns == columns_) {
        return;
    }
    const QString chosen = channel_->currentText();
    columns_ = std::move(columns);
    fullScales_.clear();
    channel_->clear();
    for (const MeasuredColumn& column : columns_) {
        fullScales_.push_back(fullScaleOf(signal.format().channels[column.index]));
        channel_->addItem(column.name);
    }
    const auto marked = std::ranges::find(columns_, true, &MeasuredColumn::marked);
    const size_t number = marked == columns_.end() ? SIZE_MAX : marked->index;
    const bool follow = number != marked_ && number != SIZE_MAX;
    marked_ = number;
    channel_->setCurrentIndex(follow ? static_cast<int>(marked - columns_.begin())
                                     : std::max(channel_->findText(chosen), columns_.empty() ? -1 : 0));
    showSpectrum();
}

void SpectrumPane::drawn(ShownSignal& signal, const ShownFrames& shown, const SignalDrawing& drawing,
                         const std::optional<FrameSpan>& between, bool following) {
    if (!isVisible()) {
        forget();
        return;
    }
    takeColumns(signal, drawing);
    Wanted wanted;
    wanted.span = spanOf(signal, shown, between);
    wanted.window = static_cast<SpectrumWindow>(settings_.spectrumWindow);
    wanted.length = lengthFor(settings_, wanted.span.count());
    wanted.averaged = !settings_.spectrumSingle;
    for (const MeasuredColumn& column : columns_) {
        wanted.channels.push_back(column.index);
    }
    if (wanted_ == wanted) {
        return;
    }
    const auto now = static_cast<uint64_t>(clock_.elapsed());
    const bool sliding = following && wanted_ && wanted_->channels == wanted.channels &&
                         wanted_->window == wanted.window && wanted_->length == wanted.length;
    if (sliding && (worker_.busy() || now - startedAt_ < kSpectrumPeriodMs)) {
        return;
    }
    wanted_ = wanted;
    startedAt_ = now;
    startWorker(signal, wanted);
}

void SpectrumPane::startWorker(ShownSignal& signal, const Wanted& wanted) {
    const uint64_t number = ++number_;
    if (wanted.channels.empty()) {
        finished(number, SpectrumEnd::NotRead, {});
        picture_->setNotice(uiText(TextId::SpectrumNothing));
        return;
    }
    if (wanted.span.count() < kLeastSpectrum) {
        finished(number, SpectrumEnd::TooShort, {});
        return;
    }
    const std::shared_ptr<FrameSource> source = signal.rawFrames(wanted.span);
    if (!source) {
        finished(number, SpectrumEnd::NotRead, {});
        picture_->setNotice(uiText(TextId::SpectrumNoRaw));
        return;
    }
    SpectrumWish wish;
    for (const MeasuredColumn& column : columns_) {
        wish.channels.push_back({column.index, column.scale});
    }
    wish.window = wanted.window;
    wish.length = wanted.length;
    wish.averaged = wanted.averaged;
    worker_.start([this, number, source, wish, span = wanted.span, format = signal.format()](WorkProgress& progress) {
        Spectrum spectrum;
        SpectrumEnd end = SpectrumEnd::NotRead;
        try {
            end = spectrumOf(*source, format, span, wish, progress, spectrum);
        } catch (const std::exception&) {
            spectrum = {};
        }
        if (end != SpectrumEnd::Cancelled) {
            QMetaObject::invokeMethod(
                this, [this, number, end, made = std::move(spectrum)] { finished(number, end, made); },
                Qt::QueuedConnection);
        }
    });
}

void SpectrumPane::finished(uint64_t number, SpectrumEnd end, const Spectrum& spectrum) {
    if (number != number_) {
        return;
    }
    spectrum_ = end == SpectrumEnd::Whole ? spectrum : Spectrum{};
    channels_ = wanted_ ? wanted_->channels : std::vector<size_t>{};
    showSpectrum();
    if (end == SpectrumEnd::TooShort) {
        picture_->setNotice(uiText(TextId::SpectrumTooShort, {QString::number(kLeastSpectrum)}));
    } else if (end == SpectrumEnd::NotRead || end == SpectrumEnd::Missing) {
        picture_->setNotice(uiText(TextId::MeasuredNotRead));
    }
}

SpectrumScale SpectrumPane::scale() const {
    return static_cast<SpectrumScale>(settings_.spectrumScale);
}

QString SpectrumPane::unit() const {
    switch (scale()) {
        case SpectrumScale::DbFs:
            return uiText(TextId::SpectrumDbFs);
        case SpectrumScale::Volts:
            return uiText(TextId::SpectrumVolts);
        case SpectrumScale::VoltsSquaredPerHz:
            return uiText(TextId::UnitVolts) + QStringLiteral("²/") + uiText(TextId::HertzUnit);
        default:
            return uiText(TextId::SpectrumDbV);
    }
}

// Channels that were switched since are left out until their spectrum comes.
void SpectrumPane::showSpectrum() {
    if (spectrum_.powers.empty()) {
        facts_->setWhole({});
        if (!picture_->curves().curves.empty()) {
            picture_->setNotice({});
        }
        showFigures();
        return;
    }
    SpectrumCurves curves;
    curves.binWidth = spectrum_.binWidth;
    curves.unit = unit();
    curves.decades = scale() == SpectrumScale::VoltsSquaredPerHz;
    const bool decibels = scale() == SpectrumScale::DbV || scale() == SpectrumScale::DbFs;
    curves.deepest = decibels ? kDeepestDb : curves.decades ? 1e-40 : 0.0;
    for (size_t i = 0; i < spectrum_.powers.size(); ++i) {
        const auto column = std::ranges::find(columns_, channels_[i], &MeasuredColumn::index);
        if (column == columns_.end()) {
            continue;
        }
        const double fullScale = fullScales_[static_cast<size_t>(column - columns_.begin())];
        SpectrumCurves::Curve curve{column->name, column->color, {}};
        curve.values.reserve(spectrum_.powers[i].size());
        for (const double power : spectrum_.powers[i]) {
            curve.values.push_back(spectrumValue(power, scale(), fullScale, spectrum_));
        }
        curves.curves.push_back(std::move(curve));
    }
    facts_->setWhole(uiText(TextId::SpectrumBlocks,
                            {fromCodePage(formatCount(spectrum_.length)), fromCodePage(formatCount(spectrum_.blocks)),
                             frequencyWithUnit(spectrum_.binWidth, 4)}));
    picture_->setCurves(std::move(curves));
    showFigures();
}

QString SpectrumPane::levelText(double power, double fullScale) const {
    const double value = spectrumValue(power, scale(), fullScale, spectrum_);
    const bool decibels = scale() == SpectrumScale::DbV || scale() == SpectrumScale::DbFs;
    return (decibels ? QString::number(value, 'f', 2) : QString::number(value, 'g', 5)) + QLatin1Char(' ') + unit();
}

void SpectrumPane::showFigures() {
    const int chosen = channel_->currentIndex();
    const auto at =
        chosen < 0 ? channels_.end() : std::ranges::find(channels_, columns_[static_cast<size_t>(chosen)].index);
    const auto place = static_cast<size_t>(at - channels_.begin());
    if (at == channels_.end() || place >= spectrum_.powers.size()) {
        peaks_->setRowCount(0);
        figures_->clear();
        return;
    }
    const SpectrumFigures figures = figuresOf(spectrum_, place, kPeaks);
    const double fullScale = fullScales_[static_cast<size_t>(chosen)];
    peaks_->setRowCount(static_cast<int>(figures.peaks.size()));
    for (size_t i = 0; i < figures.peaks.size(); ++i) {
        const QString cells[] = {frequencyWithUnit(figures.peaks[i].frequency),
                                 levelText(figures.peaks[i].power, fullScale)};
        for (int column = 0; column < 2; ++column) {
            auto* item = new QTableWidgetItem(cells[column]);
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            peaks_->setItem(static_cast<int>(i), column, item);
        }
    }
    const auto decibels = [](const std::optional<double>& value) {
        return value ? uiText(TextId::SpectrumDecibels, {QString::number(*value, 'f', 1)}) : QStringLiteral("–");
    };
    const QString distortion = figures.distortion
                                   ? QString::number(*figures.distortion * 100.0, 'g', 4) + QStringLiteral(" %")
                                   : QStringLiteral("–");
    figures_->setText(QStringLiteral("%1 %2\n%3 %4\n%5 %6")
                          .arg(uiText(TextId::SpectrumDistortion), distortion, uiText(TextId::SpectrumNoise),
                               decibels(figures.signalToNoiseDb), uiText(TextId::SpectrumSpurious),
                               decibels(figures.spuriousFreeDb)));
}

void SpectrumPane::forget() {
    if (!wanted_) {
        return;
    }
    ++number_;
    worker_.stop();
    wanted_.reset();
}

void SpectrumPane::retranslate() {
    peaks_->setAccessibleName(uiText(TextId::ViewSpectrum));
    const int window = std::max(window_->currentIndex(), 0);
    const int scale = std::max(scale_->currentIndex(), 0);
    window_->clear();
    for (const TextId text : kWindows) {
        window_->addItem(uiText(text));
    }
    window_->setCurrentIndex(window);
    scale_->clear();
    scale_->addItems({uiText(TextId::SpectrumDbV), uiText(TextId::SpectrumDbFs), uiText(TextId::SpectrumVolts),
                      uiText(TextId::UnitVolts) + QStringLiteral("²/") + uiText(TextId::HertzUnit)});
    scale_->setCurrentIndex(scale);
    length_->setItemText(0, uiText(TextId::AxisYAuto));
    window_->setToolTip(uiText(TextId::SpectrumWindowHint));
    scale_->setToolTip(uiText(TextId::SpectrumScaleHint));
    length_->setToolTip(uiText(TextId::SpectrumLengthHint));
    channel_->setToolTip(uiText(TextId::SpectrumChannelHint));
    for (QComboBox* box : {window_, scale_, length_, channel_}) {
        box->setAccessibleName(box->toolTip());
    }
    more_->setAccessibleName(uiText(TextId::ViewSettings));
    more_->setToolTip(uiText(TextId::ViewSettings));
    averaged_->setText(uiText(TextId::SpectrumAverage));
    averaged_->setToolTip(uiText(TextId::SpectrumAverageHint));
    logarithmic_->setText(uiText(TextId::SpectrumLogFrequency));
    whole_->setText(uiText(TextId::SpectrumWholePicture));
    whole_->setToolTip(uiText(TextId::SpectrumWholePictureHint));
    peaks_->setHorizontalHeaderLabels({uiText(TextId::MeasuredFrequency), uiText(TextId::SpectrumPeakLevel)});
    showSpectrum();
}

}  // namespace tarno2
