#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/support/bait.h"
#include "tests/support/temporary_folder.h"
#include "tests/sweep/fault_report.h"

namespace tarno2::test {

inline constexpr uint64_t kRecordedBytes = 2400000;  ///< of the recording that is swept, in pieces of 1 MiB
inline constexpr uint32_t kFrameBytes = 4;           ///< two channels of 16 bits

using Files = std::map<std::string, std::string>;  ///< contents by name

inline constexpr const char* kRecord = "tarno2-console";
inline constexpr const char* kRecover = "tarno2-recover";

/// What a program did.
struct Outcome {
    int status = 0;                         ///< 128 + the number of the signal that ended it; -1: it hung and was ended
    std::string told;                       ///< AutoLog.txt, standard output and standard error
    bool struck = false;                    ///< the fault came
    std::string what;                       ///< the call
    std::map<std::string, uint32_t> calls;  ///< how many there were, by kind
};

/// A folder in which recordings are made and recovered: with files of others in it that nobody may touch (bait), an
/// earlier recording of the name that is going to be recorded, and recordings that were cut off.
class Field {
public:
    /// Makes bait and recordings with the programs of the folder `programs`. Throws when that did not work.
    explicit Field(std::string programs);

    /// Puts everything back to the beginning; only the bait stays.
    void reset();
    /// Records `run`, or recovers the folder. No fault when it is empty.
    Outcome run(const std::string& program, const std::string& fault);

    /// Everything in the folder that is no bait, with its contents.
    [[nodiscard]] Files files() const;
    /// Which bait is not what it was; empty: none. From then on it is what it became.
    [[nodiscard]] std::string touchedBait();
    [[nodiscard]] const Files& earlier() const { return earlier_; }      ///< data files and descriptions of `run`
    [[nodiscard]] const Files& cutOff() const { return cutOff_; }        ///< journals and files as a kill left them
    [[nodiscard]] const Files& recovered() const { return recovered_; }  ///< the same after an undisturbed recovery
    [[nodiscard]] const std::string& path() const { return folder_.path(); }

private:
    void writeSettings(const std::string& name, uint64_t bytes, uint32_t frequency = 1000000);
    void makeRecordings();
    void clear();
    void put(const Files& files) const;

    TemporaryFolder folder_;
    std::string programs_;
    std::string settings_;
    std::string signal_ = "Counter";
    Files earlier_;
    Files cutOff_;
    Files recovered_;
    std::vector<Bait> bait_;  ///< in the folder itself, and outside
};

}  // namespace tarno2::test
