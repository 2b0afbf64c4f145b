#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "config/settings/program_settings.h"
#include "core/devices/input_limits.h"
#include "display/channel_reading.h"

namespace tarno2 {

/// The rows of the channel table. Keeps the settings of all channels that there can be, and shows those of the board.
class ChannelModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Active, Number, Color, Gain, Range, Value, Minimum, Maximum, Name, Unit, Scale, Shown, ColumnCount };
    using RangeOf = std::function<InputLimits(int32_t channel, int32_t gain)>;
    /// What a channel is called and told in, where its operator says this.
    using LabelOf = std::function<ChannelLabel(int32_t channel, const ChannelLabel& given)>;

    using QAbstractTableModel::QAbstractTableModel;

    void load(const ProgramSettings& settings);
    void store(ProgramSettings& settings) const;
    void setBoard(uint32_t channelCount, const std::vector<int32_t>& gains, RangeOf rangeOf, LabelOf labelOf);
    void setLocked(bool locked) { locked_ = locked; }
    void retranslate();

    // The rows are those of the board; others are ignored.
    void setActive(const std::vector<int>& rows, bool on);
    void invertActive();
    void setGain(const std::vector<int>& rows, int32_t gain);
    void stepGain(const std::vector<int>& rows, int step);
    void setColor(int row, int32_t color);
    void setScale(const std::vector<int>& rows, double factor, double offset);
    /// In the signal view; also while locked.
    void setShown(int row, bool on);

    void setLive(std::span<const ChannelReading> readings);
    void resetExtremes();

    [[nodiscard]] const ChannelSettings& channel(int row) const { return channels_[static_cast<size_t>(row)]; }
    /// The gain that is recorded: the board's first where it lacks the one in the settings.
    [[nodiscard]] int32_t gainOf(int row) const;
    /// With what the driver says where the operator says nothing.
    [[nodiscard]] ChannelLabel labelOf(int row) const;
    [[nodiscard]] const std::vector<int32_t>& gains() const { return gains_; }
    [[nodiscard]] int activeCount() const;
    /// The widest text of a column, to lay it out by.
    [[nodiscard]] QString widestText(int column) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

signals:
    /// The operator has changed a channel.
    void edited();
    void shownChanged(int row, bool on);

private:
    struct Reading {
        bool known = false;
        double value = 0.0;
        double minimum = 0.0;
        double maximum = 0.0;
    };
    /// A small picture of a channel's colour, made when it is first asked for.
    struct Swatch {
        int32_t color = 0;
        QIcon icon;
    };
    [[nodiscard]] const QIcon& swatch(int row) const;
    [[nodiscard]] QString cellText(int row, int column) const;
    [[nodiscard]] QString valueText(double volts, const ChannelLabel& label, int row) const;
    [[nodiscard]] QVariant editText(int row, int column) const;
    [[nodiscard]] QString longestUnit() const;
    [[nodiscard]] QString readingText(int row, int column) const;
    bool setLabelText(int row, int column, const QString& typed);
    void takeRange(int row);
    void rowsChanged(int firstColumn, int lastColumn);

    std::array<ChannelSettings, kMaximumChannelCount> channels_{};
    std::array<InputLimits, kMaximumChannelCount> limits_{};
    std::array<Reading, kMaximumChannelCount> readings_{};
    mutable std::array<Swatch, kMaximumChannelCount> swatches_;
    std::vector<int32_t> gains_;
    RangeOf rangeOf_;
    LabelOf labelOf_;
    int rows_ = 0;
    bool uneven_ = false;  ///< an input does not lie evenly around zero
    bool locked_ = false;
};

}  // namespace tarno2
