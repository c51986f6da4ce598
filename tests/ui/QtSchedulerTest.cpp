#include "desktop/QtScheduler.h"
#include "TurnUntil.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <thread>
#include <unistd.h>
#include <vector>

namespace quillmark {

namespace {

using test::turnUntil;

bool isMainThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace

TEST(QtScheduler, BringsPostsOfOtherThreadsToTheMainThread)
{
    QtScheduler scheduler;
    int onMain = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < 100; ++j)
                scheduler.post([&] { onMain += isMainThread() ? 1 : 0; });
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(turnUntil([&] { return onMain == 400; }));
}

TEST(QtScheduler, TimersKeepTheirTimeAndCancelledOnesStaySilent)
{
    QtScheduler scheduler;
    const SteadyTime start = scheduler.now();
    SteadyTime ran;
    bool cancelledRan = false;
    const Task kept = scheduler.after(std::chrono::milliseconds(20), [&] { ran = scheduler.now(); });
    Task cancelled = scheduler.after(std::chrono::milliseconds(5), [&] { cancelledRan = true; });
    cancelled.cancel();
    ASSERT_TRUE(turnUntil([&] { return !kept.isPending(); }));
    EXPECT_GE(ran - start, std::chrono::milliseconds(20));
    EXPECT_FALSE(cancelledRan);
}

TEST(QtScheduler, BackgroundWorkHandsItsResultToTheMainThread)
{
    QtScheduler scheduler;
    int result = 0;
    bool wasOnMain = true;
    bool droppedRan = false;
    const Task task = scheduler.background(
        Priority::userInitiated, [&](const CancelToken&) { return wasOnMain = isMainThread(), 42; },
        [&](int value) { result = isMainThread() ? value : -1; });
    Task dropped = scheduler.background(
        Priority::utility, [](const CancelToken&) { return 0; }, [&](int) { droppedRan = true; });
    dropped.cancel();
    ASSERT_TRUE(turnUntil([&] { return !task.isPending(); }));
    scheduler.drain();
    EXPECT_EQ(result, 42);
    EXPECT_FALSE(wasOnMain);
    EXPECT_FALSE(droppedRan);
}

TEST(QtScheduler, WatchesADescriptorUntilCancelledEvenFromItsOwnCallback)
{
    QtScheduler scheduler;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    int calls = 0;
    Task watch;
    watch = scheduler.watchDescriptor(ends[0], [&] {
        char byte = 0;
        calls += static_cast<int>(read(ends[0], &byte, 1));
        if (calls == 2)
            watch.cancel();
    });
    ASSERT_EQ(write(ends[1], "a", 1), 1);
    ASSERT_TRUE(turnUntil([&] { return calls == 1; }));
    ASSERT_EQ(write(ends[1], "bc", 2), 2);
    ASSERT_TRUE(turnUntil([&] { return calls == 2; }));

    bool turned = false;
    const Task later = scheduler.after(std::chrono::milliseconds(5), [&] { turned = true; });
    ASSERT_TRUE(turnUntil([&] { return turned; }));
    EXPECT_EQ(calls, 2) << "the byte that is left must call nobody";
    close(ends[0]);
    close(ends[1]);
}

} // namespace quillmark
