#include "exports/edf_header.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <string_view>
#include <utility>

#include "exports/channel_scale.h"
#include "platform/utf.h"

namespace tarno2 {

namespace {

constexpr size_t kIdentity = 80;
constexpr size_t kSignalBytes = 256;
constexpr std::array<const char*, 12> kMonths = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                                 "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};

/// Blanks behind a text up to the width of its field.
std::string field(std::string text, size_t width) {
    text.resize(width, ' ');
    return text;
}

std::string twoDigits(unsigned number) {
    return {static_cast<char>('0' + number / 10 % 10), static_cast<char>('0' + number % 10)};
}

/// Date and time of the start in two fields, and the date as EDF+ spells it. Nobody knows: the first day there is.
struct StartTexts {
    std::string fields = "01.01.8500.00.00";
    std::string spelled = "X";

    explicit StartTexts(const std::optional<int64_t>& start) {
        using namespace std::chrono;
        if (!start) {
            return;
        }
        const sys_time<microseconds> moment{microseconds(*start)};
        const auto midnight = floor<days>(moment);
        const year_month_day date(midnight);
        const hh_mm_ss time(floor<seconds>(moment - midnight));
        const auto day = static_cast<unsigned>(date.day());
        const auto month = static_cast<unsigned>(date.month());
        const int year = static_cast<int>(date.year());
        fields = twoDigits(day) + '.' + twoDigits(month) + '.' + twoDigits(static_cast<unsigned>(year % 100)) +
                 twoDigits(static_cast<unsigned>(time.hours().count())) + '.' +
                 twoDigits(static_cast<unsigned>(time.minutes().count())) + '.' +
                 twoDigits(static_cast<unsigned>(time.seconds().count()));
        spelled = twoDigits(day) + '-' + kMonths[month - 1] + '-' + std::to_string(year);
    }
};

/// A field of so many characters of every signal, one behind the other.
std::string column(const std::vector<EdfSignal>& signals, size_t width,
                   const std::function<std::string(const EdfSignal&)>& text) {
    std::string all;
    for (const EdfSignal& signal : signals) {
        all += field(text(signal), width);
    }
    return all;
}

std::string signalFields(const std::vector<EdfSignal>& signals) {
    constexpr size_t kLabel = 16;
    constexpr size_t kReserved = 32;
    const auto nothing = [](const EdfSignal&) { return std::string(); };
    return column(signals, kLabel, [](const EdfSignal& s) { return edfText(s.label); }) +
           column(signals, kIdentity, nothing) +
           column(signals, kEdfNumberLength, [](const EdfSignal& s) { return edfText(s.dimension); }) +
           column(signals, kEdfNumberLength,
                  [](const EdfSignal& s) { return numberText(s.physicalMinimum, kEdfNumberLength); }) +
           column(signals, kEdfNumberLength,
                  [](const EdfSignal& s) { return numberText(s.physicalMaximum, kEdfNumberLength); }) +
           column(signals, kEdfNumberLength, [](const EdfSignal& s) { return std::to_string(s.digitalMinimum); }) +
           column(signals, kEdfNumberLength, [](const EdfSignal& s) { return std::to_string(s.digitalMaximum); }) +
           column(signals, kIdentity, nothing) +
           column(signals, kEdfNumberLength, [](const EdfSignal& s) { return std::to_string(s.samples); }) +
           column(signals, kReserved, nothing);
}

}  // namespace

std::string edfText(const std::string& utf8) {
    static constexpr std::array<std::pair<char16_t, std::string_view>, 6> kSpelled = {{{u'\u00B0', "deg"},
                                                                                       {u'\u00B5', "u"},
                                                                                       {u'\u03BC', "u"},
                                                                                       {u'\u00B2', "2"},
                                                                                       {u'\u00B3', "3"},
                                                                                       {u'\u03A9', "Ohm"}}};
    std::string text;
    for (const char16_t c : utf8ToUtf16(utf8).value_or(std::u16string(utf8.size(), u'?'))) {
        const auto* const spelled = std::ranges::find(kSpelled, c, [](const auto& pair) { return pair.first; });
        if (spelled != kSpelled.end()) {
            text += spelled->second;
        } else {
            text += c >= u' ' && c < u'\x7F' ? static_cast<char>(c) : '?';
        }
    }
    return text;
}

std::string edfHeader(const EdfHeader& header) {
    const StartTexts start(header.start);
    std::string equipment = edfText(header.equipment);
    std::ranges::replace(equipment, ' ', '_');
    const std::string recording =
        "Startdate " + start.spelled + " X Tarno2 " + (equipment.empty() ? std::string("X") : equipment);
    return (header.bdf ? std::string("\xFF"
                                     "BIOSEMI")
                       : field("0", kEdfNumberLength)) +
           field("X X X X", kIdentity) + field(recording, kIdentity) + start.fields +
           field(std::to_string(kSignalBytes * (header.signals.size() + 1)), kEdfNumberLength) +
           field(header.bdf ? "BDF+C" : "EDF+C", 44) + field(std::to_string(header.records), kEdfNumberLength) +
           field(header.duration, kEdfNumberLength) + field(std::to_string(header.signals.size()), 4) +
           signalFields(header.signals);
}

}  // namespace tarno2
