#include "ui/state_strip.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "config/files/figure_text.h"
#include "platform/paths.h"
#include "ui/figure_cell.h"
#include "ui/panels/board_need.h"
#include "ui/text.h"
#include "ui/trigger_button.h"
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
    static constexpr const char* kBlue = "#1565c0";
    static constexpr const char* kDarkRed = "#7f0000";
    static constexpr const char* kWhite = "#ffffff";
    static constexpr const char* kBlack = "#000000";
    static constexpr std::array<StateLook, 10> kLooks = {{
        {TextId::StatusReady, kGrey, kWhite, u'\u25CB'},
        {TextId::StatusStarting, kAmber, kBlack, u'\u2026'},
        {TextId::StatusWaitingForStart, kAmber, kBlack, u'\u2026'},
        {TextId::StatusWaitingForTrigger, kAmber, kBlack, u'\u2026'},
        {TextId::StatusRecording, kRed, kWhite, u'\u25CF'},
        {TextId::StatusRecording, kAmber, kBlack, u'\u26A0'},
        {TextId::StatusStopping, kAmber, kBlack, u'\u2026'},
        {TextId::StatusStopped, kGrey, kWhite, u'\u25A0'},
        {TextId::StatusError, kDarkRed, kWhite, u'\u2716'},
        {TextId::StatusMonitoring, kBlue, kWhite, u'\u25C9'},
    }};
    return kLooks.at(static_cast<size_t>(state));
}

const QString kUnknown = QStringLiteral("\u2013");
constexpr uint64_t kBytesWorthShowing = uint64_t{64} << 20U;
constexpr double kStateFont = 1.3;    // times the window's font
constexpr double kStateRoomy = 2.2;   // the same where there is room
constexpr double kStateSmall = 1.05;  // for words that need two lines
constexpr int kRoomyLetters = 196;    // width of a window with room
constexpr int kCaptionLetters = 210;  // the same with room for captions of all figures
constexpr int kGap = 10;              // pixels between the figures there

QFont scaled(QFont font, double factor, bool bold) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    return font;
}

QString widestBytes() {
    return fromCodePage(formatSize(uint64_t{8888} << 30U));
}

}  // namespace

TextId stateText(RunState state) {
    return lookOf(state).text;
}

StateStrip::StateStrip(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("StateStrip"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    buildRow(column);
    line_ = new QFrame(this);
    line_->setObjectName(QStringLiteral("StateLine"));
    line_->setFixedHeight(4);
    column->addWidget(line_);
    auto* below = new QVBoxLayout;
    below->setContentsMargins(8, 2, 8, 2);
    below->setSpacing(2);
    column->addLayout(below);
    buildMore(below);
    buildChecksums(below);
    need_ = new NeedLine(QStringLiteral("StripNeed"), false, this);
    below->addWidget(need_);
    attention_ = new QLabel(this);
    attention_->setObjectName(QStringLiteral("AttentionLabel"));
    attention_->setTextFormat(Qt::PlainText);
    attention_->setWordWrap(true);
    attention_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    attention_->setStyleSheet(
        QStringLiteral("background: #ffb300; color: #000000; border-radius: 4px; padding: 3px 8px;"));
    attention_->hide();
    below->addWidget(attention_);
    retranslate();
    setLosses(0);
}

void StateStrip::buildRow(QVBoxLayout* column) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(4, 5, 4, 5);
    row->setSpacing(4);
    column->addLayout(row);
    buildButtons(row);
    word_ = new QLabel(this);
    word_->setObjectName(QStringLiteral("StateLabel"));
    word_->setAlignment(Qt::AlignCenter);
    word_->setWordWrap(true);
    row->addWidget(word_);
    buildFigures(row);
    trigger_ = new TriggerButton(this);
    trigger_->setObjectName(QStringLiteral("ConditionsButton"));
    row->addWidget(trigger_);
    unfold_ = new QToolButton(this);
    unfold_->setObjectName(QStringLiteral("MoreFiguresButton"));
    unfold_->setAutoRaise(true);
    unfold_->setCheckable(true);
    unfold_->setFocusPolicy(Qt::TabFocus);
    row->addWidget(unfold_);
    connect(unfold_, &QToolButton::toggled, this, &StateStrip::setMore);
}

void StateStrip::buildButtons(QHBoxLayout* row) {
    const auto button = [this, row](const char* name) {
        auto* made = new QPushButton(this);
        made->setObjectName(QLatin1String(name));
        made->setMinimumHeight(fontMetrics().height() * 5 / 2);
        made->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
        row->addWidget(made);
        return made;
    };
    monitor_ = button("MonitorButton");
    monitor_->setCheckable(true);
    start_ = button("StartButton");
    stop_ = button("StopButton");
    cycle_ = button("btnAutoStart");
    cycle_->setCheckable(true);
    drawIcons();
}

// The time is read from afar; the others stand in two lines beside it.
void StateStrip::buildFigures(QHBoxLayout* row) {
    const auto cell = [this](const char* name, const QString& widest) {
        auto* made = new FigureCell(FigureCell::Shape::Small, widest, this);
        made->setObjectName(QLatin1String(name));
        return made;
    };
    const auto pair = [row](QWidget* upper, QWidget* lower) {
        auto* stack = new QVBoxLayout;
        stack->setSpacing(1);
        stack->addWidget(upper);
        stack->addWidget(lower);
        row->addLayout(stack);
    };
    elapsed_ = new FigureCell(FigureCell::Shape::Large, QStringLiteral("888:88:88"), this);
    elapsed_->setObjectName(QStringLiteral("ElapsedCell"));
    row->addWidget(elapsed_);
    remaining_ = cell("RemainingCell", QStringLiteral("888:88:88"));
    progress_ = new QProgressBar(this);
    progress_->setObjectName(QStringLiteral("ProgressBar"));
    progress_->setRange(0, 100);
    progress_->setMaximumHeight(fontMetrics().height());
    QSizePolicy policy = progress_->sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Ignored);
    policy.setRetainSizeWhenHidden(true);
    progress_->setSizePolicy(policy);
    progress_->hide();
    pair(remaining_, progress_);
    written_ = cell("WrittenCell", {});
    rate_ = cell("RateCell", {});
    pair(written_, rate_);
    load_ = cell("LoadCell", QStringLiteral("\u26A0 100 %"));
    losses_ = cell("LossesCell", QStringLiteral("\u26A0 88"));
    pair(load_, losses_);
}

void StateStrip::drawIcons() {
    monitor_->setIcon(commandIcon(CommandIcon::Monitor, palette()));
    start_->setIcon(commandIcon(CommandIcon::Start, palette()));
    stop_->setIcon(commandIcon(CommandIcon::Stop, palette()));
    cycle_->setIcon(commandIcon(CommandIcon::Cycle, palette()));
}

void StateStrip::buildMore(QVBoxLayout* column) {
    moreFigures_ = new QWidget(this);
    auto* row = new QHBoxLayout(moreFigures_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(16);
    const auto cell = [this, row](const char* name, const QString& widest) {
        auto* made = new FigureCell(FigureCell::Shape::Small, widest, moreFigures_);
        made->setObjectName(QLatin1String(name));
        row->addWidget(made);
        return made;
    };
    frames_ = cell("FramesCell", QStringLiteral("88 888 888 888"));
    files_ = cell("FilesCell", QStringLiteral("888"));
    events_ = cell("EventsCell", QStringLiteral("88 888"));
    row->addStretch(0);
    column->addWidget(moreFigures_);
    setMore(false);
}

void StateStrip::setMore(bool shown) {
    unfold_->setChecked(shown);
    unfold_->setArrowType(shown ? Qt::UpArrow : Qt::DownArrow);
    moreFigures_->setVisible(shown);
}

bool StateStrip::more() const {
    return unfold_->isChecked();
}

QToolButton& StateStrip::conditionsButton() {
    return *trigger_;
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
    const QFont large = scaled(font(), roomy_ ? kStateRoomy : kStateFont, true);
    const bool fits = QFontMetrics(large).horizontalAdvance(QStringLiteral("\u25CF ") + text) < word_->minimumWidth();
    word_->setFont(fits ? large : scaled(font(), kStateSmall, true));
    word_->setText(QString(QChar(look.sign)) + QLatin1Char(' ') + text);
    word_->setStyleSheet(QStringLiteral("background: %1; color: %2; border-radius: 4px;")
                             .arg(QLatin1String(look.ground), QLatin1String(look.letters)));
    line_->setStyleSheet(QStringLiteral("background: %1;").arg(QLatin1String(look.ground)));
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
    written_->setValue(fromCodePage(formatSize(figures_.bytes)));
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

void StateStrip::setTrigger(const QString& text, bool active) {
    trigger_->setState(text, active);
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
    // Two lines leave more room for the figures.
    monitor_->setText(uiText(TextId::CommandMonitor) + QStringLiteral("\nF4"));
    monitor_->setToolTip(uiText(TextId::CommandMonitorHint));
    start_->setText(uiText(TextId::CommandStart) + QStringLiteral("\nF5"));
    stop_->setText(uiText(TextId::CommandStop) + QStringLiteral("\nF6"));
    // A style gives buttons more room than words of this row can have.
    for (QPushButton* button : {start_, stop_}) {
        const QSize words = fontMetrics().size(Qt::TextShowMnemonic, button->text());
        button->setFixedWidth(words.width() + button->iconSize().width() + 3 * fontMetrics().height() / 2);
    }
    const QString cycle = plainText(TextId::CommandCycleStart);
    cycle_->setAccessibleName(cycle);
    cycle_->setToolTip(cycle + QStringLiteral(". ") + uiText(TextId::CycleStartHint));
    elapsed_->setCaption(uiText(TextId::RunElapsed));
    remaining_->setCaption(uiText(TextId::RunRemaining));
    written_->setCaption(uiText(TextId::RunWritten));
    written_->setToolTip(uiText(TextId::RunWritten) + QStringLiteral(". ") + uiText(TextId::SizeHint));
    written_->setWidest(widestBytes());
    rate_->setCaption(uiText(TextId::RunRate));
    rate_->setToolTip(uiText(TextId::RunRate));
    rate_->setWidest(fromCodePage(formatRate(88.8 * 1024 * 1024)));
    frames_->setCaption(uiText(TextId::RunFrames));
    load_->setCaption(uiText(TextId::RunLoad));
    load_->setToolTip(uiText(TextId::RunLoadHint));
    files_->setCaption(uiText(TextId::RunFiles));
    events_->setCaption(uiText(TextId::RunEvents));
    losses_->setCaption(uiText(TextId::RunLosses));
    noChecksums_->setText(uiText(TextId::ChecksumsCancel));
    noChecksums_->setToolTip(uiText(TextId::ChecksumsCancelHint));
    unfold_->setToolTip(uiText(TextId::MoreFigures));
    unfold_->setAccessibleName(uiText(TextId::MoreFigures));
    setLossList(lossList_);
    fitState();
    showFigures();
}

// The word has one place that is wide enough for those that are read from afar.
void StateStrip::fitState() {
    const QFontMetrics metrics(scaled(font(), roomy_ ? kStateRoomy : kStateFont, true));
    int widest = 0;
    for (const RunState state : {RunState::Ready, RunState::Recording, RunState::Stopping, RunState::Stopped}) {
        widest = std::max(widest, metrics.horizontalAdvance(QStringLiteral("\u25CF ") + plainText(stateText(state))));
    }
    word_->setFixedWidth(widest + metrics.height());
    elapsed_->setScale(roomy_ ? kStateRoomy : kStateFont);
    showState();
}

void StateStrip::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int letter = fontMetrics().averageCharWidth();
    showCaptions(width() >= letter * kCaptionLetters);
    if (const bool roomy = width() >= letter * kRoomyLetters; roomy != roomy_) {
        roomy_ = roomy;
        fitState();
    }
}

// Without them their units say what they are.
void StateStrip::showCaptions(bool shown) {
    for (FigureCell* cell : {written_, rate_, load_, losses_}) {
        cell->setContentsMargins(shown ? kGap : 0, 0, 0, 0);
    }
    written_->setCaptionShown(shown);
    rate_->setCaptionShown(shown);
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
