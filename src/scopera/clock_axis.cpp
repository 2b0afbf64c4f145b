#include "scopera/clock_axis.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <array>
#include <cmath>

#include "scopera/axis_ticker.h"

namespace tarno2 {

namespace {

constexpr int64_t kMicroseconds = 1'000'000;
constexpr int64_t kDaySeconds = 86'400;

struct ClockStep {
    double seconds;
    int subTicks;
};

/// From a second to half a day; all of them go into a day without a rest.
constexpr std::array<ClockStep, 17> kSteps = {{{1, 4},
                                               {2, 1},
                                               {5, 4},
                                               {10, 4},
                                               {15, 2},
                                               {30, 2},
                                               {60, 5},
                                               {120, 1},
                                               {300, 4},
                                               {600, 4},
                                               {900, 2},
                                               {1800, 2},
                                               {3600, 3},
                                               {7200, 1},
                                               {10800, 2},
                                               {21600, 5},
                                               {43200, 3}}};

int64_t floorRest(int64_t value, int64_t by) {
    return (value % by + by) % by;
}

/// Whole seconds since 1970 and the rest, rounded to so many decimals.
struct Moment {
    int64_t seconds;
    int64_t rest;
};

Moment momentAt(int64_t start, double seconds, int decimals) {
    const double whole = std::floor(seconds);
    const int64_t rest = floorRest(start, kMicroseconds);
    const double parts = std::pow(10.0, decimals);
    const auto unit = static_cast<int64_t>(parts);
    const int64_t rounded =
        std::llround((seconds - whole + static_cast<double>(rest) / static_cast<double>(kMicroseconds)) * parts);
    return {(start - rest) / kMicroseconds + static_cast<int64_t>(whole) + rounded / unit, rounded % unit};
}

QString dateText(int64_t seconds) {
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc()).toString(QStringLiteral("yyyy-MM-dd"));
}

QString timeText(int64_t hours, int64_t inHour, int64_t rest, int decimals, int hourDigits) {
    QString text = QStringLiteral("%1:%2:%3")
                       .arg(hours, hourDigits, 10, QLatin1Char('0'))
                       .arg(inHour / 60, 2, 10, QLatin1Char('0'))
                       .arg(inHour % 60, 2, 10, QLatin1Char('0'));
    return decimals > 0 ? text + QStringLiteral(".%1").arg(rest, decimals, 10, QLatin1Char('0')) : text;
}

constexpr double kMostSeconds = 1e12;
constexpr int kMostDecimals = 9;

Moment momentAt(const ClockAxis& clock, double x, int decimals) {
    return momentAt(clock.start, std::clamp(x * clock.secondsPerUnit, -kMostSeconds, kMostSeconds), decimals);
}

}  // namespace

QString ClockAxis::timeAt(double x, int decimals) const {
    decimals = std::clamp(decimals, 0, kMostDecimals);
    const Moment moment = momentAt(*this, x, decimals);
    const int64_t inDay = floorRest(moment.seconds, kDaySeconds);
    return timeText(inDay / 3600, inDay % 3600, moment.rest, decimals, 2);
}

QString ClockAxis::dateAt(double x, int decimals) const {
    return dateText(momentAt(*this, x, std::clamp(decimals, 0, kMostDecimals)).seconds);
}

QString ClockAxis::length(double x, int decimals) const {
    decimals = std::clamp(decimals, 0, kMostDecimals);
    const Moment moment = momentAt(0, std::min(std::abs(x) * secondsPerUnit, kMostSeconds), decimals);
    const QString text = timeText(moment.seconds / 3600, moment.seconds % 3600, moment.rest, decimals, 1);
    return x < 0.0 ? QLatin1Char('-') + text : text;
}

double ClockTicker::getTickStep(const QCPRange& range) {
    const double least = range.size() * clock_.secondsPerUnit / std::max(tickCount(), 1);
    if (least <= kSteps.front().seconds / 2.0) {
        seconds_ = niceStep(least);
        subTicks_ = 4;
    } else if (least > kSteps.back().seconds) {
        seconds_ = niceStep(least / static_cast<double>(kDaySeconds)) * static_cast<double>(kDaySeconds);
        subTicks_ = 3;
    } else {
        const ClockStep& step =
            *std::find_if(kSteps.begin(), kSteps.end(), [least](const ClockStep& one) { return one.seconds >= least; });
        seconds_ = step.seconds;
        subTicks_ = step.subTicks;
    }
    return seconds_ / clock_.secondsPerUnit;
}

int ClockTicker::getSubTickCount(double /*tickStep*/) {
    return subTicks_;
}

// Counted from the last round moment before X = 0, so that a fine step keeps its digits.
QVector<double> ClockTicker::createTickVector(double tickStep, const QCPRange& range) {
    const auto step = static_cast<int64_t>(std::llround(seconds_ * static_cast<double>(kMicroseconds)));
    const int64_t rest = step > 0 ? floorRest(clock_.start, step) : 0;
    setTickOrigin(-static_cast<double>(rest) / static_cast<double>(kMicroseconds) / clock_.secondsPerUnit);
    return QCPAxisTicker::createTickVector(tickStep, range);
}

QString ClockTicker::getTickLabel(double tick, const QLocale& /*locale*/, QChar /*formatChar*/, int /*precision*/) {
    const Moment moment = momentAt(clock_.start, tick * clock_.secondsPerUnit, 3);
    if (floorRest(moment.seconds, kDaySeconds) == 0 && moment.rest == 0 && seconds_ >= 1.0) {
        return dateText(moment.seconds);
    }
    return clock_.timeAt(tick, decimalsOf(seconds_));
}

}  // namespace tarno2
