#pragma once

#include "base/Scheduler.h"

#include <deque>
#include <future>
#include <mutex>
#include <vector>

namespace quillmark::test {

/// Real threads, one a job, for what must hold when nobody cranks. Timers never fire.
class ThreadScheduler final : public Scheduler {
public:
    void post(std::function<void()> f) override
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(f));
    }
    void runPosted()
    {
        std::deque<std::function<void()>> posted;
        {
            const std::lock_guard lock(m_mutex);
            posted.swap(m_posted);
        }
        for (const auto& f : posted)
            f();
    }
    SteadyTime now() const override { return std::chrono::steady_clock::now(); }
    WallTime wallNow() const override { return std::chrono::system_clock::now(); }
    void runInBackground(Priority, std::function<void()> work) override
    {
        auto job = std::async(std::launch::async, std::move(work));
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_jobs,
            [](const auto& each) { return each.wait_for(Duration::zero()) == std::future_status::ready; });
        m_jobs.push_back(std::move(job));
    }
    Task watchDescriptor(int, std::function<void()>) override { return {}; }

protected:
    void runAfter(Duration, std::function<void()>) override {}

private:
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_posted;
    std::vector<std::future<void>> m_jobs; ///< each waits for its thread at its end
};

} // namespace quillmark::test
