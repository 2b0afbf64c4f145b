// Marks as an operator sets and finds them.

#include <QSignalSpy>
#include <QTableView>

#include "records/mark_list.h"
#include "tests/ui/main_window.h"
#include "ui/mark_list_window.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class WindowMarks : public MainWindow {
protected:
    [[nodiscard]] std::vector<RecordingMark> marks() const {
        return findMarks(folder_.file("data/run.marks.csv")).marks;
    }
};

TEST_F(WindowMarks, AreSetByTheKeyAndNamedAfterIt) {
    open();
    press(Qt::Key_F8);
    EXPECT_FALSE(find("MarkButton")->isVisible()) << "nothing is recorded";
    record();
    ASSERT_TRUE(waitForBytes(40000));
    auto* edit = find<QLineEdit>("MarkEdit");
    press(Qt::Key_F8);
    ASSERT_TRUE(QTest::qWaitFor([this] { return marks().size() == 1; }, 30000));
    EXPECT_EQ(marks()[0].text, "") << "the mark is at the key";
    QTest::keyClicks(edit, "valve, open");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_FALSE(edit->isVisible());
    click("MarkButton");
    QTest::keyClicks(edit, "no");
    QTest::keyClick(edit, Qt::Key_Escape);
    press(Qt::Key_F8);
    QTest::keyClicks(edit, "not yet tak");
    press(Qt::Key_F6);
    EXPECT_FALSE(edit->isVisible());
    const auto kept = marks();
    ASSERT_EQ(kept.size(), 3U);
    EXPECT_EQ(kept[0].text, "valve, open");
    EXPECT_EQ(kept[1].text, "");
    EXPECT_EQ(kept[2].text, "not yet tak") << "the recording ended before Enter";
    EXPECT_LE(kept[0].frame, kept[1].frame);
    EXPECT_GE(kept[0].frame, 10000U);
}

TEST_F(WindowMarks, AreListedAndJumpedTo) {
    open();
    record();
    ASSERT_TRUE(waitForBytes(4000));
    press(Qt::Key_F8);
    QTest::keyClicks(find<QLineEdit>("MarkEdit"), "here");
    QTest::keyClick(find<QLineEdit>("MarkEdit"), Qt::Key_Return);
    press(Qt::Key_M, Qt::ControlModifier);
    auto* list = form().findChild<MarkListWindow*>();
    ASSERT_NE(list, nullptr);
    auto* table = list->findChild<QTableView*>();
    ASSERT_TRUE(QTest::qWaitFor([&] { return table->model()->rowCount() == 1; }, 30000));
    press(Qt::Key_F6);
    EXPECT_EQ(table->model()->index(0, 3).data().toString(), "here");
    EXPECT_EQ(table->model()->index(0, 2).data().toString(), "operator");
    QSignalSpy jumped(list, &MarkListWindow::jump);
    table->setFocus();
    table->setCurrentIndex(table->model()->index(0, 0));
    QTest::keyClick(table, Qt::Key_Return);
    ASSERT_EQ(jumped.size(), 1);
    EXPECT_EQ(jumped[0][0].toULongLong(), marks()[0].frame);
}

}  // namespace
}  // namespace tarno2::test
