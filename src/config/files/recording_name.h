#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"

namespace tarno2 {

/// The name of a recording, and with it those of all files that belong to it:
///
///     <base><extension>  <base>_<k><extension>   samples: the first file, then pieces 1, 2, ...
///     <base>.txt         <base>_<k>.txt          the description of each
///     <base>.tarno2-journal                      while the recording is not finished
///     <base>.log                                 what was lost
///     <base>.json                                the passport: everything that is known of it
///     <base>.marks.csv                           what was marked
///     <base>.sha256                              checksums of the data files
///
/// A value that knows names alone: which of the files are there only the disk tells. Letters' case is ignored where
/// names are compared, for a disk may do so; who must know asks the disk.
class RecordingName {
public:
    RecordingName() = default;
    /// `dataName`: of the first data file.
    explicit RecordingName(std::string dataName);

    /// Of a name as the user typed it, which gets ".dat" unless its last part has an extension, of 1 to 16 letters or
    /// digits, or the ending of a file that stands beside the data. A "." that begins or ends the last part
    /// begins no extension. Without a last part the name stays as it is.
    [[nodiscard]] static RecordingName typed(std::string name);
    /// The name "file_<year>_<month>_<day>_n<number>.dat", which the program gives by itself.
    [[nodiscard]] static RecordingName generated(const std::string& folder, const LocalTime& day, uint32_t number);
    /// Of the recording with this journal; `extension`: of its data files, with its ".".
    [[nodiscard]] static RecordingName ofJournal(std::string_view journalName, std::string_view extension = {});

    /// Of the first data file.
    [[nodiscard]] const std::string& data() const { return data_; }
    /// `data` without its extension.
    [[nodiscard]] std::string base() const { return data_.substr(0, baseLength_); }
    /// Of the data files, with its "."; may be empty.
    [[nodiscard]] std::string extension() const { return data_.substr(baseLength_); }
    [[nodiscard]] std::string folder() const;

    /// The data file of piece `k`; 0 is the first one.
    [[nodiscard]] std::string piece(uint32_t k) const;
    /// The description of piece `k`.
    [[nodiscard]] std::string description(uint32_t k = 0) const;
    [[nodiscard]] std::string journal() const;
    /// "<base>.journal": what earlier versions called it. Such journals are read, never made.
    [[nodiscard]] std::string earlierJournal() const;
    /// The list of what was lost.
    [[nodiscard]] std::string losses() const;
    [[nodiscard]] std::string passport() const;
    /// The list of marks.
    [[nodiscard]] std::string marks() const;
    [[nodiscard]] std::string checksums() const;
    /// All files that may stand beside the data files and their descriptions.
    [[nodiscard]] std::vector<std::string> companions() const;

    /// "<base>_old<n><extension>": what this recording is called once it has made way for another one.
    [[nodiscard]] RecordingName old(uint32_t n) const;
    /// When this is called like a piece, "<base>_<k><extension>": the recording that it could be a piece of.
    [[nodiscard]] std::optional<RecordingName> whole() const;

    /// Whether the program gave the name: it means nothing to anybody, and any other is as good.
    [[nodiscard]] bool isGenerated() const;
    /// Which piece a file of the same folder belongs to, by its name and whatever its extension: 0 for "<base>.x",
    /// k for "<base>_<k>.x". Nothing when it does not belong to this recording.
    [[nodiscard]] std::optional<uint32_t> pieceOf(std::string_view fileName) const;
    /// Whether both may have files of one name, in the same folder: they are called the same, or one like a piece of
    /// the other.
    [[nodiscard]] bool mayShareFilesWith(const RecordingName& other) const;

private:
    std::string data_;
    size_t baseLength_ = 0;
};

}  // namespace tarno2
