#include "ui/color_scheme.h"

#include <QApplication>
#include <QPalette>

#include "ui/window_style.h"

namespace tarno2 {

namespace {

/// The colours that a scheme is made of; the letters have a contrast of 4.5 and more on their grounds.
struct Scheme {
    QRgb window;
    QRgb base;
    QRgb alternate;
    QRgb button;
    QRgb text;
    QRgb faint;  ///< of what can't be used
    QRgb highlight;
    QRgb highlightedText;
    QRgb link;
};

constexpr Scheme kLight = {0xFFF2F2F2, 0xFFFFFFFF, 0xFFF6F7F8, 0xFFECECEC, 0xFF1A1A1A,
                           0xFF6A6A6A, 0xFF1F6FB4, 0xFFFFFFFF, 0xFF0B57A4};
constexpr Scheme kDark = {0xFF2B2D30, 0xFF1E1F22, 0xFF26282B, 0xFF3A3D41, 0xFFE8E8E8,
                          0xFFA0A4A8, 0xFF2F6EA8, 0xFFFFFFFF, 0xFF7FB8F0};

QPalette paletteOf(const Scheme& scheme) {
    QPalette palette{QColor(scheme.button), QColor(scheme.window)};
    const auto set = [&palette](std::initializer_list<QPalette::ColorRole> roles, QRgb color) {
        for (const QPalette::ColorRole role : roles) {
            palette.setColor(role, QColor(color));
        }
    };
    set({QPalette::Window}, scheme.window);
    set({QPalette::Base}, scheme.base);
    set({QPalette::AlternateBase}, scheme.alternate);
    set({QPalette::Button, QPalette::ToolTipBase}, scheme.button);
    set({QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}, scheme.text);
    set({QPalette::PlaceholderText}, scheme.faint);
    set({QPalette::Highlight}, scheme.highlight);
    set({QPalette::HighlightedText}, scheme.highlightedText);
    set({QPalette::Link, QPalette::LinkVisited}, scheme.link);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(scheme.faint));
    }
    return palette;
}

}  // namespace

void applyColorScheme(int32_t scheme) {
    static const QString kSystemStyle = QApplication::style()->objectName();
    static int32_t applied = -1;
    if (scheme == applied) {
        return;
    }
    applied = scheme;
    // Not every system's own style can be given colours.
    if (scheme != 0 || kSystemStyle == QLatin1String("fusion")) {
        QApplication::setStyle(new WindowStyle);
    } else {
        QApplication::setStyle(kSystemStyle);
    }
    QApplication::setPalette(scheme == 0 ? QPalette() : paletteOf(scheme == 1 ? kLight : kDark));
}

}  // namespace tarno2
