#include "display/record_stack.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tarno2 {

namespace {

constexpr uint64_t kMostMemory = uint64_t{64} << 20;
constexpr uint64_t kMostRead = uint64_t{256} << 20;
constexpr uint64_t kRowsPerBucket =
    4;  // a screen has every frame up to two a bucket, and twice as many rows as buckets

}  // namespace

uint64_t RecordFrames::read(uint64_t firstFrame, uint64_t count, std::byte* out) {
    const uint64_t left = count_ - std::min(firstFrame, count_);
    return source_.read(first_ + firstFrame, std::min(count, left), out);
}

std::unique_ptr<RecordScreen> RecordReader::read(uint64_t record, const RecordPart& part) {
    auto read = std::make_unique<RecordScreen>();
    read->record = record;
    one_.moveTo(record);
    return screens_.build(part.firstFrame, part.endFrame, part.buckets, read->screen) ? std::move(read) : nullptr;
}

RecordWish RecordStack::wish(uint64_t end, size_t most, const RecordPart& part) const {
    const uint64_t rows = std::min<uint64_t>(kRowsPerBucket * part.buckets, records_.frames);
    const uint64_t byMemory = kMostMemory / std::max<uint64_t>(rows * frameBytes_, 1);
    const uint64_t byReading = kMostRead / std::max<uint64_t>(records_.frames * frameBytes_, 1);
    const uint64_t affordable = std::min<uint64_t>(most, std::max<uint64_t>(std::min(byMemory, byReading), 1));
    return {end - std::min(end, affordable), end, part};
}

std::vector<uint64_t> RecordStack::missing(const RecordWish& wish) const {
    std::vector<uint64_t> missing;
    for (uint64_t record = wish.end; record-- > wish.begin;) {
        const bool there = wish.part == part_ &&
                           std::ranges::any_of(shown_, [record](const auto& one) { return one->record == record; });
        if (!there) {
            missing.push_back(record);
        }
    }
    return missing;
}

uint64_t RecordStack::bytesOf(const RecordPart& part) const {
    const uint64_t end = std::min(part.endFrame, records_.frames);
    return std::min((end - std::min(part.firstFrame, end)) * frameBytes_, FileScreens::kMostBytes);
}

bool RecordStack::take(const RecordWish& wish, std::vector<std::unique_ptr<RecordScreen>> screens) {
    const bool other = wish.part != part_;
    const auto outside = [&](const auto& one) { return other || one->record < wish.begin || one->record >= wish.end; };
    const bool dropped = std::erase_if(shown_, outside) > 0;
    part_ = wish.part;
    std::ranges::move(screens, std::back_inserter(shown_));
    std::ranges::sort(shown_, std::ranges::greater(), [](const auto& one) { return one->record; });
    return dropped || !screens.empty();
}

}  // namespace tarno2
