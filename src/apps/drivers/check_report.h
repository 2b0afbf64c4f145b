#pragma once

#include <cstdint>
#include <iosfwd>
#include <set>
#include <string>

namespace tarno2 {

/// What a check of a driver has found, printed as it is found. What is found twice is told once.
class CheckReport {
public:
    explicit CheckReport(std::ostream& out) : out_(out) {}

    /// Times what happens while it exists; over 100 ms is slow.
    class Watch {
    public:
        Watch(CheckReport& report, std::string what);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        CheckReport& report_;
        std::string what_;
        uint64_t begin_;
    };

    /// "ok", or "wrong" with the reason.
    void expect(bool fulfilled, const std::string& what, const std::string& otherwise);
    void bad(const std::string& what, const std::string& why) { expect(false, what, why); }
    void missing(const std::string& what, const std::string& so);
    void note(const std::string& what, const std::string& text);
    /// The closing line: counts of each.
    void close();
    [[nodiscard]] int wrong() const { return wrong_; }

private:
    void tell(const char* verdict, const std::string& what, const std::string& text);

    std::ostream& out_;
    std::set<std::string> told_;
    int ok_ = 0;
    int missing_ = 0;
    int slow_ = 0;
    int wrong_ = 0;
};

}  // namespace tarno2
