#include "ui/message_list.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QTime>
#include <algorithm>

#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kMostLines = 2000;

}  // namespace

MessageList::MessageList(QWidget* parent) : QListWidget(parent) {
    setObjectName(QStringLiteral("MessageList"));
    setSelectionMode(ExtendedSelection);
    setWordWrap(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideNone);
    retranslate();
}

void MessageList::add(Kind kind, const QString& message) {
    QString line = kind == Kind::Detail
                       ? QStringLiteral("               ")
                       : QTime::currentTime().toString(QStringLiteral("HH:mm:ss")) + QStringLiteral("  ");
    if (kind == Kind::Attention) {
        line += QStringLiteral("\u26A0 ");
    }
    auto* item = new QListWidgetItem(line + QString(message).replace(QLatin1Char('\n'), QLatin1Char(' ')), this);
    if (kind == Kind::Attention) {
        QFont font = item->font();
        font.setBold(true);
        item->setFont(font);
    }
    while (count() > kMostLines) {
        delete takeItem(0);
    }
    scrollToBottom();
}

void MessageList::copy() const {
    QStringList lines;
    const bool all = selectedItems().isEmpty();
    for (int row = 0; row < count(); ++row) {
        if (all || item(row)->isSelected()) {
            lines.append(item(row)->text());
        }
    }
    if (!lines.isEmpty()) {
        QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
    }
}

void MessageList::retranslate() {
    setAccessibleName(uiText(TextId::MessageList));
}

void MessageList::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else {
        QListWidget::keyPressEvent(event);
    }
}

void MessageList::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu;
    QAction* copying = menu.addAction(uiText(TextId::CopyMessages));
    copying->setEnabled(count() > 0);
    if (menu.exec(event->globalPos()) == copying) {
        copy();
    }
}

}  // namespace tarno2
