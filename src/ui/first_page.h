#pragma once

#include <QString>
#include <QWidget>
#include <array>
#include <string>

class QCommandLinkButton;
class QLabel;
class QPushButton;

namespace tarno2 {

/// The data file of the sample recording that is installed; empty when it is not.
[[nodiscard]] std::string sampleRecording();

/// What somebody may begin with who starts the program for the first time; it stands where the signal will be. Each
/// choice that can't be had says why. Buttons `FirstSound`, `FirstSimulator`, `FirstSample`, `FirstSkip`. Window
/// thread.
class FirstPage : public QWidget {
    Q_OBJECT

public:
    enum Choice { Sound, Simulator, Sample };

    explicit FirstPage(QWidget* parent = nullptr);

    /// The driver that a choice is about; empty: it is about none.
    [[nodiscard]] static const char* driverOf(Choice choice);
    /// A choice was made in vain; it stays, for another time.
    void showProblem(Choice choice, const QString& why);
    void retranslate();

signals:
    void chosen(FirstPage::Choice choice);
    /// The page is to be closed.
    void skipped();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    [[nodiscard]] QString missing(Choice choice) const;

    QLabel* title_;
    std::array<QCommandLinkButton*, 3> choices_ = {};
    std::array<bool, 3> offered_ = {};
    std::array<QString, 3> problems_;
    QLabel* once_;
    QPushButton* skip_;
};

}  // namespace tarno2
