#pragma once

#include <QString>
#include <QToolButton>

namespace tarno2 {

/// Says what triggers the recording, in two lines that give way when there is little room, and opens its settings.
class TriggerButton : public QToolButton {
public:
    explicit TriggerButton(QWidget* parent);

    /// "Trigger: channel 3 > 0.5 V"; what stands before the colon is the first line. `active`: frames are chosen.
    void setState(const QString& text, bool active);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void fit();
    void drawIcon();

    QString caption_;
    QString what_;
    bool active_ = false;
};

}  // namespace tarno2
