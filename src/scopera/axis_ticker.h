#pragma once

#include <QString>
#include <qcustomplot.h>

namespace tarno2 {

/// Decimals that tell values apart which differ by `step`: 0 for 5, 2 for 0.25; at most 12.
[[nodiscard]] int decimalsOf(double step);
/// The next number above 0 that is 1, 2 or 5 times a power of ten and not less than that.
[[nodiscard]] double niceStep(double least);
/// A number in plain decimal notation with a point, whatever the user's locale is; very large ones with an exponent.
[[nodiscard]] QString plainNumber(double value, int decimals);

/// Ticks whose numbers all have the decimals that their distance needs, so that a deep zoom stays readable.
class AxisTicker : public QCPAxisTicker {
protected:
    double getTickStep(const QCPRange& range) override;
    QString getTickLabel(double tick, const QLocale& locale, QChar formatChar, int precision) override;

private:
    double step_ = 1.0;
};

}  // namespace tarno2
