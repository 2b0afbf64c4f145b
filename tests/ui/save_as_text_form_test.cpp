#include "ui/save_as_text_form.h"

#include <QPlainTextEdit>
#include <algorithm>
#include <gmock/gmock.h>

#include "platform/file.h"
#include "records/passport.h"
#include "records/record_description.h"
#include "tests/ui/widgets.h"

namespace tarno2::test {
namespace {

constexpr int kGuard = 60000;  // ms, for what ends at once on an idle machine

class SaveAsTextForm : public ::testing::Test {
protected:
    SaveAsTextForm() {
        languageTable().select(kLanguageEnglish);
        RecordDescription description;
        description.setFrequency(2.0);
        description.setPacketMode(0, 0.0, 0);
        description.setDataFormat({2, 0, 0xFFFF, 16, 0, 0, 0, 1});
        description.addChannelRange(5.0, -5.0);
        EXPECT_TRUE(description.writeForDataFile(folder_.file("run.dat")));
    }
    ~SaveAsTextForm() override { languageTable().select(kLanguageEnglish); }

    /// Writes the recording and opens the window on it.
    void open(const std::string& data = std::string("\x00\x80\x00\x00\xFF\x7F", 6)) {
        form_ = std::make_unique<T_SaveAsTextForm>(settings_, TextExportSource{folder_.write("run.dat", data), known_},
                                                   nullptr);
        form_->show();
    }
    template <typename Control>
    Control* find(const char* name) {
        return findIn<Control>(*form_, name);
    }
    void click(const char* radio) { clickIn(*form_, radio); }
    void type(const char* field, const char* text) {
        EXPECT_TRUE(find<QWidget>(field)->isEnabled()) << field;
        typeIn(*form_, field, QString::fromUtf8(text));
    }
    QString text(const char* label) { return find<QLabel>(label)->text(); }

    /// Saves and reads the report that follows, which is closed by its button.
    void save() {
        QTimer closer;
        QObject::connect(&closer, &QTimer::timeout, [this] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                title_ = box->windowTitle();
                report_ = box->text();
                enabledAtReport_ = find<QPushButton>("SaveButton")->isEnabled();
                QTest::mouseClick(box->buttons().first(), Qt::LeftButton);
            }
        });
        closer.start(5);
        report_.clear();
        QTest::mouseClick(find<QPushButton>("SaveButton"), Qt::LeftButton);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !report_.isEmpty(); }, kGuard));
        EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeModalWidget() == nullptr; }, kGuard));
    }
    [[nodiscard]] std::string csv(const char* name = "run.csv") const { return readFile(folder_.file(name)); }

    TemporaryFolder folder_;
    TextExportSettings settings_;
    KnownInputs known_;
    std::unique_ptr<T_SaveAsTextForm> form_;
    QString title_;
    QString report_;
    bool enabledAtReport_ = false;
};

TEST_F(SaveAsTextForm, EveryControlReachesTheText) {
    settings_ = {9, 0, 20, 20, 0, 3, '|', 250, 0};
    open();
    EXPECT_EQ(find<QLineEdit>("FileNameEdit")->text(), fromFileName(folder_.file("run.csv")));
    EXPECT_TRUE(find<QRadioButton>("FirstColumnAbsent")->isChecked());
    EXPECT_EQ(find<QSpinBox>("TimePrecision")->value(), 9);
    EXPECT_EQ(find<QSpinBox>("TabCount")->value(), 99);
    EXPECT_FALSE(find<QSpinBox>("TimePrecision")->isEnabled());
    EXPECT_TRUE(find<QSpinBox>("VoltagePrecision")->isEnabled());
    EXPECT_FALSE(find<QLineEdit>("Symbol")->isEnabled());
    EXPECT_FALSE(find<QSpinBox>("MaximumLines")->isEnabled());

    click("FirstColumnSeconds");
    type("TimePrecision", "1");
    click("DataColumnVolts");
    type("VoltagePrecision", "2");
    click("DecimalComma");
    click("DividerSymbol");
    EXPECT_FALSE(find<QSpinBox>("TabCount")->isEnabled());
    type("Symbol", ";");
    type("SymbolCount", "2");
    type("FileNameEdit", folder_.file("volts.txt").c_str());
    click("LimitLines");
    type("MaximumLines", "1000");
    save();
    EXPECT_EQ(title_, "Report");
    EXPECT_EQ(report_, "Conversion finished");
    EXPECT_TRUE(enabledAtReport_);
    EXPECT_FALSE(form_->isVisible());
    EXPECT_EQ(csv("volts.txt"), "0,0;;-5,00\r\n0,5;;0,00\r\n1,0;;5,00\r\n");
    EXPECT_EQ(settings_.firstColumnMode, 2);
    EXPECT_EQ(settings_.columnDivider, ';');
    EXPECT_EQ(settings_.columnDividerCount, 2);
    EXPECT_EQ(settings_.maxLineCount, 1000);
    EXPECT_EQ(text("ProgressFiles"), "1 / 1");
    EXPECT_EQ(text("ProgressLines"), "3 / 3");
    EXPECT_EQ(find<QProgressBar>("ProgressBar")->value(), 1000);
}

TEST_F(SaveAsTextForm, UnitsAndHeadingsComeFromThePassport) {
    Passport passport;
    passport.channels.push_back({3, "inlet", "bar", 1, 5.0, -5.0, -2.0, 1.0});
    const std::string json = folder_.write("run.json", passportText(passport));
    settings_.voltagePrecision = 1;
    open();
    EXPECT_FALSE(find<QCheckBox>("Headings")->isChecked());
    click("DataColumnUnits");
    click("Headings");
    save();
    EXPECT_EQ(report_, "Conversion finished");
    EXPECT_EQ(csv(), "\tinlet [bar]\r\n\t11.0\r\n\t1.0\r\n\t-9.0\r\n");
    EXPECT_EQ(settings_.dataColumnMode, 2);
    EXPECT_EQ(settings_.header, 1);

    removeFile(json);
    open();
    EXPECT_TRUE(find<QCheckBox>("Headings")->isChecked());
    save();
    EXPECT_TRUE(report_.contains("the values are volts")) << report_.toStdString();
    EXPECT_EQ(csv(), "\tChannel 0 [V]\r\n\t-5.0\r\n\t0.0\r\n\t5.0\r\n");
}

TEST_F(SaveAsTextForm, TheOtherModesToo) {
    settings_ = {2, 1, 6, 0, 1, 1, ';', 1, 100};
    open(std::string(402, '\0'));
    click("FirstColumnClock");
    EXPECT_FALSE(find<QSpinBox>("TimePrecision")->isEnabled());
    click("FirstColumnSamples");
    click("DataColumnCodes");
    click("DecimalPoint");
    click("DividerTab");
    type("TabCount", "3");
    EXPECT_FALSE(find<QSpinBox>("SymbolCount")->isEnabled());
    save();
    EXPECT_EQ(csv("run_2.csv"), "200\t\t\t0\r\n");
    EXPECT_EQ(text("ProgressFiles"), "3 / 3");

    open(std::string(402, '\0'));
    click("FirstColumnAbsent");
    click("LimitLines");
    save();
    EXPECT_EQ(csv().size(), size_t{201} * 6);
    EXPECT_EQ(settings_.maxLineCount, 0);
}

TEST_F(SaveAsTextForm, CancelStopsAndTheWindowStaysOpen) {
    open(std::string(size_t{64} << 20, '\0'));
    QTimer canceller;
    QObject::connect(&canceller, &QTimer::timeout, [this] {
        if (!find<QPushButton>("SaveButton")->isEnabled()) {
            EXPECT_FALSE(find<QLineEdit>("FileNameEdit")->isEnabled());
            QTest::mouseClick(find<QPushButton>("CancelButton"), Qt::LeftButton);
        }
    });
    canceller.start(0);
    save();
    EXPECT_EQ(report_, "Conversion interrupted by the user");
    EXPECT_TRUE(form_->isVisible());
    EXPECT_TRUE(find<QLineEdit>("FileNameEdit")->isEnabled());
    const std::string text = csv();
    const auto lines = std::count(text.begin(), text.end(), '\n');
    EXPECT_EQ(this->text("ProgressLines"), QString::number(lines) + " / " + QString::number(32 << 20));
    canceller.stop();
    QTest::mouseClick(find<QPushButton>("CancelButton"), Qt::LeftButton);
    EXPECT_FALSE(form_->isVisible());
}

TEST_F(SaveAsTextForm, ClosingWaitsForTheConversionAndSaysNothing) {
    open(std::string(size_t{64} << 20, '\0'));
    type("VoltagePrecision", "3");
    QTest::mouseClick(find<QPushButton>("SaveButton"), Qt::LeftButton);
    form_->Timer1Timer();
    QTest::keyClick(form_.get(), Qt::Key_Escape);
    EXPECT_FALSE(form_->isVisible());
    EXPECT_TRUE(find<QPushButton>("SaveButton")->isEnabled());
    const std::string text = csv();
    EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(settings_.voltagePrecision, 3);
}

TEST_F(SaveAsTextForm, SaysWhatIsWrong) {
    open();
    type("FileNameEdit", folder_.file("run.dat").c_str());
    save();
    EXPECT_EQ(report_, uiText(TextId::ExportOntoItself));
    type("FileNameEdit", folder_.file("run.dat/x.csv").c_str());
    save();
    EXPECT_TRUE(report_.startsWith("File \"" + fromFileName(folder_.file("run.dat/x.csv")) + "\" can not be written"))
        << report_.toStdString();
    EXPECT_TRUE(form_->isVisible());

    folder_.write("run.txt", "ChannelNumber = 1\r\n");
    open();
    save();
    EXPECT_TRUE(report_.contains("key \"DataFormat\" is missing")) << report_.toStdString();
    folder_.write("run.txt", std::string(size_t{21} << 20, ' '));
    open();
    save();
    EXPECT_TRUE(report_.contains("run.txt\" can not be read: ")) << report_.toStdString();
}

TEST_F(SaveAsTextForm, WarnsOfWhatIsOdd) {
    std::string description = readFile(folder_.file("run.txt"));
    description.replace(description.find("PacketMode = 0"), 14, "PacketMode = 1");
    description.replace(description.find("SynchroEnable = 0"), 17, "SynchroEnable = 1");
    folder_.write("run.txt", description);
    settings_.firstColumnMode = 3;
    open(std::string(5, '\0'));
    save();
    EXPECT_TRUE(report_.contains(uiText(TextId::PacketFrequencyUnknown)));
    EXPECT_TRUE(report_.contains(uiText(TextId::TriggeredTimeRunsOn)));
    EXPECT_TRUE(report_.contains("is incomplete")) << report_.toStdString();
    known_.packetFrequency = 4.0;
    open(std::string(4, '\0'));
    save();
    EXPECT_EQ(report_, "Conversion finished\n\n" + uiText(TextId::TriggeredTimeRunsOn));
    EXPECT_NE(csv().find("0:0:0:250.000000\t"), std::string::npos);
}

TEST_F(SaveAsTextForm, AFileNameCanBeChosen) {
    open();
    chooseFile(*form_, fromFileName(folder_.file("other.csv")));
    QTest::mouseClick(find<QPushButton>("ButtonSetFileName"), Qt::LeftButton);
    EXPECT_EQ(find<QLineEdit>("FileNameEdit")->text(), fromFileName(folder_.file("other.csv")));
}

TEST_F(SaveAsTextForm, SavesAPartInTheFormatOfAnotherProgram) {
    open();
    auto* const preview = find<QPlainTextEdit>("Preview");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->toPlainText().isEmpty(); }, kGuard));
    EXPECT_EQ(preview->toPlainText(), "\t-32768.000000\n\t0.000000\n\t32767.000000");
    auto* const format = find<QComboBox>("Format");
    ASSERT_EQ(static_cast<size_t>(format->count()), exporters().size());
    format->setCurrentIndex(format->findText("NumPy (NPY)"));
    EXPECT_EQ(find<QLineEdit>("FileNameEdit")->text(), fromFileName(folder_.file("run.npy")));
    EXPECT_FALSE(find<QRadioButton>("FirstColumnSeconds")->isEnabled());
    EXPECT_TRUE(find<QRadioButton>("DataColumnVolts")->isEnabled());
    EXPECT_TRUE(preview->toPlainText().isEmpty());

    type("Channels", "nobody");
    save();
    EXPECT_EQ(report_, "The recording has no channel \"nobody\".");
    type("Channels", "0");
    type("From", "0.5s");
    type("To", "2");
    folder_.write("run.npy", "mine");
    QTest::mouseClick(find<QPushButton>("SaveButton"), Qt::LeftButton);
    QStringList said;
    const auto answer = [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            said << box->text();
            for (QAbstractButton* const button : box->buttons()) {
                if (box->buttonRole(button) == QMessageBox::AcceptRole) {
                    button->click();
                    break;
                }
            }
        }
        return !form_->isVisible();
    };
    ASSERT_TRUE(QTest::qWaitFor(answer, kGuard));
    EXPECT_THAT(said.value(0).toStdString(), testing::HasSubstr("run.npy\" exists already."));
    EXPECT_EQ(said.value(said.size() - 1), "Conversion finished");
    const std::string array = csv("run.npy");
    EXPECT_THAT(array, testing::HasSubstr("('Channel 0', '<i2'), ], 'fortran_order': False, 'shape': (1,)"));
    EXPECT_EQ(array.substr(array.size() - 2), std::string(2, '\0'));
}

}  // namespace
}  // namespace tarno2::test
