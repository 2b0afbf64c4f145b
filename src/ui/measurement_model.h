#pragma once

#include <QAbstractTableModel>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "measure/statistics.h"
#include "ui/measured_columns.h"

namespace tarno2 {

/// What a worker has found out between two cursors; codes.
struct Measured {
    std::array<std::optional<FrameValues>, 2> at;
    std::optional<SpanStatistics> span;
    bool notRead = false;
};

/// The table of measurements: a row a channel or line, in the units of the picture. Window thread.
class MeasurementModel : public QAbstractTableModel {
    Q_OBJECT

public:
    /// What stands in the columns.
    enum Field {
        Name,
        First,
        Second,
        Difference,
        Minimum,
        Maximum,
        PeakToPeak,
        Mean,
        Rms,
        Frequency,
        Duty,
        Edges,
        kFields
    };

    using QAbstractTableModel::QAbstractTableModel;

    void setColumns(std::vector<MeasuredColumn> columns);
    void setMeasured(Measured measured);
    [[nodiscard]] const std::vector<MeasuredColumn>& columns() const { return columns_; }
    [[nodiscard]] const Measured& measured() const { return measured_; }
    /// When the cursors' frames came, microseconds since 1970 where they were recorded; tables for a file tell them.
    void setTimes(std::optional<std::array<int64_t, 2>> times) { times_ = times; }
    /// Texts of the language chosen last.
    void retranslate();

    /// The whole table with heads and units: cells divided by tabs as they are seen, or for a file, divided by commas,
    /// with all digits and quoted names.
    [[nodiscard]] QString asText() const;
    [[nodiscard]] QString asCsv() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    [[nodiscard]] std::optional<double> value(const MeasuredColumn& column, Field field) const;
    [[nodiscard]] std::optional<double> valueAt(const MeasuredColumn& column, size_t cursor) const;
    [[nodiscard]] std::optional<SignalStatistics> statistics(const MeasuredColumn& column) const;
    [[nodiscard]] QString cell(const MeasuredColumn& column, Field field) const;

    std::vector<MeasuredColumn> columns_;
    Measured measured_;
    std::optional<std::array<int64_t, 2>> times_;
};

}  // namespace tarno2
