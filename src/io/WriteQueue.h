// Saves that the user does not wait for: a serial queue of (file, text) that nothing cancels. A newer text
// for the same file replaces one that has not started; failed writes are logged and tried again until they
// succeed.
#pragma once

#include "io/DocumentWriter.h"
#include "io/JobQueue.h"
#include "platform/Log.h"

#include <map>
#include <optional>

namespace quillmark {

struct WriteRequest {
    Path target;
    Rope text;
    LineEnds lineEnds = LineEnds::lf;
    OutsideVersion outsideVersion = OutsideVersion::replaceKept;
    uint64_t version = 0; ///< the caller's; comes back with the outcome
};

/// Main thread only. Files are told apart by the bytes of their paths.
class WriteQueue {
public:
    struct Outcome {
        Path target;
        uint64_t version = 0;
        Result<SavedFile> result; ///< after a failure the text is still in the queue
    };

    WriteQueue(
        Scheduler& scheduler, DocumentWriter& writer, Log& log, std::function<void(const Outcome&)> done);
    ~WriteQueue(); ///< writes what is left
    WriteQueue(const WriteQueue&) = delete;
    WriteQueue& operator=(const WriteQueue&) = delete;

    void enqueue(WriteRequest request);

    /// Writes at once, on this thread. Replaces whatever was queued for the file: no older text reaches the
    /// disk afterwards, not even when this write fails, for then the caller still has the newer one. `done`
    /// is not called.
    Result<SavedFile> writeNow(const WriteRequest& request);

    /// Forgets what is queued for a file. Once it returns, no write of it is running.
    void discard(const Path& target);

    /// Blocks until the queued text of a file is on the disk or has failed again. `done` has been called for
    /// it.
    Status finish(const Path& target);
    /// The same for all files. Returns what could not be written; it stays in the queue.
    std::vector<WriteRequest> finishAll();

    /// The text that is on its way to a file and not there yet.
    std::optional<Rope> pendingText(const Path& target) const;

    std::string checkInvariants() const; ///< for tests: what is broken, empty when nothing is

private:
    struct Outcomes;
    struct Pending {
        WriteRequest request;
        uint64_t serial = 0;
    };
    JobQueue::Job jobFor(const WriteRequest& request, uint64_t serial);
    void deliver();

    Scheduler& m_scheduler;
    DocumentWriter& m_writer;
    Log& m_log;
    std::function<void(const Outcome&)> m_done;
    std::map<std::string, Pending> m_pending; ///< by the bytes of the path
    uint64_t m_lastSerial = 0;
    std::shared_ptr<Outcomes> m_outcomes; ///< filled by the jobs, emptied on the main thread
    JobQueue m_jobs;
};

} // namespace quillmark
