#include "config/program_settings.h"

namespace tarno2 {

namespace {

// Colours (0xBBGGRR) that are told apart on a white ground; neighbours differ.
constexpr std::array<int32_t, 10> kColors = {0xB4771F, 0x2728D6, 0x2CA02C, 0xBD6794, 0x0E7FFF,
                                             0x4B568C, 0xC277E3, 0x7F7F7F, 0x22BDBC, 0xCFBE17};

}  // namespace

ProgramSettings::ProgramSettings() {
    for (size_t i = 0; i < channels.size(); ++i) {
        channels[i].color = kColors[i % kColors.size()];
    }
    channels[0].active = true;
    // The lines lie one above the other over the whole height of the view.
    constexpr int32_t kStep = 2000 / static_cast<int32_t>(kDigitalLineCount);
    for (size_t i = 0; i < digitalLines.size(); ++i) {
        digitalLines[i] = {-1000 + static_cast<int32_t>(i) * kStep, kStep / 3, kColors[i % kColors.size()]};
    }
}

}  // namespace tarno2
