#include "measure/spectrum_figures.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tarno2 {

namespace {

constexpr double kAboveMedian = 16.0;
constexpr double kRounding = 1e-22;  // of the largest bin: what is below may be the transform's own
constexpr size_t kLastHarmonic = 10;
constexpr int kHalvings = 40;

/// One channel's bins.
class Bins {
public:
    Bins(const Spectrum& spectrum, size_t channel)
        : powers_(spectrum.powers[channel]), window_(spectrum.window), lobe_(mainLobe(spectrum.window)) {}

    [[nodiscard]] std::vector<size_t> peaks() const {
        std::vector<double> sorted = powers_;
        const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
        std::ranges::nth_element(sorted, middle);
        const double largest = *std::ranges::max_element(powers_);
        const double least = std::max(*middle * kAboveMedian, largest * kRounding);
        std::vector<size_t> found;
        for (size_t i = lobe_ + 1; i + 1 < powers_.size(); ++i) {
            if (powers_[i] > least && isHighest(i)) {
                found.push_back(i);
            }
        }
        std::ranges::sort(found, [this](size_t one, size_t other) { return powers_[one] > powers_[other]; });
        return found;
    }

    // A sine between two bins is seen in both; how much less in the one tells its place, and so its power.
    [[nodiscard]] SpectrumPeak between(size_t bin, double binWidth) const {
        const bool above = powers_[bin + 1] > powers_[bin - 1];
        const double neighbour = above ? powers_[bin + 1] : powers_[bin - 1];
        const double ratio = std::sqrt(neighbour / powers_[bin]);
        double low = 0.0;
        double high = 0.5;
        for (int i = 0; i < kHalvings; ++i) {
            const double middle = (low + high) / 2.0;
            const double seen = windowResponse(window_, 1.0 - middle) / windowResponse(window_, middle);
            (seen < ratio ? low : high) = middle;
        }
        const double loss = windowResponse(window_, low);
        return {(static_cast<double>(bin) + (above ? low : -low)) * binWidth, powers_[bin] / (loss * loss)};
    }

    /// The strongest bin beside those of the constant part.
    [[nodiscard]] size_t strongest() const {
        const auto begin = powers_.begin() + static_cast<std::ptrdiff_t>(std::min(lobe_ + 1, powers_.size() - 1));
        return static_cast<size_t>(std::max_element(begin, powers_.end()) - powers_.begin());
    }
    [[nodiscard]] size_t lobe() const { return lobe_; }
    [[nodiscard]] size_t size() const { return powers_.size(); }
    [[nodiscard]] double of(size_t bin) const { return powers_[bin]; }
    [[nodiscard]] size_t from(size_t bin) const { return bin - std::min(bin, lobe_); }
    [[nodiscard]] size_t upTo(size_t bin) const { return std::min(bin + lobe_ + 1, powers_.size()); }

private:
    [[nodiscard]] bool isHighest(size_t bin) const {
        for (size_t i = from(bin); i < upTo(bin); ++i) {
            if (powers_[i] > powers_[bin] || (powers_[i] == powers_[bin] && i < bin)) {
                return false;
            }
        }
        return true;
    }

    const std::vector<double>& powers_;
    SpectrumWindow window_;
    size_t lobe_;
};

enum Kind : uint8_t { Noise, Line, Harmonic, Constant };

// Beside its main lobe a line falls further by the window's own side lobes, down to the noise. What falls without a
// rise is taken for that and counts for nothing, as the constant part does; so does noise close about a line that is as
// smooth as they are.
void leaveOutSkirts(const Bins& bins, std::vector<Kind>& kinds) {
    for (size_t i = 1; i < kinds.size(); ++i) {
        if (kinds[i] == Noise && kinds[i - 1] != Noise && bins.of(i) < bins.of(i - 1)) {
            kinds[i] = Constant;
        }
    }
    for (size_t i = kinds.size() - 1; i-- > 0;) {
        if (kinds[i] == Noise && kinds[i + 1] != Noise && bins.of(i) < bins.of(i + 1)) {
            kinds[i] = Constant;
        }
    }
}

void takeRatios(const Bins& bins, double place, size_t strongest, SpectrumFigures& out) {
    std::vector<Kind> kinds(bins.size(), Noise);
    const auto mark = [&](size_t bin, Kind kind) {
        for (size_t i = bins.from(bin); i < bins.upTo(bin); ++i) {
            kinds[i] = kind;
        }
    };
    for (size_t harmonic = 2; harmonic <= kLastHarmonic; ++harmonic) {
        const auto bin = static_cast<size_t>(std::llround(place * static_cast<double>(harmonic)));
        if (bin + bins.lobe() < bins.size()) {
            mark(bin, Harmonic);
        }
    }
    mark(0, Constant);
    mark(strongest, Line);
    leaveOutSkirts(bins, kinds);
    double sums[4] = {};
    size_t counts[4] = {};
    double spurious = 0.0;
    for (size_t i = 0; i < bins.size(); ++i) {
        sums[kinds[i]] += bins.of(i);
        ++counts[kinds[i]];
        if (kinds[i] == Noise || kinds[i] == Harmonic) {
            spurious = std::max(spurious, bins.of(i));
        }
    }
    out.distortion = std::sqrt(sums[Harmonic] / sums[Line]);
    if (sums[Noise] > 0.0) {
        // Under the lines there is as much noise as beside them.
        const double noise = sums[Noise] * static_cast<double>(bins.size()) / static_cast<double>(counts[Noise]);
        out.signalToNoiseDb = 10.0 * std::log10(sums[Line] / noise);
    }
    if (spurious > 0.0) {
        out.spuriousFreeDb = 10.0 * std::log10(bins.of(strongest) / spurious);
    }
}

}  // namespace

SpectrumFigures figuresOf(const Spectrum& spectrum, size_t channel, size_t mostPeaks) {
    SpectrumFigures out;
    const Bins bins(spectrum, channel);
    const std::vector<size_t> peaks = bins.peaks();
    for (size_t i = 0; i < std::min(peaks.size(), mostPeaks); ++i) {
        out.peaks.push_back(bins.between(peaks[i], spectrum.binWidth));
    }
    std::ranges::stable_sort(out.peaks, std::ranges::greater(), &SpectrumPeak::power);
    // Something slower and stronger that is not told from the constant part would count as noise.
    if (!peaks.empty() && peaks.front() > 2 * bins.lobe() && bins.strongest() == peaks.front()) {
        takeRatios(bins, bins.between(peaks.front(), 1.0).frequency, peaks.front(), out);
    }
    return out;
}

}  // namespace tarno2
