#pragma once

#include <QWidget>
#include <string>
#include <vector>

#include "core/devices/driver_settings.h"

class QFormLayout;
class QLabel;

namespace tarno2 {

class DriverSettingField;

/// What a driver wants to be told, a field a setting; takes no room when that is nothing. Window thread.
class DriverSettingsForm : public QWidget {
    Q_OBJECT

public:
    /// `before` is left by Tab for the first field.
    explicit DriverSettingsForm(QWidget* before, QWidget* parent = nullptr);

    /// Shows the settings of a driver. The fields stay as long as only values are others.
    void showSettings(const std::string& driver, const std::vector<DriverSetting>& settings);
    void retranslate();
    /// The driver does not take the value that the field shows.
    void showRefusal(const QString& key, const QString& why);
    /// A field shows a value that the driver has refused.
    [[nodiscard]] bool refused() const;
    /// Asks the operator for the first thing that he decides.
    void askFirst();
    /// Ends the edit of a field as Enter would.
    void finish();

signals:
    /// The operator wants another value.
    void edited(const QString& key, const QString& value);

private:
    struct Row {
        QLabel* caption;
        DriverSettingField* field;
    };
    void rebuild(const std::vector<DriverSetting>& settings);

    QFormLayout* layout_;
    int gap_;  ///< between caption and field, pixels
    QWidget* before_;
    std::vector<Row> rows_;
    std::string driver_;
    std::vector<DriverSetting> shape_;  ///< of the fields, without values
};

}  // namespace tarno2
