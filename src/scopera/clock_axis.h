#pragma once

#include <QString>
#include <cstdint>
#include <qcustomplot.h>

namespace tarno2 {

/// How places of the X axis become the time of day.
struct ClockAxis {
    int64_t start = 0;            ///< of X = 0: microseconds since the beginning of 1970 by the same clock
    double secondsPerUnit = 0.0;  ///< 0: the axis tells numbers

    [[nodiscard]] bool shown() const { return secondsPerUnit > 0.0; }
    /// "14:05:30.250" with so many decimals of a second.
    [[nodiscard]] QString timeAt(double x, int decimals) const;
    /// "2026-11-23", of the day that such a time is in.
    [[nodiscard]] QString dateAt(double x, int decimals) const;
    /// A length of the axis: "-0:00:01.500".
    [[nodiscard]] QString length(double x, int decimals) const;

    friend bool operator==(const ClockAxis&, const ClockAxis&) = default;
};

/// Ticks at round steps of a clock, labelled with the time of day, and with the date at midnight.
class ClockTicker : public QCPAxisTicker {
public:
    void setClock(const ClockAxis& clock) { clock_ = clock; }

protected:
    double getTickStep(const QCPRange& range) override;
    int getSubTickCount(double tickStep) override;
    QString getTickLabel(double tick, const QLocale& locale, QChar formatChar, int precision) override;
    QVector<double> createTickVector(double tickStep, const QCPRange& range) override;

private:
    ClockAxis clock_;
    double seconds_ = 1.0;  ///< of a step
    int subTicks_ = 0;
};

}  // namespace tarno2
