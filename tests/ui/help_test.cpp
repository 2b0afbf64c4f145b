// F1 and the page that it opens.

#include "ui/help.h"

#include <QAction>
#include <QDialog>

#include "platform/file.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class Help : public MainWindow {};

TEST_F(Help, ThePageIsThatOfThePartThatHasTheFocus) {
    open();
    EXPECT_EQ(manualPlace(nullptr), "index");
    EXPECT_EQ(manualPlace(&form()), "window#window");
    EXPECT_EQ(manualPlace(find("StartButton")), "window#strip");
    EXPECT_EQ(manualPlace(find("ChannelTable")), "channels#table");
    EXPECT_EQ(manualPlace(find("DriverBox")), "boards#panel");
    EXPECT_EQ(manualPlace(find("FrequencyBox")), "measuring#rate");
    EXPECT_EQ(manualPlace(find("CommentEdit")), "measuring#file");
    EXPECT_EQ(manualPlace(find("SelectAllButton")), "channels#panel");
    EXPECT_EQ(manualPlace(find("StayOnTopBox")), "window#program");
    EXPECT_EQ(manualPlace(find("MessageList")), "messages#messages");
    EXPECT_EQ(manualPlace(find("MarkButton")), "measuring#marks");
    EXPECT_EQ(manualPlace(find("MarkEdit")), "measuring#marks");
}

TEST_F(Help, TheKeyIsHeardInDialogs) {
    QAction manual;
    QSignalSpy asked(&manual, &QAction::triggered);
    installHelpKey(manual);
    QDialog dialog;
    auto* field = new QLineEdit(&dialog);
    QTest::keyClick(field, Qt::Key_F1);
    EXPECT_EQ(asked.count(), 1);
    QTest::keyClick(field, Qt::Key_F1, Qt::ControlModifier);
    EXPECT_EQ(asked.count(), 1);
}

TEST(ManualPlaces, EachIsAHeadingOfTheManualInBothLanguages) {
    for (const char* language : {"en", "ru"}) {
        for (const QString& place : manualPlaces()) {
            const QStringList parts = place.split('#');
            const std::string source =
                readFile(std::string(TARNO2_MANUAL) + "/" + language + "/" + parts.front().toStdString() + ".md");
            EXPECT_NE(source.find("{#" + parts.back().toStdString() + "}\n"), std::string::npos)
                << language << ": " << place.toStdString();
        }
    }
}

}  // namespace
}  // namespace tarno2::test
