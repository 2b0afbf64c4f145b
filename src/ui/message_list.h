#pragma once

#include <QListWidget>
#include <QString>

namespace tarno2 {

/// What happened, a line each with its time. Marked lines can be copied (Ctrl+C, context menu); with none marked all of
/// them are. The oldest lines go when there are very many. Window thread.
class MessageList : public QListWidget {
    Q_OBJECT

public:
    enum class Kind {
        Information,
        Attention,  ///< bold, with a sign
        Detail      ///< belongs to the line before it; indented
    };
    explicit MessageList(QWidget* parent = nullptr);

    void add(Kind kind, const QString& message);
    void copy() const;
    void retranslate();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
};

}  // namespace tarno2
