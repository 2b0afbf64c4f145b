#include "ui/panels/channels_panel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/devices/input_limits.h"
#include "ui/channel_table.h"
#include "ui/panels/option_box.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

ChannelsPanel::ChannelsPanel(QWidget* parent)
    : SettingsPanel(parent),
      table_(new ChannelTable(this)),
      selectAll_(new QPushButton(this)),
      invert_(new QPushButton(this)),
      gainLabel_(makeText(this, QStringLiteral("SameGainLabel"))),
      gainBox_(makeList(this, QStringLiteral("SameGainBox"))),
      extended_(new OptionBox(this)),
      resetExtremes_(new QPushButton(this)),
      countLabel_(new QLabel(this)) {
    setObjectName(QStringLiteral("ChannelsPanel"));
    selectAll_->setObjectName(QStringLiteral("SelectAllButton"));
    invert_->setObjectName(QStringLiteral("InvertSelectionButton"));
    extended_->setObjectName(QStringLiteral("ExtendedChannelModeBox"));
    resetExtremes_->setObjectName(QStringLiteral("ResetExtremesButton"));
    countLabel_->setObjectName(QStringLiteral("ActiveChannelsLabel"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(countLabel_);
    layout->addWidget(table_, 1);
    layout->addWidget(selectAll_);
    layout->addWidget(invert_);
    auto* gain = new QHBoxLayout;
    gain->addWidget(gainLabel_, 2);
    gain->addWidget(gainBox_, 1);
    layout->addLayout(gain);
    layout->addWidget(extended_);
    layout->addWidget(resetExtremes_);
    // A window may show the table in a place of its own.
    layout->addStretch();
    gainLabel_->setBuddy(gainBox_);

    manage(selectAll_);
    manage(invert_);
    manage(gainBox_);
    manage(extended_, false);
    manage(resetExtremes_, false);
    connect(selectAll_, &QPushButton::clicked, table_, &ChannelTable::selectAllChannels);
    connect(invert_, &QPushButton::clicked, table_, &ChannelTable::invertSelection);
    connect(gainBox_, &QComboBox::activated, this,
            [this](int row) { table_->setGain(gainBox_->itemData(row).toInt()); });
    connect(resetExtremes_, &QPushButton::clicked, table_, &ChannelTable::resetExtremes);
    connect(extended_, &OptionBox::clicked, this, [this](bool on) {
        setExtendedView(on);
        emit extendedViewChanged(on);
        emit changed();
    });
    connect(table_, &ChannelTable::changed, this, [this] {
        showCount();
        emit changed();
    });
    setExtendedView(false);
    retranslate();
}

void ChannelsPanel::load(const ProgramSettings& settings) {
    table_->load(settings);
    setExtendedView(settings.extendedChannelMode);
    showCount();
}

void ChannelsPanel::store(ProgramSettings& settings) const {
    table_->store(settings);
    settings.extendedChannelMode = extended_->isChecked();
}

void ChannelsPanel::retranslate() {
    table_->retranslate();
    selectAll_->setText(uiText(TextId::SelectAll));
    invert_->setText(uiText(TextId::InvertSelection));
    gainLabel_->setText(uiText(TextId::SameGain));
    extended_->setText(uiText(TextId::ExtendedView));
    resetExtremes_->setText(uiText(TextId::ResetExtremes));
    setHint(selectAll_, uiText(TextId::ChannelTableHint));
    setHint(invert_, uiText(TextId::ChannelTableHint));
    setHint(gainBox_, uiText(TextId::SameGain));
    setHint(extended_, uiText(TextId::ExtendedViewHint));
    setHint(resetExtremes_, uiText(TextId::ResetExtremes));
    gainBox_->setAccessibleName(uiText(TextId::SameGain));
    showCount();
}

void ChannelsPanel::boardChanged(BoardSelection& selection) {
    const BoardFacts& facts = selection.driver().facts();
    table_->setBoard(
        facts.channelCount, facts.gains,
        [&selection](int32_t channel, int32_t gain) { return inputLimits(selection.driver().device(), channel, gain); },
        [facts](int32_t channel, const ChannelLabel& given) { return channelLabel(facts, channel, given); });
    gainBox_->clear();
    for (const int32_t gain : facts.gains) {
        gainBox_->addItem(QString::number(gain), gain);
    }
    setAvailable(gainBox_, facts.gains.size() > 1, uiText(TextId::NotOfferedHint));
    showCount();
}

void ChannelsPanel::setLocked(bool locked) {
    SettingsPanel::setLocked(locked);
    table_->setLocked(locked);
}

int ChannelsPanel::activeCount() const {
    return table_->activeCount();
}

void ChannelsPanel::setExtendedView(bool on) {
    extended_->setChecked(on);
    table_->setExtendedView(on);
    resetExtremes_->setVisible(on);
}

void ChannelsPanel::setLive(std::span<const ChannelReading> readings) {
    if (extended_->isChecked()) {
        table_->setLive(readings);
    }
}

void ChannelsPanel::showCount() {
    countLabel_->setText(uiText(TextId::ActiveChannels,
                                {QString::number(table_->activeCount()), QString::number(table_->channelCount())}));
}

}  // namespace tarno2
