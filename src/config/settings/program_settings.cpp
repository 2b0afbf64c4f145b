#include "config/settings/program_settings.h"

namespace tarno2 {

namespace {

// Colours (0xBBGGRR), neighbours apart. Each has a contrast of 3 and more against a white and a dark ground, and any
// two differ, also to those who do not see red, green or blue.
constexpr std::array<int32_t, 8> kColors = {0xF0961E, 0x0F78E1, 0x3C8700, 0xC31ED2,
                                            0x8778C3, 0xFF0FB4, 0x4B2DFF, 0x966996};

// Those of settings without a palette's number.
constexpr std::array<int32_t, 10> kEarlierColors = {0xB4771F, 0x2728D6, 0x2CA02C, 0xBD6794, 0x0E7FFF,
                                                    0x4B568C, 0xC277E3, 0x7F7F7F, 0x22BDBC, 0xCFBE17};
constexpr int32_t kPalette = 1;

// Colours (0xBBGGRR) of the digital lines: few, but told apart by the colour-blind too.
constexpr std::array<int32_t, 7> kLineColors = {0xB27200, 0x009FE6, 0x739E00, 0x005ED5, 0xE9B456, 0xA779CC, 0x000000};

}  // namespace

std::span<const int32_t> channelPalette() {
    return kColors;
}

void ProgramSettings::renewColors() {
    for (size_t i = 0; i < channels.size() && palette < kPalette; ++i) {
        if (channels[i].color == kEarlierColors[i % kEarlierColors.size()]) {
            channels[i].color = kColors[i % kColors.size()];
        }
    }
    palette = kPalette;
}

ProgramSettings::ProgramSettings() {
    for (size_t i = 0; i < channels.size(); ++i) {
        channels[i].color = kColors[i % kColors.size()];
    }
    channels[0].active = true;
    // The lines are stacked from the bottom, each a tenth of the height. Where the height is full the next stack begins
    // a little higher than the one before, so that no line covers another.
    constexpr int32_t kTenth = 200;
    constexpr int32_t kStack = 1850;
    for (size_t i = 0; i < digitalLines.size(); ++i) {
        const int32_t zeroLevel = -1000 + static_cast<int32_t>(i) * kTenth % kStack;
        digitalLines[i] = {zeroLevel, kTenth / 2, kLineColors[i % kLineColors.size()]};
    }
}

}  // namespace tarno2
