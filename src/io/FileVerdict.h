// "Is the file still the one that we know?", asked in one way by the open document and by whoever follows the
// notes folder. (A save looks once more for itself, right before it renames.)
#pragma once

#include "base/Scheduler.h"
#include "io/KnownFiles.h"

namespace quillmark {

enum class FileVerdict {
    ours, ///< as it was last read or written here, or missing as it was then
    changed, ///< by somebody else
    missing, ///< it is not in its folder any more
    unreachable, ///< the disk does not say: an error, or a folder that is gone or on another disk (unmounted)
};

bool saysMissing(const Error& error); ///< rather than that the file cannot be read

/// Whether a path that cannot be looked at because of `error` is really missing: its folder is still there,
/// on the disk that it was on (0: any).
bool isMissing(FileSystem& disk, const Path& path, const Error& error, uint64_t device);

class FileLook {
public:
    FileLook(FileSystem& disk, KnownFiles& known, Scheduler& scheduler);

    /// Tells `then` the verdict: at once where the bytes need not be read or are few, otherwise later, after
    /// they were compared on another thread, unless the Task is cancelled. Main thread.
    [[nodiscard]] Task look(const Path& path, std::function<void(FileVerdict)> then);

private:
    FileSystem& m_disk;
    KnownFiles& m_known;
    Scheduler& m_scheduler;
};

} // namespace quillmark
