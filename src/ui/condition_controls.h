#pragma once

#include <QPushButton>
#include <vector>

#include "sync/synchro_check.h"
#include "sync/synchro_form.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMenu;

namespace tarno2 {

/// A label that keeps room for so many lines, so that nothing moves when its text changes.
[[nodiscard]] QLabel* makeNote(const char* name, int lines, QWidget* parent);

/// A button that shows what was chosen in its popup menu. Items carry their tags as data; several buttons may share a
/// popup.
class TaggedButton : public QPushButton {
    Q_OBJECT

public:
    TaggedButton(const char* name, QMenu* popup, QWidget* parent);

    [[nodiscard]] QMenu* popup() const { return popup_; }
    [[nodiscard]] int32_t tag() const { return tag_; }
    /// Takes over the item of that tag with its text.
    void setTag(int32_t tag);

protected:
    /// With the arrow of a button that has a menu.
    void initStyleOption(QStyleOptionButton* option) const override;

private:
    QMenu* popup_;
    int32_t tag_ = 0;
};

/// The controls of one condition on the level of a channel, in a box. A level of a channel that has a unit is told in
/// that unit; what is read from the controls and written into them is of its volts, as it is kept. Where its values
/// fall while the volts rise, above is below, and a rising edge a falling one.
struct AnalogConditionControls {
    struct Names {
        const char* box;
        const char* mode;
        const char* channel;
        const char* value;
        const char* unit;
    };

    AnalogConditionControls(const Names& names, QMenu* modes, QMenu* units, QWidget* parent);

    void setTexts(const QString& title);
    /// Lists the active channels; what the box says stays, a level as so many volts.
    void fillChannels(const SynchroBoardFacts& board);
    void write(const AnalogConditionForm& form);
    [[nodiscard]] AnalogConditionForm read() const;
    /// Tells the chosen channel's gain and range and the threshold's code, or what is wrong with them. When another
    /// channel was chosen the level stays as it was typed, and is in the unit of that one.
    void showFacts(const SynchroBoardFacts& board);

    QGroupBox* box;
    TaggedButton* mode;
    QLabel* channelLabel;
    QComboBox* channel;
    QLabel* channelFacts;
    QLabel* valueLabel;
    QLineEdit* value;
    TaggedButton* unit;
    QLabel* code;

private:
    void setLabel(const ChannelLabel& label);

    std::vector<SynchroBoardFacts::Channel> channels_;
    ChannelLabel label_;  ///< of the channel whose level the value is
    struct Written {
        AnalogConditionForm form;
        ChannelLabel label;
        QString text;  ///< of the value, in the unit
    };
    Written written_;  ///< what was shown last
};

/// The controls of one condition on a bit of the port, in a box.
struct PortConditionControls {
    struct Names {
        const char* box;
        const char* mode;
        const char* bit;
    };

    PortConditionControls(const Names& names, QMenu* modes, QWidget* parent);

    void setTexts(const QString& title);
    /// Lists the bits of so many lines, all when the board tells none.
    void fillBits(uint32_t lines) const;
    void write(const PortConditionForm& form) const;
    [[nodiscard]] PortConditionForm read() const;

    QGroupBox* box;
    TaggedButton* mode;
    QLabel* bitLabel;
    QComboBox* bit;
};

}  // namespace tarno2
