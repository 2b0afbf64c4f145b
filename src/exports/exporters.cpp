#include "exports/exporters.h"

#include <algorithm>
#include <array>

#include "exports/make_exporters.h"

namespace tarno2 {

namespace {

constexpr std::array kRows = {
    ExporterRow{"csv", "csv", "CSV", kTextOptions | kDataOption, false, false, false, false, false, nullptr},
    ExporterRow{"wav", "wav", "WAV, RF64", kBitsOption, true, false, false, false, false, makeWav},
    ExporterRow{"sr", "sr", "sigrok (SR)", kDataOption, true, true, false, false, true, makeSession},
    ExporterRow{"npy", "npy", "NumPy (NPY)", kDataOption, false, false, false, false, false, makeNpy},
    ExporterRow{"dat", "dat", "Tarno2 (DAT)", 0, true, true, false, true, false, makeDat},
    ExporterRow{"edf", "edf", "EDF+", 0, true, true, true, false, false, makeEdf},
    ExporterRow{"bdf", "bdf", "BDF+", 0, true, true, true, false, false, makeBdf},
};

}  // namespace

std::span<const ExporterRow> exporters() {
    return kRows;
}

const ExporterRow* findExporter(std::string_view name) {
    const auto* const row = std::ranges::find(kRows, name, [](const ExporterRow& each) { return each.name; });
    return row == kRows.end() ? nullptr : row;
}

}  // namespace tarno2
