#pragma once

#include <QDialog>
#include <cstdint>
#include <optional>

#include "records/channel_label.h"

class QLabel;
class QLineEdit;
class QRadioButton;

namespace tarno2 {

/// Asks how the volts of a channel become values in its unit: by factor and offset, or by two points of the line. Stays
/// open, with a word, until that is a scale. Window thread.
class ScaleDialog final : public QDialog {
    Q_OBJECT

public:
    ScaleDialog(int32_t channel, const ChannelLabel& label, QWidget* parent);

    void accept() override;

signals:
    void chosen(double factor, double offset);

private:
    void build();
    void showWay();
    [[nodiscard]] std::optional<UnitScale> typed() const;

    QRadioButton* byFactor_;
    QRadioButton* byPoints_;
    QLabel* factorLabel_;
    QLabel* offsetLabel_;
    QLineEdit* factor_;
    QLineEdit* offset_;
    QLabel* pointLabels_[2];
    QLineEdit* volts_[2];
    QLineEdit* values_[2];
    QLabel* note_;
};

}  // namespace tarno2
