#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "apps/verify/recording_files.h"
#include "records/checksum_list.h"
#include "records/mark_list.h"
#include "records/recorded_format.h"

namespace tarno2 {

/// What came of one thing that was looked at.
enum class Verdict {
    Right,
    Wrong,
    Unchecked,  ///< it could not be looked at
    Note        ///< worth knowing, and no fault
};

/// Checks all files of one recording against each other, changing none.
class RecordingCheck {
public:
    /// Gets every finding as soon as there is one, in English.
    using Tell = std::function<void(Verdict, const std::string&)>;

    /// `stop`: ends the reading of data files.
    RecordingCheck(const std::string& dataName, Tell tell, const std::atomic<bool>& stop);
    void run();

private:
    void right(const std::string& what) { tell_(Verdict::Right, what); }
    void wrong(const std::string& what) { tell_(Verdict::Wrong, what); }
    void note(const std::string& what) { tell_(Verdict::Note, what); }

    [[nodiscard]] bool mayBeChecked();
    void readPassport();
    void takePieces(const Passport& passport, const std::string& file);
    void readList();
    void enter(const std::string& listedAs, const std::string& sha256, const std::string& source);
    [[nodiscard]] std::optional<uint32_t> pieceOf(const std::string& listed) const;
    void checkContinuity();
    [[nodiscard]] bool mayEndWithinAFrame(uint32_t k) const;
    void checkPiece(uint32_t k);
    void checkFormat(const RecordedFormat& format);
    void checkSums(uint32_t k);

    struct Sum {
        std::string sha256;
        std::string source;
    };
    void compareSums(const std::string& shown, const std::string& file, const std::vector<Sum>& sums);

    // recording_check_marks.cpp
    void checkMarks();
    [[nodiscard]] bool isOwnMarks(const std::string& listed) const;
    void noteMarksBehindTheEnd(const std::vector<RecordingMark>& marks);

    const RecordingName name_;
    const Tell tell_;
    const std::atomic<bool>& stop_;
    FoundPassport found_;
    std::optional<RecordingName> formerName_;  ///< under which it was recorded, when it was renamed since
    std::set<uint32_t> pieces_;                ///< that are there
    std::map<uint32_t, PassportPiece> told_;   ///< by the passport
    std::map<uint32_t, std::vector<Sum>> sums_;
    std::vector<Sum> marksSums_;            ///< of the list of marks
    std::optional<RecordedFormat> format_;  ///< of the first piece
};

}  // namespace tarno2
