#include "ui/panels/measuring_panel.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <algorithm>

#include "config/settings/field_text.h"
#include "core/devices/board_options.h"
#include "core/recording/recording_need.h"
#include "ui/panels/option_box.h"
#include "ui/panels/panel_layout.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr size_t kMostKept = 16;
constexpr int kLargestDecimation = 1'000'000'000;

QString shown(double hertz) {
    return QString::fromStdString(frequencyText(hertz));
}

std::optional<double> numberIn(const QString& text) {
    return parseNumberField(text.toStdString());
}

}  // namespace

MeasuringPanel::MeasuringPanel(QWidget* parent)
    : SettingsPanel(parent),
      frequencyLabel_(new QLabel(this)),
      frequencyBox_(makeList(this, QStringLiteral("FrequencyBox"))),
      perChannelLabel_(makeText(this, QStringLiteral("FrequencyPerChannelLabel"))),
      packetMode_(new OptionBox(this)),
      packetLabel_(new QLabel(this)),
      packetFrequency_(new QLineEdit(this)),
      externalClock_(new OptionBox(this)),
      externalStart_(new OptionBox(this)),
      decimationLabel_(new QLabel(this)),
      decimation_(new QSpinBox(this)) {
    setObjectName(QStringLiteral("MeasuringPanel"));
    packetMode_->setObjectName(QStringLiteral("PacketModeBox"));
    packetFrequency_->setObjectName(QStringLiteral("PacketFrequencyEdit"));
    externalClock_->setObjectName(QStringLiteral("ExtFreqBox"));
    externalStart_->setObjectName(QStringLiteral("ExtStartBox"));
    decimation_->setObjectName(QStringLiteral("DecimationBox"));
    decimation_->setRange(1, kLargestDecimation);
    decimation_->setAccelerated(true);
    frequencyBox_->setInsertPolicy(QComboBox::NoInsert);
    QFormLayout* layout = makePanelLayout(this);
    layout->addRow(frequencyLabel_, frequencyBox_);
    layout->addRow(perChannelLabel_);
    layout->addRow(packetMode_);
    layout->addRow(packetLabel_, packetFrequency_);
    layout->addRow(externalClock_);
    layout->addRow(externalStart_);
    layout->addRow(decimationLabel_, decimation_);
    for (QWidget* control : std::initializer_list<QWidget*>{frequencyBox_, packetMode_, packetFrequency_,
                                                            externalClock_, externalStart_, decimation_}) {
        manage(control);
    }
    connect(frequencyBox_, &QComboBox::activated, this, &MeasuringPanel::fieldEdited);
    connect(frequencyBox_, &QComboBox::editTextChanged, this, &MeasuringPanel::fieldEdited);
    connect(packetFrequency_, &QLineEdit::textEdited, this, &MeasuringPanel::fieldEdited);
    connect(decimation_, &QSpinBox::valueChanged, this, &MeasuringPanel::fieldEdited);
    for (OptionBox* box : {packetMode_, externalClock_, externalStart_}) {
        connect(box, &OptionBox::clicked, this, [this] {
            showAvailability();
            fieldEdited();
        });
    }
    fillFrequencies();
    retranslate();
}

void MeasuringPanel::load(const ProgramSettings& settings) {
    keptFrequencies_ = settings.frequencyList;
    loadedFrequency_ = settings.wish.frequency;
    frequencyLoaded_ = true;
    fillFrequencies();
    showFrequency(settings.wish.frequency);
    packetMode_->setWish(settings.wish.hasMode(kBoardPacketMode));
    packetFrequency_->setText(shown(settings.wish.packetFrequency));
    externalClock_->setWish(settings.wish.hasMode(kBoardExternalClock));
    externalStart_->setWish(settings.wish.hasMode(kBoardExternalStart));
    const QSignalBlocker quiet(decimation_);
    decimation_->setValue(settings.wish.decimation);
    showAvailability();
    showRate();
}

void MeasuringPanel::store(ProgramSettings& settings) const {
    settings.frequencyList = keptFrequencies_;
    // A text that is no number is for the start to refuse; the last number is kept.
    settings.wish.frequency = typedFrequency().value_or(settings.wish.frequency);
    settings.wish.setMode(kBoardPacketMode, packetMode_->wish());
    settings.wish.packetFrequency = packetFrequency();
    settings.wish.setMode(kBoardExternalClock, externalClock_->wish());
    settings.wish.setMode(kBoardExternalStart, externalStart_->wish());
    settings.wish.decimation = decimation_->value();
}

std::optional<double> MeasuringPanel::typedFrequency() const {
    return numberIn(frequencyBox_->currentText());
}

double MeasuringPanel::frequency() const {
    return typedFrequency().value_or(0.0);
}

// What is no number is none that a start accepts.
double MeasuringPanel::packetFrequency() const {
    return numberIn(packetFrequency_->text()).value_or(0.0);
}

void MeasuringPanel::retranslate() {
    frequencyLabel_->setText(uiText(TextId::SamplingFrequency));
    packetMode_->setText(uiText(TextId::PacketModeCaption));
    packetLabel_->setText(uiText(TextId::PacketFrequencyCaption));
    externalClock_->setText(uiText(TextId::ExternalClock));
    externalStart_->setText(uiText(TextId::ExternalStart));
    decimationLabel_->setText(uiText(TextId::Decimation));
    frequencyBox_->setAccessibleName(uiText(TextId::SamplingFrequency));
    packetFrequency_->setAccessibleName(uiText(TextId::PacketFrequencyCaption));
    decimation_->setAccessibleName(uiText(TextId::Decimation));
    setHint(packetMode_, uiText(TextId::PacketModeHint));
    setHint(packetFrequency_, uiText(TextId::PacketModeHint));
    setHint(externalClock_, uiText(TextId::ExternalClockHint));
    setHint(externalStart_, uiText(TextId::ExternalStartHint));
    setHint(decimation_, uiText(TextId::DecimationHint));
    showAvailability();
    showRate();
}

void MeasuringPanel::boardChanged(BoardSelection& selection) {
    facts_ = selection.driver().facts();
    const QString board =
        fromFileName(selection.driverName()) + QLatin1Char('\n') + QString::number(selection.boardNumber());
    const bool sameBoard = board == board_;
    board_ = board;
    const double before = frequencyLoaded_ ? loadedFrequency_ : frequency();
    // New settings have none. What was typed and is no number gets none in its place, either.
    const double otherwise = frequencyLoaded_ && before <= 0.0 ? RecordingWish().frequency : before;
    const bool keep = frequencyLoaded_ || sameBoard || !facts_.frequencies.empty();
    frequencyLoaded_ = frequencyLoaded_ && !selection.driver().startAllowed();
    fillFrequencies();
    const bool usable = facts_.frequencies.empty() ? before > 0.0 : frequencyBox_->findText(shown(before)) >= 0;
    showFrequency((keep && usable) || !selection.driver().startAllowed() ? before : startingFrequency(otherwise));
    showAvailability();
    showRate();
}

/// The frequency that the board starts a selector with, or another one for a board that tells none; within its limits.
double MeasuringPanel::startingFrequency(double otherwise) const {
    const auto [lowest, highest] = limits();
    const double hertz = facts_.boardFrequency > 0.0F ? static_cast<double>(facts_.boardFrequency) : otherwise;
    const bool bounded = highest > 0.0F && lowest <= highest && hertz > 0.0;
    return bounded ? std::clamp(hertz, static_cast<double>(lowest), static_cast<double>(highest)) : hertz;
}

/// The board's own list, or a free field with what was typed before.
void MeasuringPanel::fillFrequencies() {
    const QSignalBlocker quiet(frequencyBox_);
    const QString text = frequencyBox_->currentText();
    frequencyBox_->clear();
    const bool list = !facts_.frequencies.empty();
    if (frequencyBox_->isEditable() == list) {
        frequencyBox_->setEditable(!list);
    }
    if (list) {
        for (const float hertz : facts_.frequencies) {
            frequencyBox_->addItem(shown(static_cast<double>(hertz)));
        }
        return;
    }
    // Completing what is being typed would make another number of it.
    frequencyBox_->setCompleter(nullptr);
    connect(frequencyBox_->lineEdit(), &QLineEdit::editingFinished, this, &MeasuringPanel::keepFrequency,
            Qt::UniqueConnection);
    for (const double hertz : keptFrequencies_) {
        frequencyBox_->addItem(shown(hertz));
    }
    frequencyBox_->setEditText(text);
}

void MeasuringPanel::showFrequency(double hertz) {
    const QSignalBlocker quiet(frequencyBox_);
    if (frequencyBox_->isEditable()) {
        frequencyBox_->setEditText(hertz > 0.0 ? shown(hertz) : QString());
    } else {
        frequencyBox_->setCurrentIndex(std::max(frequencyBox_->findText(shown(hertz)), 0));
    }
}

/// A frequency that was typed is there to choose from the next time.
void MeasuringPanel::keepFrequency() {
    const double hertz = frequency();
    const QString text = frequencyBox_->currentText();
    if (hertz <= 0.0 || frequencyBox_->findText(shown(hertz)) >= 0) {
        return;
    }
    keptFrequencies_.insert(keptFrequencies_.begin(), hertz);
    keptFrequencies_.resize(std::min(keptFrequencies_.size(), kMostKept));
    fillFrequencies();
    const QSignalBlocker quiet(frequencyBox_);
    frequencyBox_->setEditText(text);
}

void MeasuringPanel::showAvailability() {
    const QString reason = uiText(TextId::NotOfferedHint);
    const auto offer = [&](OptionBox* box, BoardOption option) {
        box->setOffered(offers(facts_, option));
        setAvailable(box, box->offered(), reason);
    };
    offer(packetMode_, BoardOption::PacketMode);
    offer(externalClock_, BoardOption::ExternalClock);
    offer(externalStart_, BoardOption::ExternalStart);
    setAvailable(packetFrequency_, packetMode_->isChecked(),
                 packetMode_->offered() ? uiText(TextId::PacketModeHint) : reason);
    setHint(frequencyBox_, limitsText());
}

/// The lowest and the highest frequency of the board, as far as it tells them.
std::pair<float, float> MeasuringPanel::limits() const {
    if (facts_.frequencies.empty()) {
        return {facts_.frequencyLimits.m_fMinimum, facts_.frequencyLimits.m_fMaximum};
    }
    const auto [lowest, highest] = std::ranges::minmax(facts_.frequencies);
    return {lowest, highest};
}

QString MeasuringPanel::limitsText() const {
    const auto [lowest, highest] = limits();
    return highest > 0.0F ? uiText(TextId::SamplingFrequencyHint,
                                   {shown(static_cast<double>(lowest)), shown(static_cast<double>(highest))})
                          : uiText(TextId::SamplingFrequency);
}

void MeasuringPanel::setActiveChannels(int count) {
    activeChannels_ = count;
    showRate();
}

void MeasuringPanel::showRate() {
    const double hertz = frequency();
    const auto [lowest, highest] = limits();
    const auto asked = static_cast<float>(hertz);
    if (hertz <= 0.0 || (highest > 0.0F && (asked < lowest || asked > highest))) {
        showText(perChannelLabel_, limitsText(), true);
        return;
    }
    RecordingWish wish;
    wish.channels.resize(static_cast<size_t>(activeChannels_));
    wish.frequency = hertz;
    wish.packetFrequency = packetFrequency();
    wish.setMode(kBoardPacketMode, packetMode_->isChecked());
    wish.setMode(kBoardExternalClock, externalClock_->isChecked());
    const double rate = activeChannels_ > 0 ? sampleRate(wish, facts_) / activeChannels_ : 0.0;
    showText(perChannelLabel_, rate > 0.0 ? uiText(TextId::FrequencyPerChannel, {shown(rate)}) : QString());
}

void MeasuringPanel::fieldEdited() {
    showRate();
    emit changed();
}

}  // namespace tarno2
