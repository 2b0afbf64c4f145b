#include <algorithm>
#include <numeric>
#include <type_traits>
#include <utility>

#include "records/json_tree.h"
#include "records/passport.h"
#include "records/passport_keys.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

/// Ends the reading of a passport; does not leave this file.
struct Unreadable {
    std::string problem;
};

/// Members of an object of the passport, each of the type that it has to have.
class Fields {
public:
    Fields(const JsonTree& json, std::string name) : json_(json), name_(std::move(name)) {
        if (json_.get<JsonTree::Object>() == nullptr) {
            throw Unreadable{name_ + " is no object"};
        }
    }

    bool has(const char* key) const { return json_.find(key) != nullptr; }
    Fields object(const char* key) const { return {at(key), name_ + '.' + key}; }

    template <typename Number>
    Number number(const char* key) const {
        const JsonTree& value = at(key);
        if constexpr (std::is_floating_point_v<Number>) {
            if (const auto number = value.number()) {
                return *number;
            }
        } else if (const auto* whole = value.get<uint64_t>()) {
            if (std::in_range<Number>(*whole)) {
                return static_cast<Number>(*whole);
            }
        } else if (const auto* negative = value.get<int64_t>()) {
            if (std::in_range<Number>(*negative)) {
                return static_cast<Number>(*negative);
            }
        }
        throw Unreadable{name_ + '.' + key + " is no such number"};
    }
    bool flag(const char* key) const { return *typed<bool>(key, " is neither true nor false"); }
    std::string text(const char* key) const { return *typed<std::string>(key, " is no text"); }
    std::string textIfThere(const char* key) const { return has(key) ? text(key) : std::string(); }
    int64_t time(const char* key) const {
        const auto utc = parseUtcText(text(key));
        return utc ? *utc : throw Unreadable{name_ + '.' + key + " is no time"};
    }
    /// Calls `read` with the fields of each object of a list.
    template <typename Read>
    void each(const char* key, Read read) const {
        for (const JsonTree& entry : *typed<JsonTree::List>(key, " is no list")) {
            read(Fields(entry, name_ + '.' + key));
        }
    }

private:
    const JsonTree& at(const char* key) const {
        const JsonTree* found = json_.find(key);
        return found != nullptr ? *found : throw Unreadable{name_ + " lacks \"" + key + '"'};
    }
    template <typename Type>
    const Type* typed(const char* key, const char* complaint) const {
        const Type* value = at(key).get<Type>();
        return value != nullptr ? value : throw Unreadable{name_ + '.' + key + complaint};
    }

    const JsonTree& json_;
    std::string name_;
};

PassportRate rateOf(const Fields& fields) {
    PassportRate rate;
    rate.asked = fields.number<double>("asked");
    rate.given = fields.number<double>("given");
    rate.decimation = fields.number<uint32_t>("decimation");
    rate.recorded = fields.number<double>("recorded");
    rate.externalClock = fields.flag("externalClock");
    if (fields.has("packetsGiven")) {
        rate.packetsAsked = fields.number<double>("packetsAsked");
        rate.packetsGiven = fields.number<double>("packetsGiven");
    }
    return rate;
}

PassportSample sampleOf(const Fields& fields) {
    PassportSample sample;
    sample.bytes = fields.number<uint32_t>("bytes");
    sample.signedCodes = fields.flag("signed");
    sample.codeBits = fields.number<uint32_t>("codeBits");
    sample.codeShift = fields.number<uint32_t>("codeShift");
    sample.codeMask = fields.number<uint32_t>("codeMask");
    sample.codeMinimum = fields.number<int64_t>("codeMinimum");
    sample.codeMaximum = fields.number<int64_t>("codeMaximum");
    sample.lineCount = fields.number<uint32_t>("lines");
    sample.lineShift = fields.number<uint32_t>("lineShift");
    sample.lineMask = fields.number<uint32_t>("lineMask");
    sample.backwardOrder = fields.flag("backwardOrder");
    return sample;
}

PassportChannel channelOf(const Fields& fields) {
    PassportChannel channel;
    channel.number = fields.number<int32_t>("number");
    channel.name = fields.text("name");
    channel.unit = fields.text("unit");
    channel.gain = fields.number<int32_t>("gain");
    channel.upper = fields.number<double>("upper");
    channel.lower = fields.number<double>("lower");
    channel.factor = fields.number<double>("factor");
    channel.offset = fields.number<double>("offset");
    return channel;
}

PassportSynchronisation synchronisationOf(const Fields& fields) {
    PassportSynchronisation synchronisation;
    synchronisation.mode = fields.text("mode");
    if (synchronisation.mode == "records") {
        synchronisation.prehistory = fields.number<uint32_t>("prehistory");
        synchronisation.history = fields.number<uint32_t>("history");
        synchronisation.stopAfterRecord = fields.flag("stopAfterRecord");
    }
    fields.each("conditions", [&](const Fields& entry) {
        PassportCondition& condition = synchronisation.conditions.emplace_back();
        condition.role = entry.text("role");
        condition.when = entry.text("when");
        if (entry.has("channel")) {
            condition.channel = entry.number<int32_t>("channel");
            condition.threshold = entry.number<double>("threshold");
        } else {
            condition.line = entry.number<int32_t>("line");
        }
    });
    return synchronisation;
}

void readCourse(const Fields& fields, Passport& passport) {
    fields.each("pieces", [&](const Fields& entry) {
        PassportPiece& piece = passport.pieces.emplace_back();
        piece.file = entry.text("file");
        piece.frames = entry.number<uint64_t>("frames");
        piece.bytes = entry.number<uint64_t>("bytes");
        piece.records = entry.has("records") ? entry.number<uint64_t>("records") : 0;
        piece.sha256 = entry.textIfThere("sha256");
    });
    if (fields.has("records")) {
        fields.each("records", [&](const Fields& entry) {
            if (entry.has("trigger")) {
                passport.triggers.push_back(entry.number<uint64_t>("trigger"));
            }
        });
    }
    fields.each("losses", [&](const Fields& entry) {
        passport.end.losses.push_back(
            {entry.text("cause"), entry.number<uint64_t>("sample"), entry.number<uint64_t>("count")});
    });
    fields.object("clock").each("pairs", [&](const Fields& entry) {
        passport.end.clock.push_back(
            {entry.number<uint64_t>("frame"), entry.number<uint64_t>("monotonic"), entry.time("utc")});
    });
    const Fields end = fields.object("end");
    passport.end.utc = end.time("utc");
    passport.end.reason = end.text("reason");
    passport.end.words = end.textIfThere("words");
    if (fields.has("monitoredFrames")) {
        passport.end.monitoredFrames = fields.number<uint64_t>("monitoredFrames");
    }
    if (fields.has("marks")) {
        const Fields marks = fields.object("marks");
        passport.marks = {marks.text("file"), marks.number<uint64_t>("count")};
    }
}

Passport passportOf(const Fields& fields) {
    if (fields.text("format") != kPassportFormat || fields.number<int>("formatVersion") != kPassportVersion) {
        throw Unreadable{"it is no passport of this version"};
    }
    Passport passport;
    const auto state = std::find(kPassportStates.begin(), kPassportStates.end(), fields.text("state"));
    if (state == kPassportStates.end()) {
        throw Unreadable{"its state is unknown"};
    }
    passport.state = static_cast<Passport::State>(state - kPassportStates.begin());
    passport.version = fields.object("program").text("version");
    passport.driver = fields.text("driver");
    passport.board = fields.text("board");
    passport.computer = fields.text("computer");
    passport.comment = fields.text("comment");
    const Fields start = fields.object("start");
    passport.start = start.time("utc");
    passport.startOffset = parseUtcOffset(start.text("local")).value_or(0);
    passport.rate = rateOf(fields.object("rate"));
    passport.sample = sampleOf(fields.object("sample"));
    fields.each("channels", [&](const Fields& entry) { passport.channels.push_back(channelOf(entry)); });
    fields.each("lines", [&](const Fields& entry) {
        passport.lines.push_back({entry.number<int32_t>("number"), entry.text("name")});
    });
    passport.synchronisation = synchronisationOf(fields.object("synchronisation"));
    if (passport.state != Passport::State::Recording) {
        readCourse(fields, passport);
    }
    return passport;
}

}  // namespace

uint64_t Passport::frames() const {
    return std::accumulate(pieces.begin(), pieces.end(), uint64_t{0},
                           [](uint64_t sum, const PassportPiece& piece) { return sum + piece.frames; });
}

uint64_t Passport::records() const {
    return std::accumulate(pieces.begin(), pieces.end(), uint64_t{0},
                           [](uint64_t sum, const PassportPiece& piece) { return sum + piece.records; });
}

std::optional<Passport> readPassport(std::string_view text, std::string& problem) {
    try {
        if (const auto json = parseJson(text, problem)) {
            return passportOf(Fields(*json, "the passport"));
        }
    } catch (const Unreadable& unreadable) {
        problem = unreadable.problem;
    }
    return std::nullopt;
}

}  // namespace tarno2
