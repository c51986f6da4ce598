#include "support/ManualScheduler.h"

#include <algorithm>
#include <poll.h>
#include <stdexcept>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

constexpr SteadyTime firstSteadyTime{1000s};
constexpr WallTime firstWallTime{1'705'320'000s}; // 15 January 2024, 12:00 UTC
constexpr int roundsUntilStuck = 100'000;

/// Takes the oldest entry of a queue that other threads fill.
std::function<void()> takeFirst(std::deque<std::function<void()>>& queue, std::mutex& mutex)
{
    const std::lock_guard lock(mutex);
    if (queue.empty())
        return nullptr;
    auto f = std::move(queue.front());
    queue.pop_front();
    return f;
}

/// A test whose callbacks start each other for ever should fail, not hang.
class StuckGuard {
public:
    void nextRound()
    {
        if (++m_rounds > roundsUntilStuck)
            throw std::logic_error("ManualScheduler: callbacks keep each other going without time passing");
    }

private:
    int m_rounds = 0;
};

} // namespace

ManualScheduler::ManualScheduler()
    : m_now(firstSteadyTime)
    , m_wallNow(firstWallTime)
{
}

void ManualScheduler::post(std::function<void()> f)
{
    const std::lock_guard lock(m_mutex);
    m_posted.push_back(std::move(f));
}

SteadyTime ManualScheduler::now() const
{
    const std::lock_guard lock(m_mutex);
    return m_now;
}

WallTime ManualScheduler::wallNow() const
{
    const std::lock_guard lock(m_mutex);
    return m_wallNow;
}

void ManualScheduler::setWall(WallTime time)
{
    const std::lock_guard lock(m_mutex);
    m_wallNow = time;
}

size_t ManualScheduler::queuedBackgroundJobs() const
{
    const std::lock_guard lock(m_mutex);
    return m_jobs.size();
}

void ManualScheduler::runInBackground(Priority, std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    m_jobs.push_back(std::move(work));
}

void ManualScheduler::parallel(size_t count, const std::function<void(size_t first, size_t end)>& work)
{
    if (count > 0)
        work(0, count);
}

Task ManualScheduler::watchDescriptor(int descriptor, std::function<void()> readable)
{
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    m_watches.push_back({descriptor, cancelled, std::move(readable)});
    return Task(std::move(cancelled));
}

void ManualScheduler::runAfter(Duration delay, std::function<void()> f)
{
    const SteadyTime due = now() + std::max(delay, Duration::zero());
    const auto place = std::ranges::upper_bound(m_timers, due, {}, &Timer::due);
    m_timers.insert(place, {due, std::move(f)});
}

bool ManualScheduler::runPosted()
{
    StuckGuard guard;
    bool ran = false;
    while (const auto f = takeFirst(m_posted, m_mutex)) {
        guard.nextRound();
        f();
        ran = true;
    }
    return ran;
}

bool ManualScheduler::runNextBackground()
{
    const auto job = takeFirst(m_jobs, m_mutex);
    if (!job)
        return false;
    job();
    return true;
}

bool ManualScheduler::runBackground()
{
    StuckGuard guard;
    bool ran = false;
    while (runNextBackground()) {
        guard.nextRound();
        ran = true;
    }
    return ran;
}

bool ManualScheduler::triggerDescriptors()
{
    std::erase_if(m_watches, [](const Watch& watch) { return watch.cancelled->load(); });
    std::vector<Watch> readable;
    for (const Watch& watch : m_watches) {
        pollfd request{.fd = watch.descriptor, .events = POLLIN, .revents = 0};
        if (poll(&request, 1, 0) > 0)
            readable.push_back(watch);
    }
    for (const Watch& watch : readable) {
        if (!watch.cancelled->load()) // by the callback of another descriptor
            watch.readable();
    }
    return !readable.empty();
}

bool ManualScheduler::runNextTimer(SteadyTime latest)
{
    if (m_timers.empty() || m_timers.front().due > latest)
        return false;
    const Timer timer = std::move(m_timers.front());
    m_timers.erase(m_timers.begin());
    moveClocksTo(timer.due);
    timer.f();
    return true;
}

void ManualScheduler::moveClocksTo(SteadyTime time)
{
    const std::lock_guard lock(m_mutex);
    if (time <= m_now)
        return;
    m_wallNow += time - m_now;
    m_now = time;
}

void ManualScheduler::advance(Duration duration)
{
    const SteadyTime target = now() + duration;
    StuckGuard guard;
    do {
        guard.nextRound();
        runPosted();
        if (triggerDescriptors())
            runPosted();
    } while (runNextTimer(target));
    moveClocksTo(target);
}

void ManualScheduler::settle()
{
    StuckGuard guard;
    while (runPosted() || runBackground() || triggerDescriptors() || runNextTimer(now()))
        guard.nextRound();
}

} // namespace quillmark::test
