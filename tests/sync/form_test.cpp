// What becomes of the texts and choices of the synchronisation window.

#include <gtest/gtest.h>

#include "sync/synchro_form.h"

namespace tarno2::test {
namespace {

using Form = SynchroForm;
using Field = SynchroField;

/// Every field holds something of its own, so that fields that are mixed up are found.
Form filled(int32_t mode, bool onPort) {
    Form form;
    form.mode = mode;
    form.analysisOnPort = form.synchroOnPort = onPort;
    form.analog = {{{0, "3", "1.5", 2}, {1, "4", "-20,25", 1}, {2, "5", "3e2", 0}}};
    form.port = {{{1, "6"}, {2, "7"}, {0, "15"}}};
    form.synchroAnalog = {1, " 8 ", "+0.125", 1};
    form.synchroPort = {1, "9"};
    form.buffer = "5000";
    form.prehistory = "1200";
    form.stopAfterTrigged = true;
    return form;
}

/// Settings that differ from what any of these forms gives.
SynchroSettings earlier() {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 7;
    settings.analysisOnAnalog = settings.analysisOnPort = true;
    settings.synchroOnAnalog = settings.synchroOnPort = true;
    return settings;
}

TEST(SynchroForm, NothingAsked) {
    for (const bool onPort : {false, true}) {
        Form form = filled(1, onPort);
        for (size_t i = 0; i < 3; ++i) {
            form.analog[i].mode = form.port[i].mode = kConditionNotUsed;
        }
        form.synchroAnalog.mode = form.synchroPort.mode = kConditionNotUsed;
        for (const int32_t mode : {1, 2}) {
            SynchroSettings s = earlier();
            SynchroSizes sizes;
            form.mode = mode;
            EXPECT_TRUE(readSynchroForm(form, s, sizes).nothingAsked);
            EXPECT_EQ(s.SynchroAnalyzeMode, mode == 1 ? 0 : 2) << "a record without an edge is still a record";
            EXPECT_FALSE(s.analysisOnAnalog || s.analysisOnPort);
            EXPECT_EQ(s.synchroOnAnalog || s.synchroOnPort, mode == 1) << "no record has a source";
        }
    }
}

TEST(SynchroForm, OffLooksAtNothingElse) {
    Form form = filled(0, false);
    form.analog[0].value = form.buffer = form.synchroPort.bit = "?";
    SynchroSettings s = earlier();
    SynchroSizes sizes{11, 22};
    EXPECT_EQ(readSynchroForm(form, s, sizes).mistake, Field::None);
    EXPECT_EQ(s.SynchroAnalyzeMode, 0);
    EXPECT_FALSE(s.analysisOnAnalog || s.analysisOnPort);
    EXPECT_TRUE(s.StopAfterTrigged);
    EXPECT_EQ(sizes.history, 22);
}

TEST(SynchroForm, ReadingStopsAtTheFirstMistake) {
    const struct {
        Field field;
        int32_t mode;
        bool onPort;
        std::string& (*text)(Form&);
    } cases[] = {
        {Field::StartChannel, 1, false, [](Form& f) -> std::string& { return f.analog[0].channel; }},
        {Field::StartValue, 1, false, [](Form& f) -> std::string& { return f.analog[0].value; }},
        {Field::WriteChannel, 1, false, [](Form& f) -> std::string& { return f.analog[1].channel; }},
        {Field::WriteValue, 1, false, [](Form& f) -> std::string& { return f.analog[1].value; }},
        {Field::StopChannel, 1, false, [](Form& f) -> std::string& { return f.analog[2].channel; }},
        {Field::StopValue, 1, false, [](Form& f) -> std::string& { return f.analog[2].value; }},
        {Field::PortStartBit, 1, true, [](Form& f) -> std::string& { return f.port[0].bit; }},
        {Field::PortWriteBit, 1, true, [](Form& f) -> std::string& { return f.port[1].bit; }},
        {Field::PortStopBit, 1, true, [](Form& f) -> std::string& { return f.port[2].bit; }},
        {Field::BufferSize, 2, false, [](Form& f) -> std::string& { return f.buffer; }},
        {Field::PrehistorySize, 2, true, [](Form& f) -> std::string& { return f.prehistory; }},
        {Field::SynchroChannel, 2, false, [](Form& f) -> std::string& { return f.synchroAnalog.channel; }},
        {Field::SynchroValue, 2, false, [](Form& f) -> std::string& { return f.synchroAnalog.value; }},
        {Field::SynchroPortBit, 2, true, [](Form& f) -> std::string& { return f.synchroPort.bit; }},
    };
    for (const auto& mistaken : cases) {
        for (const char* text : {"", " ", "x", "1x", "1 2", "--1", "nan", "1e999"}) {
            SCOPED_TRACE(std::to_string(static_cast<int>(mistaken.field)) + " " + text);
            Form form = filled(mistaken.mode, mistaken.onPort);
            mistaken.text(form) = text;
            SynchroSettings s = earlier();
            SynchroSizes sizes{11, 22};
            EXPECT_EQ(readSynchroForm(form, s, sizes).mistake, mistaken.field);
            EXPECT_EQ(s.SynchroAnalyzeMode, 7) << "the mode is set last";
            EXPECT_FALSE(s.StopAfterTrigged);
            const bool sizesRead = mistaken.field > Field::PrehistorySize;
            EXPECT_EQ(sizes.history, sizesRead ? 3800 : 22);
            const bool startRead = mistaken.field > Field::StartValue && mistaken.field <= Field::StopValue;
            EXPECT_EQ(s.AnalyzeAnalogStartValue, startRead ? 1.5 : 0.0);
        }
    }
    Form form = filled(1, true);
    SynchroSettings s;
    SynchroSizes sizes;
    form.port[1].bit = "16";
    EXPECT_EQ(readSynchroForm(form, s, sizes).mistake, Field::PortWriteBit);
}

TEST(SynchroForm, GoesThereAndBack) {
    for (const int32_t mode : {1, 2}) {
        for (const bool onPort : {false, true}) {
            SynchroSettings s;
            SynchroSizes sizes;
            EXPECT_EQ(readSynchroForm(filled(mode, onPort), s, sizes).mistake, Field::None);
            Form shown;
            fillSynchroForm(s, sizes, shown);
            SynchroSettings again;
            SynchroSizes sizesAgain;
            EXPECT_EQ(readSynchroForm(shown, again, sizesAgain).mistake, Field::None);
            EXPECT_EQ(shown.mode, mode);
            EXPECT_EQ(mode == 1 ? shown.analysisOnPort : shown.synchroOnPort, onPort);
            EXPECT_EQ(shown.analog[1].value, mode == 1 && !onPort ? "-20.25" : "0");
            EXPECT_EQ(shown.analog[1].unitTag, mode == 1 && !onPort ? 1 : 2);
            EXPECT_EQ(again.AnalyzeAnalogStopValue, s.AnalyzeAnalogStopValue);
            EXPECT_EQ(again.SynchroPortBit, s.SynchroPortBit);
            EXPECT_EQ(again.SynchroAnalogMode, s.SynchroAnalogMode);
            EXPECT_EQ(sizesAgain.prehistory, sizes.prehistory);
            EXPECT_EQ(sizesAgain.history, sizes.history);
            EXPECT_TRUE(again.StopAfterTrigged);
        }
    }
    SynchroSettings open;  // names no source: the form keeps its own
    open.analysisOnAnalog = open.synchroOnAnalog = false;
    Form form;
    form.analysisOnPort = form.synchroOnPort = true;
    fillSynchroForm(open, {}, form);
    EXPECT_TRUE(form.analysisOnPort && form.synchroOnPort);
}

TEST(SynchroForm, RangeOfTheBufferBar) {
    const struct {
        size_t channels;
        int32_t maximum;
    } cases[] = {{0, 1000}, {1, 5242880}, {3, 1747626}, {160, 32768}};
    for (const auto& [channels, maximum] : cases) {
        EXPECT_EQ(bufferBarRange(channels).minimum, 20);
        EXPECT_EQ(bufferBarRange(channels).maximum, maximum) << channels;
    }
}

TEST(SynchroForm, BufferTyped) {
    const struct {
        const char* text;
        int32_t bar;
        std::optional<int32_t> edit;
    } cases[] = {{"20", 20, {}}, {"1000", 1000, {}}, {"19", 20, 20},          {"1001", 1000, 1000}, {"-5", 20, 20},
                 {"", 20, 20},   {"1e3", 20, 20},    {"99999999999", 20, 20}, {" 500 ", 500, {}},   {"5,5", 20, 20}};
    for (const auto& typed : cases) {
        const TypedSize got = bufferTyped(typed.text, {20, 1000});
        EXPECT_EQ(got.bar, typed.bar) << typed.text;
        EXPECT_EQ(got.edit, typed.edit) << typed.text;
    }
    EXPECT_EQ(bufferTyped("x", {-1, 7}).bar, 7);
}

TEST(SynchroForm, PrehistoryTyped) {
    const struct {
        const char* text;
        int32_t buffer;
        int32_t bar;
        std::optional<int32_t> edit;
    } cases[] = {{"150", 100, 100, 100}, {"100", 100, 100, {}},       {"0", 100, 0, {}},
                 {"-1", 1000, 0, 0},     {"-2000", 1000, 0, 0},       {"1005", 1000, 100, 1000},
                 {"9", 1000, 0, {}},     {"333", 1000, 33, {}},       {"5242880", 5242880, 100, {}},
                 {"x", 1000, 40, 400},   {"2147483647", 20, 100, 20}, {"5000000", 5242880, 95, {}}};
    for (const auto& typed : cases) {
        const TypedSize got = prehistoryTyped(typed.text, typed.buffer, 40);
        EXPECT_EQ(got.bar, typed.bar) << typed.text;
        EXPECT_EQ(got.edit, typed.edit) << typed.text;
    }
}

}  // namespace
}  // namespace tarno2::test
