// Saves documents: as UTF-8, complete or not at all, following symbolic links, keeping the file's mode and
// attributes, and never over a version of another program's that nobody has seen. Any thread, several at a
// time for different files.
#pragma once

#include "base/Scheduler.h"
#include "io/Encode.h"
#include "io/KnownFiles.h"
#include "io/RecoveryStore.h"

#include <mutex>
#include <set>

namespace quillmark {

/// What a save does when the file is not the one that was last read or written, and differs in its bytes.
enum class OutsideVersion {
    replaceKept, ///< keeps it in the recovery folder and replaces it
    refuse, ///< fails with the code `changedOutside`
};

inline constexpr int changedOutside = -1; ///< Error::code; not one of the system's

struct SavedFile : WrittenFile {
    bool hasReplacedOutsideVersion = false; ///< which is now in the recovery folder
};

class DocumentWriter {
public:
    DocumentWriter(FileSystem& disk, RecoveryStore& recovery, Scheduler& scheduler);

    /// Returns when the text is on the disk. A file that is there is replaced; where its folder refuses that
    /// but the file may be written, its old bytes are kept in the recovery folder while it is overwritten. A
    /// file without write permission (EACCES), a folder (EISDIR) and a device (EINVAL) are never touched. A
    /// file that is not there appears complete, with mode 0666 less the umask; EEXIST when another program
    /// was quicker.
    Result<SavedFile> write(const Rope& text, const Path& path, LineEnds lineEnds,
        OutsideVersion outsideVersion = OutsideVersion::replaceKept);
    /// One of the program's own files.
    Result<SavedFile> write(std::string_view bytes, const Path& path, const MayPublish& mayPublish = nullptr);

    /// What was last read of or written to each document. Whoever reads one says so here.
    KnownFiles& known() { return m_known; }

private:
    struct Save;
    Result<SavedFile> write(const FileContent& content, const Path& path, const MayPublish& mayPublish);
    Result<SavedFile> overwrite(const FileContent& content, const Path& target, const MayPublish& mayPublish);
    Status mayReplace(Save& save, const WrittenFile& ready);
    Result<bool> keepUnseenVersion(Save& save, const WrittenFile& ready);
    void tidy(const Path& folder);

    FileSystem& m_disk;
    RecoveryStore& m_recovery;
    Scheduler& m_scheduler;
    KnownFiles m_known;
    std::mutex m_mutex;
    std::set<Path> m_tidied; ///< folders whose stale temporaries have been removed in this run
};

} // namespace quillmark
