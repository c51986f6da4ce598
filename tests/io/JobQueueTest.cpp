#include "io/JobQueue.h"

#include "support/ManualScheduler.h"
#include "support/TestEnvironment.h"
#include "support/ThreadScheduler.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <latch>
#include <map>
#include <random>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

TEST(JobQueue, AJobThatIsReplacedWhileItRunsIsNotTriedAgain)
{
    ManualScheduler scheduler;
    JobQueue queue(scheduler, Priority::utility);
    std::string ran;
    queue.put("key", [&]() -> Status {
        ran += "old ";
        queue.put("key", [&] {
            ran += "new ";
            return Status();
        });
        return systemFailure(EIO);
    });
    scheduler.settle();
    scheduler.advance(1h);
    scheduler.settle();
    EXPECT_EQ(ran, "old new ");
    EXPECT_FALSE(queue.contains("key"));
}

TEST(JobQueue, DroppingWaitsForTheRunningJobAndEndsItsKey)
{
    ThreadScheduler scheduler;
    JobQueue queue(scheduler, Priority::utility);
    std::latch begun(1);
    std::atomic<bool> hasEnded = false;
    queue.put("key", [&]() -> Status {
        begun.count_down();
        std::this_thread::yield();
        hasEnded = true;
        return systemFailure(EIO);
    });
    begun.wait();
    queue.drop("key");
    EXPECT_TRUE(hasEnded);
    EXPECT_FALSE(queue.contains("key"));
}

/// Against a map of what has been put and not yet done: nothing is lost, nothing runs twice.
TEST(JobQueue, KeepsEachKeysNewestJobUntilItSucceeds)
{
    ManualScheduler scheduler;
    JobQueue queue(scheduler, Priority::utility);
    std::mt19937_64 random(seed());
    std::map<std::string, int> open; ///< the newest job of each key that is not done
    bool isFailing = false;
    for (int i = 0; i < 5'000; ++i) {
        const std::string key(1, static_cast<char>('a' + random() % 4));
        const auto action = random() % 16;
        if (action < 6) {
            open[key] = i;
            queue.put(key, [&, key, i]() -> Status {
                EXPECT_EQ(open.at(key), i) << "replaced, dropped or done";
                if (isFailing)
                    return systemFailure(EIO);
                open.erase(key);
                return {};
            });
        } else if (action == 6) {
            queue.drop(key);
            open.erase(key);
        } else if (action == 7) {
            const bool isDone = queue.finish(key).has_value();
            EXPECT_EQ(isDone, !open.contains(key));
        } else if (action == 8) {
            const size_t left = queue.finishAll().size();
            EXPECT_EQ(left, open.size());
        } else if (action == 9) {
            isFailing = !isFailing;
        } else if (action < 13) {
            scheduler.runNextBackground();
        } else {
            scheduler.advance(std::chrono::seconds(random() % 40));
        }
        ASSERT_EQ(queue.checkInvariants(), "") << "after step " << i;
        for (const auto& [name, job] : open)
            ASSERT_TRUE(queue.contains(name)) << "after step " << i;
    }
    isFailing = false;
    EXPECT_TRUE(queue.finishAll().empty());
    EXPECT_TRUE(open.empty());
}

} // namespace
} // namespace quillmark::test
