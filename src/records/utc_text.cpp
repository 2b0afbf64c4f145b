#include "records/utc_text.h"

#include <charconv>
#include <chrono>
#include <cstdlib>

#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr int64_t kMicrosecondsPerMinute = 60'000'000;
constexpr size_t kClockLength = 26;  // "2026-11-22T18:01:29.123456"

std::string clockText(int64_t microseconds) {
    const std::chrono::sys_time<std::chrono::microseconds> moment{std::chrono::microseconds(microseconds)};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss<std::chrono::microseconds> time(moment - day);
    return formatText("%04d-%02u-%02uT%02d:%02d:%02d.%06d", int{date.year()}, unsigned{date.month()},
                      unsigned{date.day()}, static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                      static_cast<int>(time.subseconds().count()));
}

/// The number that fills `count` digits; nothing when something else stands there.
std::optional<int32_t> digits(std::string_view text, size_t at, size_t count) {
    int32_t value = 0;
    const char* const first = text.data() + at;
    const bool plain = text.substr(at, count).find_first_not_of("0123456789") == std::string_view::npos;
    const bool whole = plain && std::from_chars(first, first + count, value).ptr == first + count;
    return whole ? std::optional(value) : std::nullopt;
}

std::optional<int64_t> parseClock(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00.000000";
    for (size_t i = 0; i < kForm.size(); ++i) {
        if (kForm[i] != '0' && text[i] != kForm[i]) {
            return std::nullopt;
        }
    }
    const auto year = digits(text, 0, 4), month = digits(text, 5, 2), day = digits(text, 8, 2);
    const auto hour = digits(text, 11, 2), minute = digits(text, 14, 2), second = digits(text, 17, 2);
    const auto fraction = digits(text, 20, 6);
    if (!year || !month || !day || !hour || !minute || !second || !fraction) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59) {
        return std::nullopt;
    }
    const auto moment = std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
                        std::chrono::seconds(*second) + std::chrono::microseconds(*fraction);
    return std::chrono::duration_cast<std::chrono::microseconds>(moment.time_since_epoch()).count();
}

}  // namespace

std::string utcText(int64_t utc) {
    return clockText(utc) + 'Z';
}

std::string localTimeText(int64_t utc, int32_t offsetMinutes) {
    const int32_t size = std::abs(offsetMinutes);
    return clockText(utc + offsetMinutes * kMicrosecondsPerMinute) +
           formatText("%c%02d:%02d", offsetMinutes < 0 ? '-' : '+', size / 60, size % 60);
}

std::optional<int64_t> parseUtcText(std::string_view text) {
    const auto offset = parseUtcOffset(text);
    const auto clock = offset ? parseClock(text) : std::nullopt;
    return clock ? std::optional(*clock - *offset * kMicrosecondsPerMinute) : std::nullopt;
}

std::optional<int32_t> parseUtcOffset(std::string_view text) {
    if (text.size() == kClockLength + 1 && text.back() == 'Z') {
        return 0;
    }
    constexpr size_t kOffsetLength = 6;  // "+03:00"
    if (text.size() != kClockLength + kOffsetLength || text[kClockLength + 3] != ':' ||
        (text[kClockLength] != '+' && text[kClockLength] != '-')) {
        return std::nullopt;
    }
    const auto hours = digits(text, kClockLength + 1, 2), minutes = digits(text, kClockLength + 4, 2);
    if (!hours || !minutes || *minutes > 59) {
        return std::nullopt;
    }
    const int32_t size = *hours * 60 + *minutes;
    return text[kClockLength] == '-' ? -size : size;
}

}  // namespace tarno2
