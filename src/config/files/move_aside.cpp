#include "config/files/move_aside.h"

#include <algorithm>
#include <set>

#include "config/logs/debug_log.h"
#include "platform/file.h"

namespace tarno2 {

namespace {

struct Renaming {
    std::string from;
    std::string to;
};

std::vector<std::string> neighbours(const RecordingName& name, OsError* error = nullptr) {
    return listDirectory(name.folder().empty() ? "." : name.folder(), error);
}

/// The files of a recording that exist, with what they are to be called. One of which the system does not tell is not
/// among them, and leaves an error.
std::vector<Renaming> filesOf(const RecordingName& name, const RecordingName& newName,
                              const std::vector<std::string>& folderContents, OsError& error) {
    std::set<uint32_t> pieces{0};
    for (const std::string& file : folderContents) {
        if (const auto k = name.pieceOf(file)) {
            pieces.insert(*k);
        }
    }
    std::vector<Renaming> files;
    for (const uint32_t k : pieces) {
        files.push_back({name.piece(k), newName.piece(k)});
        files.push_back({name.description(k), newName.description(k)});
    }
    files.push_back({name.losses(), newName.losses()});
    files.push_back({name.passport(), newName.passport()});
    files.push_back({name.marks(), newName.marks()});
    files.push_back({name.checksums(), newName.checksums()});
    std::erase_if(files, [&error](const Renaming& file) {
        bool found = false;
        const OsError looked = findFile(file.from, found);
        error = error.ok() ? looked : error;
        return !found;
    });
    return files;
}

/// Renames a file that nobody is writing.
OsError rename(const Renaming& file) {
    File held;
    const OsError error = held.openPlain(file.from, FileMode::OpenExisting, FileAccess::Read, FileShare::Read);
    held.close();
    return error.inUse() ? error : renameFile(file.from, file.to);
}

/// Gives the first `count` files their old names back; a name that is not available is left, with a line.
void undo(const std::vector<Renaming>& files, size_t count, MovedAside& moved) {
    for (size_t i = count; i-- > 0;) {
        if (const OsError error = renameFile(files[i].to, files[i].from); error.ok()) {
            DEBUG_LOG("\"%s\" renamed back to \"%s\"", files[i].to.c_str(), files[i].from.c_str());
        } else {
            DEBUG_LOG("!!!!! \"%s\" not renamed back: %s", files[i].to.c_str(), error.text().c_str());
            moved.names.push_back(files[i].to);
        }
    }
}

}  // namespace

uint32_t freeOldNumber(const RecordingName& name) {
    const std::vector<std::string> contents = neighbours(name);
    OsError ignored;  // nothing is replaced, whatever the number
    uint32_t n = 1;
    while (fileExists(name.old(n).journal()) || fileExists(name.old(n).earlierJournal()) ||
           !filesOf(name.old(n), name, contents, ignored).empty()) {
        ++n;
    }
    return n;
}

bool hasFilesToMove(const RecordingName& name) {
    OsError error;
    return !filesOf(name, name, neighbours(name), error).empty() || !error.ok();
}

MovedAside moveAside(const RecordingName& name, uint32_t n) {
    MovedAside moved;
    OsError listed;
    const std::vector<std::string> contents = neighbours(name, &listed);
    OsError seen;
    const std::vector<Renaming> files = filesOf(name, name.old(n), contents, seen);
    if (!seen.ok() || (!listed.ok() && !files.empty())) {
        // What was not seen would stay behind.
        moved.error = seen.ok() ? listed : seen;
        moved.file = files.empty() ? name.data() : files.front().from;
        return moved;
    }
    for (size_t i = 0; i < files.size(); ++i) {
        const Renaming& file = files[i];
        moved.error = rename(file);
        if (!moved.error.ok()) {
            DEBUG_LOG("!!!!! Earlier file \"%s\" not renamed: %s", file.from.c_str(), moved.error.text().c_str());
            moved.file = file.from;
            moved.names.clear();
            undo(files, i, moved);
            return moved;
        }
        DEBUG_LOG("Earlier file \"%s\" renamed to \"%s\"", file.from.c_str(), file.to.c_str());
        moved.names.push_back(file.to);
    }
    return moved;
}

}  // namespace tarno2
