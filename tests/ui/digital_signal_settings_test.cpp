#include "ui/digital_signal_settings.h"

#include <QColorDialog>
#include <array>
#include <set>

#include "config/settings/program_settings.h"
#include "tests/ui/widgets.h"
#include "ui/color.h"

namespace tarno2::test {
namespace {

class DigitalSignalSettings : public ::testing::Test {
protected:
    void selectLine(int line) {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->visualItemRect(list()->item(line)).center());
    }
    /// Opens the colour dialog by its button and ends it with a key.
    void chooseColor(const QColor& color, Qt::Key end) {
        QTimer::singleShot(0, [=] {
            auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->setCurrentColor(color);
            QTest::keyClick(dialog, end);
        });
        QTest::mouseClick(button(), Qt::LeftButton);
    }
    QListWidget* list() { return window_.findChild<QListWidget*>("DigitalLineList"); }
    QSlider* zero() { return window_.findChild<QSlider*>("ZeroLevelTrack"); }
    QSlider* amplitude() { return window_.findChild<QSlider*>("AmpLevelTrack"); }
    QLabel* swatch() { return window_.findChild<QLabel*>("DigitalColorImage"); }
    QPushButton* button() { return window_.findChild<QPushButton*>("ChooseColorButton"); }
    QColor swatchColor() { return swatch()->palette().color(QPalette::Window); }

    std::array<DigitalLineSettings, 2> lines_ = {{{-500, 250, 0x112233}, {100, 40, 0x445566}}};
    int repaints_ = 0;
    std::vector<std::string> names_ = {"gate"};
    T_DigitalSignalSettings window_{lines_, names_, [this] { ++repaints_; }};
};

TEST_F(DigitalSignalSettings, NothingCanBeChangedWithoutALine) {
    window_.show();
    ASSERT_EQ(list()->count(), 2);
    EXPECT_EQ(list()->item(1)->text(), "1");
    EXPECT_FALSE(zero()->isEnabled() || amplitude()->isEnabled() || button()->isEnabled() || swatch()->isVisible());
    zero()->setValue(7);
    amplitude()->setValue(7);
    window_.ChooseColorButtonClick();
    EXPECT_EQ(repaints_, 0);
    EXPECT_EQ(lines_[0].zeroLevel, -500);
}

TEST_F(DigitalSignalSettings, LinesHaveNames) {
    window_.show();
    auto* edit = window_.findChild<QLineEdit*>("LineNameEdit");
    ASSERT_NE(edit, nullptr);
    EXPECT_FALSE(edit->isEnabled());
    EXPECT_EQ(list()->item(0)->text(), "0 gate");
    selectLine(1);
    EXPECT_EQ(edit->text(), "");
    QTest::keyClicks(edit, " a;b\t");
    EXPECT_EQ(names_, (std::vector<std::string>{"gate", "ab"})) << "what no list can hold is not typed";
    EXPECT_EQ(list()->item(1)->text(), "1 ab");
    selectLine(0);
    EXPECT_EQ(edit->text(), "gate");
}

TEST_F(DigitalSignalSettings, EveryChangeIsDrawnAtOnceAndOnlyOfTheLineSelected) {
    window_.show();
    selectLine(0);
    EXPECT_TRUE(zero()->isEnabled() && amplitude()->isEnabled() && button()->isEnabled() && swatch()->isVisible());
    EXPECT_EQ(zero()->value(), -500);
    EXPECT_EQ(amplitude()->value(), 250);
    EXPECT_EQ(swatchColor(), QColor(0x33, 0x22, 0x11));
    EXPECT_EQ(repaints_, 0);

    QTest::keyClick(zero(), Qt::Key_Home);
    QTest::keyClick(amplitude(), Qt::Key_End);
    EXPECT_EQ(lines_[0].zeroLevel, -1000);
    EXPECT_EQ(lines_[0].amplitude, 1000);
    EXPECT_EQ(repaints_, 2);
    QTest::keyClick(zero(), Qt::Key_Right);
    EXPECT_EQ(lines_[0].zeroLevel, -999);

    selectLine(1);
    EXPECT_EQ(zero()->value(), 100);
    EXPECT_EQ(lines_[1].zeroLevel, 100);
    EXPECT_EQ(lines_[0].zeroLevel, -999);
    EXPECT_EQ(repaints_, 3);
}

TEST_F(DigitalSignalSettings, OnlyAConfirmedColorIsTaken) {
    window_.show();
    selectLine(1);
    chooseColor(QColor(1, 2, 3), Qt::Key_Escape);
    EXPECT_EQ(lines_[1].color, 0x445566);
    EXPECT_EQ(repaints_, 0);
    chooseColor(QColor(1, 2, 3), Qt::Key_Return);
    EXPECT_EQ(lines_[1].color, 0x030201);
    EXPECT_EQ(swatchColor(), QColor(1, 2, 3));
    EXPECT_EQ(repaints_, 1);
}

}  // namespace
}  // namespace tarno2::test
