// Letters and their grounds, as they are painted.

#include <QHash>
#include <algorithm>
#include <cmath>

#include "tests/ui/main_window.h"
#include "ui/color_scheme.h"

namespace tarno2::test {
namespace {

class WindowColors : public MainWindow {
protected:
    ~WindowColors() override {
        drop();
        applyColorScheme(0);
    }
};

/// Relative luminance as the Web Content Accessibility Guidelines 2.1 define it.
double luminance(QRgb color) {
    const auto linear = [](int part) {
        const double value = part / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb a, QRgb b) {
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

/// The ground of a control is the colour that it has most of; its letters are what differs most from that.
double paintedContrast(QWidget& widget) {
    const QImage image = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    QHash<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            ++counts[image.pixel(x, y)];
        }
    }
    const QRgb ground = std::max_element(counts.begin(), counts.end()).key();
    double most = 1.0;
    for (auto each = counts.cbegin(); each != counts.cend(); ++each) {
        most = std::max(most, contrast(ground, each.key()));
    }
    return most;
}

/// How far the picture of a control that takes the keys stands out from that of one that doesn't.
double focusContrast(QWidget& widget, QWidget& other) {
    other.setFocus(Qt::TabFocusReason);
    widget.window()->setAttribute(Qt::WA_KeyboardFocusChange);  // as pressing Tab does
    const QImage before = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    widget.setFocus(Qt::TabFocusReason);
    const QImage after = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    double most = 1.0;
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            if (before.pixel(x, y) != after.pixel(x, y)) {
                most = std::max(most, contrast(before.pixel(x, y), after.pixel(x, y)));
            }
        }
    }
    return widget.hasFocus() ? most : 0.0;
}

/// It paints letters, not a picture or dots.
bool hasLetters(const QWidget& widget, const QString& text) {
    const auto* button = qobject_cast<const QToolButton*>(&widget);
    return (button == nullptr || button->toolButtonStyle() != Qt::ToolButtonIconOnly || button->icon().isNull()) &&
           std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); });
}

template <typename Widget>
QStringList faint(QWidget& window) {
    QStringList found;
    for (auto* widget : window.findChildren<Widget*>()) {
        const bool letters = hasLetters(*widget, widget->text());
        const auto* button = qobject_cast<const QToolButton*>(widget);
        const bool icon = !letters && button != nullptr && !button->icon().isNull();
        if (widget->isVisible() && widget->isEnabled() && (letters || icon)) {
            if (const double is = paintedContrast(*widget); is < (letters ? 4.5 : 3.0)) {
                found << QStringLiteral("%1 \"%2\": %3").arg(widget->objectName(), widget->text()).arg(is);
            }
        }
    }
    return found;
}

/// Controls on which nobody sees that they take the keys.
QStringList unseenFocus(QWidget& window, QWidget& other, QWidget& another) {
    QStringList found;
    for (auto* widget : window.findChildren<QWidget*>()) {
        if (takesTab(*widget) && widget->isVisible() && widget->isEnabled()) {
            if (const double is = focusContrast(*widget, widget == &other ? another : other); is < 3.0) {
                found << QStringLiteral("%1: %2").arg(widget->objectName()).arg(is);
            }
        }
    }
    return found;
}

TEST_F(WindowColors, FocusIsSeenOnEveryControl) {
    wanted_.wish.synchro.SynchroAnalyzeMode = kModeSynchronisation;
    wanted_.viewCursors = wanted_.viewSpectrum = true;
    for (const int scheme : {0, 1, 2}) {
        wanted_.colorScheme = scheme;
        open();
        for (int panel = 1; panel <= 5; ++panel) {
            openPanel(panel);
            EXPECT_EQ(unseenFocus(form(), *find("StartButton"), *find("MonitorButton")).join('\n').toStdString(), "")
                << "scheme " << scheme << ", panel " << panel;
        }
        ASSERT_TRUE(close());
    }
}

TEST_F(WindowColors, LettersAndIconsStandOutInBothSchemes) {
    wanted_.wish.synchro.SynchroAnalyzeMode = kModeSynchronisation;
    for (const int scheme : {1, 2}) {
        wanted_.colorScheme = scheme;
        open();
        EXPECT_EQ(form().palette().color(QPalette::Window).lightness() < 128, scheme == 2);
        for (int panel = 1; panel <= 5; ++panel) {
            openPanel(panel);
            const QStringList found = faint<QLabel>(form()) + faint<QAbstractButton>(form()) + faint<QLineEdit>(form());
            EXPECT_EQ(found.join('\n').toStdString(), "") << "scheme " << scheme << ", panel " << panel;
        }
        record();
        EXPECT_EQ(faint<QLabel>(form()).join('\n').toStdString(), "") << scheme;
        press(Qt::Key_F6);
        ASSERT_TRUE(waitForState(TextId::StatusStopped));
        ASSERT_TRUE(close());
    }
}

}  // namespace
}  // namespace tarno2::test
