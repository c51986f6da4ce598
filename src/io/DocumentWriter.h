// Saves documents: as UTF-8, complete or not at all, following symbolic links, keeping the file's mode and
// attributes. Any thread, several at a time for different files.
#pragma once

#include "base/Scheduler.h"
#include "io/Encode.h"
#include "io/RecoveryStore.h"

#include <mutex>
#include <set>

namespace quillmark {

class DocumentWriter {
public:
    DocumentWriter(FileSystem& disk, RecoveryStore& recovery, Scheduler& scheduler);

    /// Returns when the text is on the disk. A file that is there is replaced; where its folder refuses new
    /// files but the file may be written, its old bytes are kept in the recovery folder while it is
    /// overwritten. A file without write permission (EACCES), a folder (EISDIR) and a device (EINVAL) are
    /// never touched. A file that is not there appears complete, with mode 0666 less the umask; EEXIST when
    /// another program was quicker.
    Result<WrittenFile> write(const Rope& text, const Path& path, LineEnds lineEnds);
    Result<WrittenFile> write(std::string_view bytes, const Path& path);

private:
    Result<WrittenFile> write(const FileContent& content, const Path& path);
    Result<WrittenFile> overwrite(const FileContent& content, const Path& target);
    void tidy(const Path& folder);

    FileSystem& m_disk;
    RecoveryStore& m_recovery;
    Scheduler& m_scheduler;
    std::mutex m_mutex;
    std::set<Path> m_tidied; ///< folders whose stale temporaries have been removed in this run
};

} // namespace quillmark
