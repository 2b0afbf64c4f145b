#include "ui/number_box.h"

#include "config/settings/field_text.h"

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
    return parseNumberField(text.toStdString()).value_or(value());
}

QValidator::State NumberBox::validate(QString& text, int& position) const {
    text.replace(QLatin1Char(','), QLatin1Char('.'));
    return QDoubleSpinBox::validate(text, position);
}

}  // namespace tarno2
