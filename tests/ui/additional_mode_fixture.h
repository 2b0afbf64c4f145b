#pragma once

#include <QScreen>
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "tests/ui/widgets.h"
#include "ui/additional_mode_window.h"

namespace tarno2::test {

/// A board with these channels, of 12 bits and with four lines.
inline AdditionalModeFacts additionalModeFacts(std::vector<SynchroBoardFacts::Channel> channels = {{3, 1, 10.0F},
                                                                                                   {7, 10, 10.0F}}) {
    AdditionalModeFacts result;
    result.board.channels = std::move(channels);
    result.board.minimumCode = -2048;
    result.board.maximumCode = 2047;
    result.board.useDigitalPort = true;
    result.digitalLines = 4;
    result.framesPerSecond = 10000.0;
    return result;
}

/// The synchronisation window with that board, operated by mouse and keyboard.
class AdditionalMode : public ::testing::Test {
protected:
    AdditionalMode() {
        languageTable().select(kLanguageEnglish);
        settings_.AnalyzeAnalogStartChannel = settings_.SynchroAnalogChannelNumber = 3;
        window_ = std::make_unique<T_AdditionalModeWindow>(settings_, sizes_);
        window_->setFacts(additionalModeFacts());
    }

    void open() {
        window_->open();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }
    template <typename Widget>
    Widget* find(const char* name) {
        return findIn<Widget>(*window_, name);
    }
    /// The control of that name, which the operator has to be able to use.
    void expectUsable(const char* name) {
        ASSERT_TRUE(find<QWidget>(name)->isVisible() && find<QWidget>(name)->isEnabled()) << name;
    }
    void click(const char* name) {
        expectUsable(name);
        clickIn(*window_, name);
    }
    void type(const char* name, const char* text, bool enter = false) {
        expectUsable(name);
        typeIn(*window_, name, QString::fromUtf8(text), enter);
    }
    /// Opens the button's popup with the mouse and chooses the item of that number.
    void choose(const char* name, int tag) {
        click(name);
        auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(popup, nullptr) << name;
        const auto* button = find<QWidget>(name);
        const QPoint corner = button->mapToGlobal(QPoint(0, button->height()));
        const int room = button->screen()->geometry().right() + 1 - popup->width();
        EXPECT_EQ(popup->pos(), QPoint(std::min(corner.x(), room), corner.y())) << name;
        // A menu takes a click for the one that opened it until the mouse has moved some way.
        const QPoint item = popup->actionGeometry(popup->actions()[tag]).center();
        for (int away = 8; away >= 0; --away) {
            QTest::mouseMove(popup, item - QPoint(away, 0));
        }
        QTest::mouseClick(popup, Qt::LeftButton, {}, item);
        EXPECT_EQ(find<TaggedButton>(name)->tag(), tag) << name;
        EXPECT_EQ(find<TaggedButton>(name)->text(), popup->actions()[tag]->text());
    }
    /// Presses the letter that the control's text marks.
    void press(const char* name) {
        auto* button = find<QAbstractButton>(name);
        const QString text = button->text();
        const qsizetype mark = text.indexOf('&');
        ASSERT_GE(mark, 0) << name;
        QTest::keyClick(window_.get(), text[mark + 1].toLatin1(), Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([button] { return !button->isDown(); })) << "it is seen to be pressed";
    }
    QString typed(const char* name) { return find<QLineEdit>(name)->text(); }
    int bar(const char* name) { return find<QSlider>(name)->value(); }

    SynchroSettings settings_;
    SynchroSizes sizes_{250, 750};
    std::unique_ptr<T_AdditionalModeWindow> window_;
};

}  // namespace tarno2::test
