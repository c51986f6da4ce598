// A Scheduler that stands still until a test cranks it: no thread, no sleep, the same order every time. Both
// clocks begin at fixed times; they move together, and the wall clock may also be set by itself.
#pragma once

#include "base/Scheduler.h"

#include <deque>
#include <mutex>
#include <vector>

namespace quillmark::test {

/// post(), runInBackground() and the clocks may be used from any thread; the cranks are for the test's
/// thread, which plays the main thread and the background threads in turn.
class ManualScheduler final : public Scheduler {
public:
    ManualScheduler();

    void post(std::function<void()> f) override;
    SteadyTime now() const override;
    WallTime wallNow() const override;
    void runInBackground(Priority priority, std::function<void()> work) override;
    void parallel(size_t count, const std::function<void(size_t first, size_t end)>& work) override; ///< here
    [[nodiscard]] Task watchDescriptor(int descriptor, std::function<void()> readable) override;

    /// Lets time pass: runs what is posted and, in the order of their due times, the timers that come due,
    /// with everything that these post or start within the time. Background jobs stay queued. Triggers
    /// descriptors.
    void advance(Duration duration);

    /// Runs posted callbacks, those that they post included. True when there were any.
    bool runPosted();

    /// Runs queued background jobs, those that they queue included; their results then wait for runPosted().
    /// True when there were any.
    bool runBackground();
    bool runNextBackground(); ///< the oldest job only; false when there is none

    /// Triggers each watched descriptor that poll() reports, once. True when there were any.
    bool triggerDescriptors();

    /// Runs posted callbacks, background jobs, descriptors and timers that are due, until nothing is left
    /// that could run without time passing.
    void settle();

    void setWall(WallTime time); ///< the steady clock does not move
    size_t queuedBackgroundJobs() const;

protected:
    void runAfter(Duration delay, std::function<void()> f) override;

private:
    struct Timer {
        SteadyTime due;
        std::function<void()> f;
    };
    struct Watch {
        int descriptor;
        std::shared_ptr<std::atomic<bool>> cancelled;
        std::function<void()> readable;
    };

    bool runNextTimer(SteadyTime latest);
    void moveClocksTo(SteadyTime time);

    mutable std::mutex m_mutex; ///< guards the clocks and the two queues that other threads fill
    SteadyTime m_now;
    WallTime m_wallNow;
    std::deque<std::function<void()>> m_posted;
    std::deque<std::function<void()>> m_jobs;
    std::vector<Timer> m_timers; ///< in the order of their due times; equal ones in the order of creation
    std::vector<Watch> m_watches;
};

} // namespace quillmark::test
