#include <QAbstractItemModel>
#include <QClipboard>
#include <QFile>
#include <QImage>
#include <QMouseEvent>
#include <QTableView>
#include <QTableWidget>
#include <thread>

#include "core/devices/scoper_library.h"
#include "measure/transform.h"
#include "platform/clock.h"
#include "records/record_description.h"
#include "tests/display/signal_source.h"
#include "tests/ui/widgets.h"
#include "ui/measurement_model.h"
#include "ui/show_form.h"
#include "ui/spectrum_picture.h"

namespace tarno2::test {
namespace {

/// The view with the library as it was built. A square wave of 10 kHz between 1 V and -0.5 V, at 1 MHz, high for 30 of
/// 100 frames from frame 20 on; line 0 beside it is high for 10 of 50.
class ViewMeasurement : public ::testing::Test {
protected:
    static constexpr int kFrames = 20000;

    ViewMeasurement() {
        languageTable().select(kLanguageEnglish);
        settings_.axisXUnit = 2;
        settings_.axisYMode = 0;
        settings_.showSignalMode = 1;
        std::string why;
        EXPECT_TRUE(scoper_.load(why)) << why;
        form_ = std::make_unique<T_ShowForm>(settings_, scoper_.object());
        form_->resize(900, 600);
        form_->show();
    }

    static std::vector<int16_t> words() {
        std::vector<int16_t> made;
        for (int i = 0; i < kFrames; ++i) {
            const int code = (i + 80) % 100 < 30 ? 1638 : -819;
            made.push_back(static_cast<int16_t>(code * 4 + (i % 50 < 10 ? 1 : 0)));
        }
        return made;
    }
    void open() {
        const std::vector<int16_t> made = words();
        const std::string name =
            folder_.write("square.dat", {reinterpret_cast<const char*>(made.data()), made.size() * sizeof(int16_t)});
        RecordDescription description;
        description.setFrequency(1e6);
        description.setSynchronousChannels(0);
        description.setDataCountPerChannel(made.size());
        description.setPacketMode(0, 0.0, 0);
        description.setBackwardOrder(0);
        description.setDataFormat({2, 2, 0x3FFF, 14, 0, 3, 2, 1});
        description.setCreateTime(localTime());
        description.addChannelRange(5.0, -5.0);
        ASSERT_TRUE(description.writeForDataFile(name));
        ASSERT_TRUE(form_->openRecording(name));
        ASSERT_TRUE(QTest::qWaitForWindowActive(form_.get()));
        view()->setFocus();  // keys are those of what has it
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(view(), key, modifiers);
    }
    [[nodiscard]] QWidget* view() const { return static_cast<QWidget*>(scoper_.object()->View()); }
    [[nodiscard]] QTableView* table() const { return form_->findChild<QTableView*>("MeasurementTable"); }
    [[nodiscard]] QString cell(int row, MeasurementModel::Field field) const {
        return table()->model()->index(row, field).data().toString();
    }
    [[nodiscard]] bool waitForCell(int row, MeasurementModel::Field field, const QString& text) const {
        const bool came = QTest::qWaitFor([&] { return cell(row, field) == text; }, 20000);
        EXPECT_TRUE(came) << cell(row, field).toStdString();
        return came;
    }
    [[nodiscard]] double cursor(size_t number) const {
        SCOPERACursors places{};
        EXPECT_EQ(scoper_.object()->GetCursors(&places), 1);
        return number == 0 ? places.m_fX[0] : places.m_fX[1];
    }
    /// The last column of the picture that has changed over a good part of its height.
    [[nodiscard]] static int changedColumn(const QImage& before, const QImage& after) {
        int last = 0;
        for (int x = 0; x < before.width(); ++x) {
            int changed = 0;
            for (int y = 0; y < before.height(); ++y) {
                changed += before.pixel(x, y) != after.pixel(x, y) ? 1 : 0;
            }
            last = changed > before.height() / 3 ? x : last;
        }
        return last;
    }

    TemporaryFolder folder_;
    ProgramSettings settings_;
    ScoperLibrary scoper_;
    std::unique_ptr<T_ShowForm> form_;
};

TEST_F(ViewMeasurement, CursorsMeasureAndAreMovedByKeysAndMouse) {
    open();
    EXPECT_FALSE(form_->findChild<QWidget*>("MeasurementPanel")->isVisible());
    press(Qt::Key_C);
    ASSERT_TRUE(form_->findChild<QWidget*>("MeasurementPanel")->isVisible());
    ASSERT_TRUE(waitForCell(0, MeasurementModel::Frequency, "10 kHz"));
    ASSERT_EQ(table()->model()->rowCount(), 3);
    EXPECT_EQ(cell(0, MeasurementModel::Name), "Channel 0, V");
    EXPECT_EQ(cell(0, MeasurementModel::Duty), "30.00 %");
    EXPECT_EQ(cell(1, MeasurementModel::Frequency), "20 kHz");
    EXPECT_EQ(cell(1, MeasurementModel::Duty), "20.00 %");
    EXPECT_EQ(cell(1, MeasurementModel::Mean), "–");
    EXPECT_EQ(cell(2, MeasurementModel::Frequency), "–");
    EXPECT_NEAR(cell(0, MeasurementModel::Maximum).toDouble(), 1.0, 1e-3);
    EXPECT_NEAR(cell(0, MeasurementModel::PeakToPeak).toDouble(), 1.5, 1e-3);

    // To an edge, then onto the sample before it; the other cursor a whole number of periods later.
    press(Qt::Key_E);
    const double edge = cursor(0);
    EXPECT_NEAR(std::fmod(edge * 1000.0 + 80.0, 100.0), 0.0, 30.6) << "no edge of the square wave";
    press(Qt::Key_C);
    press(Qt::Key_Right, Qt::ShiftModifier);
    press(Qt::Key_Left);
    press(Qt::Key_E);
    EXPECT_EQ(cursor(0), edge);

    press(Qt::Key_C);
    EXPECT_FALSE(form_->findChild<QWidget*>("MeasurementPanel")->isVisible());
    EXPECT_FALSE(settings_.viewCursors);
    press(Qt::Key_C);
    ASSERT_EQ(cursor(0), edge) << "they come back where they were";

    // With the mouse to another place of the picture; what is told is what lies there.
    QApplication::processEvents();
    const QImage before = view()->grab().toImage();
    press(Qt::Key_Right, Qt::ShiftModifier);
    const QImage after = view()->grab().toImage();
    ASSERT_EQ(before.size(), after.size());
    const QPoint from(changedColumn(before, after), view()->height() / 2 + 40);
    const double place = cursor(0);
    QTest::mousePress(view(), Qt::LeftButton, Qt::NoModifier, from);
    for (int i = 1; i <= 4; ++i) {
        const QPoint at = from + QPoint(31 * i, 0);
        QMouseEvent move(QEvent::MouseMove, at, view()->mapToGlobal(QPointF(at)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(view(), &move);
    }
    QTest::mouseRelease(view(), Qt::LeftButton, Qt::NoModifier, from + QPoint(124, 0));
    EXPECT_GT(cursor(0), place + 1.0);
    const auto frame = static_cast<size_t>(std::lround(cursor(0) * 1000.0));
    const double volts = words()[frame] > 0 ? 1.0 : -0.5;
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return std::abs(cell(0, MeasurementModel::First).toDouble() - volts) < 1e-3; }, 20000));
}

TEST_F(ViewMeasurement, TableIsCopiedSavedAndFolded) {
    settings_.viewCursors = true;
    open();
    ASSERT_TRUE(waitForCell(0, MeasurementModel::Frequency, "10 kHz"));
    clickIn(*form_, "CopyMeasurements");
    const QStringList lines = QApplication::clipboard()->text().split('\n');
    EXPECT_TRUE(lines[0].startsWith("Δt 6.6666667 ms")) << lines[0].toStdString();
    EXPECT_TRUE(lines[2].contains("\t10 kHz\t30.00 %\t")) << lines[2].toStdString();

    const std::string file = folder_.file("table");
    chooseFile(*form_, QString::fromStdString(file));
    clickIn(*form_, "SaveMeasurements");
    QFile saved(QString::fromStdString(file + ".csv"));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const QList<QByteArray> rows = saved.readAll().split('\n');
    EXPECT_TRUE(rows[0].startsWith("\xEF\xBB\xBF\"Signal\",\"Unit\",\"Cursor 1\","));
    EXPECT_EQ(rows[1].split(',').at(0), "\"Channel 0\"");
    EXPECT_EQ(rows[1].split(',').at(10).toDouble(), 10000.0);

    clickIn(*form_, "FoldMeasurements");
    EXPECT_FALSE(table()->isVisible());
    EXPECT_TRUE(settings_.hideMeasurements);
    languageTable().select(kLanguageRussian);
    form_->retranslate();
    EXPECT_EQ(table()->model()->headerData(MeasurementModel::Rms, Qt::Horizontal).toString(), "СКЗ");
}

// Fixed on the screen, the cursors see the newest frames; on the signal they keep theirs, of which in the end only
// minima and maxima may be left.
TEST_F(ViewMeasurement, RunningSignalIsMeasuredAsItSlides) {
    settings_.viewCursors = true;
    settings_.axisXValue = 2.0;
    ASSERT_TRUE(form_->tap().prepare(2, 1 << 20, 2e6));
    LiveRecording recording;
    recording.format = format16(1, 2);
    recording.format.framesPerSecond = 1e6;
    recording.channels = {0};
    recording.everyFrameWritten = false;
    form_->recordingStarted(std::move(recording));
    std::vector<int16_t> flat(4000, 400);
    std::thread([&] { form_->tap().put(bytesOf(flat)); }).join();
    ASSERT_TRUE(QTest::qWaitFor([&] { return form_->frameCount() == 4000; }));
    ASSERT_TRUE(waitForCell(0, MeasurementModel::PeakToPeak, "0.000"));
    const std::vector<int16_t> square = words();
    std::thread([&] { form_->tap().put(bytesOf(square)); }).join();
    ASSERT_TRUE(waitForCell(0, MeasurementModel::Frequency, "10 kHz"));
    const double onScreen = cursor(0);
    EXPECT_GT(onScreen, 22.0);

    QTest::keyClick(findIn<QCheckBox>(*form_, "CursorsOnScreen"), Qt::Key_Space);
    EXPECT_TRUE(settings_.cursorsOnSignal);
    std::thread([&] { form_->tap().put(bytesOf(flat)); }).join();
    ASSERT_TRUE(QTest::qWaitFor([&] { return form_->frameCount() == 28000; }));
    EXPECT_EQ(cursor(0), onScreen);
    EXPECT_EQ(cell(0, MeasurementModel::Frequency), "10 kHz");
}

TEST_F(ViewMeasurement, SpectrumOfThePictureOrBetweenTheCursors) {
    if (!RealTransform::available()) {
        GTEST_SKIP() << "built without FFTW";
    }
    settings_.viewSpectrum = true;
    open();
    const auto* peaks = findIn<QTableWidget>(*form_, "SpectrumPeaks");
    const auto peak = [&](int row) { return row < peaks->rowCount() ? peaks->item(row, 0)->text() : QString(); };
    // The harmonics of a pulse of 0.3: each tenth is missing.
    ASSERT_TRUE(QTest::qWaitFor([&] { return peak(0) == "10 kHz" && peak(1) == "20 kHz"; }, 20000))
        << peak(0).toStdString();
    const QString facts = findIn<QLabel>(*form_, "SpectrumFacts")->text();
    EXPECT_TRUE(facts.startsWith(QStringLiteral("4\u00a0096 samples, blocks: 8"))) << facts.toStdString();
    EXPECT_FALSE(findIn<QLabel>(*form_, "SpectrumFigures")->text().contains(QStringLiteral("THD –")));

    auto* scale = findIn<QComboBox>(*form_, "SpectrumScale");
    scale->setFocus();
    QTest::keyClick(scale, Qt::Key_Down);
    EXPECT_EQ(settings_.spectrumScale, 1);
    EXPECT_TRUE(peaks->item(0, 1)->text().endsWith(" dBFS"));
    findIn<QAction>(*form_, "SpectrumAveraged")->trigger();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return findIn<QLabel>(*form_, "SpectrumFacts")->text().contains("blocks: 1,"); }, 20000));

    press(Qt::Key_C);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return findIn<QLabel>(*form_, "SpectrumFacts")->text().startsWith(QStringLiteral("4\u00a0096")); },
        20000))
        << "the cursors are 6667 frames apart";
    const auto* picture = findIn<SpectrumPicture>(*form_, "SpectrumPicture");
    ASSERT_EQ(picture->curves().curves.size(), 1U);
    EXPECT_EQ(picture->curves().curves[0].values.size(), 2049U);

    auto* window = findIn<QComboBox>(*form_, "SpectrumWindow");
    window->setFocus();
    QTest::keyClick(window, Qt::Key_F);
    EXPECT_EQ(settings_.spectrumWindow, static_cast<int>(SpectrumWindow::FlatTop)) << "the view took the letter";
}

// The numbers that the settings file keeps.
TEST_F(ViewMeasurement, ChoicesOfTheSpectrumHaveTheirNumbers) {
    settings_.viewSpectrum = true;
    open();
    const std::pair<const char*, QStringList> choices[] = {
        {"SpectrumWindow", {"Hann", "Flat top", "Blackman-Harris", "Rectangular"}},
        {"SpectrumScale", {"dBV", "dBFS", "V (RMS)", QStringLiteral("V²/Hz")}},
        {"SpectrumLength", {"Auto", "1 024", "4 096", "16 384", "65 536", "262 144", "1 048 576"}}};
    for (const auto& [name, wanted] : choices) {
        const auto* box = findIn<QComboBox>(*form_, name);
        QStringList offered;
        for (int i = 0; i < box->count(); ++i) {
            offered << box->itemText(i).replace(QChar::Nbsp, ' ');
        }
        EXPECT_EQ(offered, wanted) << offered.join(", ").toStdString();
    }
}

}  // namespace
}  // namespace tarno2::test
