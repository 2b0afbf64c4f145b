#include "ui/message_bar.h"

#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/mark_controls.h"
#include "ui/shortened_label.h"
#include "ui/text.h"

namespace tarno2 {

MessageBar::MessageBar(QWidget* parent)
    : QWidget(parent),
      list_(new MessageList(this)),
      newest_(new ShortenedLabel(this)),
      marks_(new MarkControls(this)),
      open_(new QToolButton(this)),
      folder_(new QToolButton(this)),
      text_(new QToolButton(this)),
      unfold_(new QToolButton(this)) {
    newest_->setObjectName(QStringLiteral("NewestMessage"));
    newest_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    unfold_->setObjectName(QStringLiteral("UnfoldMessagesButton"));
    unfold_->setAutoRaise(true);
    unfold_->setCheckable(true);
    unfold_->setFocusPolicy(Qt::TabFocus);
    auto* line = new QHBoxLayout;
    line->setContentsMargins(8, 0, 2, 0);
    line->addWidget(newest_, 1);
    line->addWidget(marks_);
    marks_->hide();
    const struct {
        QToolButton* button;
        const char* name;
        void (MessageBar::*asked)();
    } ends[] = {{open_, "OpenRecordedButton", &MessageBar::openAsked},
                {folder_, "ShowInFolderButton", &MessageBar::folderAsked},
                {text_, "SaveRecordedAsTextButton", &MessageBar::textAsked}};
    for (const auto& end : ends) {
        end.button->setObjectName(QLatin1String(end.name));
        end.button->setFocusPolicy(Qt::StrongFocus);
        line->addWidget(end.button);
        connect(end.button, &QToolButton::clicked, this, end.asked);
    }
    clearEnd();
    line->addWidget(unfold_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(line);
    column->addWidget(list_, 1);
    list_->setMinimumHeight(fontMetrics().lineSpacing() * 2);
    connect(unfold_, &QToolButton::clicked, this, &MessageBar::setUnfolded);
    setUnfolded(false);
    retranslate();
}

void MessageBar::add(MessageList::Kind kind, const QString& message) {
    list_->add(kind, message);
    if (kind == MessageList::Kind::Detail) {
        return;
    }
    QFont font = newest_->font();
    font.setBold(kind == MessageList::Kind::Attention);
    newest_->setFont(font);
    newest_->setWhole(list_->item(list_->count() - 1)->text());
}

void MessageBar::showEnd(const QString& facts) {
    add(MessageList::Kind::Information, facts);
    for (QToolButton* button : {open_, folder_, text_}) {
        button->show();
    }
}

void MessageBar::clearEnd() {
    for (QToolButton* button : {open_, folder_, text_}) {
        button->hide();
    }
}

void MessageBar::setUnfolded(bool unfolded) {
    const bool changed = unfolded != unfolded_;
    unfolded_ = unfolded;
    unfold_->setChecked(unfolded);
    unfold_->setArrowType(unfolded ? Qt::DownArrow : Qt::UpArrow);
    list_->setVisible(unfolded);
    setMaximumHeight(unfolded ? QWIDGETSIZE_MAX : std::max(open_->sizeHint().height(), marks_->sizeHint().height()));
    if (changed) {
        emit unfoldedChanged(unfolded);
    }
}

void MessageBar::retranslate() {
    list_->retranslate();
    marks_->retranslate();
    open_->setText(uiText(TextId::EndOpen));
    folder_->setText(uiText(TextId::EndShowInFolder));
    text_->setText(uiText(TextId::EndSaveAsText));
    unfold_->setToolTip(uiText(TextId::MessageList) + QStringLiteral(" (Ctrl+L)"));
    unfold_->setAccessibleName(uiText(TextId::MessageList));
}

}  // namespace tarno2
