#include "records/json_tree.h"
#include "records/passport.h"
#include "records/passport_keys.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

using Object = JsonTree::Object;
using List = JsonTree::List;

Object rateOf(const PassportRate& rate) {
    Object json;
    json.add("asked", rate.asked)
        .add("given", rate.given)
        .add("decimation", rate.decimation)
        .add("recorded", rate.recorded)
        .add("externalClock", rate.externalClock);
    if (rate.packetsAsked && rate.packetsGiven) {
        json.add("packetsAsked", *rate.packetsAsked).add("packetsGiven", *rate.packetsGiven);
    }
    return json;
}

Object sampleOf(const PassportSample& sample) {
    Object json;
    json.add("bytes", sample.bytes)
        .add("byteOrder", "little")
        .add("signed", sample.signedCodes)
        .add("codeBits", sample.codeBits)
        .add("codeShift", sample.codeShift)
        .add("codeMask", sample.codeMask)
        .add("codeMinimum", sample.codeMinimum)
        .add("codeMaximum", sample.codeMaximum)
        .add("lines", sample.lineCount)
        .add("lineShift", sample.lineShift)
        .add("lineMask", sample.lineMask)
        .add("backwardOrder", sample.backwardOrder);
    return json;
}

List channelsOf(const std::vector<PassportChannel>& channels) {
    List list;
    for (const PassportChannel& channel : channels) {
        Object json;
        json.add("number", channel.number)
            .add("name", channel.name)
            .add("unit", channel.unit)
            .add("gain", channel.gain)
            .add("upper", channel.upper)
            .add("lower", channel.lower)
            .add("factor", channel.factor)
            .add("offset", channel.offset);
        list.emplace_back(std::move(json));
    }
    return list;
}

List linesOf(const std::vector<PassportLine>& lines) {
    List list;
    for (const PassportLine& line : lines) {
        Object json;
        json.add("number", line.number).add("name", line.name);
        list.emplace_back(std::move(json));
    }
    return list;
}

List conditionsOf(const std::vector<PassportCondition>& conditions) {
    List list;
    for (const PassportCondition& condition : conditions) {
        Object entry;
        entry.add("role", condition.role).add("when", condition.when);
        if (condition.channel >= 0) {
            entry.add("channel", condition.channel).add("threshold", condition.threshold);
        } else {
            entry.add("line", condition.line);
        }
        list.emplace_back(std::move(entry));
    }
    return list;
}

Object synchronisationOf(const PassportSynchronisation& synchronisation) {
    Object json;
    json.add("mode", synchronisation.mode);
    if (synchronisation.mode == "records") {
        json.add("prehistory", synchronisation.prehistory)
            .add("history", synchronisation.history)
            .add("stopAfterRecord", synchronisation.stopAfterRecord);
    }
    json.add("conditions", conditionsOf(synchronisation.conditions));
    return json;
}

List piecesOf(const Passport& passport) {
    List list;
    for (const PassportPiece& piece : passport.pieces) {
        Object json;
        json.add("file", piece.file).add("frames", piece.frames).add("bytes", piece.bytes);
        if (passport.recordFrames() != 0) {
            json.add("records", piece.records);
        }
        if (!piece.sha256.empty()) {
            json.add("sha256", piece.sha256);
        }
        list.emplace_back(std::move(json));
    }
    return list;
}

/// Every record that is known: its piece, its first frame there, its trigger in the stream and when that was.
List recordsOf(const Passport& passport) {
    const auto line = ClockLine::through(passport.end.clock);
    const uint64_t length = passport.recordFrames();
    List list;
    size_t known = 0;
    for (size_t piece = 0; piece < passport.pieces.size(); ++piece) {
        for (uint64_t i = 0; i < passport.pieces[piece].records; ++i) {
            if (list.size() >= kMostPassportTriggers) {
                return list;
            }
            Object record;
            record.add("piece", uint64_t{piece}).add("frame", i * length);
            if (known < passport.triggers.size()) {
                const uint64_t trigger = passport.triggers[known++];
                record.add("trigger", trigger);
                if (line) {
                    record.add("utc", utcText(line->utcOf(static_cast<double>(trigger))));
                }
            }
            list.emplace_back(std::move(record));
        }
    }
    return list;
}

Object clockOf(const std::vector<ClockPair>& pairs) {
    Object json;
    if (const auto line = ClockLine::through(pairs)) {
        json.add("measuredFrequency", line->frequency());
    }
    List list;
    for (const ClockPair& pair : pairs) {
        Object entry;
        entry.add("frame", pair.frame).add("monotonic", pair.monotonic).add("utc", utcText(pair.utc));
        list.emplace_back(std::move(entry));
    }
    json.add("pairs", std::move(list));
    return json;
}

Object endOf(const PassportEnd& end) {
    Object json;
    json.add("utc", utcText(end.utc)).add("reason", end.reason);
    if (!end.words.empty()) {
        json.add("words", end.words);
    }
    return json;
}

List lossesOf(const std::vector<PassportLoss>& losses) {
    List list;
    for (const PassportLoss& loss : losses) {
        Object entry;
        entry.add("sample", loss.sample).add("count", loss.count).add("cause", loss.cause);
        list.emplace_back(std::move(entry));
    }
    return list;
}

}  // namespace

std::string passportText(const Passport& passport) {
    Object program;
    program.add("name", "Tarno2").add("version", passport.version);
    Object start;
    start.add("local", localTimeText(passport.start, passport.startOffset)).add("utc", utcText(passport.start));
    Object json;
    json.add("format", kPassportFormat)
        .add("formatVersion", kPassportVersion)
        .add("state", kPassportStates[static_cast<size_t>(passport.state)])
        .add("program", std::move(program))
        .add("driver", passport.driver)
        .add("board", passport.board)
        .add("computer", passport.computer)
        .add("comment", passport.comment)
        .add("start", std::move(start))
        .add("rate", rateOf(passport.rate))
        .add("sample", sampleOf(passport.sample))
        .add("channels", channelsOf(passport.channels))
        .add("lines", linesOf(passport.lines))
        .add("synchronisation", synchronisationOf(passport.synchronisation));
    if (passport.state != Passport::State::Recording) {
        json.add("frames", passport.frames()).add("pieces", piecesOf(passport));
        if (passport.recordFrames() != 0) {
            json.add("records", recordsOf(passport));
        }
        json.add("losses", lossesOf(passport.end.losses))
            .add("clock", clockOf(passport.end.clock))
            .add("end", endOf(passport.end));
        if (passport.end.monitoredFrames) {
            json.add("monitoredFrames", *passport.end.monitoredFrames);
        }
        if (passport.marks) {
            Object marks;
            marks.add("file", passport.marks->file).add("count", passport.marks->count);
            json.add("marks", std::move(marks));
        }
    }
    return jsonText(JsonTree(std::move(json)), true) + '\n';
}

}  // namespace tarno2
