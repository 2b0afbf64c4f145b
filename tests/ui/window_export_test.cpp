// The way from a recording to its text, through the main window.

#include <QAction>
#include <algorithm>

#include "tests/ui/main_window.h"
#include "ui/save_as_text_form.h"

namespace tarno2::test {
namespace {

class WindowExport : public MainWindow {
protected:
    /// Asks for the conversion by key, and takes what the file dialog offers or the file of that name.
    QDialog* choose(const QString& file = {}) {
        inDialog<QFileDialog>(form(), [this, file](QFileDialog& dialog) {
            auto* const name = findIn<QLineEdit>(dialog, "fileNameEdit");
            offered_ = name->text();
            name->setText(file.isEmpty() ? offered_ : file);
            QTest::keyClick(name, Qt::Key_Return);
        });
        find<QAction>("SaveAsTextButton")->trigger();
        return textForm();
    }
    QDialog* textForm() {
        for (QDialog* dialog : form().findChildren<QDialog*>()) {
            if (dynamic_cast<T_SaveAsTextForm*>(dialog) != nullptr) {
                return dialog;
            }
        }
        return nullptr;
    }

    QString offered_;
};

TEST_F(WindowExport, TheLastRecordingIsOfferedAndTheWindowStaysUsable) {
    open();
    record();
    press(Qt::Key_F6);
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    QDialog* const text = choose();
    EXPECT_EQ(offered_, "run.dat");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(findIn<QLineEdit>(*text, "FileNameEdit")->text(), QString::fromStdString(folder_.file("data/run.csv")));

    // A second wish brings the same window forward; a recording starts and stops beside it.
    find<QAction>("SaveAsTextButton")->trigger();
    EXPECT_EQ(textForm(), text);
    form().RussianChooseClick();
    EXPECT_EQ(findIn<QRadioButton>(*text, "DataColumnVolts")->text(), QStringLiteral("Вольты"));
    form().EnglishChooseClick();
    record();
    click("StopButton");
    ASSERT_TRUE(waitForState(TextId::StatusStopped));

    QTest::mouseClick(findIn<QRadioButton>(*text, "FirstColumnSamples"), Qt::LeftButton, {}, QPoint(8, 8));
    answer(TextId::ButtonOk);
    QTest::mouseClick(findIn<QPushButton>(*text, "SaveButton"), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([this] { return textForm() == nullptr; }, 30000));
    EXPECT_EQ(asked_, QStringList("Conversion finished"));
    const std::string csv = readFile(folder_.file("data/run.csv"));
    const auto frames = readFile(folder_.file("data/run.dat")).size() / 4;
    EXPECT_EQ(static_cast<size_t>(std::count(csv.begin(), csv.end(), '\n')), frames);
    EXPECT_EQ(csv.substr(0, 2), "0\t");

    // The choice is kept for the next time.
    ASSERT_TRUE(close());
    EXPECT_NE(readFile(folder_.file("Tarno2.cfg")).find("TextFirstColumnMode = 1"), std::string::npos);
}

TEST_F(WindowExport, ClosingTheMainWindowEndsAConversion) {
    wanted_.textExport.firstColumnMode = 1;
    open();
    const QString data = QString::fromStdString(folder_.write("long.dat", std::string(size_t{64} << 20, '\0')));
    folder_.write("long.txt", "DataFormat = 2, 0, 65535, 16, 0, 0, 0, 1\r\nChannelNumber = 1\r\n");
    QDialog* const text = choose(data);
    ASSERT_NE(text, nullptr);
    QTest::mouseClick(findIn<QPushButton>(*text, "SaveButton"), Qt::LeftButton);
    EXPECT_FALSE(findIn<QPushButton>(*text, "SaveButton")->isEnabled());
    EXPECT_TRUE(close());
    const std::string csv = readFile(folder_.file("long.csv"));
    EXPECT_EQ(csv.substr(csv.size() - 2), "\r\n");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(WindowExport, GivingUpTheChoiceOpensNothing) {
    open();
    chooseFile(form(), {});
    find<QAction>("SaveAsTextButton")->trigger();
    EXPECT_EQ(textForm(), nullptr);
}

}  // namespace
}  // namespace tarno2::test
