// Marks that come with the stream: of the driver, and of a digital line.

#include <cstring>
#include <deque>
#include <gtest/gtest.h>

#include "config/files/recording_name.h"
#include "core/recording/line_edges.h"
#include "platform/clock.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

std::vector<RecordingMark> marksOf(const SessionRig& rig) {
    return findMarks(RecordingName(rig.dataName).marks()).marks;
}

/// Sessions open their marks once their files are there.
bool beginMarked(SessionRig& rig, uint32_t channels, float frequency) {
    rig.setup.marks = &rig.board->marks();
    if (!rig.prepare(channels, frequency) || !rig.board->marks().open(rig.dataName)) {
        return false;
    }
    rig.board->Begin();
    return true;
}

TEST(MarksOfStream, OfTheDriverStandAtTheirFrames) {
    FakeDevice device;
    std::deque<std::pair<uint64_t, std::string>> waiting{{0, "begin"}, {700, std::string(300, 'x')}, {2000, "\tnow"}};
    device.ring = [](uint32_t, uint32_t) { return 1000; };
    device.readerPaced = 3000;
    device.streamEnd = {kADCEndOfSource, 0, 3000, 0};
    device.answer = [&](uint32_t code, void* result) {
        if (code != kADCGetMark) {
            return 0;
        }
        ADCMark mark{};
        if (!waiting.empty()) {
            mark.m_nThere = 1;
            mark.m_nPosition = waiting.front().first;
            std::memcpy(mark.m_sText, waiting.front().second.data(),
                        std::min(waiting.front().second.size(), sizeof mark.m_sText));
            waiting.pop_front();
        }
        std::memcpy(result, &mark, sizeof mark);
        return 1;
    };
    SessionRig rig(device);
    const int64_t before = utcMicroseconds();
    ASSERT_TRUE(beginMarked(rig, 2, 1e6F));
    EXPECT_EQ(rig.end().code, StopCode::SourceEnd);
    const auto marks = marksOf(rig);
    ASSERT_EQ(marks.size(), 3U);
    EXPECT_EQ(marks[0].frame, 0U);
    EXPECT_EQ(marks[1].frame, 350U);
    EXPECT_EQ(marks[1].text, std::string(240, 'x'));
    EXPECT_EQ(marks[2].frame, 1000U);
    EXPECT_EQ(marks[2].text, "now");
    for (const RecordingMark& mark : marks) {
        EXPECT_EQ(mark.source, MarkSource::Driver);
        EXPECT_GT(mark.utc, before - 1'000'000);
        EXPECT_LE(mark.utc, utcMicroseconds());
    }
}

// The fake's samples count up: line 1 is their bit 15, of the first word of a frame.
TEST(MarksOfStream, OfALineStandAtItsEdgesBeforeTheDecimation) {
    for (const int32_t edge : {0, 1, 2}) {
        FakeDevice device;
        device.ring = [](uint32_t, uint32_t) { return 1000; };
        device.readerPaced = 6000;
        device.streamEnd = {kADCEndOfSource, 0, 6000, 0};
        SessionRig rig(device);
        rig.board->decimation = 3;
        rig.board->markedLine = {1, edge};
        ASSERT_TRUE(beginMarked(rig, 2, 1e6F));
        EXPECT_EQ(rig.end().code, StopCode::SourceEnd);
        std::vector<uint64_t> expected;
        for (uint64_t frame = 1; frame < 3000; ++frame) {
            const auto high = [&](uint64_t f) {
                uint16_t word = 0;
                std::memcpy(&word, streamBytes(f * 2, 1, 2).data(), 2);
                return (word & 0x8000U) != 0;
            };
            if (high(frame) != high(frame - 1) && (edge == 2 || high(frame) == (edge == 0))) {
                expected.push_back(frame / 3);
            }
        }
        std::vector<uint64_t> found;
        for (const RecordingMark& mark : marksOf(rig)) {
            EXPECT_EQ(mark.source, MarkSource::Line);
            found.push_back(mark.frame);
        }
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(found, expected) << edge;
    }
}

TEST(MarksOfStream, AnEdgeBetweenBlocksIsSeen) {
    const std::vector<uint32_t> words{0, 9, 4, 9, 4, 9, 0, 9, 4, 9};  // frames of two, line 2
    for (size_t cut = 0; cut <= words.size(); cut += 2) {
        LineEdges edges(4, 4, 8, 2);
        std::vector<size_t> found;
        const auto bytes = std::as_bytes(std::span(words));
        edges.scan(bytes.first(cut * 4), [&](size_t frame) { found.push_back(frame); });
        edges.scan(bytes.subspan(cut * 4), [&](size_t frame) { found.push_back(cut / 2 + frame); });
        EXPECT_EQ(found, (std::vector<size_t>{1, 3, 4})) << cut;
    }
}

}  // namespace
}  // namespace tarno2::test
