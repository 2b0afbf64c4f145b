#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/clock_pairs.h"

namespace tarno2 {

// What `<base>.json` tells of a recording. All texts are UTF-8. A frame of the stream counts frames at the recorded
// rate from the first one that the board gave on; where nothing chose among them it is the frame of the files, one
// behind the other. docs/passport.md explains the fields, docs/passport.schema.json their form.

/// A channel, in the order of the frames.
struct PassportChannel {
    int32_t number = 0;  ///< of the board's input, from 0
    std::string name;
    std::string unit = "V";
    int32_t gain = 1;
    double upper = 0.0;   ///< volts
    double lower = 0.0;   ///< volts
    double factor = 1.0;  ///< a value in the unit is volts * factor + offset
    double offset = 0.0;
};

/// A line of the digital port.
struct PassportLine {
    int32_t number = 0;
    std::string name;
};

/// How a sample lies in its file, little-endian.
struct PassportSample {
    uint32_t bytes = 2;
    bool signedCodes = true;
    uint32_t codeBits = 0;
    uint32_t codeShift = 0;
    uint32_t codeMask = 0;
    int64_t codeMinimum = 0;  ///< the code of a channel's lower limit
    int64_t codeMaximum = 0;  ///< the code of its upper limit
    uint32_t lineCount = 0;
    uint32_t lineShift = 0;
    uint32_t lineMask = 0;       ///< of the first sample of a frame
    bool backwardOrder = false;  ///< frames hold the channels in reverse order
};

/// Rates of one channel, Hz.
struct PassportRate {
    double asked = 0.0;
    double given = 0.0;  ///< by the board
    uint32_t decimation = 1;
    double recorded = 0.0;       ///< what the description tells
    bool externalClock = false;  ///< the rates are what the operator expected
    std::optional<double> packetsAsked;
    std::optional<double> packetsGiven;

    /// Packets that are recorded, Hz; nothing when frames are none.
    [[nodiscard]] std::optional<double> packets() const {
        return packetsGiven ? std::optional(*packetsGiven / std::max<uint32_t>(decimation, 1)) : std::nullopt;
    }
};

/// One condition of the synchronisation.
struct PassportCondition {
    std::string role;        ///< "start", "write", "stop", "trigger"
    int32_t channel = -1;    ///< position in the frame; -1: a line of the port is asked
    int32_t line = -1;       ///< -1: a channel is asked
    std::string when;        ///< "above", "below", "rises", "falls", "high", "low"
    double threshold = 0.0;  ///< volts, of a channel
};

struct PassportSynchronisation {
    std::string mode = "off";  ///< "off", "analysis", "records"
    uint32_t prehistory = 0;   ///< frames of a record
    uint32_t history = 0;      ///< frames of a record
    bool stopAfterRecord = false;
    std::vector<PassportCondition> conditions;
};

/// A data file.
struct PassportPiece {
    std::string file;  ///< without its folder
    uint64_t frames = 0;
    uint64_t bytes = 0;
    uint64_t records = 0;  ///< that begin in it, one behind the other from its first frame on
    std::string sha256;    ///< hexadecimal; empty while it is not known
};

/// Samples that were lost; see docs/passport.md on the list of losses.
struct PassportLoss {
    std::string cause;
    uint64_t sample = 0;
    uint64_t count = 0;
};

/// The list of marks beside the data.
struct PassportMarks {
    std::string file;    ///< without its folder
    uint64_t count = 0;  ///< marks in it
};

struct PassportEnd {
    int64_t begun =
        0;            ///< when the first frame came, microseconds since 1970; 0: the passport told it when it was begun
    int64_t utc = 0;  ///< microseconds since 1970
    std::string reason;  ///< "user", "time", "size", ... as docs/passport.md lists them
    std::string words;   ///< what else is known; may be empty
    std::vector<PassportLoss> losses;
    std::vector<ClockPair> clock;
    /// Frames of the running signal that were shown and not kept before frame 0; nothing: it was not monitored before.
    std::optional<uint64_t> monitoredFrames;
};

/// Everything that is known of a recording.
struct Passport {
    enum class State {
        Recording,  ///< it was begun, and has no end yet
        Complete,
        Recovered  ///< it was cut off and finished later
    };
    State state = State::Recording;

    std::string version;  ///< of the program
    std::string driver;
    std::string board;
    std::string computer;
    std::string comment;
    int64_t start = 0;        ///< microseconds since 1970
    int32_t startOffset = 0;  ///< minutes east of Greenwich, where it was recorded
    PassportRate rate;
    PassportSample sample;
    std::vector<PassportChannel> channels;
    std::vector<PassportLine> lines;
    PassportSynchronisation synchronisation;
    std::vector<PassportPiece> pieces;
    /// The frame of the stream that triggered each record, of as many as were kept; those of a recording that was cut
    /// off are not known.
    std::vector<uint64_t> triggers;
    PassportEnd end;
    std::optional<PassportMarks> marks;  ///< nothing: there are none

    /// A size limit is kept to the byte: then the last piece may end within a frame.
    [[nodiscard]] bool mayEndWithinAFrame() const { return end.reason == "size"; }
    [[nodiscard]] uint64_t frames() const;
    [[nodiscard]] uint64_t records() const;
    /// Frames of a record; 0 when there are none.
    [[nodiscard]] uint32_t recordFrames() const {
        return synchronisation.mode == "records" ? synchronisation.prehistory + synchronisation.history : 0;
    }
};

/// The whole text of a passport. Letters that are no UTF-8 become U+FFFD. Throws std::bad_alloc.
[[nodiscard]] std::string passportText(const Passport& passport);

/// A passport's text read back. Nothing when it is none of this version, with the reason in English. Throws
/// std::bad_alloc.
[[nodiscard]] std::optional<Passport> readPassport(std::string_view text, std::string& problem);

/// What in a passport contradicts itself: figures that do not follow from the others as they should, and such as can't
/// be. In English, one each. `text`: what `passport` was read from. Throws std::bad_alloc.
[[nodiscard]] std::vector<std::string> passportContradictions(std::string_view text, const Passport& passport);

}  // namespace tarno2
