// What a start refuses, and in which order.

#include <filesystem>
#include <functional>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/fake_device.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class WindowRefusal : public MainWindow {
protected:
    ~WindowRefusal() override { drop(); }

    /// Starts in both languages: each time the start is refused with that text.
    void expectRefusal(TextId id) {
        for (const char* language : {"RussianChoose", "EnglishChoose"}) {
            find<QAction>(language)->trigger();
            press(Qt::Key_F5);
            const QString wanted = uiText(TextId::Attention, {uiText(id)});
            EXPECT_EQ(attention(), wanted);
            EXPECT_TRUE(listHas(wanted));
            EXPECT_EQ(stateWord(), uiText(TextId::StatusReady));
        }
    }
    void choose(const char* list, Qt::Key key) {
        auto* box = find<QComboBox>(list);
        box->setFocus();
        QTest::keyClick(box, key);
    }
    /// Another format of the fake board's samples.
    void format(uint32_t bytes) {
        fake_.format.m_nBytes = bytes;
        form().BaseBoxChange(1);
    }

    FakeDevice fake_;
};

// Everything is wrong at first, then one thing after the other is put right.
TEST_F(WindowRefusal, EachInItsOrderInBothLanguages) {
    fake_.numbers[kADCGetAbiVersion] = kADCAbiVersion;
    fake_.numbers[kADCGetChannelCount] = 4;
    fake_.numbers[kADCGetBoardModes] = kADCModePacket;
    fake_.setupAnswers[0][0] = 0;
    fake_.codeRangeKnown = false;
    fake_.readerPaced = 100000;
    wanted_.channels[1].active = false;
    wanted_.wish.setMode(kBoardPacketMode, true);
    wanted_.wish.stopRule = StopRule::Size;
    wanted_.stopValue = 0.0;
    wanted_.wish.synchro.SynchroAnalyzeMode = 2;
    wanted_.wish.synchro.SynchroAnalogChannelNumber = 3;
    open();
    std::string why;
    ASSERT_TRUE(form().selection().driver().attach(&fake_, "Fake", folder_.path(), why)) << why;
    format(3);
    openPanel(2);
    type("FrequencyBox", "fast");
    openPanel(3);

    type("FileNameEdit", "");
    expectRefusal(TextId::FileNameEmpty);
    ASSERT_TRUE(createDirectory(folder_.file("folder.dat")).ok());
    type("FileNameEdit", QString::fromStdString(folder_.file("folder.dat")));
    expectRefusal(TextId::FileNameIsFolder);
    type("FileNameEdit", QString::fromStdString(folder_.file("run.txt")));
    expectRefusal(TextId::FileNameEqualsDescription);
    if (kPathSeparator == '/' && isDirectory("/proc/self")) {
        const auto before = std::filesystem::current_path();
        ASSERT_TRUE(createDirectory(folder_.file("gone")).ok());
        std::filesystem::current_path(folder_.file("gone"));
        std::filesystem::remove(folder_.file("gone"));
        type("FileNameEdit", "run.dat");
        expectRefusal(TextId::NotEnoughMemory);
        std::filesystem::current_path(before);
    }
    if (isAbsolutePath("C:\\")) {
        type("FileNameEdit", "\\\\localhost\\nowhere\\run.dat");
        expectRefusal(TextId::NotLocalDrive);
        type("FileNameEdit", "B:\\run.dat");
        expectRefusal(TextId::UnknownDrive);
    }
    const std::string belowFile = folder_.write("file", "x") + "/run.dat";
    type("FileNameEdit", QString::fromStdString(belowFile));
    expectRefusal(TextId::PacketModeOneChannel);
    openPanel(2);
    QTest::mouseClick(find<QCheckBox>("PacketModeBox"), Qt::LeftButton, {}, QPoint(8, 8));
    expectRefusal(TextId::UndefinedFormat);
    format(2);
    openPanel(4);
    auto* channels = find("ChannelTable");
    channels->setFocus();
    QTest::keyClick(channels, Qt::Key_Home, Qt::ControlModifier);
    QTest::keyClick(channels, Qt::Key_Space);
    expectRefusal(TextId::ChannelCountZero);
    QTest::keyClick(channels, Qt::Key_Space);
    expectRefusal(TextId::FrequencyIncorrect);
    openPanel(2);
    type("FrequencyBox", "1e5");
    expectRefusal(TextId::StopValueIncorrect);
    openPanel(3);
    choose("StopModeBox", Qt::Key_Home);
    expectRefusal(TextId::InitError);
    fake_.setupAnswers[0][0] = 1;
    expectRefusal(TextId::StaticParametersMistake);
    fake_.codeRangeKnown = true;
    form().BaseBoxChange(1);
    expectRefusal(TextId::SynchroParametersMistake);
    form().programSettings().wish.synchro.SynchroAnalyzeMode = 0;
    expectRefusal(TextId::FileNameError);
    EXPECT_EQ(fake_.countCalls("Start"), 0U);

    type("FileNameEdit", QString::fromStdString(folder_.file("data/run.dat")));
    record();
    EXPECT_EQ(attention(), QString());
    press(Qt::Key_F6);
    EXPECT_EQ(fake_.countCalls("Start"), 1U);
}

}  // namespace
}  // namespace tarno2::test
