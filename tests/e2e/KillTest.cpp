// The program is killed at random moments while somebody types and it saves. A few rounds here; for hundreds
// set QUILLMARK_KILLS.
#include "EndToEnd.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Typed {
    std::string word;
    Clock::time_point at;
};

/// Everything typed longer than this before the kill must be on disk: a second, and what a busy machine
/// takes.
constexpr auto grace = 1300ms;

std::vector<Typed> typeUntil(XServer& screen, Clock::time_point end, int round, std::mt19937_64& random)
{
    std::vector<Typed> typed;
    for (int n = 0; Clock::now() < end; ++n) {
        const std::string word = "r" + std::to_string(round) + "w" + std::to_string(n);
        screen.type(word + (n % 5 == 4 ? "\n" : " "));
        typed.push_back({word, Clock::now()});
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 8 == 0 ? 900 : random() % 40));
    }
    return typed;
}

TEST(Kill, LosesNothingTypedASecondBefore)
{
    const char* wanted = std::getenv("QUILLMARK_KILLS");
    const int rounds = wanted ? std::atoi(wanted) : 12;
    std::mt19937_64 random(seed());
    XServer screen;
    Desk desk(&screen);
    for (int round = 0; round < rounds; ++round) {
        desk.start();
        screen.key("ctrl+End");
        if (round % 6 == 5)
            screen.key("ctrl+n");
        const auto duration = std::chrono::milliseconds(900 + random() % 1800);
        const auto typed = typeUntil(screen, Clock::now() + duration, round, random);
        const auto killedAt = Clock::now();
        desk.kill();

        const std::string kept = desk.everythingKept();
        for (const Typed& each : typed) {
            if (killedAt - each.at > grace) {
                ASSERT_NE(kept.find(each.word), std::string::npos)
                    << each.word << " in round " << round << " of seed " << seed();
            }
        }
    }
    desk.start();
    EXPECT_TRUE(eventually([&] { return desk.temporaries().empty(); })) << desk.temporaries().front();
    EXPECT_EQ(desk.quit(), 0);
    EXPECT_TRUE(desk.temporaries().empty());
}

} // namespace
} // namespace quillmark::test
