#include "records/journal_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "platform/c_locale.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

constexpr std::string_view kJournalTitle = "Tarno2 journal 1\n";
constexpr size_t kChecksumLine = 18;
constexpr uint32_t kMostChannels = 0xFFFF;
constexpr uint64_t kLastSequence = uint64_t{1} << 62U;  // further than any recorder comes, with room for more

/// CRC-32 as in ISO 3309.
uint32_t checksum(std::string_view text) {
    constexpr uint32_t kPolynomial = 0xEDB88320U;
    uint32_t crc = 0xFFFFFFFFU;
    for (const char c : text) {
        crc ^= static_cast<uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? kPolynomial : 0U);
        }
    }
    return ~crc;
}

/// Texts stand in one line.
std::string oneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

std::string factsText(const RecordingFacts& facts) {
    const SampleLayout& layout = facts.layout;
    std::string text = "driver " + oneLine(facts.driverName) + '\n';
    text += formatText("frequency %.17g\nsynchronous %d\npacket %d %.17g\nexternal %d\nbackward %d\n",
                       facts.totalFrequency, facts.synchronousChannels ? 1 : 0, facts.packetMode ? 1 : 0,
                       facts.packetFrequency, facts.externalClock ? 1 : 0, facts.backwardOrder ? 1 : 0);
    text += formatText("layout %d %d %d %d %d %d %d %d\n", layout.bytesPerSample, layout.analogShift, layout.analogMask,
                       layout.analogBits, layout.digitalShift, layout.digitalMask, layout.digitalBits,
                       static_cast<int>(layout.analogSigned));
    for (const RecordingFacts::Range& range : facts.ranges) {
        text += formatText("range %.17g %.17g\n", range.upper, range.lower);
    }
    return text;
}

std::string pieceText(const char* key, const PieceState& piece) {
    std::string text = formatText("%s %u\n", key, piece.number);
    if (piece.createTime) {
        const LocalTime& time = *piece.createTime;
        text += formatText("created %d %d %d %d %d %d %d %d\n", time.year, time.month, time.dayOfWeek, time.day,
                           time.hour, time.minute, time.second, time.millisecond);
    }
    if (piece.recordBytes != 0) {
        const SynchroEvent& event = piece.firstEvent;
        text +=
            formatText("record %llu %llu %u %u %d %d %d %.17g\n", static_cast<unsigned long long>(piece.recordBytes),
                       static_cast<unsigned long long>(event.point), event.prehistory, event.history, event.mode,
                       event.condition, event.channel, event.value);
    }
    if (piece.dropped) {
        text += "dropped\n";
    }
    return text;
}

/// Takes a line's numbers one by one; `good` tells whether all were there and nothing else.
class Numbers {
public:
    explicit Numbers(std::string_view text) : text_(text) {}

    template <typename Number>
    Number next() {
        Number number{};
        const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), number);
        good_ = good_ && error == std::errc();
        text_.remove_prefix(static_cast<size_t>(end - text_.data()));
        if (!text_.empty()) {
            good_ = good_ && text_.front() == ' ';
            text_.remove_prefix(1);
        }
        return number;
    }
    double real() {
        const auto number = next<double>();
        good_ = good_ && std::isfinite(number);
        return number;
    }
    bool flag() { return next<int32_t>() != 0; }
    [[nodiscard]] bool good() const { return good_ && text_.empty(); }

private:
    std::string_view text_;
    bool good_ = true;
};

bool readLayout(Numbers& numbers, SampleLayout& layout) {
    for (int32_t* field : {&layout.bytesPerSample, &layout.analogShift, &layout.analogMask, &layout.analogBits,
                           &layout.digitalShift, &layout.digitalMask, &layout.digitalBits}) {
        *field = numbers.next<int32_t>();
    }
    layout.analogSigned = numbers.next<uint8_t>();
    return numbers.good();
}

bool readTime(Numbers& numbers, LocalTime& time) {
    for (uint16_t* field : {&time.year, &time.month, &time.dayOfWeek, &time.day, &time.hour, &time.minute, &time.second,
                            &time.millisecond}) {
        *field = numbers.next<uint16_t>();
    }
    return numbers.good();
}

bool readRecord(Numbers& numbers, PieceState& piece) {
    piece.recordBytes = numbers.next<uint64_t>();
    SynchroEvent& event = piece.firstEvent;
    event.point = numbers.next<uint64_t>();
    event.prehistory = numbers.next<uint32_t>();
    event.history = numbers.next<uint32_t>();
    event.mode = numbers.next<int32_t>();
    event.condition = numbers.next<int32_t>();
    event.channel = numbers.next<int32_t>();
    event.value = numbers.real();
    return numbers.good();
}

bool readFact(std::string_view key, Numbers& numbers, RecordingFacts& facts) {
    if (key == "frequency") {
        facts.totalFrequency = numbers.real();
    } else if (key == "synchronous") {
        facts.synchronousChannels = numbers.flag();
    } else if (key == "packet") {
        facts.packetMode = numbers.flag();
        facts.packetFrequency = numbers.real();
    } else if (key == "external") {
        facts.externalClock = numbers.flag();
    } else if (key == "backward") {
        facts.backwardOrder = numbers.flag();
    } else if (key == "layout") {
        return readLayout(numbers, facts.layout);
    } else if (key == "range") {
        const double upper = numbers.real();
        facts.ranges.push_back({upper, numbers.real()});
    } else {
        return false;
    }
    return numbers.good();
}

/// The piece that the last line about one has named.
PieceState* lastNamedPiece(JournalState& state) {
    if (state.piece) {
        return &*state.piece;
    }
    return state.undescribed.empty() ? nullptr : &state.undescribed.back();
}

bool readLine(std::string_view line, JournalState& state) {
    const size_t blank = std::min(line.find(' '), line.size());
    const std::string_view key = line.substr(0, blank);
    const std::string_view value = line.substr(std::min(blank + 1, line.size()));
    Numbers numbers(value);
    PieceState* piece = lastNamedPiece(state);
    if (key == "extension") {
        state.extension = value;
        return true;
    }
    if (key == "driver") {
        state.facts.driverName = value;
        return true;
    }
    if (key == "sequence") {
        state.sequence = numbers.next<uint64_t>();
    } else if (key == "width") {
        state.sampleWidth = numbers.next<uint32_t>();
    } else if (key == "channels") {
        state.channelCount = numbers.next<uint32_t>();
    } else if (key == "aside") {
        state.aside = numbers.next<uint32_t>();
    } else if (key == "piece") {
        state.piece.emplace().number = numbers.next<uint32_t>();
    } else if (key == "earlier") {
        state.undescribed.emplace_back().number = numbers.next<uint32_t>();
    } else if (key == "dropped") {
        return state.piece && value.empty() && (state.piece->dropped = true);
    } else if (key == "created") {
        return piece != nullptr && readTime(numbers, piece->createTime.emplace());
    } else if (key == "record") {
        return piece != nullptr && readRecord(numbers, *piece);
    } else {
        return readFact(key, numbers, state.facts);
    }
    return numbers.good();
}

bool usable(const JournalState& state) {
    if ((state.sampleWidth != 2 && state.sampleWidth != 4) || state.channelCount < 1 ||
        state.channelCount > kMostChannels || !isDataExtension(state.extension) || state.sequence > kLastSequence) {
        return false;
    }
    const auto isWhole = [&state](const PieceState& piece) { return piece.recordBytes % state.frameBytes() == 0; };
    return std::all_of(state.undescribed.begin(), state.undescribed.end(), isWhole) &&
           (state.piece ? isWhole(*state.piece) : state.undescribed.empty());
}

std::optional<JournalState> readHalf(std::string_view half) {
    const size_t end = half.find_last_not_of('\n');
    if (!half.starts_with(kJournalTitle) || end == std::string_view::npos) {
        return std::nullopt;
    }
    half = half.substr(0, end + 1);
    const size_t last = half.rfind('\n') + 1;
    if (half.substr(last) != formatText("checksum %08x", checksum(half.substr(0, last)))) {
        return std::nullopt;
    }
    JournalState state;
    for (std::string_view rest = half.substr(kJournalTitle.size(), last - kJournalTitle.size()); !rest.empty();) {
        const size_t length = rest.find('\n');
        if (!readLine(rest.substr(0, length), state)) {
            return std::nullopt;
        }
        rest.remove_prefix(length + 1);
    }
    return usable(state) ? std::optional(state) : std::nullopt;
}

}  // namespace

std::optional<std::string> journalText(const JournalState& state) {
    std::string text(kJournalTitle);
    text += formatText("sequence %llu\n", static_cast<unsigned long long>(state.sequence));
    text += "extension " + oneLine(state.extension) + '\n';
    text += formatText("width %u\nchannels %u\n", state.sampleWidth, state.channelCount);
    text += factsText(state.facts);
    if (state.aside) {
        text += formatText("aside %u\n", *state.aside);
    }
    const std::string last = state.piece ? pieceText("piece", *state.piece) : std::string();
    std::string earlier;
    for (size_t i = state.undescribed.size(); i-- > 0;) {
        const std::string more = pieceText("earlier", state.undescribed[i]);
        if (text.size() + more.size() + earlier.size() + last.size() + kChecksumLine > kJournalHalf) {
            break;
        }
        earlier.insert(0, more);
    }
    return sealedJournalHalf(text + earlier + last);
}

std::optional<std::string> sealedJournalHalf(std::string lines) {
    lines += formatText("checksum %08x\n", checksum(lines));
    if (lines.size() > kJournalHalf) {
        return std::nullopt;
    }
    lines.resize(kJournalHalf, '\n');
    return lines;
}

std::optional<JournalState> readJournal(std::string_view contents) {
    if (contents.size() != 2 * kJournalHalf || !contents.starts_with(kJournalTitle)) {
        return std::nullopt;
    }
    auto first = readHalf(contents.substr(0, kJournalHalf));
    auto second = readHalf(contents.substr(kJournalHalf));
    if (!first || !second) {
        return first ? first : second;
    }
    return first->sequence > second->sequence ? first : second;
}

}  // namespace tarno2
