// The journal on the disk. Each process that uses a folder holds "<process>.lock" in it locked; the text of a
// document is "<process>.<document>.<its file's name>".
#pragma once

#include "base/Uuid.h"
#include "io/RecoveryStore.h"

#include <map>
#include <mutex>
#include <vector>

namespace quillmark {

/// Where texts are journalled: in the program's own folder. Where the disk refuses that, in the first of the
/// fallbacks that takes them; at the end of the program, when nobody can try again, the last resorts count as
/// well. These two lie in folders that others may share, and must belong to this user alone.
struct JournalFolders {
    Path own;
    std::vector<Path> fallbacks;
    std::vector<Path> lastResorts;
};

/// Any thread.
class JournalFiles {
public:
    JournalFiles(FileSystem& disk, RecoveryStore& recovery, Log& log, JournalFolders folders);

    /// Returns when the text is on the disk; older ones of the document are gone then. The log names a folder
    /// that is not the program's own, and says so when none takes the text.
    Result<WrittenFile> write(const Uuid& document, const Path& original, const Rope& text);
    Status remove(const Uuid& document); ///< fine when there is nothing
    void useLastResorts(); ///< from now on
    void close(); ///< what is left is found by the next start

    /// Moves what dead processes left to the recovery folder and returns how many texts there were. What
    /// cannot be moved stays for the next time.
    size_t recoverLeftovers();

private:
    struct Place {
        Path folder;
        bool isShared = false; ///< others may have put something where it should be
        std::string process = {}; ///< our name there; empty until the first write
        std::unique_ptr<File> lock = nullptr;
        std::map<Uuid, Path> texts = {};

        Path lockOf(const std::string& name) const;
    };

    Result<WrittenFile> writeIn(Place& place, const Uuid& document, const Path& original, const Rope& text);
    Status open(Place& place);
    Status removeFrom(Place& place, const Uuid& document);
    void tell(const Place* place, const Error& refusal);
    size_t recoverFrom(const Place& place);
    size_t recoverTextsOf(
        const std::string& dead, const Place& place, const std::vector<FolderEntry>& entries);

    FileSystem& m_disk;
    RecoveryStore& m_recovery;
    Log& m_log;
    std::mutex m_mutex; ///< guards what follows
    std::vector<Place> m_places; ///< in the order in which they are tried; they stay where they are
    size_t m_inUse = 0; ///< of the places
    const Place* m_told = nullptr; ///< where texts go as far as the log says
};

} // namespace quillmark
