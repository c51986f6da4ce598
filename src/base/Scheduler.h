// The program's only door to time and to other threads. desktop/ implements it on Qt's event loop and a
// thread pool; tests crank a double by hand, so that no test sleeps.
#pragma once

#include "base/Clock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace quillmark {

/// Says to running work that its result is no longer wanted. Any thread.
class CancelToken {
public:
    CancelToken() = default;
    explicit CancelToken(std::shared_ptr<const std::atomic<bool>> flag)
        : m_flag(std::move(flag))
    {
    }
    bool isCancelled() const { return m_flag && m_flag->load(std::memory_order_relaxed); }

private:
    std::shared_ptr<const std::atomic<bool>> m_flag;
};

/// The owning handle of something that will happen. Destroying it or assigning another one cancels: a
/// callback that has not run yet never runs. A debounce is `m_task = scheduler.after(…)`. Main thread only.
class Task {
public:
    Task() = default;
    Task(Task&&) noexcept = default;
    Task& operator=(Task&& other) noexcept
    {
        cancel();
        m_flag = std::move(other.m_flag);
        return *this;
    }
    ~Task() { cancel(); }

    void cancel()
    {
        if (m_flag)
            m_flag->store(true, std::memory_order_relaxed);
        m_flag.reset();
    }

    /// True while the callback has neither run nor been cancelled.
    bool isPending() const { return m_flag && !m_flag->load(std::memory_order_relaxed); }

    explicit Task(std::shared_ptr<std::atomic<bool>> flag)
        : m_flag(std::move(flag))
    {
    }

private:
    std::shared_ptr<std::atomic<bool>> m_flag; ///< true once cancelled or run
};

enum class Priority { userInitiated, utility };

class Scheduler {
public:
    virtual ~Scheduler() = default;

    /// Runs `f` on the main thread in a later turn of the event loop, after everything posted before. Any
    /// thread.
    virtual void post(std::function<void()> f) = 0;

    virtual SteadyTime now() const = 0; ///< any thread
    virtual WallTime wallNow() const = 0; ///< any thread

    /// Calls `f` on the main thread once `delay` has passed, unless the Task is cancelled first. Main thread.
    [[nodiscard]] Task after(Duration delay, std::function<void()> f)
    {
        return guarded(std::move(f), [&](std::function<void()> g) { runAfter(delay, std::move(g)); });
    }

    /// Runs `work(const CancelToken&)` on another thread and then `then(result)` on the main thread, unless
    /// the Task is cancelled first: then the result, which may be large, dies on another thread too. Work
    /// should look at its token now and then. `work` must own what it reads.
    template <class Work, class Then> [[nodiscard]] Task background(Priority priority, Work work, Then then)
    {
        using Value = std::invoke_result_t<Work, const CancelToken&>;
        auto flag = std::make_shared<std::atomic<bool>>(false);
        const CancelToken token(flag);
        auto value = std::make_shared<std::optional<Value>>();
        auto sharedThen = std::make_shared<Then>(std::move(then));
        runInBackground(priority, [this, flag, token, value, work = std::move(work), sharedThen]() mutable {
            if (token.isCancelled())
                return;
            value->emplace(work(token));
            if (token.isCancelled())
                return;
            post([this, flag, value, sharedThen] {
                if (!flag->exchange(true))
                    (*sharedThen)(std::move(**value));
                else
                    runInBackground(Priority::utility, [value] { value->reset(); });
            });
        });
        return Task(std::move(flag));
    }

    /// Runs `work` on another thread. Nothing cancels it; the process waits for it before it ends. Any
    /// thread.
    virtual void runInBackground(Priority priority, std::function<void()> work) = 0;

    /// Calls `work(first, end)` for the pieces of 0 … `count`, each once and in no order, on this thread and,
    /// when there are many items, on others that are free. Returns when all is done. When a call throws, no
    /// further piece is begun, and the first exception is thrown here once those that were begun have ended.
    /// Any thread.
    virtual void parallel(size_t count, const std::function<void(size_t first, size_t end)>& work);

    /// Frees a value where nobody waits for it: taking a large one apart takes time. One that says by its
    /// length() that it is small is freed at once; what a huge one leaves in the heap goes back to the
    /// system. Any thread.
    template <class Value> void letGo(Value value)
    {
        int64_t length = largeLength; // of what does not say it
        if constexpr (requires { value.length(); })
            length = value.length();
        if (length >= largeLength)
            free(std::make_shared<Value>(std::move(value)), length);
    }

    /// Calls `readable` on the main thread each time the descriptor has something to read, until the Task is
    /// cancelled, which must happen before the descriptor is closed. Main thread.
    [[nodiscard]] virtual Task watchDescriptor(int descriptor, std::function<void()> readable) = 0;

protected:
    /// Calls `f` on the main thread once `delay` has passed. Main thread.
    virtual void runAfter(Duration delay, std::function<void()> f) = 0;

    template <class Start> static Task guarded(std::function<void()> f, Start start)
    {
        auto flag = std::make_shared<std::atomic<bool>>(false);
        start([flag, f = std::move(f)] {
            if (!flag->exchange(true))
                f();
        });
        return Task(std::move(flag));
    }

private:
    static constexpr int64_t largeLength = 65'536; ///< what takes too long to free where somebody waits

    void free(std::shared_ptr<void> value, int64_t length);
};

} // namespace quillmark
