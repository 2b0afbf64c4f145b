#pragma once

#include <QWidget>

class QCheckBox;
class QTableView;
class QToolButton;

namespace tarno2 {

class MeasurementModel;
class ShortenedLabel;

/// What stands below the picture while the cursors are shown: the time between them, buttons, and the table, which
/// can be folded away. Window thread.
class MeasurementPanel : public QWidget {
    Q_OBJECT

public:
    explicit MeasurementPanel(QWidget* parent);

    [[nodiscard]] MeasurementModel& model() { return *model_; }
    /// Shows settings without telling anybody.
    void load(bool onScreen, bool folded);
    void setTexts(const QString& time, const QString& state);
    /// The cursor that keys move, from 0.
    void setActive(size_t cursor);
    /// The row that edges are looked for in; the first one while none is chosen, -1 when there is none.
    [[nodiscard]] int chosenRow() const;
    /// Gives the table the height of its rows, up to some.
    void fitRows();
    void retranslate();

signals:
    void onScreenChanged(bool onScreen);
    void folded(bool folded);
    void snapWanted();
    /// What is wrong with a file that was to be saved.
    void message(const QString& text);

private:
    void copy();
    void save();
    void showFold(bool folded);

    MeasurementModel* model_;
    QTableView* table_;
    QToolButton* fold_;
    ShortenedLabel* time_;
    ShortenedLabel* state_;
    QCheckBox* onScreen_;
    QToolButton* snap_;
    QToolButton* copy_;
    QToolButton* save_;
    size_t active_ = 0;
};

}  // namespace tarno2
