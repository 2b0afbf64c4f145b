#pragma once

#include <algorithm>
#include <string>

namespace tarno2::test {

/// The text with "#" in place of every digit, to compare what bears the time of day.
[[nodiscard]] inline std::string masked(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '#');
    return text;
}

}  // namespace tarno2::test
