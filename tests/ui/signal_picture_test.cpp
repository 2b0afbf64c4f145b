#include <QAction>
#include <QClipboard>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QWheelEvent>
#include <thread>

#include "config/logs/debug_log.h"
#include "core/devices/scoper_library.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "records/record_description.h"
#include "tests/display/signal_source.h"
#include "tests/ui/widgets.h"
#include "ui/digital_signal_settings.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

/// The view with the library as it was built, and recordings of one channel at 1 MHz: 14-bit codes above two digital
/// lines.
class SignalPicture : public ::testing::Test {
protected:
    SignalPicture() {
        languageTable().select(kLanguageEnglish);
        debugLog().open(folder_.file("picture.cfg"), 1);
        settings_.channels[0].color = kRed;
        settings_.axisXUnit = 2;
        std::string why;
        loaded_ = scoper_.load(why);
        EXPECT_TRUE(loaded_) << why;
        if (loaded_) {
            form_ = std::make_unique<T_ShowForm>(settings_, scoper_.object());
            form_->resize(800, 500);
            form_->show();
        }
    }
    ~SignalPicture() override { debugLog().close(); }
    void SetUp() override { ASSERT_TRUE(loaded_); }

    void open(const std::vector<int16_t>& words, bool isSigned) {
        const std::string name =
            folder_.write("signal.dat", {reinterpret_cast<const char*>(words.data()), words.size() * sizeof(int16_t)});
        RecordDescription description;
        description.setFrequency(1e6);
        description.setSynchronousChannels(0);
        description.setDataCountPerChannel(words.size());
        description.setPacketMode(0, 0.0, 0);
        description.setBackwardOrder(0);
        description.setDataFormat({2, 2, 0x3FFF, 14, 0, 3, 2, uint8_t{isSigned}});
        description.setCreateTime(localTime());
        description.addChannelRange(5.0, isSigned ? -5.0 : 0.0);
        ASSERT_TRUE(description.writeForDataFile(name));
        ASSERT_TRUE(form_->openRecording(name));
    }
    [[nodiscard]] QWidget* view() const { return static_cast<QWidget*>(scoper_.object()->View()); }
    /// How many pixels of the color stand in each column of the picture.
    [[nodiscard]] std::vector<int> heights(uint32_t bgr) const {
        const QImage image = view()->grab().toImage();
        std::vector<int> counts(static_cast<size_t>(image.width()));
        for (int x = 0; x < image.width(); ++x) {
            for (int y = 0; y < image.height(); ++y) {
                counts[static_cast<size_t>(x)] += isColor(image.pixel(x, y), bgr) ? 1 : 0;
            }
        }
        return counts;
    }
    /// Uppermost and lowest row with the color.
    [[nodiscard]] std::pair<int, int> rows(uint32_t bgr) const {
        const QImage image = view()->grab().toImage();
        std::pair<int, int> found(image.height(), -1);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (isColor(image.pixel(x, y), bgr)) {
                    found = {std::min(found.first, y), std::max(found.second, y)};
                }
            }
        }
        return found;
    }
    /// Columns of the picture in which the curve is taller than a line.
    [[nodiscard]] std::vector<int> tallColumns() const {
        std::vector<int> tall;
        const std::vector<int> counts = heights(kRed);
        for (size_t x = 0; x < counts.size(); ++x) {
            if (counts[x] > 100) {
                tall.push_back(static_cast<int>(x));
            }
        }
        return tall;
    }
    [[nodiscard]] std::pair<double, double> range(int32_t axis) const {
        std::pair<double, double> limits;
        EXPECT_EQ(scoper_.object()->GetRange(axis, &limits.first, &limits.second), 1);
        return limits;
    }
    void wheel(const QPoint& place, int notches) {
        QWheelEvent event(place, view()->mapToGlobal(QPointF(place)), {}, QPoint(0, 120 * notches), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view(), &event);
    }
    void drag(const QPoint& from, const QPoint& to, Qt::KeyboardModifiers modifiers) {
        drag(from, to, modifiers, modifiers);
    }
    void drag(const QPoint& from, const QPoint& to, Qt::KeyboardModifiers modifiers, Qt::KeyboardModifiers atRelease) {
        QTest::mousePress(view(), Qt::LeftButton, modifiers, from);
        for (int i = 1; i <= 4; ++i) {
            const QPoint place = from + (to - from) * i / 4;
            QMouseEvent move(QEvent::MouseMove, place, view()->mapToGlobal(QPointF(place)), Qt::NoButton,
                             Qt::LeftButton, modifiers);
            QApplication::sendEvent(view(), &move);
        }
        QTest::mouseRelease(view(), Qt::LeftButton, atRelease, to);
    }
    void trigger(TextId text) {
        for (QAction* action : form_->findChildren<QAction*>()) {
            if (action->text() == uiText(text)) {
                action->trigger();
                return;
            }
        }
        ADD_FAILURE() << "no action " << uiText(text).toStdString();
    }

    static constexpr uint32_t kRed = 0x0000FF;  // 0xBBGGRR
    static constexpr uint32_t kBlue = 0xFF0000;

    TemporaryFolder folder_;
    ScopedEnvironment registry_{"TARNO2_REGISTRY", std::string(TARNO2_BIN) + "/registry.d"};
    ProgramSettings settings_;
    ScoperLibrary scoper_;
    bool loaded_ = false;
    std::unique_ptr<T_ShowForm> form_;

private:
    static bool isColor(QRgb pixel, uint32_t bgr) {
        return qRed(pixel) == static_cast<int>(bgr & 0xFF) && qGreen(pixel) == static_cast<int>(bgr >> 8 & 0xFF) &&
               qBlue(pixel) == static_cast<int>(bgr >> 16 & 0xFF);
    }
};

TEST_F(SignalPicture, OneSampleAmongTenMillionIsSeen) {
    std::vector<int16_t> words(10000000);
    words[7500000] = 8000 * 4;
    open(words, true);
    // Until every frame is read, a sample of the file stands for its neighbours: wider, and gone in the next zoom.
    const QString reading = uiText(TextId::BuildingOverview).section(':', 0, 0);
    const auto* status = form_->findChild<QLabel*>("FileStatus");
    std::vector<int> tall;
    const auto isOneLine = [&] {
        tall = tallColumns();
        return !status->text().startsWith(reading) && !tall.empty() && tall.back() - tall.front() <= 1;
    };
    ASSERT_TRUE(QTest::qWaitFor(isOneLine, 30000)) << "one sample, one line";
    const std::vector<int> counts = heights(kRed);
    const auto isCurve = [](int count) { return count > 0; };
    const auto left = std::find_if(counts.begin(), counts.end(), isCurve) - counts.begin();
    const auto right = counts.rend() - std::find_if(counts.rbegin(), counts.rend(), isCurve) - 1;
    EXPECT_NEAR(static_cast<double>(tall.front() - left) / static_cast<double>(right - left), 0.75, 0.005);

    // Closer and closer, until a sample is a pixel wide.
    for (int i = 0; i < 40; ++i) {
        wheel({tallColumns().front(), 200}, 1);
        ASSERT_FALSE(tallColumns().empty()) << i;
    }
    const auto [low, high] = range(kScoperaAxisX);
    EXPECT_LT(high - low, 2.0) << "milliseconds";
    EXPECT_TRUE(low <= 7500.0 && 7500.0 <= high);
}

TEST_F(SignalPicture, ADigitalLineRunsFromBottomToTop) {
    std::vector<int16_t> words(1000);
    std::fill(words.begin() + 500, words.end(), int16_t{1});
    settings_.showSignalMode = 2;
    settings_.digitalLines[0] = {-1000, 1000, kBlue};
    settings_.digitalLines[1] = {-1000, 0, kRed};
    open(words, false);
    ASSERT_TRUE(QTest::qWaitFor([this] { return rows(kBlue).second >= 0; }));
    const auto [top, bottom] = rows(kBlue);
    const int zeroRow = rows(kRed).first;
    EXPECT_NEAR(bottom, zeroRow, 1) << "its 0 lies where the other line's does, at code 0";
    EXPECT_GT(bottom - top, view()->height() * 3 / 4);

    form_->DigitalSignalSettingsClick();
    auto* window = form_->findChild<T_DigitalSignalSettings*>();
    ASSERT_NE(window, nullptr);
    window->findChild<QListWidget*>("DigitalLineList")->setCurrentRow(0);
    window->findChild<QSlider*>("ZeroLevelTrack")->setValue(0);
    window->findChild<QSlider*>("AmpLevelTrack")->setValue(500);
    EXPECT_NEAR(rows(kBlue).first, top, 1);
    EXPECT_NEAR(rows(kBlue).second, (top + bottom) / 2.0, 2);
}

TEST_F(SignalPicture, TheMouseZoomsMovesAndGoesBack) {
    open(std::vector<int16_t>(1000, 400), true);
    ASSERT_TRUE(QTest::qWaitFor([this] { return rows(kRed).second >= 0; }));
    const auto whole = range(kScoperaAxisX);
    EXPECT_EQ(whole, std::pair(0.0, 1.0));
    const QPoint middle = view()->rect().center();
    wheel(middle, 2);
    const auto zoomed = range(kScoperaAxisX);
    EXPECT_NEAR(zoomed.second - zoomed.first, 0.64, 1e-6);
    drag(middle, middle - QPoint(60, 0), Qt::NoModifier);
    EXPECT_GT(range(kScoperaAxisX).first, zoomed.first + 0.02);
    EXPECT_TRUE(settings_.axisYAutoMode);
    drag(middle - QPoint(100, 60), middle + QPoint(100, 60), Qt::ShiftModifier);
    EXPECT_LT(range(kScoperaAxisX).second - range(kScoperaAxisX).first, 0.3);
    EXPECT_FALSE(settings_.axisYAutoMode) << "who marks a rectangle has chosen its height";
    QTest::mouseDClick(view(), Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseRelease(view(), Qt::LeftButton, Qt::NoModifier, middle);
    EXPECT_EQ(range(kScoperaAxisX), whole);
    EXPECT_TRUE(settings_.axisYAutoMode);
}

TEST_F(SignalPicture, ADragOfMillivoltsStaysOneOfMillivolts) {
    std::vector<int16_t> words(1000);
    for (size_t i = 0; i < words.size(); ++i) {
        words[i] = static_cast<int16_t>((i % 100) * 4);  // 0 to 60 mV
    }
    open(words, true);
    ASSERT_TRUE(QTest::qWaitFor([this] { return range(kScoperaAxisY).second > 10.0; }));
    const auto before = range(kScoperaAxisY);
    const QPoint middle = view()->rect().center();
    drag(middle, middle - QPoint(0, 50), Qt::NoModifier);
    EXPECT_FALSE(settings_.axisYAutoMode);
    EXPECT_NEAR(settings_.axisYUpper - settings_.axisYLower, (before.second - before.first) * 1e3, 1.0) << "microvolts";
    EXPECT_LT(settings_.axisYUpper, before.second * 1e3);
}

// Whoever lets Shift go a moment before the button still wants to look at what was marked.
TEST_F(SignalPicture, ARectangleOfARunningSignalIsHeldWhateverKeyIsDown) {
    settings_.axisXValue = 50.0;
    ASSERT_TRUE(form_->tap().prepare(4, 4096, 4000.0));
    LiveRecording recording;
    recording.format = format16(2, 2);
    recording.channels = {3, 7};
    recording.everyFrameWritten = false;
    form_->recordingStarted(std::move(recording));
    const std::vector<int16_t> words(200, 400);
    std::thread([&] { form_->tap().put(bytesOf(words)); }).join();
    ASSERT_TRUE(QTest::qWaitFor([&] { return form_->frameCount() == 100; }));
    const QPoint middle = view()->rect().center();
    for (const Qt::KeyboardModifier atRelease : {Qt::ShiftModifier, Qt::NoModifier}) {
        QTest::mouseDClick(view(), Qt::LeftButton, Qt::NoModifier, middle);
        QTest::mouseRelease(view(), Qt::LeftButton, Qt::NoModifier, middle);
        EXPECT_EQ(range(kScoperaAxisX), std::pair(50.0, 100.0));
        drag(middle - QPoint(100, 60), middle + QPoint(100, 60), Qt::ShiftModifier, atRelease);
        EXPECT_GT(range(kScoperaAxisX).first, 55.0);
        EXPECT_LT(range(kScoperaAxisX).second, 95.0) << "shows the newest frames instead of those that were marked";
    }
}

TEST_F(SignalPicture, PicturesAreSavedAndCopiedWithTheirCursors) {
    open(std::vector<int16_t>(1000, 400), true);
    ASSERT_TRUE(QTest::qWaitFor([this] { return rows(kRed).second >= 0; }));
    const QImage plain = view()->grab().toImage();
    trigger(TextId::ViewCursors);
    EXPECT_NE(view()->grab().toImage(), plain);
    trigger(TextId::ViewLegend);
    const QImage shown = view()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    trigger(TextId::CopyPicture);
    EXPECT_EQ(QApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), shown);

    const std::string file = folder_.file("view");
    chooseFile(*form_, QString::fromStdString(file));
    trigger(TextId::SavePicture);
    EXPECT_EQ(QImage(QString::fromStdString(file + ".png")).convertToFormat(QImage::Format_RGB32), shown);
    chooseFile(*form_, QString::fromStdString(folder_.file("view.dat")));
    trigger(TextId::SavePicture);
    EXPECT_FALSE(fileExists(folder_.file("view.dat")));
}

}  // namespace
}  // namespace tarno2::test
