#include "ui/compared_recording.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QStandardItemModel>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr double kMicroseconds = 1e6;

/// How much later it began, "+2.500 s".
QString laterText(int64_t microseconds) {
    const double seconds = static_cast<double>(microseconds) / kMicroseconds;
    return QStringLiteral("%1%2 ").arg(seconds < 0.0 ? QStringLiteral("−") : QStringLiteral("+"),
                                       QString::number(std::abs(seconds), 'f', 3)) +
           uiText(TextId::UnitSeconds);
}

}  // namespace

ComparedRecording::ComparedRecording(ProgramSettings& settings, T_ShowForm& first, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      first_(first),
      head_(new QHBoxLayout),
      title_(new QLabel(this)),
      alignment_(new QComboBox(this)),
      remove_(new QToolButton(this)) {
    setObjectName(QStringLiteral("ComparedRecording"));
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addLayout(head_);
    head_->setContentsMargins(4, 1, 4, 1);
    head_->addWidget(title_, 1);
    // A long name gives way to the controls.
    title_->setMinimumWidth(0);
    title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    alignment_->setObjectName(QStringLiteral("Alignment"));
    alignment_->addItems({QString(), QString()});
    remove_->setObjectName(QStringLiteral("RemoveCompared"));
    remove_->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    remove_->setAutoRaise(true);
    connect(alignment_, &QComboBox::activated, this, [this](int index) {
        align(static_cast<Alignment>(index));
        emit aligned();
    });
    connect(remove_, &QToolButton::clicked, this, &ComparedRecording::removed);
}

// The library's object goes after the view, which tells it that nobody listens any more.
ComparedRecording::~ComparedRecording() {
    delete view_;
}

bool ComparedRecording::open(const std::string& dataFile) {
    std::string why;
    if (!scoper_.load(why)) {
        emit message(uiText(TextId::ScoperaNotLoaded));
        return false;
    }
    view_ = new T_ShowForm(settings_, scoper_.object(), this);
    connect(view_, &T_ShowForm::message, this, &ComparedRecording::message);
    view_->lieBelow(first_, *head_);
    head_->addWidget(alignment_);
    head_->addWidget(remove_);
    layout()->addWidget(view_);
    static_cast<QVBoxLayout*>(layout())->setStretchFactor(view_, 1);
    if (!view_->openRecording(dataFile)) {
        return false;
    }
    const auto& from = first_.shownRecording()->wallClock();
    const auto& to = view_->shownRecording()->wallClock();
    later_ = from && to ? std::optional(microsecondsBetween(*from, *to)) : std::nullopt;
    auto* items = static_cast<QStandardItemModel*>(alignment_->model());
    items->item(static_cast<int>(Alignment::TimeOfDay))->setEnabled(later_.has_value());
    align(Alignment::Start);
    retranslate();
    return true;
}

void ComparedRecording::align(Alignment alignment) {
    line_ = frameLine(*first_.shownRecording(), *view_->shownRecording(), alignment).value_or(line_);
}

void ComparedRecording::retranslate() {
    title_->setText(view_->openedTitle());
    title_->setToolTip(fromFileName(view_->openedFile()));
    remove_->setToolTip(uiText(TextId::CompareRemove));
    remove_->setAccessibleName(uiText(TextId::CompareRemove));
    alignment_->setToolTip(uiText(TextId::AlignHint));
    alignment_->setAccessibleName(uiText(TextId::AlignHint));
    alignment_->setItemText(static_cast<int>(Alignment::Start), uiText(TextId::AlignStart));
    alignment_->setItemText(
        static_cast<int>(Alignment::TimeOfDay),
        uiText(TextId::AlignTimeOfDay) + (later_ ? QStringLiteral(" (%1)").arg(laterText(*later_)) : QString()));
    alignment_->setItemData(static_cast<int>(Alignment::TimeOfDay), later_ ? QString() : uiText(TextId::AlignNoClock),
                            Qt::ToolTipRole);
    view_->retranslate();
}

}  // namespace tarno2
