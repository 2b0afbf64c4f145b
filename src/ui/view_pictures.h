#pragma once

#include <QString>
#include <vector>

#include <tarno2/ISCOPERA.h>

namespace tarno2 {

/// A picture of the signal, and what is told above it when there are several.
struct ViewPicture {
    QString title;
    ISCOPERA* scoper;
};

/// Saves what is shown as one picture, the first at the top: SVG when the name ends in ".svg", else PNG. One alone has
/// no title. False when the file can't be written, and what was there stays. Window thread.
[[nodiscard]] bool savePictures(const std::vector<ViewPicture>& pictures, const QString& file);
/// Puts it on the clipboard, as pixels and as SVG. False when that can't be done. Window thread.
bool copyPictures(const std::vector<ViewPicture>& pictures);

}  // namespace tarno2
