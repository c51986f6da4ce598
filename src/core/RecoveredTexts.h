// What the recovery folder holds, so that the user finds it again: a list, newest first, and the texts
// themselves. The folder and the files are read on other threads. Main thread.
#pragma once

#include "base/Observable.h"
#include "base/Scheduler.h"
#include "io/RecoveryStore.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

struct RecoveredEntry {
    Path path;
    std::string file; ///< the name of the file that the text belongs to, for the user
    std::string firstLine; ///< of the text that is not blank; empty when there is none
    WallTime time = distantPast;
    int64_t size = 0; ///< bytes
    bool operator==(const RecoveredEntry&) const = default;
};

class RecoveredTexts {
public:
    using Entries = std::vector<RecoveredEntry>;

    /// All of it outlives this.
    RecoveredTexts(Scheduler& scheduler, FileSystem& files, RecoveryStore& store);

    /// As last listed; nothing before, and an empty list where the folder cannot be read.
    const Observable<std::optional<Entries>>& entries = m_entries;
    void list();

    /// The text of an entry, unless another one is asked for first.
    void read(const Path& path, std::function<void(Result<Rope>)> then);

private:
    Scheduler& m_scheduler;
    FileSystem& m_files;
    RecoveryStore& m_store;
    Variable<std::optional<Entries>> m_entries;
    Task m_listing;
    Task m_reading;
};

} // namespace quillmark
