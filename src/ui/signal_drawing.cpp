#include "ui/signal_drawing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "display/axis_x.h"
#include "ui/label_field.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr size_t kLeastBuckets = 100;

size_t sampleBytes(const SignalFormat& format) {
    return format.word.sampleWidth == 4 ? sizeof(int32_t) : sizeof(int16_t);
}

std::string numbered(TextId id, int32_t number) {
    return uiText(id, {QString::number(number)}).toStdString();
}

TextId textOf(AxisXUnit unit) {
    return static_cast<TextId>(static_cast<int32_t>(TextId::AxisXSamples) + static_cast<int32_t>(unit));
}

TextId textOf(AxisYUnit unit) {
    switch (unit) {
        case AxisYUnit::Millivolts:
            return TextId::Millivolts;
        case AxisYUnit::Microvolts:
            return TextId::Microvolts;
        case AxisYUnit::Codes:
            return TextId::AxisYCodes;
        case AxisYUnit::Units:
            return TextId::AxisYUnits;
        case AxisYUnit::Automatic:
            return TextId::AxisYAuto;
        default:
            return TextId::Volts;
    }
}

QString shortUnit(AxisYUnit unit, const ChannelLabel& label) {
    switch (unit) {
        case AxisYUnit::Codes:
            return uiText(TextId::AxisYCodes);
        case AxisYUnit::Units:
            return unitOf(label);
        default:
            return uiText(static_cast<TextId>(static_cast<int32_t>(TextId::UnitVolts) + static_cast<int32_t>(unit)));
    }
}

/// Volts, or another kind of values, which never turn into each other.
AxisYKind kindOf(const ProgramSettings& settings) {
    return kindOf(static_cast<AxisYUnit>(settings.axisYMode));
}

/// In which the settings keep where the user has zoomed to.
double keptUnitsPerVolt(const ProgramSettings& settings) {
    return kindOf(settings) == AxisYKind::Volts ? unitsPerVolt(AxisYUnit::Microvolts) : 1.0;
}

/// Nothing below 0 can come in the kind of values that is shown.
bool isPositive(const SignalFormat& format, AxisYKind kind) {
    if (kind == AxisYKind::Codes) {
        return format.minimumCode >= 0;
    }
    return std::ranges::all_of(format.channels, [kind](const SignalFormat::Channel& channel) {
        return kind == AxisYKind::Units
                   ? std::min(channel.label.inUnit(channel.lower), channel.label.inUnit(channel.upper)) >= 0.0
                   : channel.lower >= 0.0;
    });
}

ShowMode showMode(const ProgramSettings& settings) {
    return settings.showSignalMode == 1   ? ShowMode::AnalogAndDigital
           : settings.showSignalMode == 2 ? ShowMode::Digital
                                          : ShowMode::Analog;
}

}  // namespace

bool SignalDrawing::Column::operator==(const Column& other) const {
    return key == other.key && color == other.color && visible == other.visible && legend == other.legend &&
           scale.factor == other.scale.factor && scale.offset == other.scale.offset && unitText == other.unitText &&
           lane == other.lane && marked == other.marked;
}

SignalDrawing::~SignalDrawing() {
    clear();
}

void SignalDrawing::reset() {
    resetScaleY();
    values_.clear();
    scoper_.SetReadings(nullptr, 0);
    lanes_.clear();
    scoper_.SetLanes(nullptr, 0);
    hidden_.clear();
    columnCount_ = 0;
}

void SignalDrawing::resetScaleY() {
    scale_.reset();
    layout_.forgetRanges();
}

void SignalDrawing::clear() {
    scoper_.SetFrames(nullptr);
    scoper_.SetEarlier(nullptr, 0);
    earlierLook_.reset();
    earlier_.clear();
}

void SignalDrawing::retranslate() {
    labels_.reset();
    columns_.clear();
    scoper_.SetText(kScoperaTextDifference, uiText(TextId::CursorDifference).toUtf8().constData());
    scoper_.SetFont(QString::fromStdString(settings_.axisFontName).toUtf8().constData(), settings_.axisFontSize);
}

AxisXUnit SignalDrawing::unitX(const SignalFormat& format) const {
    return format.framesPerSecond > 0.0 ? static_cast<AxisXUnit>(settings_.axisXUnit) : AxisXUnit::Samples;
}

void SignalDrawing::draw(ShownSignal& signal, const ShownFrames& shown, uint64_t nowMs) {
    if (!converter_.enabled) {
        return;
    }
    const SignalFormat& format = signal.format();
    const AxisXUnit unit = unitX(format);
    const auto axisOf = [&](double frame) { return axisXOfFrame(frame - shown.origin, unit, format.framesPerSecond); };
    // Two a pixel: their borders are not those of the pixels, and a pixel shows all of a bucket that begins in it.
    const size_t buckets = std::max<size_t>(size_t{2} * scoper_.PixelWidth(), kLeastBuckets);
    drawEarlier(signal, shown, buckets);
    SCOPERAFrames frames{};
    if (signal.screens().build(shown.first, shown.end, buckets, screen_)) {
        frames = framesOf(signal, screen_, shown);
    }
    scoper_.SetFrames(frames.m_nFrames > 0 ? &frames : nullptr);
    scoper_.SetOption(kScoperaOptionPoints, settings_.pixelsMode ? 1 : 0);
    scoper_.SetRange(kScoperaAxisX, axisOf(shown.low), axisOf(shown.high));
    tellClock(signal, shown, unit);
    scaleY(signal, nowMs);
    setTexts(signal, unit, shown);
}

SCOPERAFrames SignalDrawing::framesOf(const ShownSignal& signal, const Screen& screen, const ShownFrames& shown) {
    SCOPERAFrames frames{};
    if (screen.runs.empty() || !convert(signal, screen, frames)) {
        return {};
    }
    const SignalFormat& format = signal.format();
    const AxisXUnit unit = unitX(format);
    const double step = static_cast<double>(screen.bucketFrames) / static_cast<double>(screen.rowsPerBucket());
    const double first = static_cast<double>(screen.runs.back().firstFrame) - shown.origin;
    frames.m_fFirstX = axisXOfFrame(first, unit, format.framesPerSecond);
    frames.m_fStepX = axisXOfFrame(step, unit, format.framesPerSecond);
    return frames;
}

// Drawn anew only when something about them is new: there may be a hundred of them.
void SignalDrawing::drawEarlier(ShownSignal& signal, const ShownFrames& shown, size_t buckets) {
    bool changed = false;
    const RecordStack* stack = signal.earlier(shown.first, shown.end, buckets, changed);
    if (stack == nullptr || stack->shown() == 0) {
        if (earlierLook_) {
            scoper_.SetEarlier(nullptr, 0);
            earlierLook_.reset();
            earlier_.clear();
        }
        return;
    }
    const AxisXUnit unit = unitX(signal.format());
    const auto axisOf = [&](double frames) { return axisXOfFrame(frames, unit, signal.format().framesPerSecond); };
    const EarlierLook look{axisOf(shown.origin), axisOf(1.0), settings_.showSignalMode, settings_.digitalLines};
    if (!changed && earlierLook_ == look) {
        return;
    }
    earlierLook_ = look;
    earlier_.resize(stack->shown());
    std::vector<SCOPERAFrames> handed;
    for (size_t i = 0; i < stack->shown(); ++i) {
        SCOPERAFrames frames = framesOf(signal, stack->screen(i), shown);
        if (frames.m_nFrames > 0) {
            const auto* samples = static_cast<const std::byte*>(frames.m_pSamples);
            earlier_[i].assign(samples, samples + frames.m_nFrames * frames.m_nColumns * sampleBytes(signal.format()));
            frames.m_pSamples = earlier_[i].data();
            handed.push_back(frames);
        }
    }
    scoper_.SetEarlier(handed.data(), static_cast<uint32_t>(handed.size()));
}

// Frames that are not in one piece (some were lost to the view) are drawn from the last gap on.
bool SignalDrawing::convert(const ShownSignal& signal, const Screen& screen, SCOPERAFrames& frames) {
    const SignalFormat& format = signal.format();
    const Screen::Run& run = screen.runs.back();
    const size_t channels = format.channelCount();
    std::vector<int32_t> channelColors(channels);
    for (size_t i = 0; i < channels; ++i) {
        channelColors[i] =
            settings_.channels[static_cast<size_t>(signal.channelNumber(i)) % settings_.channels.size()].color;
    }
    const DigitalSettings digital{settings_.digitalLines, format.maximumCode};
    converter_.word = format.word;
    const std::byte* words = screen.words.data() + run.firstRow * format.frameBytes();
    const size_t samples = run.rows * channels;
    const bool wide = format.word.sampleWidth == 4;
    size_t count = 0;
    int32_t result = 0;
    if (wide) {
        const int32_t* values = nullptr;
        result =
            ConvertForDisplay32(converter_, reinterpret_cast<const int32_t*>(words), samples, &values, &count, channels,
                                &columnCount_, settings_.showSignalMode, digital, channelColors, &columnColors_);
        frames.m_pSamples = values;
    } else {
        const int16_t* values = nullptr;
        result =
            ConvertForDisplay16(converter_, reinterpret_cast<const int16_t*>(words), samples, &values, &count, channels,
                                &columnCount_, settings_.showSignalMode, digital, channelColors, &columnColors_);
        frames.m_pSamples = values;
    }
    if (result != 1 || columnCount_ == 0) {
        return false;
    }
    frames.m_nColumns = static_cast<uint32_t>(columnCount_);
    frames.m_nFrames = count / columnCount_;
    const bool isSigned = format.word.signedCodes;
    frames.m_nSampleFormat =
        wide ? (isSigned ? kScoperaSigned32 : kScoperaUnsigned32) : (isSigned ? kScoperaSigned16 : kScoperaUnsigned16);
    return frames.m_nFrames > 0;
}

std::vector<SignalDrawing::Column> SignalDrawing::columnsOf(const ShownSignal& signal) const {
    const SignalFormat& format = signal.format();
    const size_t analog = analogColumns(format);
    const bool withUnits = unitsDiffer(format);
    std::vector<Column> columns(columnCount_);
    std::ranges::for_each(columns, [this](Column& column) { column.unit = unitY_; });
    for (uint32_t lane = 0; lane < lanes_.size(); ++lane) {
        for (const size_t column : lanes_[lane].plan.columns) {
            // The lanes are those of the last picture, which may have had more columns.
            if (column < columns.size()) {
                columns[column].lane = lane;
                columns[column].unit = lanes_[lane].unit;
            }
        }
    }
    for (size_t i = 0; i < columns.size(); ++i) {
        Column& column = columns[i];
        if (i < analog) {
            column.key = signal.channelNumber(i);
            const ChannelLabel& label = format.channels[i].label;
            column.name = label.name.empty() ? numbered(TextId::ChannelName, column.key) : label.name;
            column.scale = axisYScale(format, i, column.unit);
            column.marked = column.key == marked_;
            column.unitText = shortUnit(column.unit, label).toStdString();
            column.legend = withUnits ? column.name + " [" + column.unitText + "]" : column.name;
        } else {
            const auto line = static_cast<int32_t>(i - analog);
            column.key = -1 - line;
            const auto& names = format.lineNames;
            const bool named = static_cast<size_t>(line) < names.size() && !names[static_cast<size_t>(line)].empty();
            column.name = named ? names[static_cast<size_t>(line)] : numbered(TextId::DigitalLineName, line);
            column.legend = column.name;
            column.scale = digitalAxisYScale(format, column.unit);
        }
        column.color = i < columnColors_.size() ? static_cast<uint32_t>(columnColors_[i]) : 0;
        column.visible = !hidden_.contains(column.key);
    }
    return columns;
}

size_t SignalDrawing::analogColumns(const SignalFormat& format) const {
    return showMode(settings_) == ShowMode::Digital ? 0 : format.channelCount();
}

// Those of one axis, where channels have units of their own.
bool SignalDrawing::unitsDiffer(const SignalFormat& format) const {
    const auto& channels = format.channels;
    return unitY_ == AxisYUnit::Units && lanes_.empty() &&
           std::ranges::any_of(channels, [&](const SignalFormat::Channel& channel) {
               return channel.label.unit != channels.front().label.unit;
           });
}

std::vector<size_t> SignalDrawing::shownChannels(const ShownSignal& signal) const {
    std::vector<size_t> shown;
    for (size_t i = 0; i < signal.format().channelCount(); ++i) {
        if (!hidden_.contains(signal.channelNumber(i))) {
            shown.push_back(i);
        }
    }
    return shown;
}

void SignalDrawing::setColumns(std::vector<Column> columns) {
    if (columns == columns_) {
        return;
    }
    columns_ = std::move(columns);
    std::vector<SCOPERAColumn> handed;
    handed.reserve(columns_.size());
    for (const Column& column : columns_) {
        handed.push_back({column.legend.c_str(), column.color, column.visible ? 1U : 0U, column.scale.factor,
                          column.scale.offset, column.unitText.c_str(), column.lane, column.marked ? 1U : 0U});
    }
    scoper_.SetColumns(handed.data(), static_cast<uint32_t>(handed.size()));
    handReadings();
}

std::optional<int32_t> SignalDrawing::keyOf(uint32_t column) const {
    return column < columns_.size() ? std::optional(columns_[column].key) : std::nullopt;
}

std::optional<size_t> SignalDrawing::mainChannel(const SignalFormat& format) const {
    std::optional<size_t> first;
    for (size_t i = 0; i < std::min(analogColumns(format), columns_.size()); ++i) {
        if (columns_[i].visible && columns_[i].marked) {
            return i;
        }
        first = !first && columns_[i].visible ? std::optional(i) : first;
    }
    return first;
}

bool SignalDrawing::moving() const {
    return settings_.axisYAutoMode &&
           (inLanes()
                ? std::ranges::any_of(lanes_, [this](const DrawnLane& lane) { return layout_.moving(lane.plan.key); })
                : scale_.moving());
}

// Where the user has zoomed to. A scale that the user gives lies around 0, or above it when nothing below can come.
AxisRange SignalDrawing::userRange(const SignalFormat& format) const {
    if (settings_.axisYLower < settings_.axisYUpper) {
        const double units = keptUnitsPerVolt(settings_);
        return {settings_.axisYLower / units, settings_.axisYUpper / units};
    }
    const double value = settings_.axisYValue > 0.0 ? settings_.axisYValue : 1.0;
    const double base = value / unitsPerVolt(unitY_);
    return {isPositive(format, kindOf(settings_)) ? 0.0 : -base, base};
}

// Digital lines alone are drawn over the whole code range, so that they keep their places.
AxisRange SignalDrawing::digitalRange(const SignalFormat& format) const {
    const bool volts = kindOf(settings_) == AxisYKind::Volts;
    const auto unit = volts ? AxisYUnit::Volts : static_cast<AxisYUnit>(settings_.axisYMode);
    const LinearScale scale = digitalAxisYScale(format, unit);
    const auto [low, high] = std::minmax({scale.of(format.minimumCode), scale.of(format.maximumCode)});
    const double margin = (high - low) / 50.0;
    return {low - margin, high + margin};
}

// A unit of the user's own choice stays; the automatic one follows the automatic scale, or the range of the board.
AxisYUnit SignalDrawing::chooseUnitY(const SignalFormat& format) const {
    const bool automatic = settings_.axisYMode == static_cast<int32_t>(AxisYUnit::Automatic);
    const bool volts = kindOf(unitY_) == AxisYKind::Volts;
    return automatic && settings_.axisYAutoMode && volts ? unitY_ : userUnitY(format);
}

AxisYUnit SignalDrawing::userUnitY(const SignalFormat& format) const {
    const auto chosen = static_cast<AxisYUnit>(settings_.axisYMode);
    return chosen == AxisYUnit::Automatic ? unitForVolts(fullScaleVolts(format)) : chosen;
}

double SignalDrawing::userUnitsPerVolt(const SignalFormat& format) const {
    return unitsPerVolt(userUnitY(format));
}

void SignalDrawing::scaleY(const ShownSignal& signal, uint64_t nowMs) {
    const SignalFormat& format = signal.format();
    unitY_ = chooseUnitY(format);
    if (lanesWanted(format)) {
        scaleLanes(signal, nowMs);
        return;
    }
    if (inLanes()) {
        lanes_.clear();
        scoper_.SetLanes(nullptr, 0);
    }
    setColumns(columnsOf(signal));
    AxisRange range;
    if (!settings_.axisYAutoMode) {
        range = userRange(format);
    } else if (showMode(settings_) == ShowMode::Digital) {
        range = digitalRange(format);
    } else {
        range = automaticRange(nowMs);
    }
    const bool automaticUnit = settings_.axisYMode == static_cast<int32_t>(AxisYUnit::Automatic);
    if (automaticUnit && settings_.axisYAutoMode && range.low < range.high) {
        unitY_ = unitForVolts(range.largest());
        setColumns(columnsOf(signal));
    }
    if (range.low < range.high) {
        const double units = unitsPerVolt(unitY_);
        scoper_.SetRange(kScoperaAxisY, range.low * units, range.high * units);
    }
}

// The extremes come in the unit of the columns that were handed over last.
AxisRange SignalDrawing::automaticRange(uint64_t nowMs) {
    constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
    AxisRange visible{kNothing, kNothing};
    if (scoper_.GetExtremes(&visible.low, &visible.high) == 1) {
        visible.low /= unitsPerVolt(unitY_);
        visible.high /= unitsPerVolt(unitY_);
    }
    return scale_.update(visible, nowMs);
}

void SignalDrawing::tellClock(const ShownSignal& signal, const ShownFrames& shown, AxisXUnit unitX) {
    if (!shown.clock) {
        scoper_.SetClockX(0, 0.0);
        return;
    }
    const double frames = frameOfAxisX(1.0, unitX, signal.format().framesPerSecond);
    scoper_.SetClockX(shown.clock->at(shown.origin), frames / shown.clock->framesPerSecond);
}

// A time of day has the date beside it, of the left edge.
void SignalDrawing::setTexts(const ShownSignal& signal, AxisXUnit unitX, const ShownFrames& shown) {
    unitTextY_ = unitY_ == AxisYUnit::Units ? unitsOf(signal.format(), shownChannels(signal), unitOf({}).toStdString())
                                            : uiText(textOf(unitY_)).toStdString();
    const std::string date = shown.clock ? dateText(shown.clock->at(shown.low)) : std::string();
    const std::tuple labels{unitX, unitY_, unitTextY_, date};
    if (labels_ == labels) {
        return;
    }
    labels_ = labels;
    const QString day = QString::fromStdString(date);
    const QString unit = uiText(textOf(unitX));
    scoper_.SetText(kScoperaTextLabelX,
                    (day.isEmpty() ? unit : uiText(TextId::AxisXClock, {day})).toUtf8().constData());
    scoper_.SetText(kScoperaTextUnitX, (day.isEmpty() ? unit : day).toUtf8().constData());
    scoper_.SetText(kScoperaTextLabelY, unitTextY_.c_str());
    scoper_.SetText(kScoperaTextUnitY, unitTextY_.c_str());
}

}  // namespace tarno2
