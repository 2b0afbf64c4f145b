#include "ui/number_box.h"

namespace tarno2 {

NumberBox::NumberBox(QWidget* parent) : QDoubleSpinBox(parent) {
    setLocale(QLocale::c());
    setGroupSeparatorShown(false);
    setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
    setAccelerated(true);
}

QString NumberBox::textFromValue(double value) const {
    return QLocale::c().toString(value, 'f', QLocale::FloatingPointShortest).remove(QLatin1Char(','));
}

double NumberBox::valueFromText(const QString& text) const {
    return QDoubleSpinBox::valueFromText(QString(text).replace(QLatin1Char(','), QLatin1Char('.')));
}

QValidator::State NumberBox::validate(QString& text, int& position) const {
    text.replace(QLatin1Char(','), QLatin1Char('.'));
    return QDoubleSpinBox::validate(text, position);
}

}  // namespace tarno2
