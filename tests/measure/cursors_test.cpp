#include <cmath>
#include <future>
#include <gmock/gmock.h>
#include <stdexcept>
#include <thread>

#include "measure/cursor_places.h"
#include "measure/latest_worker.h"
#include "measure/plot_scale.h"

namespace tarno2::test {
namespace {

TEST(CursorPlaces, StayOnTheSignalOrOnTheScreen) {
    const PictureEdges first{1000.0, 4000.0};
    const PictureEdges later{2000.0, 5000.0};
    CursorPlaces places;
    EXPECT_TRUE(places.lost(first)) << "upon each other";
    places.begin(first);
    EXPECT_EQ(places.frame(1, later), 3000.0);
    EXPECT_FALSE(places.lost({2500.0, 2600.0}) && places.lost(first));
    places.fixOnScreen(true, first);
    EXPECT_EQ(places.frame(0, later), 3000.0);
    EXPECT_EQ(places.between(later, 3500), (FrameSpan{3000, 3500})) << "the rest has not come yet";
    places.fixOnScreen(false, later);
    EXPECT_EQ(places.frame(0, first), 3000.0);
    CursorPlaces held = places;
    held.fixOnScreen(true, {90000.0, 93000.0});
    EXPECT_EQ(held.frame(1, {90000.0, 93000.0}), 92000.0) << "they are not left behind";

    places.place(1, 3000.4, first);
    EXPECT_EQ(places.between(first, 10000), (FrameSpan{3000, 3001})) << "a frame at least";
    EXPECT_EQ(places.between(first, 3000).count(), 0U);
    places.activate(1);
    places.move(-1e6, first, 10000);
    EXPECT_EQ(places.frame(1, first), 1000.0);
    EXPECT_EQ(places.between(first, 10000), (FrameSpan{1000, 3000})) << "whichever is the left one";
    places.move(1e6, {0.0, 1e5}, 2000);
    EXPECT_EQ(places.frame(1, first), 1999.0);
}

TEST(CursorPlaces, HaveNothingBesideTheSignal) {
    const PictureEdges picture{-50.0, 250.0};
    CursorPlaces places;
    places.place(0, -20.0, picture);
    places.place(1, -3.0, picture);
    EXPECT_EQ(places.between(picture, 100).count(), 0U);
    EXPECT_FALSE(places.onFrame(0, picture, 100));
    places.place(1, 99.4, picture);
    EXPECT_EQ(places.between(picture, 100), (FrameSpan{0, 99}));
    EXPECT_TRUE(places.onFrame(1, picture, 100));
    places.place(0, 100.0, picture);
    EXPECT_FALSE(places.onFrame(0, picture, 100));
}

TEST(LatestWorker, NewestJobWinsAndStopLeavesNothingAtWork) {
    LatestWorker worker;
    std::promise<void> begun;
    std::promise<void> newest;
    std::promise<bool> ended;
    worker.start([&](WorkProgress& progress) {
        begun.set_value();
        newest.get_future().wait();
        ended.set_value(progress.cancelled());
    });
    begun.get_future().wait();
    std::promise<int> result;
    worker.start([](WorkProgress&) { FAIL() << "a newer one came before it began"; });
    worker.start([&](WorkProgress& progress) {
        progress.begin(4);
        progress.add(1);
        result.set_value(2);
        throw std::runtime_error("lost, and the worker lives on");
    });
    newest.set_value();
    EXPECT_TRUE(ended.get_future().get());
    EXPECT_EQ(result.get_future().get(), 2);
    EXPECT_EQ(worker.part(), 0.25);
    std::promise<void> last;
    worker.start([&](WorkProgress& progress) {
        last.set_value();
        while (!progress.cancelled()) {
            std::this_thread::yield();
        }
    });
    last.get_future().wait();
    worker.stop();
    EXPECT_FALSE(worker.busy());
}

TEST(PlotScale, TicksAreRoundAndFew) {
    const auto labels = [](const PlotScale& scale, size_t most) {
        std::vector<double> values;
        for (const PlotTick& tick : scale.ticks(most)) {
            if (tick.labelled) {
                values.push_back(tick.value);
            }
        }
        return values;
    };
    EXPECT_THAT(labels({-103.0, 7.0, false}, 5), testing::ElementsAre(-100.0, -50.0, 0.0));
    EXPECT_THAT(labels({3.0, 20000.0, true}, 8), testing::ElementsAre(10.0, 100.0, 1000.0, 10000.0));
    EXPECT_LE(labels({1e-18, 1.0, true}, 5).size(), 5U);
    EXPECT_LE(labels({1e17, 1e17 + 32.0, false}, 5).size(), 6U) << "closer than numbers lie";
    const PlotScale decades{10.0, 1000.0, true};
    EXPECT_DOUBLE_EQ(decades.partOf(100.0), 0.5);
    EXPECT_DOUBLE_EQ(decades.valueAt(0.25), 10.0 * std::sqrt(10.0));
    EXPECT_GT(PlotScale(5.0, 5.0, false).high(), 5.0);
}

}  // namespace
}  // namespace tarno2::test
