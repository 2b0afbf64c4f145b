#include "records/mark_list.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

const std::string kHead = "mark,frame,utc,source,text\r\n";

TEST(MarkList, IsReadBackAsItWasWritten) {
    const std::vector<RecordingMark> marks = {
        {1, 0, 0, MarkSource::Operator, ""},
        {2, 18'000'000'000'000'000'000U, 1'795'370'489'123'456, MarkSource::Line, "a \"word\", and another"},
        {3, 5, 1, MarkSource::Driver, "; 5' pipe"}};
    const std::string text = marksText(marks);
    EXPECT_TRUE(text.starts_with(kHead + "1,0,1970-01-01T00:00:00.000000Z,operator,\r\n")) << text;
    EXPECT_NE(text.find(",line,\"a \"\"word\"\", and another\"\r\n"), std::string::npos) << text;
    const MarkList read = readMarks(text);
    EXPECT_EQ(read.marks, marks);
    EXPECT_EQ(read.problem, "");
}

TEST(MarkList, TakesTheLastLineOfAMarkAndLeavesOutATornOne) {
    const RecordingMark one{1, 10, 7, MarkSource::Operator, ""}, two{2, 20, 8, MarkSource::Line, ""};
    RecordingMark named = one;
    named.text = "a, \"b\"";
    const std::string text = kHead + markLine(two) + markLine(one) + markLine(named);
    EXPECT_EQ(readMarks(text).marks, (std::vector{named, two}));
    // Wherever it was cut off: whole lines count.
    const size_t last = text.size() - markLine(named).size();
    for (size_t size = 0; size < text.size(); ++size) {
        const MarkList torn = readMarks(text.substr(0, size));
        EXPECT_EQ(torn.problem, "") << size;
        if (size >= last) {
            EXPECT_EQ(torn.marks, (std::vector{one, two})) << size;
        }
    }
}

TEST(MarkList, TellsWhatIsNoMark) {
    const std::string good = markLine({1, 10, 7, MarkSource::Operator, "x"});
    for (const std::string& bad :
         {std::string("\r\n"), std::string("2,3\r\n"), std::string("0,1,1970-01-01T00:00:00.000000Z,line,\r\n"),
          std::string("2,-1,1970-01-01T00:00:00.000000Z,line,\r\n"), std::string("2,1,yesterday,line,\r\n"),
          std::string("2,1,1970-01-01T00:00:00.000000Z,somebody,\r\n")}) {
        const MarkList read = readMarks(std::string(kHead).append(good).append(bad).append(good));
        EXPECT_EQ(read.problem, "line 3 is no mark") << bad;
        EXPECT_EQ(read.marks.size(), 1U) << bad;
    }
    EXPECT_EQ(readMarks(kHead + markLine({1'000'000, 1, 7, MarkSource::Line, ""})).problem, "");
    EXPECT_NE(readMarks(kHead + markLine({1'000'001, 1, 7, MarkSource::Line, ""})).problem, "");
    EXPECT_NE(readMarks("a,b,c\r\n" + good).problem, "");
    EXPECT_NE(readMarks("notes of mine").problem, "");
}

TEST(MarkList, MakesOneLineOfATextOfAnybody) {
    EXPECT_EQ(cleanMarkText(" \tpump\r\non\x7F "), "pump  on");
    EXPECT_EQ(cleanMarkText("\xD0\xBD\xD0\xB0\xD1\x81\xD0"), "\xD0\xBD\xD0\xB0\xD1\x81\xEF\xBF\xBD");
    std::string longText;
    for (size_t i = 0; i < kLongestMarkText; ++i) {
        longText += "\xD0\xBD";
    }
    EXPECT_EQ(cleanMarkText(longText), longText.substr(0, kLongestMarkText));
    EXPECT_EQ(kLongestMarkText, 1000U);
}

}  // namespace
}  // namespace tarno2
