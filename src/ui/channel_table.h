#pragma once

#include <QTableView>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "config/settings/program_settings.h"
#include "core/devices/input_limits.h"
#include "display/channel_reading.h"

namespace tarno2 {

class ChannelModel;

/// The board's channels, one a row: active, number, colour, gain, range; in the extended view the name, the present
/// value, the minimum and the maximum, the unit and its scale too. Made for 160 rows and for the keyboard alone: Space
/// switches the marked rows, Ctrl+A marks all, Ctrl+I switches what was off on and the other way round, + and - step
/// through the gains of the marked rows and digits choose one. Window thread.
class ChannelTable : public QTableView {
    Q_OBJECT

public:
    explicit ChannelTable(QWidget* parent = nullptr);

    using RangeOf = std::function<InputLimits(int32_t channel, int32_t gain)>;
    using LabelOf = std::function<ChannelLabel(int32_t channel, const ChannelLabel& given)>;

    void load(const ProgramSettings& settings);
    void store(ProgramSettings& settings) const;
    /// So many rows, with these gains to choose from. A gain that the board lacks is shown and recorded as its first.
    /// `labelOf` adds what the driver says of a channel to what its operator does.
    void setBoard(uint32_t channelCount, const std::vector<int32_t>& gains, const RangeOf& rangeOf,
                  const LabelOf& labelOf = nullptr);
    void retranslate();
    void setExtendedView(bool on);
    /// Nothing can be changed; the table still scrolls and shows readings.
    void setLocked(bool locked);

    /// Shows the newest readings; minimum and maximum are kept since the last reset.
    void setLive(std::span<const ChannelReading> readings);
    void resetExtremes();
    void setShown(int channel, bool on);
    /// Makes its row the current one.
    void markChannel(int channel);

    void selectAllChannels();
    void invertSelection();
    /// One gain for the marked rows; for all when none is marked.
    void setGain(int32_t gain);

    [[nodiscard]] int activeCount() const;
    [[nodiscard]] int channelCount() const;
    [[nodiscard]] const std::vector<int32_t>& gains() const;

    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// The operator has changed a channel.
    void changed();
    /// A channel is to be seen in the signal view, or not.
    void shownChanged(int channel, bool on);
    /// The row of that channel is the current one.
    void channelMarked(int channel);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    [[nodiscard]] std::vector<int> markedRows() const;
    [[nodiscard]] std::vector<int> allRows() const;
    void toggleMarked();
    bool digitTyped(const QString& digit);
    [[nodiscard]] bool changedByKey(const QKeyEvent& event);
    [[nodiscard]] bool openedByKey();
    void chooseColor(int row);
    void askScale(int row);
    void fitColumns();
    [[nodiscard]] int fittingWidth(int column) const;
    void useWidth();

    ChannelModel* model_;
    QString typedGain_;  ///< digits typed one soon after the other
    qint64 typedAt_ = 0;
    bool locked_ = false;
    bool settingBoard_ = false;
};

}  // namespace tarno2
