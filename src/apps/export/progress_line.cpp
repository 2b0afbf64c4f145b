#include "apps/export/progress_line.h"

#include <iostream>
#include <string>

#include "config/settings/text_export.h"
#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr uint32_t kInterval = 200;  // ms
constexpr int kBarWidth = 30;
constexpr size_t kLineWidth = 79;

}  // namespace

ProgressLine::ProgressLine(const ConversionProgress& progress) : progress_(progress), began_(tickCount()) {
    const auto body = [this] {
        while (ended_.wait(kInterval) == WaitResult::TimedOut) {
            draw();
        }
    };
    if (thread_.create(body)) {
        thread_.resume();
    }
}

ProgressLine::~ProgressLine() {
    ended_.set();
    thread_.join();
    std::cerr << '\r' << std::string(kLineWidth, ' ') << '\r' << std::flush;
}

void ProgressLine::draw() const {
    const ConversionState state(progress_);
    const int done = state.thousandths();
    const int filled = done * kBarWidth / 1000;
    const ProgressTexts texts = progressTexts(state, tickCount() - began_);
    std::string line = '[' + std::string(static_cast<size_t>(filled), '#') +
                       std::string(static_cast<size_t>(kBarWidth - filled), '-') + "] " + std::to_string(done / 10) +
                       "%  " + texts.size + "  " + texts.time;
    line.resize(kLineWidth, ' ');
    std::cerr << '\r' << line << std::flush;
}

}  // namespace tarno2
