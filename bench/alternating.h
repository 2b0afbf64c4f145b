#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tarno2::bench {

/// How fast the candidate is, the baseline being 1. Above 1 it is faster.
struct Ratio {
    double median;
    double lowest;
    double highest;
};

/// Runs candidate and baseline in turns and compares each pair, so that what slows the machine for a while slows both.
/// Both are callables that do the same amount of work and return the seconds it took. A first pair warms up and does
/// not count.
template <typename Candidate, typename Baseline>
[[nodiscard]] Ratio alternating(Candidate candidate, Baseline baseline, size_t pairs = 9) {
    std::vector<double> ratios;
    for (size_t i = 0; i <= pairs; ++i) {
        const double candidateSeconds = candidate();
        const double baselineSeconds = baseline();
        if (i > 0) {
            ratios.push_back(baselineSeconds / candidateSeconds);
        }
    }
    std::sort(ratios.begin(), ratios.end());
    return {ratios[ratios.size() / 2], ratios.front(), ratios.back()};
}

}  // namespace tarno2::bench
