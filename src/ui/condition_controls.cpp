#include "ui/condition_controls.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QStyleOptionButton>
#include <algorithm>
#include <cmath>

#include "records/number_text.h"
#include "ui/label_field.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

/// A list of numbers in which another number can be typed too.
QComboBox* numberBox(const char* name, QWidget* parent) {
    auto* box = named<QComboBox>(name, parent);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setCompleter(nullptr);  // would make 10 of a typed 1
    box->setMinimumContentsLength(4);
    return box;
}

void describe(QWidget* widget, const QString& title, const QString& what = {}) {
    const QString text = what.isEmpty() ? title : title + QStringLiteral(": ") + what;
    widget->setToolTip(text);
    widget->setAccessibleName(text);
}

void refill(QComboBox* box, const QStringList& items) {
    const QString text = box->currentText();
    const QSignalBlocker quiet(box);
    box->clear();
    box->addItems(items);
    box->setEditText(text);
}

void writeNumber(QComboBox* box, const std::string& number) {
    const QString text = QString::fromStdString(number);
    box->setCurrentIndex(box->findText(text));
    box->setEditText(text);
}

using ActiveChannels = std::vector<SynchroBoardFacts::Channel>;

const SynchroBoardFacts::Channel* findChannel(const ActiveChannels& channels, const std::string& text) {
    const auto number = typedInteger(text);
    const auto found = std::find_if(channels.begin(), channels.end(),
                                    [&](const auto& channel) { return number && channel.number == *number; });
    return found == channels.end() ? nullptr : &*found;
}

/// The mode that asks of the volts of a channel what this one asks of its values, and the other way round.
int32_t modeOver(const ChannelLabel& label, int32_t mode) {
    return label.factor < 0.0 && mode != kConditionNotUsed ? 1 - mode : mode;
}

/// Of a channel that is not active nothing is known but volts.
ChannelLabel labelOf(const ActiveChannels& channels, const std::string& text) {
    const auto* channel = findChannel(channels, text);
    return channel != nullptr ? channel->label : ChannelLabel();
}

QString factsText(const SynchroBoardFacts::Channel& channel) {
    const auto [lower, upper] = channel.limits();
    const auto number = [](double volts) { return QString::number(volts, 'g', 4); };
    const QString gain = QString::number(channel.gain);
    const ChannelLabel& label = channel.label;
    const QString name = label.name.empty() ? QString() : QString::fromStdString(label.name) + QStringLiteral(". ");
    if (label.hasUnit()) {
        const auto [low, high] = std::minmax({label.inUnit(lower), label.inUnit(upper)});
        return name + uiText(TextId::SynchroChannelUnits, {gain, number(low), number(high), unitOf(label)});
    }
    return name + (lower == -upper ? uiText(TextId::SynchroChannelFacts, {gain, number(upper)})
                                   : uiText(TextId::SynchroChannelLimits, {gain, number(lower), number(upper)}));
}

}  // namespace

QLabel* makeNote(const char* name, int lines, QWidget* parent) {
    QLabel* label = makeText(parent, QLatin1String(name));
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    label->setMinimumHeight(label->fontMetrics().lineSpacing() * lines);
    QSizePolicy policy = label->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    label->setSizePolicy(policy);
    return label;
}

TaggedButton::TaggedButton(const char* name, QMenu* popup, QWidget* parent) : QPushButton(parent), popup_(popup) {
    setObjectName(QLatin1String(name));
}

void TaggedButton::setTag(int32_t tag) {
    tag_ = tag;
    for (const QAction* item : popup_->actions()) {
        if (item->data().toInt() == tag) {
            setText(item->text());
        }
    }
}

void TaggedButton::initStyleOption(QStyleOptionButton* option) const {
    QPushButton::initStyleOption(option);
    option->features |= QStyleOptionButton::HasMenu;
}

AnalogConditionControls::AnalogConditionControls(const Names& names, QMenu* modes, QMenu* units, QWidget* parent)
    : box(named<QGroupBox>(names.box, parent)),
      mode(new TaggedButton(names.mode, modes, box)),
      channelLabel(new QLabel(box)),
      channel(numberBox(names.channel, box)),
      channelFacts(makeNote("", 2, box)),
      valueLabel(new QLabel(box)),
      value(named<QLineEdit>(names.value, box)),
      unit(new TaggedButton(names.unit, units, box)),
      code(makeNote("", 3, box)) {
    auto* grid = new QGridLayout(box);
    grid->addWidget(mode, 0, 0, 1, 3);
    grid->addWidget(channelLabel, 1, 0);
    grid->addWidget(channel, 1, 1, 1, 2);
    grid->addWidget(channelFacts, 2, 0, 1, 3);
    grid->addWidget(valueLabel, 3, 0);
    grid->addWidget(value, 3, 1);
    grid->addWidget(unit, 3, 2);
    grid->addWidget(code, 4, 0, 1, 3);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(5, 1);
    value->setMinimumWidth(value->fontMetrics().averageCharWidth() * 12);
    value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    channelLabel->setBuddy(channel);
    valueLabel->setBuddy(value);
}

void AnalogConditionControls::setTexts(const QString& title) {
    const QString threshold = uiText(TextId::SynchroThreshold);
    box->setTitle(title);
    channelLabel->setText(uiText(TextId::SynchroChannel));
    valueLabel->setText(threshold);
    mode->setTag(mode->tag());
    setLabel(label_);
    describe(mode, title);
    describe(channel, title, uiText(TextId::SynchroChannel));
    describe(value, title, threshold);
    describe(unit, title, threshold);
}

void AnalogConditionControls::fillChannels(const SynchroBoardFacts& board) {
    const AnalogConditionForm kept = read();
    channels_ = board.channels;
    QStringList numbers;
    for (const auto& active : channels_) {
        numbers += QString::number(active.number);
    }
    refill(channel, numbers);
    if (labelOf(channels_, kept.channel) != label_) {
        write(kept);
    }
}

void AnalogConditionControls::setLabel(const ChannelLabel& label) {
    label_ = label;
    unit->setEnabled(!label.hasUnit());
    if (label.hasUnit()) {
        unit->setText(unitOf(label));
    } else {
        unit->setTag(unit->tag());
    }
}

void AnalogConditionControls::write(const AnalogConditionForm& form) {
    constexpr int kDigits = 10;
    const ChannelLabel label = labelOf(channels_, form.channel);
    mode->setTag(modeOver(label, form.mode));
    const auto level = typedReal(form.value);
    QString text = QString::fromStdString(form.value);
    if (label.hasUnit() && level) {
        text = QString::number(label.inUnit(levelVolts(*level, 2 - form.unitTag)), 'g', kDigits);
    }
    {
        // Whoever hears of the one asks for the other.
        const QSignalBlocker quiet(channel);
        writeNumber(channel, form.channel);
        unit->setTag(form.unitTag);
        setLabel(label);
    }
    value->setText(text);
    written_ = {form, label, text};
}

AnalogConditionForm AnalogConditionControls::read() const {
    AnalogConditionForm form{modeOver(label_, mode->tag()), channel->currentText().toStdString(),
                             value->text().toStdString(), unit->tag()};
    if (label_.hasUnit() && label_ == written_.label && value->text() == written_.text) {
        // What nobody has changed stays as it was given, to the last digit.
        form.value = written_.form.value;
        form.unitTag = written_.form.unitTag;
    } else if (const auto level = typedReal(form.value); label_.hasUnit() && level) {
        constexpr int32_t kVoltsTag = 2;
        form.value = exactNumberText(label_.inVolts(*level));
        form.unitTag = kVoltsTag;
    }
    return form;
}

void AnalogConditionControls::showFacts(const SynchroBoardFacts& board) {
    if (const ChannelLabel label = labelOf(channels_, channel->currentText().toStdString()); label != label_) {
        setLabel(label);
    }
    const AnalogConditionForm form = read();
    const bool used = form.mode != kConditionNotUsed;
    const auto* active = findChannel(board.channels, form.channel);
    if (active == nullptr) {
        const bool number = typedInteger(form.channel).has_value();
        const TextId text = number ? TextId::SynchroParametersMistake : TextId::SynchroValueMistake;
        showText(channelFacts, number && !used ? QString() : uiText(text), true);
    } else {
        showText(channelFacts, factsText(*active));
    }
    const auto level = typedReal(form.value);
    if (!level) {
        showText(code, uiText(TextId::SynchroValueMistake), true);
        return;
    }
    const double volts = levelVolts(*level, 2 - form.unitTag);
    const auto number = active != nullptr ? levelCode(volts, *active, board) : std::nullopt;
    QString text;
    if (number) {
        text = uiText(TextId::SynchroThresholdCode, {QString::number(*number)});
    }
    const bool outside = used && number && (volts < active->limits().first || volts > active->limits().second);
    if (outside) {
        text += QLatin1Char('\n') + uiText(TextId::SynchroThresholdOutside);
    }
    showText(code, text, outside);
}

PortConditionControls::PortConditionControls(const Names& names, QMenu* modes, QWidget* parent)
    : box(named<QGroupBox>(names.box, parent)),
      mode(new TaggedButton(names.mode, modes, box)),
      bitLabel(new QLabel(box)),
      bit(numberBox(names.bit, box)) {
    auto* grid = new QGridLayout(box);
    grid->addWidget(mode, 0, 0, 1, 2);
    grid->addWidget(bitLabel, 1, 0);
    grid->addWidget(bit, 1, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(2, 1);
    bitLabel->setBuddy(bit);
}

void PortConditionControls::setTexts(const QString& title) {
    box->setTitle(title);
    bitLabel->setText(uiText(TextId::SynchroBit));
    mode->setTag(mode->tag());
    describe(mode, title);
    describe(bit, title, uiText(TextId::SynchroBit));
}

void PortConditionControls::fillBits(uint32_t lines) const {
    QStringList numbers;
    for (int32_t number = 0; number <= kLastPortBit && (lines == 0 || static_cast<uint32_t>(number) < lines);
         ++number) {
        numbers += QString::number(number);
    }
    refill(bit, numbers);
}

void PortConditionControls::write(const PortConditionForm& form) const {
    mode->setTag(form.mode);
    writeNumber(bit, form.bit);
}

PortConditionForm PortConditionControls::read() const {
    return {mode->tag(), bit->currentText().toStdString()};
}

}  // namespace tarno2
