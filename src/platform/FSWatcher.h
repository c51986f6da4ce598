// Hears when a file or folder is changed, by whomever: an interface that io/ implements with the kernel's
// notices and tests with a disk in memory.
#pragma once

#include "platform/FileSystem.h"

#include <functional>
#include <memory>

namespace quillmark {

/// Owns one watch: nothing is heard of after it is destroyed.
class FSWatcher {
public:
    virtual ~FSWatcher() = default;
};

class FileWatching {
public:
    virtual ~FileWatching() = default;

    /// Calls `handler` on the main thread after the file at `path` was written, replaced, removed or renamed,
    /// also when it was away for a while, and by way of a symbolic link. Never fails: where the system cannot
    /// tell, the file is looked at now and then. Main thread.
    [[nodiscard]] virtual std::unique_ptr<FSWatcher> watchFile(
        const Path& path, std::function<void()> handler)
        = 0;

    /// The same when an entry of the folder appears, goes or is renamed, and when the folder itself goes or
    /// is back. Content written to a file in it is no such change.
    [[nodiscard]] virtual std::unique_ptr<FSWatcher> watchFolder(
        const Path& path, std::function<void()> handler)
        = 0;
};

} // namespace quillmark
