// While a document is dirty its text is also written to a journal, at most one second after a key, so that a
// crash loses no more than that. A journal that a dead process left is moved to the recovery folder.
#pragma once

#include "io/JobQueue.h"
#include "io/JournalFiles.h"

#include <map>
#include <optional>

namespace quillmark {

/// Main thread, but for recoverLeftovers(). The only cost there is copying a Rope once a second. The first
/// write comes 0.2 s after a key; a large text is written less often, so that a disk is not kept busy.
class Journal {
public:
    struct Snapshot {
        Path original; ///< the document's file, or any name
        Rope text;
    };
    /// Gives the text of a document, or nothing when it no longer needs a journal.
    using Source = std::function<std::optional<Snapshot>(const Uuid& document)>;

    Journal(FileSystem& disk, Scheduler& scheduler, RecoveryStore& recovery, Log& log, JournalFolders folders,
        Source source);
    ~Journal(); ///< what is left in the journal's folders is found by the next start
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// After every edit.
    void textChanged(const Uuid& document);
    /// Grows with every edit. Taken together with the text that is saved, and given to saved().
    uint64_t version(const Uuid& document) const;
    /// The text of that version is on the disk: the journal goes, unless something newer was typed since.
    void saved(const Uuid& document, uint64_t version);
    bool holds(const Uuid& document) const; ///< its newest text is in a journal on the disk
    /// The document is gone and its text safe or not wanted: the journal goes.
    void forget(const Uuid& document);

    /// For the end of the program: journals at once what was typed since the last write, by now in any folder
    /// that takes it, and blocks until all writes and removals have been tried. True when all succeeded.
    bool finish();

    /// Moves the journals of dead processes to the recovery folder and returns how many there were. Any
    /// thread, before or after the first edit.
    size_t recoverLeftovers();

private:
    struct Entry {
        uint64_t version = 0;
        bool isDirty = false; ///< typed since the last write was started
        bool isWriting = false;
        bool wasWritten = false; ///< or is being written: there is something to remove
        bool isHeld = false; ///< the last write succeeded
        Task timer;
    };
    void schedule(const Uuid& document, Entry& entry);
    void write(const Uuid& document);
    void written(const Uuid& document, Duration took, const Result<WrittenFile>& result);

    Scheduler& m_scheduler;
    Source m_source;
    std::shared_ptr<JournalFiles> m_files; ///< what the jobs need, shared with them
    std::shared_ptr<Journal> m_self; ///< owns nothing; gone with the Journal, for what was posted before
    std::map<Uuid, Entry> m_entries;
    std::map<Uuid, SteadyTime> m_earliest; ///< no write of a large text before this, saved meanwhile or not
    uint64_t m_lastVersion = 0;
    JobQueue m_jobs;
};

} // namespace quillmark
