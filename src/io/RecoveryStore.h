// The folder where text goes that would otherwise be given up. Each file there is complete and synced, named
// after the time and the file it belongs to, and readable by its owner alone; the newest 200 stay. Any
// thread.
#pragma once

#include "base/Scheduler.h"
#include "io/AtomicFile.h"
#include "platform/Log.h"
#include "text/Rope.h"

#include <mutex>

namespace quillmark {

struct RecoveredText {
    Path path;
    int64_t size = 0; ///< bytes
    WallTime modified = distantPast;
};

class RecoveryStore {
public:
    static constexpr size_t capacity = 200;

    /// The folder is made when the first text is kept.
    RecoveryStore(FileSystem& disk, const Scheduler& clock, Log& log, Path folder);

    /// Keep a text, bytes or a copy of a file. `original` is the file that it belongs to, or any name. The
    /// kept file's path; an error, also logged, when it could not be kept.
    Result<Path> keep(const Rope& text, const Path& original);
    Result<Path> keepBytes(std::string_view bytes, const Path& original);
    Result<Path> keepCopy(const Path& file);
    /// Moves a file here, whatever it is called now. Needs no space when it is on the same disk.
    Result<Path> adopt(const Path& file, const Path& original);

    /// Newest first; empty when nothing was ever kept.
    Result<std::vector<RecoveredText>> list();

    const Path& folder() const { return m_folder; }

private:
    using Place = std::function<Status(const Path& free)>; ///< EEXIST: the name is taken
    Result<Path> keepAs(const Path& original, const Place& place);
    Result<Path> keepContent(const FileContent& content, const Path& original);
    void dropOldest(const Path& justKept);

    FileSystem& m_disk;
    const Scheduler& m_clock;
    Log& m_log;
    Path m_folder;
    std::mutex m_mutex; ///< one text at a time
};

} // namespace quillmark
