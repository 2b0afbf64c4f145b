#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;

namespace tarno2 {

class BoardSelection;

/// What a driver without a usable board needs, in words, and what the button beside them does.
struct BoardNeed {
    enum class Way {
        None,     ///< it needs nothing, or nothing that a button could get
        Path,     ///< a file or folder is chosen
        Setting,  ///< something is typed
        Search    ///< the board is plugged in or switched on
    };
    Way way = Way::None;
    QString text;
    QString button;
};

/// Of the driver that is chosen, in the language chosen last. What it wants to be told first tells where its boards
/// are.
[[nodiscard]] BoardNeed boardNeed(BoardSelection& selection);

/// These words and the button: `<name>Label`, `<name>Button`. Takes no room while nothing is needed. Window thread.
class NeedLine : public QWidget {
    Q_OBJECT

public:
    /// `narrow`: the button stands below the words.
    NeedLine(const QString& name, bool narrow, QWidget* parent = nullptr);

    void setNeed(const BoardNeed& need);

signals:
    /// The button was pressed.
    void asked();

private:
    QLabel* label_;
    QPushButton* button_;
};

}  // namespace tarno2
