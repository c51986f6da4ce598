#include "support/ManualScheduler.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <unistd.h>

namespace quillmark {
namespace {

using namespace std::chrono_literals;
using test::ManualScheduler;

TEST(Task, DestroyingCancels)
{
    ManualScheduler scheduler;
    int calls = 0;
    {
        const Task task = scheduler.after(1s, [&] { ++calls; });
        EXPECT_TRUE(task.isPending());
    }
    scheduler.advance(2s);
    EXPECT_EQ(calls, 0);
}

TEST(Task, AssigningAgainIsADebounce)
{
    ManualScheduler scheduler;
    std::string heard;
    Task save = scheduler.after(800ms, [&] { heard += 'a'; });
    scheduler.advance(799ms);
    save = scheduler.after(800ms, [&] { heard += 'b'; });
    scheduler.advance(799ms);
    EXPECT_EQ(heard, "");
    scheduler.advance(1ms);
    EXPECT_EQ(heard, "b");
    EXPECT_FALSE(save.isPending());
}

TEST(Task, MayBeReplacedByItsOwnCallback)
{
    ManualScheduler scheduler;
    int calls = 0;
    Task blink;
    std::function<void()> again = [&] {
        ++calls;
        blink = scheduler.after(500ms, again);
    };
    again();
    scheduler.advance(1600ms);
    EXPECT_EQ(calls, 4);
    EXPECT_TRUE(blink.isPending());
}

TEST(Task, MovedFromTaskNoLongerCancels)
{
    ManualScheduler scheduler;
    int calls = 0;
    Task kept;
    {
        Task made = scheduler.after(1s, [&] { ++calls; });
        kept = std::move(made);
    }
    scheduler.advance(1s);
    EXPECT_EQ(calls, 1);
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

TEST(Background, ResultArrivesOnTheMainThreadAfterTheWork)
{
    ManualScheduler scheduler;
    int result = 0;
    const Task task = scheduler.background(
        Priority::utility, [](const CancelToken&) { return 6 * 7; }, [&](int value) { result = value; });
    scheduler.runPosted();
    EXPECT_EQ(scheduler.queuedBackgroundJobs(), 1u);
    scheduler.runBackground();
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(task.isPending());
    scheduler.runPosted();
    EXPECT_EQ(result, 42);
    EXPECT_FALSE(task.isPending());
}

TEST(Background, CancelledBeforeItStartsDoesNotRun)
{
    ManualScheduler scheduler;
    bool ran = false;
    Task task = scheduler.background(
        Priority::utility, [&](const CancelToken&) { return ran = true; }, [](bool) { FAIL(); });
    task.cancel();
    scheduler.settle();
    EXPECT_FALSE(ran);
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

TEST(Background, CancelledAfterTheWorkButBeforeItsResultDropsTheResult)
{
    ManualScheduler scheduler(ManualScheduler::Background::atOnce);
    Task task
        = scheduler.background(Priority::utility, [](const CancelToken&) { return 1; }, [](int) { FAIL(); });
    task = Task();
    scheduler.settle();
}

TEST(ManualScheduler, TimersRunInTheOrderOfTheirDueTimesEachAtItsTime)
{
    ManualScheduler scheduler;
    const SteadyTime start = scheduler.now();
    std::string order;
    const auto note = [&](char name, Duration due) {
        return scheduler.after(due, [&order, &scheduler, name, time = start + due] {
            order += name;
            EXPECT_EQ(scheduler.now(), time);
        });
    };
    const Task c = note('c', 3s);
    const Task a = note('a', 1s);
    const Task b = note('b', 2s);
    const Task b2 = note('B', 2s);
    Task nested;
    const Task d = scheduler.after(2500ms, [&] {
        order += '(';
        scheduler.post([&] { order += ')'; });
        nested = scheduler.after(400ms, [&] { order += '!'; });
    });
    scheduler.advance(10s);
    EXPECT_EQ(order, "abB()!c");
    EXPECT_EQ(scheduler.now(), start + 10s);
}

TEST(ManualScheduler, PostsFromOtherThreadsRunHereInOrder)
{
    ManualScheduler scheduler;
    std::string order;
    std::thread([&] {
        scheduler.post([&] { order += '1'; });
        scheduler.post([&] { order += '2'; });
    }).join();
    EXPECT_EQ(order, "");
    scheduler.runPosted();
    EXPECT_EQ(order, "12");
}

TEST(ManualScheduler, WallClockMovesWithTimeAndJumpsAlone)
{
    ManualScheduler scheduler;
    const SteadyTime steady = scheduler.now();
    const WallTime wall = scheduler.wallNow();
    scheduler.advance(5s);
    EXPECT_EQ(scheduler.wallNow(), wall + 5s);
    scheduler.setWall(wall - 1h);
    EXPECT_EQ(scheduler.now(), steady + 5s);
    scheduler.advance(1s);
    EXPECT_EQ(scheduler.wallNow(), wall - 1h + 1s);
}

TEST(ManualScheduler, WatchesDescriptorsUntilTheTaskGoes)
{
    ManualScheduler scheduler;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::string heard;
    Task watch = scheduler.watchDescriptor(ends[0], [&] {
        char c = 0;
        ASSERT_EQ(read(ends[0], &c, 1), 1);
        heard += c;
    });
    scheduler.settle();
    EXPECT_EQ(heard, "");
    ASSERT_EQ(write(ends[1], "xy", 2), 2);
    scheduler.settle();
    EXPECT_EQ(heard, "xy");
    watch.cancel();
    ASSERT_EQ(write(ends[1], "z", 1), 1);
    scheduler.settle();
    EXPECT_EQ(heard, "xy");
    close(ends[0]);
    close(ends[1]);
}

TEST(ManualScheduler, EndlessCallbacksFailInsteadOfHanging)
{
    ManualScheduler scheduler;
    std::function<void()> again = [&] { scheduler.post(again); };
    again();
    EXPECT_THROW(scheduler.settle(), std::logic_error);
}

} // namespace
} // namespace quillmark
