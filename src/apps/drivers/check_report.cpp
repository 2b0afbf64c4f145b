#include "apps/drivers/check_report.h"

#include <cstdint>
#include <ostream>
#include <utility>

#include "platform/c_locale.h"
#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr uint64_t kSlowMs = 100;

}  // namespace

CheckReport::Watch::Watch(CheckReport& report, std::string what)
    : report_(report), what_(std::move(what)), begin_(monotonicNanoseconds()) {}

CheckReport::Watch::~Watch() {
    const uint64_t elapsed = (monotonicNanoseconds() - begin_) / 1000000;
    if (elapsed > kSlowMs) {
        ++report_.slow_;
        report_.tell("slow", what_, formatText("%llu ms", static_cast<unsigned long long>(elapsed)));
    }
}

void CheckReport::expect(bool fulfilled, const std::string& what, const std::string& otherwise) {
    ++(fulfilled ? ok_ : wrong_);
    tell(fulfilled ? "ok" : "wrong", what, fulfilled ? std::string() : otherwise);
}

void CheckReport::missing(const std::string& what, const std::string& so) {
    ++missing_;
    tell("missing", what, so);
}

void CheckReport::note(const std::string& what, const std::string& text) {
    tell("", what, text);
}

void CheckReport::tell(const char* verdict, const std::string& what, const std::string& text) {
    const std::string line = formatText("%-8s", verdict) + what + (text.empty() ? "" : ": " + text);
    if (told_.insert(line).second) {
        out_ << line << '\n';
    }
}

void CheckReport::close() {
    out_ << formatText("%d ok, %d missing, %d slow, %d wrong\n", ok_, missing_, slow_, wrong_);
}

}  // namespace tarno2
