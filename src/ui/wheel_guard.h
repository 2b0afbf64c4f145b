#pragma once

#include <QObject>

namespace tarno2 {

/// Keeps the wheel from changing a list, number or slider that has not got the focus: who scrolls a panel must not
/// change the settings that pass below the pointer. The wheel goes on to what they stand in. Filters every window of
/// the program while it exists. Window thread.
class WheelGuard : public QObject {
public:
    explicit WheelGuard(QObject* parent);

    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tarno2
