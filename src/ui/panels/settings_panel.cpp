#include "ui/panels/settings_panel.h"

#include "ui/text.h"

namespace tarno2 {

void SettingsPanel::setLocked(bool locked) {
    locked_ = locked;
    for (const auto& [widget, control] : controls_) {
        refresh(widget, control);
    }
}

void SettingsPanel::manage(QWidget* control, bool lockable) {
    controls_[control].lockable = lockable;
}

void SettingsPanel::setHint(QWidget* control, const QString& hint) {
    Control& state = controls_[control];
    state.hint = hint;
    refresh(control, state);
}

void SettingsPanel::setAvailable(QWidget* control, bool available, const QString& reason) {
    Control& state = controls_[control];
    state.available = available;
    state.reason = reason;
    refresh(control, state);
}

void SettingsPanel::refresh(QWidget* widget, const Control& control) const {
    const bool shut = locked_ && control.lockable;
    widget->setEnabled(control.available && !shut);
    QString hint = control.available ? control.hint : control.reason;
    if (shut) {
        hint = uiText(TextId::PanelLockedHint);
    }
    widget->setToolTip(hint);
    widget->setAccessibleDescription(hint);
}

}  // namespace tarno2
