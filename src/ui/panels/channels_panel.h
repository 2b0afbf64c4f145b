#pragma once

#include <span>

#include "display/channel_reading.h"
#include "ui/panels/settings_panel.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace tarno2 {

class ChannelTable;
class OptionBox;

/// The channel table with its commands: `ChannelTable`, `SelectAllButton`, `InvertSelectionButton`, `SameGainBox`,
/// `ExtendedChannelModeBox`, `ResetExtremesButton`, `ActiveChannelsLabel`. While locked the table still scrolls and
/// shows readings.
class ChannelsPanel final : public SettingsPanel {
    Q_OBJECT

public:
    explicit ChannelsPanel(QWidget* parent = nullptr);

    [[nodiscard]] TextId title() const override { return TextId::PanelChannels; }
    void load(const ProgramSettings& settings) override;
    void store(ProgramSettings& settings) const override;
    void retranslate() override;
    void boardChanged(BoardSelection& selection) override;
    void setLocked(bool locked) override;

    /// A window may take the table to a place of its own; the panel goes on serving it.
    [[nodiscard]] ChannelTable& table() { return *table_; }
    [[nodiscard]] int activeCount() const;
    void setExtendedView(bool on);  ///< emits no signal
    /// Newest readings of the running recording.
    void setLive(std::span<const ChannelReading> readings);

signals:
    void extendedViewChanged(bool on);

private:
    void showCount();

    ChannelTable* table_;
    QPushButton* selectAll_;
    QPushButton* invert_;
    QLabel* gainLabel_;
    QComboBox* gainBox_;
    OptionBox* extended_;
    QPushButton* resetExtremes_;
    QLabel* countLabel_;
};

}  // namespace tarno2
