#include "scopera/axis_ticker.h"

#include <cmath>

namespace tarno2 {

int decimalsOf(double step) {
    constexpr int kMost = 12;
    double scaled = std::abs(step);
    for (int decimals = 0; decimals < kMost; ++decimals) {
        if (scaled >= 1.0 && std::abs(scaled - std::round(scaled)) < 1e-6 * scaled) {
            return decimals;
        }
        scaled *= 10.0;
    }
    return kMost;
}

double niceStep(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double part : {1.0, 2.0, 5.0}) {
        if (part * power >= least * (1.0 - 1e-9)) {
            return part * power;
        }
    }
    return 10.0 * power;
}

QString plainNumber(double value, int decimals) {
    constexpr double kLargest = 1e15;
    if (std::abs(value) >= kLargest) {
        return QString::number(value, 'g', 15);
    }
    const QString text = QString::number(value, 'f', decimals);
    const bool zero = text.startsWith('-') && text.count('0') == text.size() - (decimals > 0 ? 2 : 1);
    return zero ? text.mid(1) : text;
}

double AxisTicker::getTickStep(const QCPRange& range) {
    step_ = QCPAxisTicker::getTickStep(range);
    return step_;
}

QString AxisTicker::getTickLabel(double tick, const QLocale& /*locale*/, QChar /*formatChar*/, int /*precision*/) {
    return plainNumber(tick, decimalsOf(step_));
}

}  // namespace tarno2
