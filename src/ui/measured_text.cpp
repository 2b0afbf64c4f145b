#include "ui/measured_text.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "ui/text.h"

namespace tarno2 {

namespace {

TextId textOfTime(AxisXUnit unit) {
    return static_cast<TextId>(static_cast<int32_t>(TextId::UnitMicroseconds) + static_cast<int32_t>(unit) - 1);
}

}  // namespace

QString frequencyWithUnit(double hertz) {
    return frequencyWithUnit(hertz, 6);
}

QString frequencyWithUnit(double hertz, int digits) {
    if (!std::isfinite(hertz)) {
        return {};
    }
    constexpr std::array<std::pair<double, TextId>, 4> kUnits = {{{1e6, TextId::MegahertzUnit},
                                                                  {1e3, TextId::KilohertzUnit},
                                                                  {1.0, TextId::HertzUnit},
                                                                  {1e-3, TextId::MillihertzUnit}}};
    const double size = std::abs(hertz);
    for (const auto& [unit, text] : kUnits) {
        if (size >= unit * 0.9999995 || unit < 1.0) {
            return QString::number(hertz / unit, 'g', digits) + QLatin1Char(' ') +
                   uiText(size == 0.0 ? TextId::HertzUnit : text);
        }
    }
    return {};
}

QString timeBetween(double frames, double framesPerSecond, AxisXUnit unit) {
    if (!(framesPerSecond > 0.0)) {
        return {};
    }
    const AxisXUnit shown = unit == AxisXUnit::Samples ? AxisXUnit::Seconds : unit;
    QString text =
        QStringLiteral("Δt %1 %2")
            .arg(QString::number(axisXOfFrame(frames, shown, framesPerSecond), 'g', 8), uiText(textOfTime(shown)));
    if (frames != 0.0) {
        text += QStringLiteral("   1/Δt ") + frequencyWithUnit(framesPerSecond / std::abs(frames));
    }
    return text;
}

QString timeOfDay(const WallClock& clock, double frame, double resolution) {
    constexpr int kMost = 6;
    const int decimals = std::min(resolvedDecimals(resolution / clock.framesPerSecond, 1.0), kMost);
    return QString::fromStdString(clockText(clock.at(frame), decimals));
}

}  // namespace tarno2
