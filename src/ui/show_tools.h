#pragma once

#include <QWidget>
#include <optional>

#include "config/settings/program_settings.h"
#include "language/text_ids.h"

class QAction;
class QActionGroup;
class QCheckBox;
class QLabel;
class QLineEdit;
class QMenu;
class QToolButton;

namespace tarno2 {

/// The row of controls below the signal: span and unit of X, scale and unit of Y, how the data are followed. It shows
/// the settings and tells what the user did; the view has the rules. Items of a menu carry their numbers as data.
class ShowTools : public QWidget {
    Q_OBJECT

public:
    explicit ShowTools(QWidget* parent = nullptr);

    void retranslate();
    /// Shows the settings, with this span in the X unit, and how it is followed.
    void load(const ProgramSettings& settings, double spanX, int followMode);
    /// Whether the axis tells the time of day, and whether it can.
    void setClock(bool on, bool known);
    /// A finished recording is shown: it can't be followed, and there is a way back.
    void setFileShown(bool file);
    /// A line of text about the recording that was opened.
    void setFileStatus(const QString& text);

    /// What was typed as span of X or as scale of Y; nothing unless it is a number above 0, or when the field stands as
    /// it was shown, which may have fewer digits than the setting.
    [[nodiscard]] std::optional<double> typedX() const;
    [[nodiscard]] std::optional<double> typedY() const;

    /// Opens a menu at its button.
    void openAxisXMenu();
    void openFollowMenu();

signals:
    void axisXKey(int key);
    void axisYKey(int key);
    void axisXButton();
    void axisXUnit(int tag);
    void axisXClock(bool on);
    void axisYUnit(int tag);
    void axisYAutomatic(bool on);
    void showModeButton();
    void follow(int mode);
    void showSettings();
    void backToLive();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build();
    void connectAll();
    void addItem(QActionGroup* group, QMenu* menu, TextId text, int tag);
    void check(QActionGroup* group, int tag, QToolButton* button);

    QLineEdit* axisXEdit_;
    QToolButton* axisXButton_;
    QMenu* axisXMenu_;
    QActionGroup* axisXUnits_;
    QAction* axisXClock_ = nullptr;
    QLineEdit* axisYEdit_;
    QToolButton* axisYButton_;
    QMenu* axisYMenu_;
    QActionGroup* axisYUnits_;
    QCheckBox* axisYAuto_;
    QToolButton* showModeButton_;
    QMenu* followMenu_;
    QActionGroup* followModes_;
    QToolButton* settingsButton_;
    QString shownX_;
    QString shownY_;
    QWidget* fileRow_;
    QToolButton* backButton_;
    QLabel* fileStatus_;
    std::vector<std::pair<QAction*, TextId>> items_;
};

}  // namespace tarno2
