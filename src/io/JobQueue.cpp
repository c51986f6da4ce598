#include "io/JobQueue.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <set>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

constexpr std::array<Duration, 3> pauses = {2s, 10s, 60s};

struct Entry {
    std::string key;
    JobQueue::Job job;
    size_t failures = 0;
    SteadyTime due = SteadyTime::min();
};

} // namespace

/// Shared with what was handed to the scheduler: the last of them to go frees it.
struct JobQueue::Core : std::enable_shared_from_this<Core> {
    Core(Scheduler& s, Priority p)
        : scheduler(s)
        , priority(p)
    {
    }

    Scheduler& scheduler;
    const Priority priority;

    mutable std::mutex mutex;
    std::condition_variable ended; ///< a job has
    std::list<Entry> waiting; ///< in the order in which their keys were put
    std::set<std::string> running;
    std::set<std::string> replaced; ///< keys whose running job must not be tried again
    bool isDraining = false; ///< a background job has been started and has not found the queue empty yet
    Task retry; ///< main thread

    auto find(const std::string& key) { return std::ranges::find(waiting, key, &Entry::key); }

    void put(const std::string& key, Job job)
    {
        assert(job);
        {
            const std::lock_guard lock(mutex);
            const auto entry = find(key);
            if (entry != waiting.end())
                *entry = {.key = key, .job = std::move(job)};
            else
                waiting.push_back({.key = key, .job = std::move(job)});
            if (running.contains(key))
                replaced.insert(key);
        }
        drainInBackground();
    }

    void drainInBackground()
    {
        {
            const std::lock_guard lock(mutex);
            if (std::exchange(isDraining, true))
                return;
        }
        scheduler.runInBackground(priority, [self = shared_from_this()] { self->drain(); });
    }

    void drain()
    {
        while (auto entry = takeNext())
            static_cast<void>(run(std::move(*entry)));
    }

    /// The first that is due and whose key is not running elsewhere.
    std::optional<Entry> takeNext()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            const SteadyTime now = scheduler.now();
            const auto isDue = [&](const Entry& entry) { return entry.due <= now; };
            auto entry = std::ranges::find_if(
                waiting, [&](const Entry& e) { return isDue(e) && !running.contains(e.key); });
            if (entry != waiting.end())
                return take(entry);
            if (std::ranges::none_of(waiting, isDue)) {
                isDraining = false;
                return std::nullopt;
            }
            ended.wait(lock); // another thread runs the older job of that key
        }
    }

    Entry take(std::list<Entry>::iterator entry) // under the mutex
    {
        assert(entry != waiting.end() && !running.contains(entry->key));
        Entry taken = std::move(*entry);
        waiting.erase(entry);
        running.insert(taken.key);
        return taken;
    }

    Status run(Entry entry)
    {
        const Status status = entry.job();
        std::optional<Duration> pause;
        {
            const std::lock_guard lock(mutex);
            running.erase(entry.key);
            const bool isReplaced = replaced.erase(entry.key) > 0;
            if (!status && !isReplaced) {
                pause = pauses[std::min(entry.failures++, pauses.size() - 1)];
                entry.due = scheduler.now() + *pause;
                waiting.push_back(std::move(entry));
            }
        }
        ended.notify_all();
        if (pause)
            scheduler.post([weak = weak_from_this()] {
                if (const auto self = weak.lock())
                    self->armRetry();
            });
        return status;
    }

    /// Starts what is due and waits for what is not. Main thread.
    void armRetry()
    {
        bool isDue = false;
        SteadyTime next = SteadyTime::max();
        const SteadyTime now = scheduler.now();
        {
            const std::lock_guard lock(mutex);
            for (const Entry& entry : waiting) {
                isDue |= entry.due <= now;
                if (entry.due > now)
                    next = std::min(next, entry.due);
            }
        }
        if (isDue)
            drainInBackground();
        if (next == SteadyTime::max())
            return;
        retry = scheduler.after(next - now, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->armRetry();
        });
    }

    /// Runs the key's job on this thread unless another one has just run it.
    Status finish(const std::string& key)
    {
        std::optional<Entry> entry;
        {
            std::unique_lock lock(mutex);
            ended.wait(lock, [&] { return !running.contains(key); });
            const auto found = find(key);
            if (found == waiting.end())
                return {};
            entry = take(found);
        }
        return run(std::move(*entry));
    }
};

JobQueue::JobQueue(Scheduler& scheduler, Priority priority)
    : m_core(std::make_shared<Core>(scheduler, priority))
{
}

JobQueue::~JobQueue()
{
    finishAll();
    m_core->retry.cancel();
    std::unique_lock lock(m_core->mutex);
    m_core->waiting.clear();
    m_core->ended.wait(lock, [&] { return m_core->running.empty(); });
}

void JobQueue::put(const std::string& key, Job job)
{
    m_core->put(key, std::move(job));
}

void JobQueue::drop(const std::string& key)
{
    std::unique_lock lock(m_core->mutex);
    if (const auto entry = m_core->find(key); entry != m_core->waiting.end())
        m_core->waiting.erase(entry);
    if (m_core->running.contains(key))
        m_core->replaced.insert(key);
    m_core->ended.wait(lock, [&] { return !m_core->running.contains(key); });
}

Status JobQueue::finish(const std::string& key)
{
    return m_core->finish(key);
}

std::vector<std::string> JobQueue::finishAll()
{
    std::vector<std::string> keys;
    {
        const std::lock_guard lock(m_core->mutex);
        keys.assign(m_core->running.begin(), m_core->running.end());
        for (const Entry& entry : m_core->waiting) {
            if (std::ranges::find(keys, entry.key) == keys.end())
                keys.push_back(entry.key);
        }
    }
    std::erase_if(keys, [&](const std::string& key) { return m_core->finish(key).has_value(); });
    return keys;
}

bool JobQueue::contains(const std::string& key) const
{
    const std::lock_guard lock(m_core->mutex);
    return m_core->running.contains(key) || m_core->find(key) != m_core->waiting.end();
}

std::string JobQueue::checkInvariants() const
{
    const std::lock_guard lock(m_core->mutex);
    std::set<std::string> keys;
    for (const Entry& entry : m_core->waiting) {
        if (!keys.insert(entry.key).second)
            return entry.key + " waits twice";
        if ((entry.failures > 0) != (entry.due > SteadyTime::min()))
            return entry.key + " has failed without a pause, or pauses without a failure";
        if (entry.failures == 0 && !m_core->isDraining)
            return entry.key + " waits for nobody";
    }
    for (const std::string& key : m_core->replaced) {
        if (!m_core->running.contains(key))
            return key + " is replaced but does not run";
    }
    return {};
}

} // namespace quillmark
