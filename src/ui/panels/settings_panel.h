#pragma once

#include <QString>
#include <QWidget>
#include <map>

#include "config/settings/program_settings.h"
#include "core/devices/board_selection.h"
#include "language/text_ids.h"

namespace tarno2 {

/// One of the five panels with the operator's settings. A panel holds no rules: it shows what `core/` and `config/`
/// say, and tells what the operator did. Each control bears its settled name as object name. Window thread.
class SettingsPanel : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// The panel's name, for its header.
    [[nodiscard]] virtual TextId title() const = 0;
    /// Shows the settings. Emits no signal.
    virtual void load(const ProgramSettings& settings) = 0;
    /// Puts what the controls show into the settings; leaves what belongs to others alone.
    virtual void store(ProgramSettings& settings) const = 0;
    /// Takes all texts anew, in the language chosen last.
    virtual void retranslate() = 0;
    /// Another driver or board is chosen, or the same one was looked at anew: lists are filled again, and what the
    /// board does not offer is switched off, with the reason as hint. Emits no signal.
    virtual void boardChanged(BoardSelection& /*selection*/) {}
    /// What it sets is the board's: it can't be changed while the board runs.
    [[nodiscard]] virtual bool concernsBoard() const { return true; }
    /// While a recording runs nothing can be changed, and the hints say so.
    virtual void setLocked(bool locked);
    [[nodiscard]] bool locked() const { return locked_; }

signals:
    /// The operator has changed a setting.
    void changed();

protected:
    /// From now on the panel decides whether the control can be used and what its hint says.
    void manage(QWidget* control, bool lockable = true);
    /// The hint of a control that can be used.
    void setHint(QWidget* control, const QString& hint);
    /// A control that can't be used because of the board (`TextId::NotOfferedHint`) or of other settings.
    void setAvailable(QWidget* control, bool available, const QString& reason);

private:
    struct Control {
        bool lockable = true;
        bool available = true;
        QString hint;
        QString reason;  ///< why it is not available
    };
    void refresh(QWidget* widget, const Control& control) const;

    std::map<QWidget*, Control> controls_;
    bool locked_ = false;
};

}  // namespace tarno2
