#pragma once

#include <QDialog>
#include <QString>
#include <functional>

class QLabel;
class QLineEdit;

namespace tarno2 {

/// Asks for a place in words and goes there. Window thread.
class GoToDialog : public QDialog {
public:
    /// `go` goes to the place that was typed and gives an empty text, or what is wrong with it: then the dialog stays.
    GoToDialog(const QString& title, const QString& hint, std::function<QString(const QString&)> go, QWidget* parent);

    void accept() override;

private:
    std::function<QString(const QString&)> go_;
    QLineEdit* place_;
    QLabel* problem_;
};

}  // namespace tarno2
