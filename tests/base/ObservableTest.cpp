#include "base/Observable.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace quillmark {
namespace {

TEST(Observable, TellsOfChangesOnly)
{
    Variable<int> value(1);
    std::vector<int> heard;
    const Connection connection = value.onChange([&](int now) { heard.push_back(now); });
    value.set(1);
    value.set(2);
    value.set(2);
    value.set(1);
    EXPECT_EQ(heard, (std::vector{2, 1}));
}

TEST(Observable, ConnectionEndsWithItsOwnerAndMoves)
{
    Variable<int> value;
    int calls = 0;
    Connection kept;
    {
        Connection local = value.onChange([&](int) { ++calls; });
        kept = std::move(local);
    }
    value.set(1);
    EXPECT_EQ(calls, 1);
    kept = value.onChange([&](int) { calls += 10; });
    value.set(2);
    EXPECT_EQ(calls, 11);
    kept = Connection();
    value.set(3);
    EXPECT_EQ(calls, 11);
}

TEST(Observable, ConnectionMayOutliveTheValue)
{
    std::optional<Variable<int>> value(std::in_place, 1);
    const Connection connection = value->onChange([](int) {});
    value.reset();
}

TEST(Observable, SlotMayDropItsOwnConnection)
{
    Variable<int> value;
    int calls = 0;
    Connection once;
    once = value.onChange([&](int) {
        ++calls;
        once = Connection();
    });
    value.set(1);
    value.set(2);
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace quillmark
