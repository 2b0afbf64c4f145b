#pragma once

#include <QCheckBox>

namespace tarno2 {

/// A check box for an option that not every board offers. Without it the box is empty, but what the operator wished is
/// kept for the next board.
class OptionBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

    [[nodiscard]] bool wish() const { return offered_ ? isChecked() : wish_; }
    void setWish(bool on) {
        wish_ = on;
        setChecked(offered_ && on);
    }
    [[nodiscard]] bool offered() const { return offered_; }
    void setOffered(bool offered) {
        const bool kept = wish();
        offered_ = offered;
        setWish(kept);
    }

private:
    bool wish_ = false;
    bool offered_ = true;
};

}  // namespace tarno2
