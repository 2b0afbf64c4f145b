#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "scopera/curve_raster.h"
#include "scopera/pixel_tile.h"

namespace tarno2 {

namespace {

/// What a veil adds to what lies behind it, and what it lets through, of 65536.
constexpr uint32_t kVeil = 26214;
constexpr uint32_t kThrough = 65536 - kVeil;
/// What is let through that is less shows no more.
constexpr uint32_t kNothingMore = 65536 / 256;

/// A set of the curves of a band, which are fewer than the columns of a frame can be.
class CurveSet {
public:
    void flip(size_t curve) { words_[curve / 64] ^= uint64_t{1} << (curve % 64); }
    [[nodiscard]] uint64_t word(size_t i) const { return words_[i]; }
    static constexpr size_t kWords = (kScoperaMaxColumns + 63) / 64;

private:
    std::array<uint64_t, kWords> words_{};
};

/// One column of pixels of a band: at which row which curve begins or ends, as a veil or opaque.
class Borders {
public:
    explicit Borders(size_t rows) : first_(rows + 1, -1), used_((rows + 64) / 64) {}

    void clear() {
        borders_.clear();
        std::ranges::fill(first_, -1);
        std::ranges::fill(used_, 0);
    }
    /// The curve is so in the rows from `begin` up to `end`.
    void add(size_t begin, size_t end, size_t curve, bool veil) {
        if (begin < end) {
            addBorder(begin, curve, veil);
            addBorder(end, curve, veil);
        }
    }
    /// Calls `fill(begin, end)` for each stretch of rows between borders where `opaque` and `veil` hold the curves
    /// that lie there.
    template <typename Fill>
    void sweep(CurveSet& opaque, CurveSet& veil, Fill fill) const {
        size_t begin = 0;
        for (size_t word = 0; word < used_.size(); ++word) {
            for (uint64_t bits = used_[word]; bits != 0; bits &= bits - 1) {
                const size_t row = word * 64 + static_cast<size_t>(std::countr_zero(bits));
                fill(begin, row);
                begin = row;
                for (int32_t i = first_[row]; i >= 0; i = borders_[static_cast<size_t>(i)].next) {
                    const Border& border = borders_[static_cast<size_t>(i)];
                    (border.veil ? veil : opaque).flip(border.curve);
                }
            }
        }
    }

private:
    struct Border {
        int32_t next;
        uint16_t curve;
        bool veil;
    };
    void addBorder(size_t row, size_t curve, bool veil) {
        borders_.push_back({first_[row], static_cast<uint16_t>(curve), veil});
        first_[row] = static_cast<int32_t>(borders_.size() - 1);
        used_[row / 64] |= uint64_t{1} << (row % 64);
    }

    std::vector<Border> borders_;
    std::vector<int32_t> first_;  ///< of a row's borders; -1: none
    std::vector<uint64_t> used_;
};

uint32_t channel(uint32_t argb, int shift) {
    return argb >> shift & 0xFF;
}

/// The pixel of a row where these curves lie, premultiplied. Bits are taken from the front curve backward, until
/// nothing behind can be seen.
uint32_t pixelOf(const std::vector<BandCurve>& curves, const CurveSet& opaque, const CurveSet& veil) {
    uint32_t left = 65536;
    uint32_t red = 0;
    uint32_t green = 0;
    uint32_t blue = 0;
    for (size_t word = 0; word < CurveSet::kWords && left > kNothingMore; ++word) {
        for (uint64_t bits = opaque.word(word) | veil.word(word); bits != 0 && left > kNothingMore; bits &= bits - 1) {
            const uint64_t bit = bits & (~bits + 1);
            const uint32_t argb = curves[word * 64 + static_cast<size_t>(std::countr_zero(bits))].argb;
            const bool covers = (opaque.word(word) & bit) != 0;
            const uint32_t part = covers ? left : static_cast<uint32_t>(uint64_t{left} * kVeil >> 16);
            red += channel(argb, 16) * part;
            green += channel(argb, 8) * part;
            blue += channel(argb, 0) * part;
            left = covers ? 0 : static_cast<uint32_t>(uint64_t{left} * kThrough >> 16);
        }
    }
    const uint32_t alpha = (65536 - left) * 255;
    return alpha >> 16 << 24 | red >> 16 << 16 | green >> 16 << 8 | blue >> 16;
}

/// From the first to the last row, rows counted from the top of the band. Empty: first > last.
struct RowSpan {
    double first = 1.0;
    double last = 0.0;
};

/// Rows of the curve's spans from the column `begin` up to `end`: of all of them together, or of what they share.
RowSpan rowsOf(const PixelSpans& spans, const BandCurve& curve, size_t begin, size_t end, bool shared) {
    CodeSpan codes;
    bool first = true;
    for (size_t x = begin; x < end; ++x) {
        const CodeSpan& span = spans.at(x)[curve.column];
        if (shared && !first) {
            codes.low = std::max(codes.low, span.low);
            codes.high = std::min(codes.high, span.high);
        } else if (!span.empty()) {
            codes.include(span.low);
            codes.include(span.high);
        }
        first = false;
    }
    if (codes.empty()) {
        return {};
    }
    const double a = codes.low * curve.slope + curve.origin;
    const double b = codes.high * curve.slope + curve.origin;
    return {std::min(a, b), std::max(a, b)};
}

class SpanColumn {
public:
    SpanColumn(const PixelSpans& spans, const BandCurves& band)
        : spans_(spans), band_(band), borders_(band.end - band.first) {}

    void fill(size_t x, uint32_t* pixels) {
        borders_.clear();
        for (size_t i = 0; i < band_.curves.size(); ++i) {
            addCurve(x, i);
        }
        CurveSet opaque;
        CurveSet veil;
        borders_.sweep(opaque, veil, [&](size_t begin, size_t end) {
            if (begin < end) {
                const uint32_t pixel = pixelOf(band_.curves, opaque, veil);
                std::fill(pixels + band_.first + begin, pixels + band_.first + end, pixel);
            }
        });
    }

private:
    /// Where the column and both beside it all have the curve, it is a veil, but for a rim of its thickness.
    void addCurve(size_t x, size_t index) {
        const BandCurve& curve = band_.curves[index];
        const size_t thick = curve.thickness;
        const size_t from = x + 1 >= thick ? x + 1 - thick : 0;
        const size_t end = std::min(x + 1, spans_.pixels());
        const RowSpan all = from < end ? rowsOf(spans_, curve, from, end, false) : RowSpan{};
        if (all.first > all.last) {
            return;
        }
        // Half a row more, so that cutting off the fraction rounds.
        const size_t begin = rowOf(all.first + 0.5);
        const size_t past = rowOf(all.last + 0.5 + static_cast<double>(thick));
        const bool inner = from >= 1 && end + 1 <= spans_.pixels();
        const RowSpan common = inner ? rowsOf(spans_, curve, from - 1, end + 1, true) : RowSpan{};
        const size_t veilBegin = common.first < common.last ? rowOf(common.first + 0.5) + thick : past;
        const size_t veilEnd = common.first < common.last ? rowOf(common.last + 0.5) : past;
        if (veilBegin < veilEnd && veilBegin >= begin && veilEnd <= past) {
            borders_.add(begin, veilBegin, index, false);
            borders_.add(veilBegin, veilEnd, index, true);
            borders_.add(veilEnd, past, index, false);
        } else {
            borders_.add(begin, past, index, false);
        }
    }
    /// Counted from the top of the band, and within it.
    [[nodiscard]] size_t rowOf(double row) const {
        const double inBand = std::floor(row) - static_cast<double>(band_.first);
        const auto rows = static_cast<double>(band_.end - band_.first);
        // Written so that what is no number becomes 0.
        return inBand > 0.0 ? static_cast<size_t>(std::min(inBand, rows)) : 0;
    }

    const PixelSpans& spans_;
    const BandCurves& band_;
    Borders borders_;
};

}  // namespace

void drawSpans(const PixelSpans& spans, const std::vector<BandCurves>& bands, const PixelTarget& target) {
    std::vector<SpanColumn> columns;
    columns.reserve(bands.size());
    for (const BandCurves& band : bands) {
        columns.emplace_back(spans, band);
    }
    fillColumns(target, [&](size_t x, uint32_t* pixels) {
        for (SpanColumn& column : columns) {
            column.fill(x, pixels);
        }
    });
}

}  // namespace tarno2
