#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "config/settings/settings_table.h"

// How the rows of the settings table reach their places: one function for each kind of place.

namespace tarno2::places {

using Settings = ProgramSettings;
using Wish = RecordingWish;
using Synchro = SynchroSettings;

inline constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
inline constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
inline constexpr double kAnyReal = std::numeric_limits<double>::lowest();
inline constexpr int32_t kLargestColor = 0xFFFFFF;
inline constexpr int32_t kLargestFont = 200;
inline constexpr int32_t kLastChannel = kMaximumChannelCount - 1;
inline constexpr int32_t kLastPortBit = 15;
inline constexpr int32_t kLastLine = 31;
inline constexpr int32_t kMostFrequencies = 1000;
inline constexpr int32_t kLargestBuffer = 0x500000;  // frames
inline constexpr int32_t kFarthestPixel = 100000;

/// The member that a path of members leads to: `member<&A::b, &B::c>(a)` is a.b.c.
template <auto... Path>
constexpr auto& member(Settings& settings) {
    return (settings.*....*Path);
}

template <auto... Path>
constexpr const auto& member(const Settings& settings) {
    return (settings.*....*Path);
}

template <auto... Path>
constexpr IntegerSetting integer(int32_t lowest, int32_t highest) {
    return {lowest, highest, false,
            [](const Settings& settings) { return static_cast<int32_t>(member<Path...>(settings)); },
            [](Settings& settings, int32_t value) {
                auto& place = member<Path...>(settings);
                place = static_cast<std::remove_reference_t<decltype(place)>>(value);
            }};
}

template <auto... Path>
constexpr IntegerSetting byte(int32_t lowest, int32_t highest) {
    IntegerSetting setting = integer<Path...>(lowest, highest);
    setting.byte = true;
    return setting;
}

/// An integer that few operators change; it starts with its lowest value.
template <auto... Path>
constexpr IntegerSetting rareInteger(int32_t lowest, int32_t highest) {
    IntegerSetting setting = integer<Path...>(lowest, highest);
    setting.rare = true;
    setting.usual = lowest;
    return setting;
}

/// A flag that is on, and that few operators switch off.
template <auto... Path>
constexpr IntegerSetting rareOff() {
    IntegerSetting setting = integer<Path...>(0, 1);
    setting.rare = true;
    setting.usual = 1;
    return setting;
}

template <auto... Path>
constexpr IntegerSetting flag() {
    return byte<Path...>(0, 1);
}

template <auto... Path>
constexpr RealSetting real(double lowest) {
    return {lowest, [](Settings& settings) -> double& { return member<Path...>(settings); }};
}

/// A flag for one of the board's modes.
template <BoardModeBits Mode>
constexpr IntegerSetting boardModeFlag() {
    return {0, 1, true, [](const Settings& settings) { return settings.wish.hasMode(Mode) ? 1 : 0; },
            [](Settings& settings, int32_t value) { settings.wish.setMode(Mode, value != 0); }};
}

/// A number of the synchronisation.
template <auto Field>
constexpr IntegerSetting synchro(int32_t lowest, int32_t highest) {
    return integer<&Settings::wish, &Wish::synchro, Field>(lowest, highest);
}

/// A level of the synchronisation.
template <auto Field>
constexpr RealSetting synchroValue() {
    return real<&Settings::wish, &Wish::synchro, Field>(kAnyReal);
}

/// A real that is 0 for most operators.
template <auto... Path>
constexpr RealSetting rareReal() {
    RealSetting setting = real<Path...>(kAnyReal);
    setting.rare = true;
    return setting;
}

template <auto... Path>
constexpr TextSetting text() {
    return {[](Settings& settings) -> std::string& { return member<Path...>(settings); }};
}

/// A text that is empty for most operators.
template <auto... Path>
constexpr TextSetting rareText() {
    TextSetting setting = text<Path...>();
    setting.rare = true;
    return setting;
}

template <auto... Path>
constexpr RealListSetting realList() {
    return {[](Settings& settings) -> std::vector<double>& { return member<Path...>(settings); }};
}

/// The mode of a condition; 2 switches it off.
template <auto Mode, auto Enabled>
constexpr IntegerSetting condition() {
    return {0, 2, false, [](const Settings& settings) { return settings.wish.synchro.*Mode; },
            [](Settings& settings, int32_t value) {
                settings.wish.synchro.*Mode = value;
                settings.wish.synchro.*Enabled = value != 2;
            }};
}

/// The source of conditions: 0 an analog channel, 1 the port.
template <auto OnAnalog, auto OnPort>
constexpr IntegerSetting source() {
    return {0, 1, false, [](const Settings& settings) { return settings.wish.synchro.*OnPort ? 1 : 0; },
            [](Settings& settings, int32_t value) {
                settings.wish.synchro.*OnAnalog = value == 0;
                settings.wish.synchro.*OnPort = value == 1;
            }};
}

inline void divideBuffer(SynchroSizes& sizes, int32_t all, int32_t prehistory) {
    sizes.prehistory = std::min(prehistory, all);
    sizes.history = all - sizes.prehistory;
}

inline int32_t bufferSize(const Settings& settings) {
    return settings.wish.synchroSizes.prehistory + settings.wish.synchroSizes.history;
}

constexpr IntegerSetting synchroAllSize() {
    return {1, kLargestBuffer, false, bufferSize, [](Settings& settings, int32_t value) {
                divideBuffer(settings.wish.synchroSizes, value, settings.wish.synchroSizes.prehistory);
            }};
}

constexpr IntegerSetting synchroPrehistorySize() {
    return {0, kLargestBuffer, false, [](const Settings& settings) { return settings.wish.synchroSizes.prehistory; },
            [](Settings& settings, int32_t value) {
                const int32_t all = bufferSize(settings);
                if (value <= all) {
                    divideBuffer(settings.wish.synchroSizes, all, value);
                }
            }};
}

/// Makes room for the frequencies that the next entry gives.
constexpr IntegerSetting frequencyListCount() {
    return {0, kMostFrequencies, false,
            [](const Settings& settings) { return static_cast<int32_t>(settings.frequencyList.size()); },
            [](Settings& settings, int32_t value) { settings.frequencyList.resize(static_cast<size_t>(value)); }};
}

inline constexpr std::array kSides = {&WindowPlace::left, &WindowPlace::top, &WindowPlace::width, &WindowPlace::height};

template <auto Place>
constexpr IntegerListSetting place() {
    return {-kFarthestPixel,
            kFarthestPixel,
            false,
            false,
            [](const Settings&) { return kSides.size(); },
            [](const Settings& settings, size_t i) { return settings.*Place.*kSides[i]; },
            [](Settings& settings, size_t i, int32_t value) { settings.*Place.*kSides[i] = value; }};
}

inline size_t channelCount(const Settings& settings) {
    return static_cast<size_t>(std::clamp(settings.channelCount, 0, kMaximumChannelCount));
}

template <auto Column>
constexpr IntegerListSetting channelColumn(int32_t lowest, int32_t highest, bool byte, bool hex) {
    return {lowest,
            highest,
            byte,
            hex,
            channelCount,
            [](const Settings& settings, size_t i) { return static_cast<int32_t>(settings.channels[i].*Column); },
            [](Settings& settings, size_t i, int32_t value) {
                auto& cell = settings.channels[i].*Column;
                cell = static_cast<std::remove_reference_t<decltype(cell)>>(value);
            }};
}

/// A flag of the channels that is on for most.
template <auto Column>
constexpr IntegerListSetting rareOffColumn() {
    IntegerListSetting setting = channelColumn<Column>(0, 1, true, false);
    setting.rare = true;
    setting.usual = 1;
    return setting;
}

template <auto Column>
constexpr IntegerListSetting digitalColumn(int32_t lowest, int32_t highest) {
    return {lowest,
            highest,
            false,
            false,
            [](const Settings& settings) { return settings.digitalLines.size(); },
            [](const Settings& settings, size_t i) { return settings.digitalLines[i].*Column; },
            [](Settings& settings, size_t i, int32_t value) { settings.digitalLines[i].*Column = value; }};
}

/// A text or a number in the labels of the channel table.
template <auto Field>
constexpr NameListSetting labelColumn() {
    return {channelCount, [](const Settings& settings, size_t i) { return settings.channels[i].label.*Field; },
            [](Settings& settings, size_t i, const std::string& text) { settings.channels[i].label.*Field = text; }};
}

inline bool isFactor(double value) {
    return isScale(value, 0.0);
}

inline bool isOffset(double value) {
    return isScale(1.0, value);
}

template <auto Field>
constexpr ExactListSetting scaleColumn(double usual, bool (*takes)(double)) {
    return {usual, takes, channelCount,
            [](Settings& settings, size_t i) -> double& { return settings.channels[i].label.*Field; }};
}

constexpr NameListSetting lineNames() {
    return {[](const Settings&) { return kMaximumLineCount; },
            [](const Settings& settings, size_t i) {
                const auto& names = settings.wish.lineNames;
                return i < names.size() ? names[i] : std::string();
            },
            [](Settings& settings, size_t i, const std::string& name) {
                auto& names = settings.wish.lineNames;
                names.resize(std::max(names.size(), i + 1));
                names[i] = name;
            }};
}

// What only an autosettings file has.

constexpr IntegerSetting channelCountOfList() {
    return {1, kMaximumChannelCount, false,
            [](const Settings& settings) { return static_cast<int32_t>(settings.wish.channels.size()); },
            [](Settings& settings, int32_t value) {
                settings.wish.channels.resize(static_cast<size_t>(value));
                settings.wish.gains.assign(static_cast<size_t>(value), 1);
                settings.wish.labels.assign(static_cast<size_t>(value), {});
            }};
}

template <auto List>
constexpr IntegerListSetting listOfChannels() {
    return {kLeast,
            kMost,
            false,
            false,
            [](const Settings& settings) { return (settings.wish.*List).size(); },
            [](const Settings& settings, size_t i) { return (settings.wish.*List)[i]; },
            [](Settings& settings, size_t i, int32_t value) { (settings.wish.*List)[i] = value; }};
}

inline size_t labelCount(const Settings& settings) {
    return settings.wish.labels.size();
}

template <auto Field>
constexpr NameListSetting labelsOfChannels() {
    return {labelCount, [](const Settings& settings, size_t i) { return settings.wish.labels[i].*Field; },
            [](Settings& settings, size_t i, const std::string& text) { settings.wish.labels[i].*Field = text; }};
}

template <auto Field>
constexpr ExactListSetting scalesOfChannels(double usual, bool (*takes)(double)) {
    return {usual, takes, labelCount,
            [](Settings& settings, size_t i) -> double& { return settings.wish.labels[i].*Field; }};
}

/// Size of a piece, MiB; 0: the recording is not cut, or as its volume demands.
constexpr IntegerSetting cutMode() {
    return {0, kMost, false,
            [](const Settings& settings) {
                return settings.wish.cut && !settings.wish.automaticCut ? settings.wish.cutMegabytes : 0;
            },
            [](Settings& settings, int32_t value) {
                settings.wish.cut = value > 0;
                settings.wish.cutMegabytes = value > 0 ? value : settings.wish.cutMegabytes;
            }};
}

/// The upper or lower half of the size at which a recording ends.
template <uint32_t Shift>
constexpr IntegerSetting sizeHalf() {
    return {kLeast, kMost, false,
            [](const Settings& settings) { return static_cast<int32_t>(settings.wish.stopBytes >> Shift); },
            [](Settings& settings, int32_t value) {
                constexpr uint64_t kOther = ~(uint64_t{0xFFFFFFFF} << Shift);
                settings.wish.stopBytes = (settings.wish.stopBytes & kOther) | uint64_t{static_cast<uint32_t>(value)}
                                                                                   << Shift;
            }};
}

}  // namespace tarno2::places
