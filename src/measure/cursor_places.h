#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "measure/frame_span.h"

namespace tarno2 {

/// What stands at the left and at the right edge of a picture, frames.
struct PictureEdges {
    double low = 0.0;
    double high = 1.0;
    [[nodiscard]] double width() const { return high - low; }
};

/// Where two cursors along the time axis are: on the signal, with which they move, or on the screen, through which the
/// signal moves. One thread.
class CursorPlaces {
public:
    static constexpr size_t kCount = 2;

    /// At a third and two thirds of the picture, the first one being moved.
    void begin(const PictureEdges& picture);
    /// Whether both are outside the picture or upon each other, so that `begin` would help.
    [[nodiscard]] bool lost(const PictureEdges& picture) const;
    /// Keeps them where they are seen, from now on fixed on the screen, or on the signal. On the screen they come back
    /// to where they were on it before when one of them is outside the picture.
    void fixOnScreen(bool onScreen, const PictureEdges& picture);
    [[nodiscard]] bool onScreen() const { return onScreen_; }

    /// The frame at a cursor.
    [[nodiscard]] double frame(size_t cursor, const PictureEdges& picture) const;
    void place(size_t cursor, double frame, const PictureEdges& picture);

    /// The one that keys move.
    [[nodiscard]] size_t active() const { return active_; }
    void activate(size_t cursor) { active_ = cursor % kCount; }
    /// Moves the active one, within what is in the picture and among the frames that are there.
    void move(double frames, const PictureEdges& picture, uint64_t frameCount);

    /// Whether a cursor stands at one of so many frames.
    [[nodiscard]] bool onFrame(size_t cursor, const PictureEdges& picture, uint64_t frameCount) const;
    /// What lies between them: from the frame at the left one up to, but not including, the one at the right one; one
    /// frame at least, none before the first or beyond `frameCount`. Empty when there is none.
    [[nodiscard]] FrameSpan between(const PictureEdges& picture, uint64_t frameCount) const;

private:
    std::array<double, kCount> places_{};  ///< frames, or parts of the picture's width
    std::array<double, kCount> screen_{1.0 / 3.0,
                                       2.0 / 3.0};  ///< parts of the width, when they were on the screen last
    bool onScreen_ = false;
    size_t active_ = 0;
};

}  // namespace tarno2
