#pragma once

#include <QString>
#include <optional>
#include <vector>

#include <tarno2/ISCOPERA.h>

namespace tarno2 {

/// A picture of the signal, and what is told above it when there are several.
struct ViewPicture {
    QString title;
    ISCOPERA* scoper;
};

/// A file or folder that can't be written, and why in the system's words.
struct PictureProblem {
    QString file;
    QString why;
};

/// Saves what is shown as one picture, the first at the top: SVG when the name ends in ".svg", else PNG. One alone has
/// no title. When that can't be done, what was there stays. Window thread.
[[nodiscard]] std::optional<PictureProblem> savePictures(const std::vector<ViewPicture>& pictures, const QString& file);
/// Puts it on the clipboard, as pixels and as SVG. Window thread.
[[nodiscard]] std::optional<PictureProblem> copyPictures(const std::vector<ViewPicture>& pictures);

}  // namespace tarno2
