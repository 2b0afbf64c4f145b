#pragma once

#include <QString>
#include <QWidget>

#include "ui/message_list.h"

class QToolButton;

namespace tarno2 {

class ShortenedLabel;

/// The messages: one line with the newest, which unfolds to the list of all. Window thread.
class MessageBar : public QWidget {
    Q_OBJECT

public:
    explicit MessageBar(QWidget* parent = nullptr);

    void add(MessageList::Kind kind, const QString& message);
    void setUnfolded(bool unfolded);
    [[nodiscard]] bool unfolded() const { return unfolded_; }
    [[nodiscard]] MessageList& list() { return *list_; }
    void retranslate();

signals:
    void unfoldedChanged(bool unfolded);

private:
    MessageList* list_;
    ShortenedLabel* newest_;
    QToolButton* unfold_;
    bool unfolded_ = false;
};

}  // namespace tarno2
