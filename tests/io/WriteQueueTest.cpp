#include "io/WriteQueue.h"

#include "FakeDisk.h"
#include "support/TestEnvironment.h"
#include "support/ThreadScheduler.h"

#include <cerrno>
#include <random>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

class Queue : public FakeDisk {
protected:
    Queue()
    {
        disk.putFolder("/d");
        disk.setHook([this](const FakeFileSystem::Call& call) {
            if (call.operation == DiskOperation::resolveLinks)
                written.push_back(call.path.filename());
        });
    }

    void enqueue(const Path& target, std::string_view text, uint64_t version = 0)
    {
        queue.enqueue({.target = target, .text = Rope::fromUtf8(text), .version = version});
    }

    std::vector<std::string> written; ///< names of the files that writes were begun for
    std::vector<WriteQueue::Outcome> outcomes;
    WriteQueue queue{scheduler, writer, log, [this](const auto& outcome) { outcomes.push_back(outcome); }};
};

using Names = std::vector<std::string>;

TEST_F(Queue, WritesInOrderAndANewerTextTakesThePlaceOfOneThatWaits)
{
    enqueue("/d/a", "a1", 1);
    enqueue("/d/b", "b1", 2);
    enqueue("/d/a", "a2", 3);
    EXPECT_EQ(queue.pendingText("/d/a"), Rope(u"a2"));
    EXPECT_TRUE(written.empty()) << "nothing is written on the main thread";
    scheduler.settle();
    EXPECT_EQ(written, (Names{"a", "b"}));
    EXPECT_EQ(disk.bytes("/d/a"), "a2");
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_EQ(outcomes[0].version, 3u);
    EXPECT_EQ(outcomes[0].result->info, disk.infoOf("/d/a"));
    EXPECT_FALSE(queue.pendingText("/d/a"));
}

TEST_F(Queue, AFailedWriteIsTriedAgainAfter2And10And60Seconds)
{
    disk.failAlways(DiskOperation::createNew, ENOSPC, "/d/");
    enqueue("/d/a", "text");
    enqueue("/d/b", "other");
    disk.failAlways(DiskOperation::resolveLinks, EIO, "/d/b");
    scheduler.settle();
    EXPECT_EQ(log.lines().at(0), "Quillmark: background save failed: Нет места на диске");
    EXPECT_FALSE(outcomes.at(0).result);
    size_t tries = written.size();
    for (const Duration pause : {2s, 10s, 60s, 60s}) {
        scheduler.advance(pause - 1ms);
        scheduler.settle();
        EXPECT_EQ(written.size(), tries) << pause / 1s;
        scheduler.advance(1ms);
        scheduler.settle();
        EXPECT_EQ(written.size(), tries += 2) << pause / 1s;
    }
    EXPECT_EQ(queue.pendingText("/d/a"), Rope(u"text"));
    disk.heal();
    enqueue("/d/a", "newer");
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/d/a"), "newer") << "a newer text does not wait for the pause";
    EXPECT_FALSE(disk.bytes("/d/b"));
    scheduler.advance(60s);
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/d/b"), "other");
    EXPECT_EQ(disk.bytes("/d/a"), "newer");
    const size_t all = written.size();
    scheduler.advance(1h);
    scheduler.settle();
    EXPECT_EQ(written.size(), all);
}

TEST_F(Queue, FinishWritesOnTheSpotAndTellsAtOnce)
{
    enqueue("/d/a", "a");
    enqueue("/d/b", "b");
    EXPECT_TRUE(queue.finish("/d/b"));
    EXPECT_EQ(written, Names{"b"});
    EXPECT_EQ(outcomes.size(), 1u);
    EXPECT_TRUE(queue.finish("/d/none"));

    disk.failAlways(DiskOperation::sync, EIO);
    EXPECT_EQ(queue.finish("/d/a").error().code, EIO);
    const auto left = queue.finishAll();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].text, Rope(u"a"));
    EXPECT_EQ(written, (Names{"b", "a", "a"}));
    disk.heal();
    EXPECT_TRUE(queue.finishAll().empty());
    EXPECT_EQ(disk.bytes("/d/a"), "a");
    scheduler.settle();
    EXPECT_EQ(written.size(), 4u) << "nothing is written twice";
}

TEST_F(Queue, NoOlderTextArrivesAfterAWriteAtOnce)
{
    disk.failOnce(DiskOperation::createNew, ENOSPC);
    enqueue("/d/a", "failed");
    scheduler.settle();
    enqueue("/d/b", "older");
    for (const Path file : {"/d/a", "/d/b"})
        ASSERT_TRUE(queue.writeNow({.target = file, .text = Rope(u"newest")}));
    scheduler.advance(1h);
    scheduler.settle();
    EXPECT_EQ(disk.bytes("/d/a"), "newest");
    EXPECT_EQ(disk.bytes("/d/b"), "newest");
    EXPECT_FALSE(queue.pendingText("/d/a") || queue.pendingText("/d/b"));
}

TEST_F(Queue, DestructionWritesWhatIsLeft)
{
    {
        WriteQueue other(scheduler, writer, log, [](const auto&) { FAIL() << "nobody is there to be told"; });
        other.enqueue({.target = "/d/c", .text = Rope(u"last words")});
    }
    EXPECT_EQ(disk.bytes("/d/c"), "last words");
    scheduler.settle();
}

/// Real threads and a disk that is slow now and then: what must hold is the order of the texts of each file.
TEST(QueueOnThreads, EveryFileEndsWithItsNewestTextAndNeverGoesBack)
{
    ThreadScheduler scheduler;
    FakeFileSystem disk(scheduler);
    RecordingLog log;
    RecoveryStore recovery(disk, scheduler, log, "/state/recovered");
    DocumentWriter writer(disk, recovery, scheduler);
    disk.putFolder("/d");
    std::atomic<uint64_t> calls = 0;
    disk.setHook([&](const FakeFileSystem::Call&) {
        if (++calls % 7 == 0)
            std::this_thread::yield();
    });
    std::array<int, 3> newest{};
    std::array<int, 3> reported{};
    WriteQueue queue(scheduler, writer, log, [&](const WriteQueue::Outcome& outcome) {
        int& last = reported.at(static_cast<size_t>(outcome.target.filename().string()[0] - '0'));
        if (outcome.result) {
            EXPECT_GT(static_cast<int>(outcome.version), last);
            last = static_cast<int>(outcome.version);
        }
    });
    std::mt19937_64 random(seed());
    for (int i = 1; i <= 4000; ++i) {
        const size_t file = random() % newest.size();
        const WriteRequest request{.target = Path("/d") / std::to_string(file),
            .text = Rope::fromUtf8(std::to_string(i)),
            .version = static_cast<uint64_t>(i)};
        const auto action = random() % 10;
        if (action == 0)
            disk.failOnce(DiskOperation::sync, EIO, "/d/");
        if (action < 7) {
            queue.enqueue(request);
            newest[file] = i;
        } else if (action == 7) {
            if (queue.writeNow(request)) {
                EXPECT_EQ(disk.bytes(request.target), std::to_string(i));
            } else {
                queue.enqueue(request); // as the editor's next save would
            }
            newest[file] = i;
        } else if (queue.finish(request.target) && newest[file] > 0) {
            EXPECT_EQ(disk.bytes(request.target), std::to_string(newest[file]));
        }
        scheduler.runPosted();
    }
    disk.heal();
    EXPECT_TRUE(queue.finishAll().empty());
    for (size_t file = 0; file < newest.size(); ++file)
        EXPECT_EQ(disk.bytes(Path("/d") / std::to_string(file)), std::to_string(newest[file]));
}

} // namespace
} // namespace quillmark::test
