// Recordings one above the other in the main window, by menu, keys, mouse and drops.

#include <QAction>
#include <QDockWidget>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>
#include <QWindow>
#include <cmath>
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "records/passport.h"
#include "records/record_description.h"
#include "tests/ui/main_window.h"
#include "ui/compared_recording.h"
#include "ui/main_form.h"
#include "ui/recording_stack.h"

namespace tarno2::test {
namespace {

constexpr int64_t kBegun = 1'770'000'000'000'000;  // microseconds since 1970

class WindowCompare : public MainWindow {
protected:
    /// So many seconds at that rate, begun so much after the start of all; no passport tells when with `later` below 0.
    /// Its folder's time is `offset` minutes ahead of UTC.
    std::string recorded(const std::string& base, double rate, double seconds, double later, int offset = 180) {
        const auto count = static_cast<size_t>(rate * seconds);
        const std::vector<int16_t> codes(count, 1000);
        std::string name =
            folder_.write(base + ".dat", {reinterpret_cast<const char*>(codes.data()), codes.size() * sizeof(int16_t)});
        RecordDescription description;
        description.setFrequency(rate);
        description.setSynchronousChannels(0);
        description.setDataCountPerChannel(count);
        description.setPacketMode(0, 0.0, 0);
        description.setBackwardOrder(0);
        description.setDataFormat({2, 0, 0xFFFF, 16, 0, 0, 0, 1});
        description.addChannelRange(5.0, -5.0);
        EXPECT_TRUE(description.writeForDataFile(name));
        if (later >= 0.0) {
            Passport passport;
            passport.driver = "Simulator";
            passport.start = kBegun + std::llround(later * 1e6);
            passport.startOffset = offset;
            passport.rate = {rate, rate, 1, rate, false, {}, {}};
            passport.sample = {2, true, 16, 0, 0xFFFF, -32768, 32767, 0, 0, 0, false};
            passport.channels.push_back({0, "inlet", "V", 1, 5.0, -5.0, 1.0, 0.0});
            passport.pieces.push_back({base + ".dat", count, 2 * count, 0, ""});
            folder_.write(base + ".json", passportText(passport));
        }
        return name;
    }
    void open() {
        wanted_.axisXUnit = 3;
        wanted_.showFormVisible = true;
        MainWindow::open();
        first_ = find<T_ShowForm>("T_ShowForm");
    }
    /// Drops the file where the mouse would over that widget.
    void dropFile(QWidget& over, const std::string& file, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(fromFileName(file))});
        const QPoint place = over.mapTo(over.window(), over.rect().center());
        QWindow* window = over.window()->windowHandle();
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, keys);
        QCoreApplication::sendEvent(window, &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, keys);
        QCoreApplication::sendEvent(window, &event);
        QCoreApplication::processEvents();
    }
    [[nodiscard]] QList<ComparedRecording*> rows() { return form().findChildren<ComparedRecording*>(); }
    /// Seconds from one edge of the first picture to the other, counted from its recording's beginning.
    [[nodiscard]] PictureEdges shown(const T_ShowForm& view, double rate) const {
        const SharedPart part = view.sharedPart();
        return {(part.edges.low - part.origin) / rate, (part.edges.high - part.origin) / rate};
    }
    void expectShown(const T_ShowForm& view, double rate, double low, double high) {
        EXPECT_NEAR(shown(view, rate).low, low, 1e-6);
        EXPECT_NEAR(shown(view, rate).high, high, 1e-6);
    }
    void chooseAlignment(ComparedRecording& row, Qt::Key key) {
        auto* box = row.findChild<QComboBox*>("Alignment");
        box->setFocus();
        QTest::keyClick(box, key);
        QCoreApplication::processEvents();
    }

    T_ShowForm* first_ = nullptr;
};

// Rates and time zones of both differ; the second began 2.5 s later.
TEST_F(WindowCompare, AlignedAtTheStartOrByTheTimeOfDay) {
    const std::string first = recorded("first", 1000.0, 4.0, 10.0);
    const std::string second = recorded("second", 250.0, 6.0, 12.5, 120);
    open();
    dropFile(*find("PaintBox1"), first);
    EXPECT_EQ(first_->openedFile(), first);
    inDialog<QFileDialog>(form(), [&](QFileDialog& dialog) {
        dialog.selectFile(fromFileName(second));
        QTest::keyClick(findIn<QLineEdit>(dialog, "fileNameEdit"), Qt::Key_Return);
    });
    press(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(rows().size(), 1);
    ComparedRecording& row = *rows().front();
    expectShown(*first_, 1000.0, 0.0, 6.0);
    expectShown(*row.view(), 250.0, 0.0, 6.0);

    chooseAlignment(row, Qt::Key_Down);
    EXPECT_TRUE(row.findChild<QComboBox*>("Alignment")->currentText().contains("+2.500 s"));
    expectShown(*first_, 1000.0, 0.0, 8.5);
    expectShown(*row.view(), 250.0, 0.0, 8.5);
    EXPECT_NEAR(row.view()->sharedPart().edges.low, -2.5 * 250.0, 1e-6) << "nothing of it for 2.5 s";

    // What is done in one picture is done in the other, and gone back in both.
    auto* below = row.view()->findChild<QWidget*>("PaintBox1");
    form().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form()));
    below->setFocus();
    QTest::keyClick(below, Qt::Key_Plus);
    expectShown(*row.view(), 250.0, 2.125, 6.375);
    expectShown(*first_, 1000.0, 2.125, 6.375);
    QTest::keyClick(below, Qt::Key_C);
    EXPECT_NEAR(row.view()->sharedPart().cursors[1], (first_->sharedPart().cursors[1] / 1000.0 - 2.5) * 250.0, 1e-6);
    QTest::keyClick(below, Qt::Key_Backspace);
    expectShown(*first_, 1000.0, 0.0, 8.5);
    QTest::keyClick(below, Qt::Key_Plus);
    QTest::keyClick(below, Qt::Key_End);
    expectShown(*first_, 1000.0, 4.25, 8.5);

    clickIn(row, "RemoveCompared");
    expectShown(*first_, 1000.0, 0.0, 4.0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(rows().empty());
}

// A report of a comparison has all that is compared.
TEST_F(WindowCompare, PicturesAreSavedTogether) {
    open();
    dropFile(*find("PaintBox1"), recorded("first", 1000.0, 4.0, 10.0));
    dropFile(*find("PaintBox1"), recorded("second", 1000.0, 4.0, 12.0), Qt::ControlModifier);
    ASSERT_EQ(rows().size(), 1);
    const auto pixels = [](const QWidget& view) {
        return view.findChild<QWidget*>("PaintBox1")->size() * view.devicePixelRatio();
    };
    const QSize upper = pixels(*first_);
    const QSize lower = pixels(*rows().front()->view());
    const QString file = fromFileName(folder_.file("both"));
    const auto save = [&](const QString& ending) {
        chooseFile(*first_, file + ending);
        for (QAction* action : first_->findChildren<QAction*>()) {
            if (action->text() == uiText(TextId::SavePicture)) {
                action->trigger();
            }
        }
    };
    save(".png");
    const QImage both(file + ".png");
    EXPECT_EQ(both.width(), std::max(upper.width(), lower.width()));
    EXPECT_GT(both.height(), upper.height() + lower.height());
    EXPECT_LT(both.height(), upper.height() + lower.height() + 100);

    save(".svg");
    QFile drawn(file + ".svg");
    ASSERT_TRUE(drawn.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(drawn.readAll());
    EXPECT_EQ(text.count("<svg "), 3);
    EXPECT_TRUE(text.contains(">first") && text.contains(">second"));
    QSet<QString> clips;
    QRegularExpressionMatchIterator match = QRegularExpression("<clipPath id=\"([^\"]+)\"").globalMatch(text);
    while (match.hasNext()) {
        const QString clip = match.next().captured(1);
        EXPECT_FALSE(clips.contains(clip)) << qPrintable(clip);
        clips.insert(clip);
    }
    for (const QString& part : text.split("url(#").mid(1)) {
        EXPECT_TRUE(clips.contains(part.section(')', 0, 0)));
    }

    if (kPathSeparator == '/') {
        const ScopedEnvironment noFolder("TMPDIR", "/dev/null");
        QFile::remove(file + ".png");
        save(".png");
        EXPECT_FALSE(QFile::exists(file + ".png"));
        EXPECT_TRUE(listHas("/dev/null")) << "why there is no picture";
    }
}

TEST_F(WindowCompare, DroppedRecordingsAreOpenedAddedOrRefused) {
    const std::string first = recorded("first", 1000.0, 4.0, 10.0);
    const std::string noClock = recorded("noclock", 1000.0, 4.0, -1.0);
    const std::string bare = folder_.write("bare.dat", "1234");
    open();
    dropFile(*form().menuBar(), first, Qt::ControlModifier);
    EXPECT_EQ(first_->openedFile(), first) << "nothing was opened before";
    EXPECT_TRUE(rows().empty());
    dropFile(*find("PaintBox1"), bare, Qt::ControlModifier);
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(listHas("has no description"));
    for (int i = 0; i < 4; ++i) {
        dropFile(*find("PaintBox1"), noClock, Qt::ControlModifier);
    }
    ASSERT_EQ(rows().size(), 3);
    EXPECT_TRUE(listHas("No more than 4 recordings"));
    chooseAlignment(*rows().front(), Qt::Key_Down);
    EXPECT_EQ(rows().front()->findChild<QComboBox*>("Alignment")->currentIndex(), 0) << "no time of day is known";
    // A view of its own window takes drops as well.
    find<QDockWidget>("SignalDock")->setFloating(true);
    dropFile(*find("PaintBox1"), noClock);
    EXPECT_EQ(first_->openedFile(), noClock);
    EXPECT_TRUE(rows().empty()) << "they belonged to the one before";
}

}  // namespace
}  // namespace tarno2::test
