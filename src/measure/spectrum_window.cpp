#include "measure/spectrum_window.h"

#include <cmath>
#include <numbers>
#include <span>

namespace tarno2 {

namespace {

constexpr double kRectangular[] = {1.0};
constexpr double kHann[] = {0.5, 0.5};
constexpr double kBlackmanHarris[] = {0.35875, 0.48829, 0.14128, 0.01168};
constexpr double kFlatTop[] = {0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368};

/// Each window is a sum of cosines with these amplitudes, of alternating sign.
std::span<const double> termsOf(SpectrumWindow window) {
    switch (window) {
        case SpectrumWindow::FlatTop:
            return kFlatTop;
        case SpectrumWindow::BlackmanHarris:
            return kBlackmanHarris;
        case SpectrumWindow::Rectangular:
            return kRectangular;
        default:
            return kHann;
    }
}

double sinc(double x) {
    const double angle = std::numbers::pi * x;
    return std::abs(x) < 1e-9 ? 1.0 : std::sin(angle) / angle;
}

}  // namespace

std::vector<double> windowSamples(SpectrumWindow window, size_t length) {
    const std::span<const double> terms = termsOf(window);
    std::vector<double> samples(length, 0.0);
    for (size_t i = 0; i < length; ++i) {
        const double turn = 2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(length);
        for (size_t k = 0; k < terms.size(); ++k) {
            samples[i] += (k % 2 == 0 ? terms[k] : -terms[k]) * std::cos(turn * static_cast<double>(k));
        }
    }
    return samples;
}

double coherentGain(SpectrumWindow window) {
    return termsOf(window).front();
}

double noiseBandwidth(SpectrumWindow window) {
    const std::span<const double> terms = termsOf(window);
    double squares = terms[0] * terms[0];
    for (const double term : terms.subspan(1)) {
        squares += term * term / 2.0;
    }
    return squares / (terms[0] * terms[0]);
}

size_t mainLobe(SpectrumWindow window) {
    return termsOf(window).size();
}

double windowResponse(SpectrumWindow window, double bins) {
    const std::span<const double> terms = termsOf(window);
    double sum = terms[0] * sinc(bins);
    for (size_t k = 1; k < terms.size(); ++k) {
        const auto place = static_cast<double>(k);
        sum += terms[k] / 2.0 * (sinc(bins - place) + sinc(bins + place));
    }
    return sum / terms[0];
}

}  // namespace tarno2
