#pragma once

#include <QWidget>
#include <cstdint>

class QComboBox;

namespace tarno2 {

/// The choice of a digital line whose edges are marked, and of the edges. A line that the board lacks is kept for the
/// next board.
class MarkLineRow : public QWidget {
    Q_OBJECT

public:
    explicit MarkLineRow(QWidget* parent = nullptr);

    /// -1: no line; edges as in `RecordingWish`.
    void setWish(int32_t line, int32_t edge);
    [[nodiscard]] int32_t line() const { return line_; }
    [[nodiscard]] int32_t edge() const;
    /// The board has so many lines.
    void setLines(uint32_t count);
    void retranslate();

signals:
    void changed();

private:
    void showLine();

    QComboBox* lineBox_;
    QComboBox* edgeBox_;
    int32_t line_ = -1;
};

}  // namespace tarno2
