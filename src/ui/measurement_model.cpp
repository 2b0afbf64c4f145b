#include "ui/measurement_model.h"

#include <cmath>
#include <utility>

#include "display/wall_clock.h"
#include "ui/measured_text.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

QString headOf(int field) {
    switch (field) {
        case MeasurementModel::Name:
            return uiText(TextId::MeasuredSignal);
        case MeasurementModel::First:
            return uiText(TextId::MeasuredAtCursor, {QStringLiteral("1")});
        case MeasurementModel::Second:
            return uiText(TextId::MeasuredAtCursor, {QStringLiteral("2")});
        case MeasurementModel::Edges:
            return uiText(TextId::MeasuredEdges);
        default:
            // The others follow each other in the table of texts.
            return uiText(static_cast<TextId>(static_cast<int32_t>(TextId::MeasuredDifference) + field -
                                              MeasurementModel::Difference));
    }
}

/// Decimals that tell neighbouring codes apart; means have more.
int decimalsOf(const MeasuredColumn& column, int field) {
    const int more = field == MeasurementModel::Mean || field == MeasurementModel::Rms ? 1 : 0;
    return column.line ? 0 : decimalsFor(std::abs(column.scale.factor)) + more;
}

QString quoted(QString text) {
    text.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString moment(int64_t time) {
    return QString::fromStdString(dateText(time) + ' ' + clockText(time, 6));
}

}  // namespace

void MeasurementModel::setColumns(std::vector<MeasuredColumn> columns) {
    if (columns == columns_) {
        return;
    }
    const bool same = columns.size() == columns_.size();
    if (!same) {
        beginResetModel();
    }
    columns_ = std::move(columns);
    if (!same) {
        endResetModel();
    } else if (!columns_.empty()) {
        emit dataChanged(index(0, 0), index(rowCount() - 1, kFields - 1));
    }
}

void MeasurementModel::setMeasured(Measured measured) {
    measured_ = std::move(measured);
    if (!columns_.empty()) {
        emit dataChanged(index(0, 0), index(rowCount() - 1, kFields - 1));
    }
}

void MeasurementModel::retranslate() {
    emit headerDataChanged(Qt::Horizontal, 0, kFields - 1);
    setMeasured(std::exchange(measured_, {}));
}

int MeasurementModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

int MeasurementModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kFields;
}

std::optional<double> MeasurementModel::valueAt(const MeasuredColumn& column, size_t cursor) const {
    const auto& at = measured_.at[cursor];
    if (!at) {
        return std::nullopt;
    }
    if (column.line) {
        return column.index < 32 ? static_cast<double>(at->lines >> column.index & 1U) : 0.0;
    }
    return column.index < at->codes.size() ? std::optional(column.scale.of(at->codes[column.index])) : std::nullopt;
}

std::optional<SignalStatistics> MeasurementModel::statistics(const MeasuredColumn& column) const {
    if (!measured_.span) {
        return std::nullopt;
    }
    const auto& all = column.line ? measured_.span->lines : measured_.span->channels;
    return column.index < all.size() ? std::optional(all[column.index].inUnit(column.scale)) : std::nullopt;
}

std::optional<double> MeasurementModel::value(const MeasuredColumn& column, Field field) const {
    if (field == First || field == Second) {
        return valueAt(column, field == First ? 0 : 1);
    }
    if (field == Difference) {
        const auto first = valueAt(column, 0);
        const auto second = valueAt(column, 1);
        return first && second ? std::optional(*second - *first) : std::nullopt;
    }
    const auto all = statistics(column);
    const bool edges = field == Frequency || field == Duty || field == Edges;
    if (!all || (column.line && !edges)) {
        return std::nullopt;
    }
    switch (field) {
        case Minimum:
            return all->minimum;
        case Maximum:
            return all->maximum;
        case PeakToPeak:
            return all->peakToPeak();
        case Mean:
            return all->mean;
        case Rms:
            return all->rms;
        case Frequency:
            return all->frequency;
        case Duty:
            return all->duty;
        case Edges:
            return measured_.span->fromExtremes ? std::nullopt : std::optional(static_cast<double>(all->edges));
        default:
            return std::nullopt;
    }
}

QString MeasurementModel::cell(const MeasuredColumn& column, Field field) const {
    if (field == Name) {
        return column.unit.isEmpty() ? column.name : column.name + QStringLiteral(", ") + column.unit;
    }
    const auto number = value(column, field);
    if (!number) {
        return QStringLiteral("–");
    }
    switch (field) {
        case Frequency:
            return frequencyWithUnit(*number);
        case Duty:
            return QString::number(*number * 100.0, 'f', 2) + QStringLiteral(" %");
        case Edges:
            return QString::number(*number, 'f', 0);
        default:
            return QString::number(*number, 'f', decimalsOf(column, field));
    }
}

QVariant MeasurementModel::data(const QModelIndex& index, int role) const {
    const MeasuredColumn& column = columns_[static_cast<size_t>(index.row())];
    const auto field = static_cast<Field>(index.column());
    if (role == Qt::DisplayRole) {
        return cell(column, field);
    }
    if (role == Qt::TextAlignmentRole && field != Name) {
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (role == Qt::DecorationRole && field == Name) {
        return column.color;
    }
    return {};
}

QVariant MeasurementModel::headerData(int section, Qt::Orientation orientation, int role) const {
    return orientation == Qt::Horizontal && role == Qt::DisplayRole ? headOf(section) : QVariant();
}

QString MeasurementModel::asText() const {
    QString text;
    for (int field = 0; field < kFields; ++field) {
        text += headOf(field) + QLatin1Char(field + 1 == kFields ? '\n' : '\t');
    }
    for (const MeasuredColumn& column : columns_) {
        for (int field = 0; field < kFields; ++field) {
            text += cell(column, static_cast<Field>(field)) + QLatin1Char(field + 1 == kFields ? '\n' : '\t');
        }
    }
    return text;
}

QString MeasurementModel::asCsv() const {
    QString text = quoted(headOf(Name)) + QLatin1Char(',') + quoted(uiText(TextId::MeasuredUnit));
    for (int field = First; field < kFields; ++field) {
        const QString unit = field == Frequency ? QStringLiteral(", ") + uiText(TextId::HertzUnit) : QString();
        text += QLatin1Char(',') + quoted(headOf(field) + unit);
    }
    text += QLatin1Char('\n');
    if (times_) {
        const auto& [first, second] = *times_;
        text += quoted(uiText(TextId::ViewClock)) + QLatin1Char(',') + quoted(uiText(TextId::UnitSeconds)) +
                QLatin1Char(',') + quoted(moment(first)) + QLatin1Char(',') + quoted(moment(second)) +
                QLatin1Char(',') + QString::number(static_cast<double>(second - first) / 1e6, 'f', 6) +
                QString(kFields - 1 - Difference, QLatin1Char(',')) + QLatin1Char('\n');
    }
    for (const MeasuredColumn& column : columns_) {
        text += quoted(column.name) + QLatin1Char(',') + quoted(column.unit);
        for (int field = First; field < kFields; ++field) {
            const auto number = value(column, static_cast<Field>(field));
            text += QLatin1Char(',') + (number ? QString::number(*number, 'g', 15) : QString());
        }
        text += QLatin1Char('\n');
    }
    return text;
}

}  // namespace tarno2
