#pragma once

#include <QDoubleSpinBox>

namespace tarno2 {

/// A field for a number with or without decimals, of which it shows no more than there are. Takes "." and "," for the
/// decimal character, whatever the user's locale is.
class NumberBox : public QDoubleSpinBox {
public:
    explicit NumberBox(QWidget* parent = nullptr);

    [[nodiscard]] QString textFromValue(double value) const override;
    [[nodiscard]] double valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& position) const override;
};

}  // namespace tarno2
