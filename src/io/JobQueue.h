// Writes that nothing cancels: jobs under keys, one after another on a background thread. A newer job for a
// key replaces one that has not started; a failed one is tried again after 2, 10 and 60 s, then every 60 s,
// until it succeeds or is replaced. A job never runs at the same time as another one of its key.
#pragma once

#include "base/Result.h"
#include "base/Scheduler.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillmark {

/// All operations on the main thread; jobs run on any thread and must own what they need.
class JobQueue {
public:
    using Job = std::function<Status()>;

    JobQueue(Scheduler& scheduler, Priority priority);
    ~JobQueue(); ///< finishAll(); what fails then is lost
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    void put(const std::string& key, Job job);

    /// Forgets the key's job. Once it returns, none is running either.
    void drop(const std::string& key);

    /// Returns once the key has no job that was never tried: one that has not started, or failed before, runs
    /// on this thread. After a failure the job stays in the queue.
    Status finish(const std::string& key);

    /// The same for all keys, in order. Returns the keys whose jobs failed and are still in the queue.
    std::vector<std::string> finishAll();

    bool contains(const std::string& key) const; ///< waiting, running or to be tried again

    std::string checkInvariants() const; ///< for tests: what is broken, empty when nothing is

private:
    struct Core;
    std::shared_ptr<Core> m_core;
};

} // namespace quillmark
