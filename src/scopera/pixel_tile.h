#pragma once

#include <algorithm>
#include <vector>

#include "scopera/curve_raster.h"

namespace tarno2 {

/// Calls `fill(x, pixels)` for each column of the target, with its pixels one below the other, all transparent. They
/// are filled in a small memory and then turned into rows: writing down the columns of a whole picture would touch
/// another cache line with each pixel.
template <typename Fill>
void fillColumns(const PixelTarget& target, Fill fill) {
    constexpr size_t kTileWidth = 16;
    // An odd count of cache lines, so that the columns don't compete for the same ones.
    const size_t stride = 16 * (((target.height + 15) / 16) | 1);
    std::vector<uint32_t> tile(stride * kTileWidth);
    for (size_t left = 0; left < target.width; left += kTileWidth) {
        const size_t width = std::min(kTileWidth, target.width - left);
        for (size_t i = 0; i < width; ++i) {
            std::fill_n(tile.data() + i * stride, target.height, 0U);
            fill(left + i, tile.data() + i * stride);
        }
        for (size_t row = 0; row < target.height; ++row) {
            uint32_t* const pixels = target.pixels + row * target.stride + left;
            for (size_t i = 0; i < width; ++i) {
                pixels[i] = tile[i * stride + row];
            }
        }
    }
}

}  // namespace tarno2
