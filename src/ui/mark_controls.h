#pragma once

#include <QPointer>
#include <QWidget>
#include <optional>

#include "records/mark_list.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno2 {

/// The button that marks a running recording, and after a mark a line in which a word may be typed: Enter takes it, Esc
/// leaves the mark without one. Window thread.
class MarkControls : public QWidget {
    Q_OBJECT

public:
    explicit MarkControls(QWidget* parent = nullptr);

    [[nodiscard]] QPushButton& button() { return *button_; }
    /// A mark was made: its word may be typed now. What was typed for an earlier one is taken.
    void begin(const RecordingMark& mark);
    /// The recording is over.
    void end();
    void retranslate();

signals:
    /// What is typed so far.
    void typed(const RecordingMark& mark);
    void taken(const RecordingMark& mark);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void finish(bool take);

    QPushButton* button_;
    QLabel* label_;
    QLineEdit* edit_;
    std::optional<RecordingMark> mark_;  ///< whose word is typed
    QPointer<QWidget> before_;           ///< had the keys before
};

}  // namespace tarno2
