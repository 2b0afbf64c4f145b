#pragma once

#include <QProxyStyle>

namespace tarno2 {

/// The look of controls that all systems have, with what it draws too faintly made clear: a ring around what has the
/// keys, and the edges of boxes to tick on a dark ground. Window thread.
class WindowStyle : public QProxyStyle {
public:
    WindowStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
};

}  // namespace tarno2
