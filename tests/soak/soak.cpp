// Records for as long as it is told, with boards and disks that fail at random, and checks every sample of every file.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <random>
#include <string>
#include <utility>

#include "core/recording/run_end.h"
#include "tests/soak/plan.h"
#include "tests/soak/soak_recording.h"

namespace tarno2::test {

namespace {

const char* endingOf(const RecordingResult& result) {
    const char* text = runEnd(result, StopRule::Manual, OutsideEnd::User).status;
    return *text == '\0' ? "overflow" : text;
}

/// What is counted over all recordings.
class Summary {
public:
    void add(const Plan& plan, const SoakResult& result) {
        ++(result.fault.empty() ? passed_ : failed_);
        bytes_ += result.bytes;
        samples_ += result.bytes / plan.sampleWidth;
        files_ += result.files;
        ++endings_[endingOf(result.recording)];
        ++diskTroubles_[nameOf(plan.disk)];
        ++boardTroubles_[nameOf(plan.trouble)];
        if (plan.realTime && plan.disk != DiskTrouble::LongStall && plan.trouble != BoardTrouble::Overflow) {
            worstLoad_ = std::max(worstLoad_, result.worstLoad);
        }
    }
    void print(double seconds, uint64_t seed) const {
        std::printf("%u recordings in %.0f s (seed %llu): %llu samples in %llu files, %.1f MB, each sample checked\n",
                    passed_ + failed_, seconds, static_cast<unsigned long long>(seed),
                    static_cast<unsigned long long>(samples_), static_cast<unsigned long long>(files_),
                    static_cast<double>(bytes_) / 1e6);
        print("endings", endings_);
        print("disk troubles", diskTroubles_);
        print("board troubles", boardTroubles_);
        std::printf("fullest ring where nothing stalled for long: %.0f %%\n", worstLoad_ * 100.0);
        std::printf("%u passed, %u failed\n", passed_, failed_);
    }
    [[nodiscard]] bool good() const { return failed_ == 0 && passed_ > 0; }

private:
    static void print(const char* what, const std::map<std::string, uint32_t>& counts) {
        const char* separator = ": ";
        std::printf("%s", what);
        for (const auto& [name, count] : counts) {
            std::printf("%s%s %u", std::exchange(separator, ", "), name.c_str(), count);
        }
        std::printf("\n");
    }

    uint32_t passed_ = 0;
    uint32_t failed_ = 0;
    uint64_t bytes_ = 0;
    uint64_t samples_ = 0;
    uint64_t files_ = 0;
    double worstLoad_ = 0.0;
    std::map<std::string, uint32_t> endings_;
    std::map<std::string, uint32_t> diskTroubles_;
    std::map<std::string, uint32_t> boardTroubles_;
};

int soak(double seconds, uint64_t seed) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    const auto elapsed = [begin] { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    std::mt19937_64 dice(seed);
    Summary summary;
    for (uint32_t round = 0; round == 0 || elapsed() < seconds; ++round) {
        const Plan plan = drawPlan(dice);
        const SoakResult result = recordAndCheck(plan);
        summary.add(plan, result);
        if (!result.fault.empty()) {
            std::printf("FAILED, recording %u: %s\n  %s\n", round, result.fault.c_str(), plan.text().c_str());
            std::fflush(stdout);
        }
    }
    summary.print(elapsed(), seed);
    return summary.good() ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::test

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "Usage: tarno2-soak SECONDS [SEED]\n");
        return 2;
    }
    try {
        const uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : std::random_device{}();
        return tarno2::test::soak(std::strtod(argv[1], nullptr), seed);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
}
