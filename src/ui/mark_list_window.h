#pragma once

#include <QAbstractTableModel>
#include <QDialog>
#include <vector>

#include "display/shown_marks.h"

class QLabel;
class QTableView;

namespace tarno2 {

/// The rows of a list of marks: number, time, source, text.
class MarkListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    /// Takes these marks, in the order of their numbers, with the rate of the stream (0: not known).
    void setMarks(const std::vector<ShownMark>& marks, double framesPerSecond);
    [[nodiscard]] const std::vector<ShownMark>& marks() const { return marks_; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    [[nodiscard]] QString timeOf(const RecordingMark& mark) const;

    std::vector<ShownMark> marks_;
    double framesPerSecond_ = 0.0;
};

/// The marks of the recording that the signal view shows; the keys of the main window work in it, too. Window thread.
class MarkListWindow : public QDialog {
    Q_OBJECT

public:
    explicit MarkListWindow(QWidget* parent);

    void setMarks(const std::vector<ShownMark>& marks, double framesPerSecond);
    /// Chooses the mark of that number.
    void choose(uint64_t number);
    void retranslate();

signals:
    /// The operator wants to see what is there.
    void jump(uint64_t frame);

private:
    void activated(const QModelIndex& index);

    MarkListModel* model_;
    QTableView* table_;
    QLabel* hint_;
};

}  // namespace tarno2
