#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>

#include "config/settings/program_settings.h"

namespace tarno2::test {
namespace {

using Light = std::array<double, 3>;
using Matrix = std::array<Light, 3>;

// What is left of linear red, green and blue when one kind of cones is missing: G. M. Machado, M. M. Oliveira, L. A. F.
// Fernandes, "A Physiologically-based Model for Simulation of Color Vision Deficiency", IEEE Transactions on
// Visualization and Computer Graphics 15 (6), 2009, severity 1.0.
constexpr std::array<Matrix, 4> kSights = {
    {{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
     {{{0.152286, 1.052583, -0.204868}, {0.114503, 0.786281, 0.099216}, {-0.003882, -0.048116, 1.051998}}},
     {{{0.367322, 0.860646, -0.227968}, {0.280085, 0.672501, 0.047413}, {-0.011820, 0.042940, 0.968881}}},
     {{{1.255528, -0.076749, -0.178779}, {-0.078411, 0.930809, 0.147602}, {0.004733, 0.691367, 0.303900}}}}};

Light lightOf(int32_t bgr) {
    Light light{};
    for (size_t i = 0; i < light.size(); ++i) {
        const double part = (bgr >> (8 * i) & 0xFF) / 255.0;
        light[i] = part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    }
    return light;
}

double luminance(int32_t bgr) {
    const Light light = lightOf(bgr);
    return 0.2126 * light[0] + 0.7152 * light[1] + 0.0722 * light[2];
}

double contrast(int32_t a, int32_t b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

/// CIE L*a*b* of what is seen, white of D65.
Light labOf(const Light& light, const Matrix& sight) {
    Light seen{};
    for (size_t i = 0; i < seen.size(); ++i) {
        const Light& row = sight[i];
        seen[i] = std::clamp(row[0] * light[0] + row[1] * light[1] + row[2] * light[2], 0.0, 1.0);
    }
    const auto part = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0; };
    const double x = part((0.4124564 * seen[0] + 0.3575761 * seen[1] + 0.1804375 * seen[2]) / 0.95047);
    const double y = part(0.2126729 * seen[0] + 0.7151522 * seen[1] + 0.0721750 * seen[2]);
    const double z = part((0.0193339 * seen[0] + 0.1191920 * seen[1] + 0.9503041 * seen[2]) / 1.08883);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

TEST(Palette, IsToldApartByEverybodyOnLightAndOnDark) {
    constexpr int32_t kWhite = 0xFFFFFF;
    constexpr int32_t kDark = 0x292623;  // of usual dark themes
    const auto palette = channelPalette();
    for (size_t i = 0; i < palette.size(); ++i) {
        EXPECT_GE(contrast(palette[i], kWhite), 3.0) << i;
        EXPECT_GE(contrast(palette[i], kDark), 3.0) << i;
        for (size_t j = 0; j < i; ++j) {
            for (const Matrix& sight : kSights) {
                const Light a = labOf(lightOf(palette[i]), sight);
                const Light b = labOf(lightOf(palette[j]), sight);
                EXPECT_GT(std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]), 20.0) << i << " " << j;
            }
        }
    }
}

TEST(Palette, ReplacesOldDefaultsOnceAndNothingThatWasChosen) {
    constexpr int32_t kOldBlue = 0xB4771F;
    ProgramSettings settings;
    EXPECT_EQ(settings.channels[8].color, channelPalette()[0]);
    settings.channels[0].color = kOldBlue;
    settings.channels[1].color = kOldBlue;  // chosen: the old default of another channel
    settings.channels[2].color = 0x123456;
    settings.renewColors();
    EXPECT_EQ(settings.channels[0].color, channelPalette()[0]);
    EXPECT_EQ(settings.channels[1].color, kOldBlue);
    EXPECT_EQ(settings.channels[2].color, 0x123456);
    settings.channels[0].color = kOldBlue;
    settings.renewColors();
    EXPECT_EQ(settings.channels[0].color, kOldBlue) << "chosen since";
}

}  // namespace
}  // namespace tarno2::test
