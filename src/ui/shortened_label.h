#pragma once

#include <QLabel>
#include <QString>

namespace tarno2 {

/// A label that gives way when there is little room: the whole text stands in its hint then.
class ShortenedLabel : public QLabel {
public:
    explicit ShortenedLabel(QWidget* parent);

    void setWhole(const QString& text);
    [[nodiscard]] const QString& whole() const { return whole_; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();
    QString whole_;
};

}  // namespace tarno2
