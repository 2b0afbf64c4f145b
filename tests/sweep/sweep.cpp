// Fails, shortens and tears system calls of a recording and of a recovery one by one, kills the programs there, and
// looks at every file that is left.
//
//   tarno2-sweep all|SECONDS             as many cases as fit in, spread evenly over all of them
//   tarno2-sweep case SCENE KIND NUMBER ACTION      one case, whose folder is kept and named

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "platform/paths.h"
#include "tests/sweep/judge.h"

namespace tarno2::test {

namespace {

constexpr int kKilled = 137;

struct Ways {
    std::string kind;
    std::vector<std::string> actions;
};

std::string error(int number, bool lasting = false) {
    return std::to_string(number) + (lasting ? "+" : "");
}

/// What can happen to the calls of a kind.
std::vector<Ways> allWays() {
    return {
        {"any", {"kill"}},
        {"open", {error(EMFILE), error(EMFILE, true), error(EACCES), error(EIO), error(ENOSPC), error(EINTR)}},
        {"read", {error(EIO), error(EINTR), "short"}},
        {"write", {error(EIO), error(ENOSPC), error(ENOSPC, true), error(EINTR), "short", "torn", "tornkill"}},
        {"truncate", {error(EIO), error(EINTR)}},
        {"flush", {error(EIO), error(EIO, true), error(EINTR)}},
        {"rename", {error(EIO), error(EACCES), error(ENOSPC), error(EACCES, true)}},
        {"remove", {error(EACCES), error(EACCES, true), error(EIO)}},
        {"folder", {error(EACCES), error(ENOSPC)}},
        {"link", {error(EACCES)}},
        {"lock", {error(EINTR), error(ENOLCK), error(EWOULDBLOCK)}},
        {"close", {error(EIO), error(EINTR)}},
        {"seek", {error(EIO)}},
        {"look", {error(EIO), error(EACCES)}},
        {"list", {error(EIO)}},
        {"space", {error(EIO)}},
        {"poll", {error(EINTR), error(ENOMEM)}},
        {"thread", {error(EAGAIN), error(EAGAIN, true)}},
        {"memory", {error(ENOMEM)}},
    };
}

/// One fault, in a recording or in a recovery. A chain is a recovery that is killed a hundred times.
struct Case {
    std::string scene;  ///< record, recover, chain
    std::string kind;
    uint32_t number = 0;
    std::string action;
    [[nodiscard]] std::string fault() const { return kind + ' ' + std::to_string(number) + ' ' + action; }
};

bool kills(const std::string& action) {
    return action.ends_with("kill");
}

class Sweep {
public:
    explicit Sweep(const std::string& programs) : field_(programs) {}
    /// What the programs do undisturbed; what is wrong with that, empty when nothing.
    std::string begin();
    [[nodiscard]] std::vector<Case> cases() const;
    /// What is wrong with the programs; empty: nothing. `struck` tells whether the fault came.
    std::string judgeCase(const Case& tried, bool& struck);
    [[nodiscard]] const std::string& path() const { return field_.path(); }
    [[nodiscard]] const std::string& what() const { return what_; }

private:
    std::string judgeOne(const Case& tried, bool& struck);
    std::string judgeChain(const Case& tried);
    std::string judgeEnd(uint64_t recorded, bool again);
    [[nodiscard]] std::string checkWords(bool records, const Outcome& outcome, const Verdict& after) const;

    Field field_;
    Outcome usualRecord_;
    Outcome usualRecover_;
    std::string what_;
};

std::string Sweep::begin() {
    field_.reset();
    usualRecord_ = field_.run(kRecord, {});
    std::string fault = checkWords(true, usualRecord_, judge(field_)) + judgeEnd(kRecordedBytes, true);
    field_.reset();
    usualRecover_ = field_.run(kRecover, {});
    const Verdict verdict = judge(field_);
    fault += field_.touchedBait() + verdict.fault + verdict.unfinished;
    return fault.empty() ? fault : fault + '\n' + usualRecord_.told + usualRecover_.told;
}

std::vector<Case> Sweep::cases() const {
    std::vector<Case> all;
    const auto add = [&all](const char* scene, const Outcome& usual) {
        for (const Ways& ways : allWays()) {
            const uint32_t calls = usual.calls.at(ways.kind);
            // Allocations are many and alike.
            const uint32_t stride = ways.kind == "memory" ? 17 : 1;
            for (uint32_t number = 1; number <= calls; number += stride) {
                for (const std::string& action : ways.actions) {
                    all.push_back({scene, ways.kind, number, action});
                }
            }
        }
    };
    add("record", usualRecord_);
    add("recover", usualRecover_);
    for (uint32_t i = 1; i <= 10; ++i) {
        all.push_back({"chain", "any", i, "kill"});
    }
    return all;
}

/// The log says how many bytes there are, and something when that is not all; a recovery says what it left.
std::string Sweep::checkWords(bool records, const Outcome& outcome, const Verdict& after) const {
    if (!records) {
        const bool told = outcome.status == 1 && !newLines(outcome.told, usualRecover_.told).empty();
        return after.unfinished.empty() || told ? "" : "nothing was told of: " + after.unfinished;
    }
    const std::string before = "Recorded ";
    if (const size_t at = outcome.told.find(before); at != std::string::npos) {
        const std::string line = outcome.told.substr(at, outcome.told.find_first_of("\r\n", at) - at);
        const std::string truth =
            before + std::to_string(after.recorded) + " bytes in " + std::to_string(after.recordedFiles) + " files";
        const bool torn = outcome.what.find("AutoLog") != std::string::npos;
        if (line != truth && !torn) {
            return "the log says \"" + line + "\", but it is \"" + truth + "\"";
        }
    }
    const bool whole = after.recorded == kRecordedBytes && after.earlierMoved && after.unfinished.empty();
    if (!whole && newLines(outcome.told, usualRecord_.told).empty()) {
        return "nothing was told of: " + after.unfinished + ", " + std::to_string(after.recorded) + " bytes recorded" +
               (after.earlierMoved ? "" : ", the earlier recording in its place");
    }
    return {};
}

/// A recovery without faults explains everything, and loses nothing; so does another recording.
std::string Sweep::judgeEnd(uint64_t recorded, bool again) {
    static_cast<void>(field_.run(kRecover, {}));
    Verdict verdict = judge(field_);
    std::string wrong = field_.touchedBait() + verdict.fault + (again ? "" : verdict.unfinished);
    if (verdict.earlierMoved && verdict.recorded + kFrameBytes <= recorded) {
        wrong += "of " + std::to_string(recorded) + " bytes there are " + std::to_string(verdict.recorded);
    }
    if (!wrong.empty() || !again) {
        return wrong.empty() ? wrong : "after the recovery: " + wrong;
    }
    const Outcome outcome = field_.run(kRecord, {});
    verdict = judge(field_);
    wrong = field_.touchedBait() + verdict.fault + verdict.unfinished;
    const bool whole = outcome.status == 0 && verdict.recorded == kRecordedBytes && verdict.earlierMoved;
    return wrong.empty() && whole ? wrong : "after the next recording: " + wrong + '\n' + outcome.told;
}

std::string Sweep::judgeOne(const Case& tried, bool& struck) {
    const bool records = tried.scene == "record";
    field_.reset();
    const Outcome outcome = field_.run(records ? kRecord : kRecover, tried.fault());
    struck = outcome.struck;
    what_ = outcome.what;
    const bool killed = kills(tried.action) && struck;
    if (killed ? outcome.status != kKilled : outcome.status != 0 && (records || outcome.status != 1)) {
        return "the exit status is " + std::to_string(outcome.status) + '\n' + outcome.told;
    }
    const Verdict verdict = judge(field_);
    if (std::string wrong = field_.touchedBait() + verdict.fault; !wrong.empty()) {
        return wrong;
    }
    if (std::string wrong = killed ? "" : checkWords(records, outcome, verdict); !wrong.empty()) {
        return wrong;
    }
    return records && !killed && verdict.unfinished.empty() ? "" : judgeEnd(verdict.recorded, records);
}

/// A hundred kills within one recovery, in an order that the number chooses.
std::string Sweep::judgeChain(const Case& tried) {
    constexpr uint32_t kKills = 100;
    field_.reset();
    const uint32_t calls = usualRecover_.calls.at("any");
    for (uint32_t i = 0; i < kKills; ++i) {
        const uint32_t number = (i * tried.number + tried.number) % calls + 1;
        static_cast<void>(field_.run(kRecover, "any " + std::to_string(number) + " kill"));
        const Verdict verdict = judge(field_);
        if (const std::string bait = field_.touchedBait(); !bait.empty() || !verdict.fault.empty()) {
            return "after kill " + std::to_string(i) + ": " + bait + verdict.fault;
        }
    }
    return judgeEnd(0, false);
}

std::string Sweep::judgeCase(const Case& tried, bool& struck) {
    struck = true;
    what_.clear();
    return tried.scene == "chain" ? judgeChain(tried) : judgeOne(tried, struck);
}

struct Count {
    uint32_t passed = 0;
    uint32_t failed = 0;
};

/// Cases in an order whose every beginning is spread evenly over all of them, until the time is up.
int sweep(double seconds, const std::string& programs) {
    const auto begin = std::chrono::steady_clock::now();
    Sweep all(programs);
    if (const std::string fault = all.begin(); !fault.empty()) {
        std::printf("undisturbed: %s\n0 passed, 1 failed\n", fault.c_str());
        return 1;
    }
    const std::vector<Case> cases = all.cases();
    size_t stride = cases.size() * 618 / 1000;
    while (std::gcd(stride, cases.size()) != 1) {
        ++stride;
    }
    std::map<std::string, Count> counts;
    Count sum;
    uint32_t missed = 0;
    size_t at = 0;
    for (size_t i = 0; i < cases.size(); ++i, at = (at + stride) % cases.size()) {
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
        if (elapsed.count() > seconds) {
            break;
        }
        const Case& tried = cases[at];
        bool struck = false;
        const std::string fault = all.judgeCase(tried, struck);
        missed += struck ? 0U : 1U;
        Count& count = counts[tried.scene + ' ' + tried.kind + (kills(tried.action) ? ", killed" : "")];
        for (Count* one : {&count, &sum}) {
            ++(fault.empty() ? one->passed : one->failed);
        }
        if (!fault.empty()) {
            std::printf("FAILED: tarno2-sweep case %s %s (%s): %s\n", tried.scene.c_str(), tried.fault().c_str(),
                        all.what().c_str(), fault.c_str());
            std::fflush(stdout);
        }
    }
    for (const auto& [what, count] : counts) {
        std::printf("%-26s %5u passed %5u failed\n", what.c_str(), count.passed, count.failed);
    }
    std::printf("%zu cases in all, %u of them ended before the call\n", cases.size(), missed);
    std::printf("%u passed, %u failed\n", sum.passed, sum.failed);
    return sum.failed == 0 && sum.passed > 0 ? 0 : 1;
}

int oneCase(char** argv, const std::string& programs) {
    const Case tried{argv[0], argv[1], static_cast<uint32_t>(std::strtoul(argv[2], nullptr, 10)), argv[3]};
    Sweep all(programs);
    std::string fault = all.begin();
    bool struck = false;
    if (fault.empty()) {
        fault = all.judgeCase(tried, struck);
    }
    const std::string kept = all.path() + "_kept";
    std::filesystem::copy(all.path(), kept,
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    std::printf("%s\n%s\n%s\n", all.what().c_str(), fault.empty() ? "passed" : fault.c_str(), kept.c_str());
    return fault.empty() ? 0 : 1;
}

}  // namespace

}  // namespace tarno2::test

int main(int argc, char** argv) {
    try {
        const std::string programs = tarno2::joinPath(tarno2::parentFolder(tarno2::executableFolder()), "bin");
        if (argc == 6 && std::string(argv[1]) == "case") {
            return tarno2::test::oneCase(argv + 2, programs);
        }
        if (argc != 2) {
            std::fprintf(stderr, "Usage: tarno2-sweep all|SECONDS, or tarno2-sweep case SCENE KIND NUMBER ACTION\n");
            return 2;
        }
        const bool all = std::string(argv[1]) == "all";
        return tarno2::test::sweep(all ? 1e9 : std::strtod(argv[1], nullptr), programs);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "!!!! %s\n", e.what());
        return 2;
    }
}
