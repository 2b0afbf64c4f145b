#include "ui/mark_controls.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <utility>

#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kLongestWord = 200;  // letters

}  // namespace

MarkControls::MarkControls(QWidget* parent)
    : QWidget(parent), button_(new QPushButton(this)), label_(new QLabel(this)), edit_(new QLineEdit(this)) {
    button_->setObjectName(QStringLiteral("MarkButton"));
    button_->setFocusPolicy(Qt::NoFocus);
    button_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    edit_->setObjectName(QStringLiteral("MarkEdit"));
    edit_->setMaxLength(kLongestWord);
    edit_->installEventFilter(this);
    label_->setBuddy(edit_);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(button_);
    row->addWidget(label_);
    row->addWidget(edit_);
    edit_->setMinimumWidth(fontMetrics().averageCharWidth() * 24);
    connect(edit_, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (mark_) {
            mark_->text = text.toStdString();
            emit typed(*mark_);
        }
    });
    connect(edit_, &QLineEdit::returnPressed, this, [this] { finish(true); });
    end();
    retranslate();
}

void MarkControls::begin(const RecordingMark& mark) {
    if (mark_) {
        finish(true);
    }
    mark_ = mark;
    edit_->clear();
    before_ = QApplication::focusWidget();
    label_->setVisible(true);
    edit_->setVisible(true);
    retranslate();
    edit_->setFocus();
}

void MarkControls::end() {
    mark_.reset();
    if (before_ != nullptr && edit_->hasFocus()) {
        before_->setFocus();
    }
    label_->hide();
    edit_->hide();
}

void MarkControls::finish(bool take) {
    auto mark = std::exchange(mark_, std::nullopt);
    end();
    if (mark) {
        if (!take) {
            mark->text.clear();
        }
        emit taken(*mark);
    }
}

// Who goes on to another field has said what there was to say.
bool MarkControls::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        finish(false);
        return true;
    }
    if (event->type() == QEvent::FocusOut && mark_ &&
        static_cast<QFocusEvent*>(event)->reason() != Qt::ActiveWindowFocusReason &&
        static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
        finish(true);
    }
    return QWidget::eventFilter(watched, event);
}

void MarkControls::retranslate() {
    button_->setText(uiText(TextId::CommandMark) + QStringLiteral("  F8"));
    button_->setToolTip(uiText(TextId::MarkHint));
    label_->setText(mark_ ? uiText(TextId::MarkMade, {QString::number(mark_->number)}) : QString());
    edit_->setPlaceholderText(uiText(TextId::MarkWordHint));
}

}  // namespace tarno2
