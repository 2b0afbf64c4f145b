#include <nlohmann/json.hpp>

#include "records/passport.h"
#include "records/passport_keys.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson rateOf(const PassportRate& rate) {
    OrderedJson json = {{"asked", rate.asked},
                        {"given", rate.given},
                        {"decimation", rate.decimation},
                        {"recorded", rate.recorded},
                        {"externalClock", rate.externalClock}};
    if (rate.packetsAsked && rate.packetsGiven) {
        json["packetsAsked"] = *rate.packetsAsked;
        json["packetsGiven"] = *rate.packetsGiven;
    }
    return json;
}

OrderedJson sampleOf(const PassportSample& sample) {
    return {{"bytes", sample.bytes},
            {"byteOrder", "little"},
            {"signed", sample.signedCodes},
            {"codeBits", sample.codeBits},
            {"codeShift", sample.codeShift},
            {"codeMask", sample.codeMask},
            {"codeMinimum", sample.codeMinimum},
            {"codeMaximum", sample.codeMaximum},
            {"lines", sample.lineCount},
            {"lineShift", sample.lineShift},
            {"lineMask", sample.lineMask},
            {"backwardOrder", sample.backwardOrder}};
}

OrderedJson channelOf(const PassportChannel& channel) {
    return {{"number", channel.number}, {"name", channel.name},    {"unit", channel.unit},
            {"gain", channel.gain},     {"upper", channel.upper},  {"lower", channel.lower},
            {"factor", channel.factor}, {"offset", channel.offset}};
}

OrderedJson synchronisationOf(const PassportSynchronisation& synchronisation) {
    OrderedJson json = {{"mode", synchronisation.mode}};
    if (synchronisation.mode == "records") {
        json["prehistory"] = synchronisation.prehistory;
        json["history"] = synchronisation.history;
        json["stopAfterRecord"] = synchronisation.stopAfterRecord;
    }
    json["conditions"] = OrderedJson::array();
    for (const PassportCondition& condition : synchronisation.conditions) {
        OrderedJson entry = {{"role", condition.role}, {"when", condition.when}};
        if (condition.channel >= 0) {
            entry["channel"] = condition.channel;
            entry["threshold"] = condition.threshold;
        } else {
            entry["line"] = condition.line;
        }
        json["conditions"].push_back(std::move(entry));
    }
    return json;
}

OrderedJson pieceOf(const PassportPiece& piece, bool records) {
    OrderedJson json = {{"file", piece.file}, {"frames", piece.frames}, {"bytes", piece.bytes}};
    if (records) {
        json["records"] = piece.records;
    }
    if (!piece.sha256.empty()) {
        json["sha256"] = piece.sha256;
    }
    return json;
}

/// Every record that is known: its piece, its first frame there, its trigger in the stream and when that was.
OrderedJson recordsOf(const Passport& passport) {
    const auto line = ClockLine::through(passport.end.clock);
    const uint64_t length = passport.recordFrames();
    OrderedJson list = OrderedJson::array();
    size_t known = 0;
    for (size_t piece = 0; piece < passport.pieces.size(); ++piece) {
        for (uint64_t i = 0; i < passport.pieces[piece].records; ++i) {
            OrderedJson record = {{"piece", piece}, {"frame", i * length}};
            if (known < passport.triggers.size()) {
                const uint64_t trigger = passport.triggers[known++];
                record["trigger"] = trigger;
                if (line) {
                    record["utc"] = utcText(line->utcOf(static_cast<double>(trigger)));
                }
            } else if (known >= kMostPassportTriggers) {
                return list;
            }
            list.push_back(std::move(record));
        }
    }
    return list;
}

OrderedJson clockOf(const std::vector<ClockPair>& pairs) {
    OrderedJson json = OrderedJson::object();
    if (const auto line = ClockLine::through(pairs)) {
        json["measuredFrequency"] = line->frequency();
    }
    json["pairs"] = OrderedJson::array();
    for (const ClockPair& pair : pairs) {
        json["pairs"].push_back({{"frame", pair.frame}, {"monotonic", pair.monotonic}, {"utc", utcText(pair.utc)}});
    }
    return json;
}

OrderedJson endOf(const PassportEnd& end) {
    OrderedJson json = {{"utc", utcText(end.utc)}, {"reason", end.reason}};
    if (!end.words.empty()) {
        json["words"] = end.words;
    }
    return json;
}

OrderedJson lossesOf(const std::vector<PassportLoss>& losses) {
    OrderedJson list = OrderedJson::array();
    for (const PassportLoss& loss : losses) {
        list.push_back({{"sample", loss.sample}, {"count", loss.count}, {"cause", loss.cause}});
    }
    return list;
}

}  // namespace

std::string passportText(const Passport& passport) {
    const bool records = passport.recordFrames() != 0;
    OrderedJson json = {
        {"format", kPassportFormat},
        {"formatVersion", kPassportVersion},
        {"state", kPassportStates[static_cast<size_t>(passport.state)]},
        {"program", {{"name", "Tarno2"}, {"version", passport.version}}},
        {"driver", passport.driver},
        {"board", passport.board},
        {"computer", passport.computer},
        {"comment", passport.comment},
        {"start", {{"local", localTimeText(passport.start, passport.startOffset)}, {"utc", utcText(passport.start)}}},
        {"rate", rateOf(passport.rate)},
        {"sample", sampleOf(passport.sample)}};
    json["channels"] = OrderedJson::array();
    for (const PassportChannel& channel : passport.channels) {
        json["channels"].push_back(channelOf(channel));
    }
    json["lines"] = OrderedJson::array();
    for (const PassportLine& line : passport.lines) {
        json["lines"].push_back({{"number", line.number}, {"name", line.name}});
    }
    json["synchronisation"] = synchronisationOf(passport.synchronisation);
    if (passport.state != Passport::State::Recording) {
        json["frames"] = passport.frames();
        json["pieces"] = OrderedJson::array();
        for (const PassportPiece& piece : passport.pieces) {
            json["pieces"].push_back(pieceOf(piece, records));
        }
        if (records) {
            json["records"] = recordsOf(passport);
        }
        json["losses"] = lossesOf(passport.end.losses);
        json["clock"] = clockOf(passport.end.clock);
        json["end"] = endOf(passport.end);
    }
    return json.dump(1, ' ', false, OrderedJson::error_handler_t::replace) + '\n';
}

}  // namespace tarno2
