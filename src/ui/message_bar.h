#pragma once

#include <QString>
#include <QWidget>

#include "ui/message_list.h"

class QToolButton;

namespace tarno2 {

class MarkControls;
class ShortenedLabel;

/// The messages: one line with the newest, which unfolds to the list of all; beside it what can be done with the
/// running recording, or with the finished one. Window thread.
class MessageBar : public QWidget {
    Q_OBJECT

public:
    explicit MessageBar(QWidget* parent = nullptr);

    void add(MessageList::Kind kind, const QString& message);
    /// A finished recording, with what can be done with it, until `clearEnd`.
    void showEnd(const QString& facts);
    void clearEnd();
    /// Of the running recording; hidden until it is shown.
    [[nodiscard]] MarkControls& marks() { return *marks_; }
    void setUnfolded(bool unfolded);
    [[nodiscard]] bool unfolded() const { return unfolded_; }
    void retranslate();

signals:
    void unfoldedChanged(bool unfolded);
    // With the recording that ended.
    void openAsked();
    void folderAsked();
    void textAsked();

private:
    MessageList* list_;
    ShortenedLabel* newest_;
    MarkControls* marks_;
    QToolButton* open_;
    QToolButton* folder_;
    QToolButton* text_;
    QToolButton* unfold_;
    bool unfolded_ = false;
};

}  // namespace tarno2
