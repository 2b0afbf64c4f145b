#pragma once

#include <QColor>
#include <cstdint>

namespace tarno2 {

/// Colours between the settings (0xBBGGRR) and the windows.
[[nodiscard]] inline QColor fromBgr(int32_t color) {
    return {color & 0xFF, (color >> 8) & 0xFF, (color >> 16) & 0xFF};
}

[[nodiscard]] inline int32_t toBgr(const QColor& color) {
    return color.red() | (color.green() << 8) | (color.blue() << 16);
}

}  // namespace tarno2
