// Times of day, earlier frames, and pictures as SVG.

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <algorithm>

#include "tests/scopera/scoper_fixture.h"

namespace tarno2 {
namespace {

constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kHour = 3600 * kSecond;
/// 2026-11-23 00:00.
constexpr int64_t kDay = int64_t{20'780} * 24 * kHour;

class PlotExtras : public ScoperFixture {
protected:
    /// The texts of the picture, as its SVG has them.
    QStringList texts() {
        const QString name = folder_.filePath("texts.svg");
        EXPECT_EQ(scoper_->SavePicture(name.toUtf8().constData()), 1);
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QXmlStreamReader reader(&file);
        QStringList found;
        images_ = 0;
        while (!reader.atEnd()) {
            reader.readNext();
            if (reader.isStartElement() && reader.name() == QLatin1String("text")) {
                found.append(reader.readElementText());
            } else if (reader.isStartElement() && reader.name() == QLatin1String("image")) {
                ++images_;
            }
        }
        EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
        return found;
    }

    QTemporaryDir folder_;
    int images_ = 0;
};

TEST_F(PlotExtras, TheAxisTellsTheTimeOfDayAtRoundSteps) {
    const struct {
        int64_t start;
        double secondsPerUnit;
        QStringList labels;
    } cases[] = {{kDay + 23 * kHour + 59 * 60 * kSecond, 1.0, {"23:59:30", "2026-11-24", "00:00:30"}},
                 {kDay + 3 * kSecond + kSecond / 2, 0.001, {"00:00:03.52", "00:00:03.58"}},
                 {kDay + 7 * 60 * kSecond, 60.0, {"00:30:00", "01:30:00"}},
                 {kDay + kHour, 1800.0, {"2026-11-24", "12:00:00"}}};
    for (const auto& one : cases) {
        ASSERT_EQ(scoper_->SetClockX(one.start, one.secondsPerUnit), 1);
        const QStringList shown = texts();
        for (const QString& label : one.labels) {
            EXPECT_TRUE(shown.contains(label)) << label.toStdString() << " in " << shown.join(' ').toStdString();
        }
    }
    ASSERT_EQ(scoper_->SetClockX(cases[0].start, 1.0), 1);
    ASSERT_EQ(scoper_->SetOption(kScoperaOptionCursors, 1), 1);
    for (const double second : {80.0, 20.0}) {
        const SCOPERACursors places{{10.0, second}, {1, 2}, {0, 0}};
        ASSERT_EQ(scoper_->SetCursors(&places), 1);
        const QString first = second > 30.0 ? "2026-11-23 23:59:10.0" : "23:59:10.0";
        EXPECT_TRUE(texts().contains(first)) << texts().join(' ').toStdString();
    }
    EXPECT_EQ(scoper_->SetClockX(0, -1.0), 0);
    ASSERT_EQ(scoper_->SetClockX(0, 0.0), 1);
    EXPECT_TRUE(texts().contains("50"));
}

TEST_F(PlotExtras, EarlierFramesLieBehindAndPale) {
    setColumns({kRed});
    const std::vector<int16_t> high(11, 5);
    const std::vector<int16_t> low(11, -5);
    const SCOPERAFrames earlier[] = {{high.data(), 11, 1, kScoperaSigned16, 0.0, 10.0},
                                     {low.data(), 11, 1, kScoperaSigned16, 0.0, 10.0}};
    ASSERT_EQ(scoper_->SetEarlier(earlier, 2), 1);
    setSamples(std::vector<int16_t>(11, 0), 1, 10.0);
    const QImage image = picture();
    const auto paleness = [&](double y) {
        int best = 255;
        for (int dy = -1; dy <= 1; ++dy) {
            best = std::min(best, qGreen(image.pixel(pixelOf(55, y) + QPoint(0, dy))));
        }
        return best;
    };
    EXPECT_LT(paleness(0), 20);
    EXPECT_GT(paleness(5), 60);
    EXPECT_GT(paleness(-5), paleness(5) + 20);
    EXPECT_LT(paleness(-5), 250);
    double lowest = 0;
    double highest = 0;
    ASSERT_EQ(scoper_->GetExtremes(&lowest, &highest), 1);
    EXPECT_EQ(std::pair(lowest, highest), std::pair(-5.0, 5.0));
    SCOPERAFrames wrong = earlier[0];
    wrong.m_fStepX = 0.0;
    EXPECT_EQ(scoper_->SetEarlier(&wrong, 1), 0);
    EXPECT_FALSE(isTinted(picture(), pixelOf(55, 5), kRed)) << "none is drawn";
}

TEST_F(PlotExtras, AnSvgHasTextsAndTheCurves) {
    setColumns({kRed, kBlue});
    setSamples(std::vector<int16_t>(22, 3), 2, 10.0);
    ASSERT_EQ(scoper_->SetText(kScoperaTextLabelX, "time & <more>"), 1);
    EXPECT_TRUE(texts().contains("time & <more>"));
    EXPECT_EQ(images_, 1) << "all curves in one picture";
    EXPECT_EQ(scoper_->SavePicture("/nowhere/at/all.svg"), 0);
    ASSERT_EQ(scoper_->CopyPicture(), 1);
    EXPECT_TRUE(QApplication::clipboard()->mimeData()->hasFormat("image/svg+xml"));
    EXPECT_FALSE(QApplication::clipboard()->image().isNull());
}

}  // namespace
}  // namespace tarno2
