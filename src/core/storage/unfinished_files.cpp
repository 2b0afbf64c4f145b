#include "core/storage/unfinished_files.h"

#include <utility>

#include "config/logs/debug_log.h"
#include "core/storage/piece_description.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

OsError removeIfEmpty(const std::string& name) {
    File file;
    uint64_t bytes = 0;
    OsError error = file.openPlain(name, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::Read);
    if (error.ok()) {
        error = file.size(bytes);
    }
    return error.ok() && bytes == 0 ? file.removeNamed(name) : error;
}

}  // namespace

bool UnfinishedFiles::describe(const std::string& name, uint64_t bytes, const JournalState& state,
                               RecordDescription& description) {
    std::string problem = describeDataFile(name, bytes, state, description);
    if (problem.empty()) {
        return true;
    }
    DEBUG_LOG("!!!!! \"%s\": %s", name.c_str(), problem.c_str());
    undescribed_.push_back({name, bytes, state, description, std::move(problem)});
    undescribed_.back().state.undescribed.clear();
    return false;
}

void UnfinishedFiles::removeEmpty(const std::string& name) {
    if (const OsError error = removeFile(name); !error.ok() && !error.notFound()) {
        DEBUG_LOG("!!!!! The empty file \"%s\" could not be removed: %s", name.c_str(), error.text().c_str());
        removeEmptyLater(name);
    }
}

bool UnfinishedFiles::describeLate() {
    const size_t described = std::erase_if(undescribed_, [](Undescribed& file) {
        file.problem = describeDataFile(file.name, file.bytes, file.state, file.description);
        if (file.problem.empty()) {
            DEBUG_LOG("\"%s\" is described now", file.name.c_str());
            static_cast<void>(flushFolder(parentFolder(file.name)));
        }
        return file.problem.empty();
    });
    return described > 0;
}

std::vector<std::string> UnfinishedFiles::removeLate() {
    std::vector<std::string> problems;
    for (const std::string& name : std::exchange(emptyFiles_, {})) {
        if (const OsError error = removeIfEmpty(name); !error.ok() && !error.notFound()) {
            problems.push_back(
                formatText("The empty file \"%s\" could not be removed: %s", name.c_str(), error.text().c_str()));
        }
    }
    return problems;
}

std::vector<PieceState> UnfinishedFiles::undescribedPieces() const {
    std::vector<PieceState> pieces;
    for (const Undescribed& file : undescribed_) {
        pieces.push_back(*file.state.piece);
    }
    return pieces;
}

std::string UnfinishedFiles::problem() const {
    const Undescribed& first = undescribed_.front();
    return formatText("\"%s\": %s", first.name.c_str(), first.problem.c_str());
}

}  // namespace tarno2
