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
        if (widget->isVisible() && widget->isEnabled() && hasLetters(*widget, widget->text())) {
            if (const double is = paintedContrast(*widget); is < 4.5) {
                found << QStringLiteral("%1 \"%2\": %3").arg(widget->objectName(), widget->text()).arg(is);
            }
        }
    }
    return found;
}

TEST_F(WindowColors, LettersStandOutInBothSchemes) {
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
