#include "display/shown_marks.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

RecordingMark markAt(uint64_t number, uint64_t frame, const char* text = "") {
    return {number, frame, 0, MarkSource::Operator, text};
}

std::vector<uint64_t> numbersOf(const std::vector<MarkFlag>& flags) {
    std::vector<uint64_t> numbers;
    numbers.reserve(flags.size());
    for (const MarkFlag& flag : flags) {
        numbers.push_back(flag.number);
    }
    return numbers;
}

TEST(ShownMarks, ComeOneAColumnInTheOrderOfTheirFrames) {
    ShownMarks marks;
    marks.add(std::vector{markAt(1, 500), markAt(3, 100, "late number"), markAt(2, 505), markAt(4, 900)});
    EXPECT_EQ(marks.all().size(), 4U);
    EXPECT_EQ(marks.all()[1].mark.number, 2U);
    EXPECT_EQ(numbersOf(marks.flags(0.0, 1000.0, 1000)), (std::vector<uint64_t>{3, 1, 2, 4}));
    const auto few = marks.flags(0.0, 1000.0, 10);
    EXPECT_EQ(numbersOf(few), (std::vector<uint64_t>{3, 1, 4}));
    EXPECT_EQ(few[0].label, "late number");
    EXPECT_EQ(few[1].label, "1 \xE2\x80\xA6") << "another one follows in its column";
    EXPECT_EQ(numbersOf(marks.flags(500.5, 900.0, 10)), (std::vector<uint64_t>{2, 4}));
    EXPECT_TRUE(marks.flags(-50.0, -1.0, 10).empty());
    marks.add(std::vector{markAt(1, 500, "valve")});
    EXPECT_EQ(marks.all().size(), 4U);
    EXPECT_EQ(marks.flags(499.0, 501.0, 10).front().label, "valve");
}

TEST(ShownMarks, StandWhereTheRecordsAreThatHoldThem) {
    Passport passport;
    passport.synchronisation.mode = "records";
    passport.synchronisation.prehistory = 10;
    passport.synchronisation.history = 20;
    passport.pieces = {{"a", 60, 0, 2, {}}, {"b", 25, 0, 1, {}}};
    passport.triggers = {100, 200, 300};
    const StreamPlaces places(passport);
    const struct {
        uint64_t stream;
        std::optional<uint64_t> file;
    } cases[] = {{0, {}},   {89, {}},  {90, 0},   {100, 10}, {119, 29}, {120, {}},
                 {190, 30}, {219, 59}, {220, {}}, {290, 60}, {314, 84}, {315, {}}};
    for (const auto& c : cases) {
        EXPECT_EQ(places.of(c.stream), c.file) << c.stream;
    }
    ShownMarks ofSecondPiece(places, 60);
    ofSecondPiece.add(std::vector{markAt(1, 100), markAt(2, 301)});
    EXPECT_FALSE(ofSecondPiece.all()[0].frame);
    EXPECT_EQ(ofSecondPiece.all()[1].frame, 11U);
    passport.synchronisation.mode = "analysis";
    EXPECT_FALSE(StreamPlaces(passport).of(0)) << "nobody knows";
    EXPECT_EQ(StreamPlaces().of(7), 7U);
}

}  // namespace
}  // namespace tarno2
