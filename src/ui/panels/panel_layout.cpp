#include "ui/panels/panel_layout.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QStyleOptionComboBox>
#include <QStylePainter>

namespace tarno2 {

namespace {

/// A list that marks an entry which is longer than its field.
class List : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QStylePainter painter(this);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
        option.currentText = fontMetrics().elidedText(option.currentText, Qt::ElideRight, field.width() - 4);
        painter.drawComplexControl(QStyle::CC_ComboBox, option);
        painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    }
};

/// Amber that is legible on the ground of the widget.
QColor warningColor(const QWidget& widget) {
    const bool dark = widget.palette().color(QPalette::Window).lightness() < 128;
    return dark ? QColor(0xFF, 0xB8, 0x30) : QColor(0x8A, 0x4B, 0x00);
}

}  // namespace

QFormLayout* makePanelLayout(QWidget* panel) {
    auto* layout = new QFormLayout(panel);
    layout->setRowWrapPolicy(QFormLayout::WrapLongRows);
    layout->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->setFormAlignment(Qt::AlignTop);
    return layout;
}

QComboBox* makeList(QWidget* parent, const QString& name) {
    auto* list = new List(parent);
    list->setObjectName(name);
    list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    list->setMinimumContentsLength(6);
    list->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return list;
}

QLabel* makeText(QWidget* parent, const QString& name) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    // A long path or name must not make the column wider.
    label->setMinimumWidth(1);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

void showText(QLabel* label, const QString& text, bool warning) {
    label->setText(warning && !text.isEmpty() ? QStringLiteral("\u26A0 ") + text : text);
    label->setVisible(!text.isEmpty());
    QPalette palette;
    QFont font;
    if (warning) {
        palette.setColor(QPalette::WindowText, warningColor(*label));
        font.setBold(true);
    }
    label->setPalette(palette);
    label->setFont(font);
}

}  // namespace tarno2
