#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace tarno2 {

/// A figure with its caption. The figure is right-aligned in a place that is wide enough for its widest value, so that
/// nothing beside it moves while it runs.
class FigureCell : public QWidget {
public:
    enum class Shape { Large, Small };  ///< the caption above a large figure, or before a small one
    FigureCell(Shape shape, QString widest, QWidget* parent);

    void setCaption(const QString& caption);
    /// A figure may go without it when its unit says what it is.
    void setCaptionShown(bool shown);
    void setValue(const QString& value);
    /// Bold, with a sign before it: it needs attention.
    void setWarning(bool warning);
    /// Another widest value, in another language.
    void setWidest(const QString& widest);
    /// How large a large figure is, times the window's font.
    void setScale(double scale);

protected:
    void changeEvent(QEvent* event) override;

private:
    void fit();

    QString widest_;
    QString text_;
    QLabel* caption_;
    QLabel* value_;
    bool warning_ = false;
};

}  // namespace tarno2
