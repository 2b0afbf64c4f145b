#include "ui/state_strip.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "config/files/disk_info.h"
#include "config/files/figure_text.h"
#include "platform/paths.h"
#include "ui/figure_cell.h"
#include "ui/mark_controls.h"
#include "ui/text.h"
#include "ui/view_icons.h"

namespace tarno2 {

namespace {

// Ground and letters of a state, legible on light and dark windows alike, and a sign for those who tell no colours.
struct StateLook {
    TextId text;
    const char* ground;
    const char* letters;
    char16_t sign;
};

const StateLook& lookOf(RunState state) {
    static constexpr const char* kGrey = "#5f6671";
    static constexpr const char* kRed = "#d32f2f";
    static constexpr const char* kAmber = "#ffb300";
    static constexpr const char* kDarkRed = "#7f0000";
    static constexpr const char* kWhite = "#ffffff";
    static constexpr const char* kBlack = "#000000";
    static constexpr std::array<StateLook, 9> kLooks = {{
        {TextId::StatusReady, kGrey, kWhite, u'\u25CB'},
        {TextId::StatusStarting, kAmber, kBlack, u'\u2026'},
        {TextId::StatusWaitingForStart, kAmber, kBlack, u'\u2026'},
        {TextId::StatusWaitingForTrigger, kAmber, kBlack, u'\u2026'},
        {TextId::StatusRecording, kRed, kWhite, u'\u25CF'},
        {TextId::StatusRecording, kAmber, kBlack, u'\u26A0'},
        {TextId::StatusStopping, kAmber, kBlack, u'\u2026'},
        {TextId::StatusStopped, kGrey, kWhite, u'\u25A0'},
        {TextId::StatusError, kDarkRed, kWhite, u'\u2716'},
    }};
    return kLooks.at(static_cast<size_t>(state));
}

const QString kUnknown = QStringLiteral("\u2013");
constexpr uint64_t kBytesWorthShowing = uint64_t{64} << 20U;
constexpr double kStateFont = 2.3;   // times the window's font
constexpr double kStateSmall = 1.1;  // for words that need two lines

QFont scaled(QFont font, double factor, bool bold) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    return font;
}

QString widestBytes() {
    return fromCodePage(formatFreeSpace(uint64_t{8888} << 30U));
}

}  // namespace

TextId stateText(RunState state) {
    return lookOf(state).text;
}

StateStrip::StateStrip(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("StateStrip"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(8, 6, 8, 4);
    column->setSpacing(4);
    buildUpperRow(column);
    buildLowerRow(column);
    buildChecksums(column);
    marks_ = new MarkControls(this);
    marks_->hide();
    column->addWidget(marks_);
    attention_ = new QLabel(this);
    attention_->setObjectName(QStringLiteral("AttentionLabel"));
    attention_->setTextFormat(Qt::PlainText);
    attention_->setWordWrap(true);
    attention_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    attention_->setStyleSheet(
        QStringLiteral("background: #ffb300; color: #000000; border-radius: 4px; padding: 3px 8px;"));
    attention_->hide();
    column->addWidget(attention_);
    retranslate();
    setLosses(0);
}

void StateStrip::buildUpperRow(QVBoxLayout* column) {
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    const auto button = [this, row](const char* name) {
        auto* made = new QPushButton(this);
        made->setObjectName(QLatin1String(name));
        made->setMinimumHeight(fontMetrics().height() * 3);
        row->addWidget(made);
        return made;
    };
    start_ = button("StartButton");
    conditions_ = new QToolButton(this);
    conditions_->setObjectName(QStringLiteral("ConditionsButton"));
    conditions_->setFocusPolicy(Qt::StrongFocus);
    conditions_->setStyleSheet(
        QStringLiteral("background: #ffb300; color: #000000; border-radius: 4px; padding: 3px 6px;"));
    conditions_->hide();
    row->addWidget(conditions_);
    stop_ = button("StopButton");
    cycle_ = button("btnAutoStart");
    cycle_->setCheckable(true);
    drawIcons();

    word_ = new QLabel(this);
    word_->setObjectName(QStringLiteral("StateLabel"));
    word_->setAlignment(Qt::AlignCenter);
    word_->setWordWrap(true);
    row->addWidget(word_);

    elapsed_ = new FigureCell(FigureCell::Shape::Large, QStringLiteral("888:88:88"), this);
    elapsed_->setObjectName(QStringLiteral("ElapsedCell"));
    remaining_ = new FigureCell(FigureCell::Shape::Large, QStringLiteral("888:88:88"), this);
    row->addWidget(elapsed_);
    row->addWidget(remaining_);
    progress_ = new QProgressBar(this);
    progress_->setObjectName(QStringLiteral("ProgressBar"));
    progress_->setRange(0, 100);
    progress_->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('8')) * 6);
    QSizePolicy policy = progress_->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    progress_->setSizePolicy(policy);
    progress_->hide();
    row->addWidget(progress_, 1);
    column->addLayout(row);
}

void StateStrip::drawIcons() {
    start_->setIcon(commandIcon(CommandIcon::Start, palette()));
    stop_->setIcon(commandIcon(CommandIcon::Stop, palette()));
    cycle_->setIcon(commandIcon(CommandIcon::Cycle, palette()));
}

void StateStrip::buildLowerRow(QVBoxLayout* column) {
    auto* row = new QHBoxLayout;
    row->setSpacing(16);
    const auto cell = [this, row](const char* name, const QString& widest) {
        auto* made = new FigureCell(FigureCell::Shape::Small, widest, this);
        made->setObjectName(QLatin1String(name));
        row->addWidget(made);
        return made;
    };
    written_ = cell("WrittenCell", {});
    rate_ = cell("RateCell", {});
    frames_ = cell("FramesCell", QStringLiteral("88 888 888 888"));
    load_ = cell("LoadCell", QStringLiteral("\u26A0 100 %"));
    files_ = cell("FilesCell", QStringLiteral("888"));
    events_ = cell("EventsCell", QStringLiteral("88 888"));
    losses_ = cell("LossesCell", QStringLiteral("\u26A0 88"));
    row->addStretch(1);
    column->addLayout(row);
}

// Beside each other as long as something is computed after the end of a recording.
void StateStrip::buildChecksums(QVBoxLayout* column) {
    checksums_ = new QLabel(this);
    checksums_->setObjectName(QStringLiteral("ChecksumsLabel"));
    checksums_->setTextFormat(Qt::PlainText);
    noChecksums_ = new QPushButton(this);
    noChecksums_->setObjectName(QStringLiteral("NoChecksumsButton"));
    auto* row = new QHBoxLayout;
    row->addWidget(checksums_);
    row->addWidget(noChecksums_);
    row->addStretch(1);
    column->addLayout(row);
    setChecksums(std::nullopt);
}

void StateStrip::setChecksums(const std::optional<ChecksumThread::Progress>& progress) {
    // What takes but a moment would only make the window restless.
    const bool shown = progress && progress->bytes >= kBytesWorthShowing;
    checksums_->setVisible(shown);
    noChecksums_->setVisible(shown);
    if (shown) {
        checksums_->setText(uiText(TextId::ChecksumsProgress, {fromFileName(fileNameOf(progress->dataName)),
                                                               QString::number(progress->percent())}));
    }
}

void StateStrip::setState(RunState state) {
    if (state_ == state) {
        return;
    }
    state_ = state;
    showState();
}

void StateStrip::showState() {
    const StateLook& look = lookOf(state_);
    const QString text = plainText(look.text);
    const QFont large = scaled(font(), kStateFont, true);
    const bool fits = QFontMetrics(large).horizontalAdvance(QStringLiteral("\u25CF ") + text) < word_->minimumWidth();
    word_->setFont(fits ? large : scaled(font(), kStateSmall, true));
    word_->setText(QString(QChar(look.sign)) + QLatin1Char(' ') + text);
    word_->setStyleSheet(QStringLiteral("background: %1; color: %2; border-radius: 6px;")
                             .arg(QLatin1String(look.ground), QLatin1String(look.letters)));
}

void StateStrip::setFigures(const RunFigures& figures) {
    figures_ = figures;
    showFigures();
}

void StateStrip::showFigures() {
    elapsed_->setValue(fromCodePage(formatDuration(figures_.elapsedSeconds)));
    remaining_->setValue(figures_.remainingSeconds ? fromCodePage(formatDuration(*figures_.remainingSeconds))
                                                   : kUnknown);
    progress_->setVisible(figures_.percent.has_value());
    if (figures_.percent) {
        progress_->setValue(*figures_.percent);
    }
    written_->setValue(fromCodePage(formatFreeSpace(figures_.bytes)));
    rate_->setValue(figures_.bytesPerSecond ? fromCodePage(formatRate(*figures_.bytesPerSecond)) : kUnknown);
    frames_->setValue(fromCodePage(formatCount(figures_.frames)));
    load_->setWarning(figures_.loadWarns);
    load_->setValue(QString::number(figures_.load) + QStringLiteral(" %"));
    files_->setValue(QString::number(figures_.files));
    events_->setValue(fromCodePage(formatCount(figures_.events)));
}

void StateStrip::setAttention(const QString& message) {
    attention_->setText(message);
    attention_->setVisible(!message.isEmpty());
}

void StateStrip::setConditions(std::optional<TextId> word) {
    conditionsWord_ = word;
    conditions_->setVisible(word.has_value());
    conditions_->setText(word ? uiText(*word) : QString());
    conditions_->setToolTip(uiText(TextId::ConditionsBadgeHint));
}

void StateStrip::setLosses(size_t count) {
    losses_->setWarning(count != 0);
    losses_->setValue(QString::number(count));
}

void StateStrip::setLossList(const QString& fileName) {
    lossList_ = fileName;
    losses_->setToolTip(lossList_.isEmpty() ? QString() : uiText(TextId::RunLossesHint, {lossList_}));
}

void StateStrip::retranslate() {
    start_->setText(uiText(TextId::CommandStart) + QStringLiteral("  F5"));
    stop_->setText(uiText(TextId::CommandStop) + QStringLiteral("  F6"));
    // Two lines leave more room for the figures.
    cycle_->setText(uiText(TextId::CommandCycleStart).replace(QLatin1Char(' '), QLatin1Char('\n')));
    cycle_->setToolTip(uiText(TextId::CycleStartHint));
    elapsed_->setCaption(uiText(TextId::RunElapsed));
    remaining_->setCaption(uiText(TextId::RunRemaining));
    written_->setCaption(uiText(TextId::RunWritten));
    written_->setWidest(widestBytes());
    rate_->setCaption(uiText(TextId::RunRate));
    rate_->setWidest(fromCodePage(formatRate(888.8 * 1024 * 1024)));
    frames_->setCaption(uiText(TextId::RunFrames));
    load_->setCaption(uiText(TextId::RunLoad));
    load_->setToolTip(uiText(TextId::RunLoadHint));
    files_->setCaption(uiText(TextId::RunFiles));
    events_->setCaption(uiText(TextId::RunEvents));
    losses_->setCaption(uiText(TextId::RunLosses));
    marks_->retranslate();
    noChecksums_->setText(uiText(TextId::ChecksumsCancel));
    noChecksums_->setToolTip(uiText(TextId::ChecksumsCancelHint));
    setLossList(lossList_);
    setConditions(conditionsWord_);
    const QFontMetrics metrics(scaled(font(), kStateFont, true));
    int widest = 0;
    for (const RunState state : {RunState::Ready, RunState::Recording, RunState::Stopping, RunState::Stopped}) {
        widest = std::max(widest, metrics.horizontalAdvance(QStringLiteral("\u25CF ") + plainText(stateText(state))));
    }
    word_->setMinimumWidth(widest + metrics.height());
    word_->setMaximumWidth(widest + metrics.height());
    showState();
    showFigures();
}

void StateStrip::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (attention_ == nullptr) {
        return;
    }
    if (event->type() == QEvent::FontChange) {
        retranslate();
    } else if (event->type() == QEvent::PaletteChange) {
        drawIcons();
    }
}

}  // namespace tarno2
