#include "records/journal_text.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

PieceState pieceOf(uint32_t number) {
    PieceState piece;
    piece.number = number;
    piece.createTime = LocalTime{2026, 11, 1, 23, 17, 5, 9, 87};
    piece.recordBytes = 2000;
    piece.firstEvent = {400, 100, 400, 0, 1, 2, 0.1};
    return piece;
}

// All that a half can tell, in lines written by hand: a recording in packets that is being recovered.
TEST(JournalText, HasALineForEachThingThatItKeeps) {
    JournalState state;
    state.sequence = 12;
    state.extension = ".bin";
    state.channelCount = 2;
    state.facts.driverName = "My \"board\"\n2";
    state.facts.totalFrequency = 1e6 / 3.0;
    state.facts.synchronousChannels = state.facts.packetMode = state.facts.backwardOrder = true;
    state.facts.packetFrequency = 200.7;
    state.facts.layout = {2, 2, 65532, 14, 0, 3, 2, 1};
    state.facts.ranges = {{5.0, -5.0, 5.0F}, {10.0 / 3.0, -0.1, 0.0F}};
    state.undescribed = {pieceOf(3)};
    state.piece = pieceOf(4);
    state.piece->recordBytes = 0;
    state.piece->dropped = true;
    const std::string facts =
        "extension .bin\nwidth 2\nchannels 2\ndriver My \"board\" 2\nfrequency 333333.33333333331\nsynchronous 1\n"
        "packet 1 200.69999999999999\nexternal 0\nbackward 1\nlayout 2 2 65532 14 0 3 2 1\nrange 5 -5\n"
        "range 3.3333333333333335 -0.10000000000000001\n";
    const std::string begin = "Tarno2 journal 1\nsequence 12\n";
    const std::string pieces =
        "earlier 3\ncreated 2026 11 1 23 17 5 9 87\nrecord 2000 400 100 400 0 1 2 0.10000000000000001\n"
        "piece 4\ncreated 2026 11 1 23 17 5 9 87\ndropped\n";
    const std::string half = journalText(state).value();
    EXPECT_EQ(half.size(), 32768U);
    EXPECT_EQ(half.substr(0, half.find("checksum ")), begin + facts + pieces);
    EXPECT_EQ(half, sealedJournalHalf(begin + facts + pieces));

    const auto read = readJournal(half + half);
    ASSERT_TRUE(read && read->piece);
    EXPECT_EQ(journalText(*read), half);
    // Before there is a piece.
    state.undescribed.clear();
    state.piece.reset();
    state.aside = 7;
    EXPECT_EQ(journalText(state), sealedJournalHalf(begin + facts + "aside 7\n"));

    // A reader knows every line, and the numbers in it, or leaves the journal alone.
    for (const char* line : {"colour red\n", "sequence\n", "width two\n", "packet 1\n", "layout 2 2 65532 14 0 3 2\n",
                             "range 5 -5 0\n", "created 2026 11 1\n", "record 1 2 3\n", "external  0\n", "\n"}) {
        const auto other = sealedJournalHalf(std::string(begin).append(facts).append(pieces).append(line));
        EXPECT_FALSE(readJournal(*other + *other)) << line;
    }
}

}  // namespace
}  // namespace tarno2
