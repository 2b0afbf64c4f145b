#pragma once

#include <QObject>

class QWidget;

namespace tarno2 {

/// Leaves lists and tables the keys with which one chooses in them, where keys of the window around mean something
/// else: letters and digits, Home and End. Window thread.
class TypedKeys : public QObject {
public:
    /// For those that stand in `pane` now, and with it.
    explicit TypedKeys(QWidget* pane);

    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tarno2
