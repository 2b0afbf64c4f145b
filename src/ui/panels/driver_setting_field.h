#pragma once

#include <QList>
#include <QString>
#include <QWidget>

#include "core/devices/driver_settings.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace tarno2 {

/// The field for one setting of a driver, of the kind that its type asks for, with a line beneath for the driver's
/// refusal: `DriverSetting_<key>`, `DriverSettingChoose_<key>`, `DriverSettingProblem_<key>`. Esc brings the value in
/// use back. Window thread.
class DriverSettingField : public QWidget {
    Q_OBJECT

public:
    explicit DriverSettingField(DriverSetting setting, QWidget* parent = nullptr);

    [[nodiscard]] const std::string& key() const { return setting_.key; }
    /// In the language chosen last.
    [[nodiscard]] QString caption() const;
    /// It bears its caption itself.
    [[nodiscard]] bool captioned() const { return box_ != nullptr; }
    /// What Tab goes through, in its order.
    [[nodiscard]] QList<QWidget*> tabStops() const;
    /// Shows the value in use; what is being typed, or was refused in place of it, stays.
    void showValue(const std::string& value);
    void retranslate();
    void showRefusal(const QString& why);
    /// It shows a value that the driver has refused.
    [[nodiscard]] bool refused() const { return refused_; }
    /// The environment decides.
    [[nodiscard]] bool fixed() const { return setting_.fixed; }
    /// Has its file or folder chosen by a dialog; another field gets the keys.
    void ask();
    /// Ends the edit as Enter would.
    void finish();

signals:
    /// The operator wants another value.
    void edited(const QString& key, const QString& value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] QWidget* makeEditor();
    void makeBox();
    void makeLine();
    void makeSpin();
    void makeList();
    void choosePath();
    [[nodiscard]] QStringList nameFilters() const;
    [[nodiscard]] QString typed() const;
    void putValue();

    DriverSetting setting_;
    QCheckBox* box_ = nullptr;
    QLineEdit* line_ = nullptr;
    QSpinBox* spin_ = nullptr;
    QComboBox* list_ = nullptr;
    QPushButton* chooseButton_ = nullptr;
    QWidget* editor_;
    QLabel* problem_;
    bool touched_ = false;  ///< typed, and not sent yet
    bool refused_ = false;
};

}  // namespace tarno2
