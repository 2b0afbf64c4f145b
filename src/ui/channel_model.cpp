#include "ui/channel_model.h"

#include <QPainter>
#include <QPixmap>
#include <algorithm>
#include <cmath>
#include <utility>

#include "ui/color.h"
#include "ui/label_field.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr std::array kHeaders = {TextId::ColumnActive,  TextId::ColumnNumber,  TextId::ColorCaption,
                                 TextId::ColumnGain,    TextId::ColumnRange,   TextId::ColumnValue,
                                 TextId::ColumnMinimum, TextId::ColumnMaximum, TextId::ColumnName,
                                 TextId::ColumnUnit,    TextId::ColumnScale,   TextId::ColumnShown};

/// A swatch that keeps its colour in a marked row, with a frame that tells it from any ground.
QIcon makeSwatch(int32_t color) {
    constexpr int kSize = 16;
    QPixmap pixmap(kSize, kSize);
    pixmap.fill(Qt::black);
    QPainter painter(&pixmap);
    painter.fillRect(1, 1, kSize - 2, kSize - 2, Qt::white);
    painter.fillRect(2, 2, kSize - 4, kSize - 4, fromBgr(color));
    painter.end();
    QIcon icon(pixmap);
    icon.addPixmap(pixmap, QIcon::Selected);
    return icon;
}

/// Decimals that show about a ten-thousandth of the range, at so many units in a volt.
int decimalsFor(const InputLimits& limits, double units) {
    const double limit = std::max(std::abs(limits.lower), std::abs(limits.upper)) * std::abs(units);
    return limit > 0.0 ? static_cast<int>(std::clamp(4.0 - std::floor(std::log10(limit)), 0.0, 9.0)) : 4;
}

QString rangeText(const InputLimits& limits) {
    if (!limits.known()) {
        return {};
    }
    return limits.lower == -limits.upper
               ? QStringLiteral("\u00B1%1").arg(limits.upper, 0, 'g', 4)
               : QStringLiteral("%1 \u2026 %2").arg(limits.lower, 0, 'g', 4).arg(limits.upper, 0, 'g', 4);
}

QString scaleText(const ChannelLabel& label) {
    if (label.factor == 1.0 && label.offset == 0.0) {
        return {};
    }
    QString factor = QStringLiteral("\u00D7 %1").arg(label.factor, 0, 'g', 6);
    if (label.offset == 0.0) {
        return factor;
    }
    const QString sign = label.offset < 0.0 ? QStringLiteral(" \u2212 ") : QStringLiteral(" + ");
    return factor + sign + QString::number(std::abs(label.offset), 'g', 6);
}

}  // namespace

const QIcon& ChannelModel::swatch(int row) const {
    Swatch& kept = swatches_[static_cast<size_t>(row)];
    const int32_t color = channel(row).color;
    if (kept.icon.isNull() || kept.color != color) {
        kept = {color, makeSwatch(color)};
    }
    return kept.icon;
}

void ChannelModel::load(const ProgramSettings& settings) {
    channels_ = settings.channels;
    for (int row = 0; row < rows_; ++row) {
        takeRange(row);
    }
    rowsChanged(Active, Shown);
}

void ChannelModel::store(ProgramSettings& settings) const {
    settings.channels = channels_;
    settings.channelCount = rows_ > 0 ? rows_ : kMaximumChannelCount;
}

void ChannelModel::setBoard(uint32_t channelCount, const std::vector<int32_t>& gains, RangeOf rangeOf,
                            LabelOf labelOf) {
    beginResetModel();
    rows_ = static_cast<int>(std::min<size_t>(channelCount, channels_.size()));
    gains_ = gains;
    rangeOf_ = std::move(rangeOf);
    labelOf_ = std::move(labelOf);
    readings_.fill({});
    uneven_ = false;
    for (int row = 0; row < rows_; ++row) {
        takeRange(row);
        const InputLimits& limits = limits_[static_cast<size_t>(row)];
        uneven_ = uneven_ || limits.lower != -limits.upper;
    }
    endResetModel();
}

void ChannelModel::retranslate() {
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

int32_t ChannelModel::gainOf(int row) const {
    const int32_t gain = channel(row).gain;
    const bool known = std::find(gains_.begin(), gains_.end(), gain) != gains_.end();
    return known || gains_.empty() ? gain : gains_.front();
}

ChannelLabel ChannelModel::labelOf(int row) const {
    return labelOf_ ? labelOf_(row, channel(row).label) : channel(row).label;
}

void ChannelModel::takeRange(int row) {
    limits_[static_cast<size_t>(row)] = rangeOf_ ? rangeOf_(row, gainOf(row)) : InputLimits{};
}

void ChannelModel::rowsChanged(int firstColumn, int lastColumn) {
    if (rows_ > 0) {
        emit dataChanged(index(0, firstColumn), index(rows_ - 1, lastColumn));
    }
}

void ChannelModel::setActive(const std::vector<int>& rows, bool on) {
    for (const int row : rows) {
        channels_[static_cast<size_t>(row)].active = on;
    }
    rowsChanged(Active, Maximum);
    emit edited();
}

void ChannelModel::invertActive() {
    for (int row = 0; row < rows_; ++row) {
        bool& active = channels_[static_cast<size_t>(row)].active;
        active = !active;
    }
    rowsChanged(Active, Maximum);
    emit edited();
}

void ChannelModel::setGain(const std::vector<int>& rows, int32_t gain) {
    for (const int row : rows) {
        channels_[static_cast<size_t>(row)].gain = gain;
        takeRange(row);
    }
    rowsChanged(Gain, Range);
    emit edited();
}

void ChannelModel::stepGain(const std::vector<int>& rows, int step) {
    for (const int row : rows) {
        const auto at = std::find(gains_.begin(), gains_.end(), gainOf(row)) - gains_.begin();
        const auto next = at + step;
        if (next >= 0 && next < static_cast<std::ptrdiff_t>(gains_.size())) {
            channels_[static_cast<size_t>(row)].gain = gains_[static_cast<size_t>(next)];
            takeRange(row);
        }
    }
    rowsChanged(Gain, Range);
    emit edited();
}

void ChannelModel::setColor(int row, int32_t color) {
    channels_[static_cast<size_t>(row)].color = color;
    emit dataChanged(index(row, Color), index(row, Color));
    emit edited();
}

void ChannelModel::setScale(const std::vector<int>& rows, double factor, double offset) {
    if (locked_ || !isScale(factor, offset)) {
        return;
    }
    for (const int row : rows) {
        channels_[static_cast<size_t>(row)].label.factor = factor;
        channels_[static_cast<size_t>(row)].label.offset = offset;
    }
    rowsChanged(Value, Scale);
    emit edited();
}

void ChannelModel::setShown(int row, bool on) {
    if (row < 0 || row >= rows_ || channel(row).shown == on) {
        return;
    }
    channels_[static_cast<size_t>(row)].shown = on;
    emit dataChanged(index(row, Shown), index(row, Shown));
    emit shownChanged(row, on);
}

// The values of a row follow its unit.
bool ChannelModel::setLabelText(int row, int column, const QString& typed) {
    ChannelLabel& label = channels_[static_cast<size_t>(row)].label;
    std::string& text = column == Name ? label.name : label.unit;
    const std::string usable = usableLabelText(typed.toStdString());
    if (text != usable) {
        text = usable;
        emit dataChanged(index(row, Value), index(row, Scale));
        emit edited();
    }
    return true;
}

void ChannelModel::setLive(std::span<const ChannelReading> readings) {
    for (const ChannelReading& reading : readings) {
        if (reading.channel < 0 || reading.channel >= rows_) {
            continue;
        }
        Reading& shown = readings_[static_cast<size_t>(reading.channel)];
        shown.value = reading.value;
        shown.minimum = shown.known ? std::min(shown.minimum, reading.minimum) : reading.minimum;
        shown.maximum = shown.known ? std::max(shown.maximum, reading.maximum) : reading.maximum;
        shown.known = true;
    }
    rowsChanged(Value, Maximum);
}

void ChannelModel::resetExtremes() {
    readings_.fill({});
    rowsChanged(Value, Maximum);
}

int ChannelModel::activeCount() const {
    const auto* end = channels_.data() + rows_;
    return static_cast<int>(
        std::count_if(channels_.data(), end, [](const ChannelSettings& channel) { return channel.active; }));
}

int ChannelModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int ChannelModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

// The heading says volts, so another unit stands behind its number.
QString ChannelModel::valueText(double volts, const ChannelLabel& label, int row) const {
    const int decimals = decimalsFor(limits_[static_cast<size_t>(row)], label.factor);
    const QString number = QString::number(label.inUnit(volts), 'f', decimals);
    return label.hasUnit() ? number + QLatin1Char(' ') + unitOf(label) : number;
}

QString ChannelModel::readingText(int row, int column) const {
    const Reading& reading = readings_[static_cast<size_t>(row)];
    if (!reading.known) {
        return {};
    }
    const ChannelLabel label = labelOf(row);
    const bool lowest = (column == Minimum) == (label.factor > 0.0);
    return valueText(column == Value ? reading.value : lowest ? reading.minimum : reading.maximum, label, row);
}

QString ChannelModel::cellText(int row, int column) const {
    switch (column) {
        case Number:
            return QString::number(row);
        case Gain:
            return QString::number(gainOf(row));
        case Range:
            return rangeText(limits_[static_cast<size_t>(row)]);
        case Value:
        case Minimum:
        case Maximum:
            return readingText(row, column);
        case Name:
            return QString::fromStdString(labelOf(row).name);
        case Unit:
            return unitOf(labelOf(row));
        case Scale:
            return scaleText(channel(row).label);
        default:
            return {};
    }
}

/// Behind the values of the channels, with a blank; empty while all are told in volts.
QString ChannelModel::longestUnit() const {
    QString longest;
    for (int row = 0; row < rows_; ++row) {
        const ChannelLabel label = labelOf(row);
        const QString unit = QLatin1Char(' ') + unitOf(label);
        longest = label.hasUnit() && unit.size() > longest.size() ? unit : longest;
    }
    return longest;
}

QString ChannelModel::widestText(int column) const {
    switch (column) {
        case Number:
            return QStringLiteral("888");
        case Gain:
            return QStringLiteral("8888");
        case Range:
            return uneven_ ? QStringLiteral("-88.88 \u2026 88.88") : QStringLiteral("\u00B10.8888");
        case Value:
        case Minimum:
        case Maximum:
            return QStringLiteral("-88.88888") + longestUnit();
        case Name:
            return QStringLiteral("888888888888");
        case Unit:
            return QStringLiteral("88888");
        case Scale:
            return QStringLiteral("\u00D7 88.888 + 88.88");
        default:
            return QStringLiteral("88");
    }
}

QVariant ChannelModel::editText(int row, int column) const {
    switch (column) {
        case Gain:
            return gainOf(row);
        case Name:
            return QString::fromStdString(channel(row).label.name);
        case Unit:
            return QString::fromStdString(channel(row).label.unit);
        default:
            return {};
    }
}

QVariant ChannelModel::data(const QModelIndex& index, int role) const {
    const int row = index.row();
    const int column = index.column();
    switch (role) {
        case Qt::DisplayRole:
            return cellText(row, column);
        case Qt::CheckStateRole:
            return column == Active  ? QVariant(channel(row).active ? Qt::Checked : Qt::Unchecked)
                   : column == Shown ? QVariant(channel(row).shown ? Qt::Checked : Qt::Unchecked)
                                     : QVariant();
        case Qt::DecorationRole:
            return column == Color ? QVariant(swatch(row)) : QVariant();
        case Qt::EditRole:
            return editText(row, column);
        case Qt::TextAlignmentRole:
            return column >= Number && column < Name && column != Color ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                                        : QVariant();
        case Qt::AccessibleTextRole:
            return column == Color ? QVariant(fromBgr(channel(row).color).name()) : QVariant();
        default:
            return {};
    }
}

QVariant ChannelModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount) {
        return {};
    }
    if (role == Qt::ToolTipRole && section >= Name && section <= Scale) {
        return uiText(TextId::ScaleColumnHint);
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        return uiText(kHeaders[static_cast<size_t>(section)]);
    }
    return {};
}

Qt::ItemFlags ChannelModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if ((!locked_ && index.column() == Active) || index.column() == Shown) {
        flags |= Qt::ItemIsUserCheckable;
    }
    if (!locked_ && (index.column() == Gain || index.column() == Name || index.column() == Unit)) {
        flags |= Qt::ItemIsEditable;
    }
    return flags;
}

bool ChannelModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (index.isValid() && index.column() == Shown && role == Qt::CheckStateRole) {
        setShown(index.row(), value.toInt() == Qt::Checked);
        return true;
    }
    if (!index.isValid() || locked_) {
        return false;
    }
    if (index.column() == Active && role == Qt::CheckStateRole) {
        setActive({index.row()}, value.toInt() == Qt::Checked);
        return true;
    }
    if (index.column() == Gain && role == Qt::EditRole) {
        setGain({index.row()}, value.toInt());
        return true;
    }
    if ((index.column() == Name || index.column() == Unit) && role == Qt::EditRole) {
        return setLabelText(index.row(), index.column(), value.toString());
    }
    return false;
}

}  // namespace tarno2
