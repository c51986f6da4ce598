#pragma once

#include "base/Scheduler.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace quillmark::test {

/// A few real threads, for what must hold when nobody cranks. Timers never fire.
class ThreadScheduler final : public Scheduler {
public:
    ThreadScheduler()
    {
        for (int i = 0; i < 3; ++i)
            m_threads.emplace_back([this] { work(); });
    }
    ~ThreadScheduler() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }

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
        {
            const std::lock_guard lock(m_mutex);
            m_jobs.push_back(std::move(work));
        }
        m_changed.notify_one();
    }
    Task watchDescriptor(int, std::function<void()>) override { return {}; }

protected:
    void runAfter(Duration, std::function<void()>) override {}

private:
    void work()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [&] { return m_isEnding || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            const auto job = std::move(m_jobs.front());
            m_jobs.pop_front();
            lock.unlock();
            job();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs;
    std::deque<std::function<void()>> m_posted;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};

} // namespace quillmark::test
