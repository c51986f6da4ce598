#include "support/ManualScheduler.h"
#include "support/ThreadScheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace quillmark {
namespace {

using namespace std::chrono_literals;
using test::ManualScheduler;

TEST(Task, CancelsWithItsLastOwner)
{
    ManualScheduler scheduler;
    std::string heard;
    Task kept;
    {
        const Task dropped = scheduler.after(1s, [&] { heard += 'a'; });
        EXPECT_TRUE(dropped.isPending());
        Task made = scheduler.after(1s, [&] { heard += 'b'; });
        kept = std::move(made);
    }
    scheduler.advance(2s);
    EXPECT_EQ(heard, "b");
}

TEST(Background, AResultThatNobodyWantsDiesOnAnotherThread)
{
    ManualScheduler scheduler;
    const auto value = std::make_shared<int>(1);
    const auto work = [&](const CancelToken&) { return std::shared_ptr<int>(value); };
    Task task = scheduler.background(Priority::utility, work, [](const auto&) { FAIL(); });
    scheduler.runBackground();
    task.cancel();
    scheduler.runPosted();
    EXPECT_EQ(value.use_count(), 2);
    scheduler.runBackground();
    EXPECT_EQ(value.use_count(), 1);
}

TEST(Background, CancelledBeforeOrAfterTheWorkDropsTheResult)
{
    ManualScheduler scheduler;
    int runs = 0;
    const auto start = [&] {
        return scheduler.background(
            Priority::utility, [&](const CancelToken&) { return ++runs; }, [](int) { FAIL(); });
    };
    Task task = start();
    task.cancel();
    scheduler.settle();
    EXPECT_EQ(runs, 0);
    task = start();
    scheduler.runBackground();
    EXPECT_EQ(runs, 1);
    task = Task();
    scheduler.settle();
}

TEST(Background, CancelledWhileItRunsSeesTheTokenAndItsResultIsDropped)
{
    ManualScheduler scheduler;
    Task task;
    bool sawCancel = false;
    task = scheduler.background(
        Priority::userInitiated,
        [&](const CancelToken& token) {
            task.cancel();
            return sawCancel = token.isCancelled();
        },
        [](bool) { FAIL() << "a result nobody waits for"; });
    scheduler.settle();
    EXPECT_TRUE(sawCancel);
}

TEST(Parallel, DoesEachItemOnce)
{
    test::ThreadScheduler scheduler;
    for (const size_t count : {0, 1, 127, 10'001}) {
        std::vector<std::atomic<int>> done(count);
        scheduler.parallel(count, [&](size_t first, size_t end) {
            for (size_t i = first; i < end; ++i)
                ++done[i];
        });
        EXPECT_TRUE(std::ranges::all_of(done, [](int times) { return times == 1; })) << count;
    }
}

TEST(Parallel, AnExceptionReachesTheCallerOnceAllPiecesEnded)
{
    test::ThreadScheduler scheduler;
    std::atomic<int> running = 0;
    const auto work = [&](size_t first, size_t) {
        ++running;
        std::this_thread::yield();
        --running;
        if (first >= 1'000)
            throw std::runtime_error("disk");
    };
    EXPECT_THROW(scheduler.parallel(100'000, work), std::runtime_error);
    EXPECT_EQ(running, 0);
}

} // namespace
} // namespace quillmark
