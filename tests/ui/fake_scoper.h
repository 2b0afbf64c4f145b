#pragma once

#include <QPointer>
#include <QWidget>
#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <tarno2/ISCOPERA.h>

namespace tarno2::test {

/// A plotting object that draws nothing and keeps what it was told. 16-bit samples with signed codes only.
class FakeScoper final : public ISCOPERA {
public:
    struct Column {
        std::string name;
        uint32_t color;
        bool visible;
        double scale;
        double offset;
        uint32_t lane;
        bool marked;
    };

    uint32_t TARNO2_CALL AbiVersion() override { return kScoperaAbiVersion; }
    void TARNO2_CALL Release() override {}
    void* TARNO2_CALL CreateView(void* parent) override { return view = new QWidget(static_cast<QWidget*>(parent)); }
    void* TARNO2_CALL View() override { return view; }
    void TARNO2_CALL SetEvents(const SCOPERAEvents* handlers) override {
        events = handlers == nullptr ? SCOPERAEvents{} : *handlers;
    }
    int32_t TARNO2_CALL SetColumns(const SCOPERAColumn* given, uint32_t count) override {
        columns.clear();
        for (uint32_t i = 0; i < count; ++i) {
            columns.push_back({given[i].m_sName, given[i].m_nColor, given[i].m_nVisible != 0, given[i].m_fScale,
                               given[i].m_fOffset, given[i].m_nLane, given[i].m_nMarked != 0});
        }
        return 1;
    }
    int32_t TARNO2_CALL SetFrames(const SCOPERAFrames* given) override {
        ++drawn;
        frames = given == nullptr ? SCOPERAFrames{} : *given;
        const auto* values = static_cast<const int16_t*>(frames.m_pSamples);
        samples.assign(values, values + frames.m_nFrames * frames.m_nColumns);
        return 1;
    }
    int32_t TARNO2_CALL SetRange(int32_t axis, double lower, double upper) override {
        range[static_cast<size_t>(axis)] = {lower, upper};
        return lower < upper ? 1 : 0;
    }
    int32_t TARNO2_CALL GetRange(int32_t axis, double* lower, double* upper) override {
        std::tie(*lower, *upper) = range[static_cast<size_t>(axis)];
        return 1;
    }
    int32_t TARNO2_CALL GetExtremes(double* lowest, double* highest) override {
        if (samples.empty() || columns.empty()) {
            return 0;
        }
        *lowest = *highest = samples[0] * columns[0].scale + columns[0].offset;
        for (size_t i = 0; i < samples.size(); ++i) {
            const Column& column = columns[i % columns.size()];
            const double value = samples[i] * column.scale + column.offset;
            *lowest = std::min(*lowest, value);
            *highest = std::max(*highest, value);
        }
        return 1;
    }
    int32_t TARNO2_CALL SetOption(uint32_t option, int32_t value) override {
        options[option] = value;
        return 1;
    }
    int32_t TARNO2_CALL GetOption(uint32_t, int32_t*) override { return 0; }
    int32_t TARNO2_CALL SetText(uint32_t code, const char* text) override {
        texts[code] = text;
        return 1;
    }
    int32_t TARNO2_CALL SetFont(const char* family, int32_t points) override {
        font = family + std::to_string(points);
        return 1;
    }
    int32_t TARNO2_CALL SetCursors(const SCOPERACursors*) override { return 1; }
    int32_t TARNO2_CALL GetCursors(SCOPERACursors*) override { return 0; }
    uint32_t TARNO2_CALL PixelWidth() override { return 500; }
    int32_t TARNO2_CALL Render() override { return 1; }
    int32_t TARNO2_CALL SavePicture(const char*) override { return 0; }
    int32_t TARNO2_CALL CopyPicture() override { return 1; }
    int32_t TARNO2_CALL SetFlags(const SCOPERAFlag* given, uint32_t count) override {
        flags.clear();
        for (uint32_t i = 0; i < count; ++i) {
            flags.emplace_back(given[i].m_fX, given[i].m_sText);
        }
        return 1;
    }

    int32_t TARNO2_CALL SetLanes(const SCOPERALane* given, uint32_t count) override {
        lanes.assign(given, given + count);
        return 1;
    }
    int32_t TARNO2_CALL GetColumnExtremes(uint32_t column, double* lowest, double* highest) override {
        if (samples.empty() || column >= columns.size()) {
            return 0;
        }
        *lowest = std::numeric_limits<double>::infinity();
        *highest = -*lowest;
        for (size_t i = column; i < samples.size(); i += columns.size()) {
            const double value = samples[i] * columns[column].scale + columns[column].offset;
            *lowest = std::min(*lowest, value);
            *highest = std::max(*highest, value);
        }
        return 1;
    }
    int32_t TARNO2_CALL SetReadings(const SCOPERAReading* given, uint32_t count) override {
        readings.clear();
        for (uint32_t i = 0; i < count; ++i) {
            readings.emplace_back(given[i].m_sText);
        }
        return 1;
    }
    int32_t TARNO2_CALL SetLevels(const SCOPERALevel* given, uint32_t count) override {
        levels.clear();
        for (uint32_t i = 0; i < count; ++i) {
            levels.emplace_back(given[i].m_nColumn, given[i].m_fY);
        }
        return 1;
    }
    int32_t TARNO2_CALL ShowLane(uint32_t) override { return 1; }
    int32_t TARNO2_CALL SetClockX(int64_t start, double secondsPerUnit) override {
        clock = {start, secondsPerUnit};
        return 1;
    }
    int32_t TARNO2_CALL SetEarlier(const SCOPERAFrames* given, uint32_t count) override {
        earlier.assign(given, given + count);
        return 1;
    }

    QPointer<QWidget> view;
    SCOPERAEvents events{};
    std::vector<Column> columns;
    SCOPERAFrames frames{};
    std::vector<int16_t> samples;
    std::array<std::pair<double, double>, 2> range{};
    std::vector<std::pair<double, std::string>> flags;
    std::vector<SCOPERALane> lanes;
    std::vector<std::string> readings;
    std::vector<std::pair<uint32_t, double>> levels;
    std::map<uint32_t, int32_t> options;
    std::map<uint32_t, std::string> texts;
    std::pair<int64_t, double> clock{};
    std::vector<SCOPERAFrames> earlier;
    std::string font;
    int drawn = 0;
};

}  // namespace tarno2::test
