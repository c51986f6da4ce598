#include "base/SumTree.h"

#include "support/Random.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quillmark {
namespace {

using test::Random;

/// A run of lines of one height, as the layout keeps them; runs may have no rows.
struct RowSummary {
    int64_t lines = 0;
    int64_t rows = 0;
    RowSummary& operator+=(const RowSummary& other)
    {
        lines += other.lines;
        rows += other.rows;
        return *this;
    }
    bool operator==(const RowSummary&) const = default;
};

struct RowRun {
    int64_t lines = 0;
    int64_t rowsEach = 0;
    RowSummary summary() const { return {lines, lines * rowsEach}; }
    bool operator==(const RowRun&) const = default;
};

/// An item that notices when it is freed twice, or never.
struct Counted {
    Counted() = default;
    explicit Counted(int64_t of)
        : value(std::make_shared<int64_t>(of))
    {
    }
    int64_t summary() const { return value ? *value : 0; }
    std::shared_ptr<int64_t> value;
};

template <class Tree> class SumTreeTest : public testing::Test {};

template <int maxSlots> using RunTree = SumTree<RowRun, RowSummary, maxSlots>;
using TreeSizes = testing::Types<RunTree<4>, RunTree<5>, RunTree<16>>;
TYPED_TEST_SUITE(SumTreeTest, TreeSizes);

std::vector<RowRun> randomRuns(Random& random, int64_t most)
{
    std::vector<RowRun> runs(static_cast<size_t>(random.upTo(most)));
    for (RowRun& run : runs)
        run = {random.upTo(3), random.upTo(2)};
    return runs;
}

std::vector<RowRun> part(const std::vector<RowRun>& runs, int64_t first, int64_t last)
{
    return {runs.begin() + first, runs.begin() + last};
}

template <class Tree> void expectSameItems(const Tree& tree, const std::vector<RowRun>& model)
{
    ASSERT_EQ(tree.checkInvariants(), "");
    ASSERT_EQ(tree.size(), std::ssize(model));
    std::vector<RowRun> items;
    tree.forEach(0, tree.size(), [&items](const RowRun& run) {
        items.push_back(run);
        return true;
    });
    ASSERT_EQ(items, model);
}

/// Compares each place that can be asked for with one found by counting.
template <class Tree> void expectFindsAsIn(const Tree& tree, const std::vector<RowRun>& model)
{
    RowSummary before;
    for (int64_t index = 0; index < std::ssize(model); ++index) {
        const RowRun& run = model[static_cast<size_t>(index)];
        ASSERT_EQ(tree[index], run);
        ASSERT_EQ(tree.at(index).before, before);
        for (int64_t line = 0; line < run.lines; ++line) {
            const auto found = tree.template find<&RowSummary::lines>(before.lines + line);
            ASSERT_EQ(found.index, index);
            ASSERT_EQ(found.before, before);
            ASSERT_EQ(*found.item, run);
        }
        for (int64_t row = 0; row < run.summary().rows; ++row)
            ASSERT_EQ(tree.template find<&RowSummary::rows>(before.rows + row).index, index);
        before += run.summary();
    }
    ASSERT_EQ(tree.summary(), before);
    const auto behind = tree.template find<&RowSummary::rows>(before.rows);
    ASSERT_EQ(behind.item, nullptr);
    ASSERT_EQ(behind.index, tree.size());
    ASSERT_EQ(behind.before, before);
    ASSERT_EQ(tree.at(tree.size()).item, nullptr);
}

TYPED_TEST(SumTreeTest, EditsAtRandomAgreeWithAVector)
{
    Random random;
    TypeParam tree;
    std::vector<RowRun> model;
    std::vector<std::pair<TypeParam, std::vector<RowRun>>> snapshots;
    for (int step = 0; step < 3000; ++step) {
        const int64_t first = random.upTo(tree.size());
        const int64_t longest
            = random.oneIn(10) ? tree.size() - first : std::min<int64_t>(3, tree.size() - first);
        const int64_t last = first + random.upTo(longest);
        if (random.oneIn(3) && first < tree.size()) {
            const RowRun run{random.upTo(9), random.upTo(2)};
            tree.edit(first, [&run](RowRun& item) { item = run; });
            model[static_cast<size_t>(first)] = run;
        } else {
            const auto with = randomRuns(random, random.oneIn(10) ? 60 : 4);
            tree.replace(first, last, with);
            model.erase(model.begin() + first, model.begin() + last);
            model.insert(model.begin() + first, with.begin(), with.end());
        }
        ASSERT_NO_FATAL_FAILURE(expectSameItems(tree, model)) << "step " << step;
        if (random.oneIn(20)) {
            ASSERT_NO_FATAL_FAILURE(expectFindsAsIn(tree, model));
            snapshots.emplace_back(tree, model);
        }
    }
    for (const auto& [snapshot, items] : snapshots)
        ASSERT_NO_FATAL_FAILURE(expectSameItems(snapshot, items));
}

TYPED_TEST(SumTreeTest, SlicesAndAppendsOfAnySizeAgreeWithAVector)
{
    Random random;
    for (int round = 0; round < 300; ++round) {
        const auto left = randomRuns(random, random.oneIn(2) ? 5 : 300);
        const auto right = randomRuns(random, random.oneIn(2) ? 5 : 300);
        const TypeParam leftTree{left};
        const TypeParam rightTree{right};
        TypeParam joined = leftTree;
        joined.append(rightTree);
        auto model = left;
        model.insert(model.end(), right.begin(), right.end());
        ASSERT_NO_FATAL_FAILURE(expectSameItems(joined, model));
        const int64_t first = random.upTo(joined.size());
        const int64_t last = first + random.upTo(joined.size() - first);
        ASSERT_NO_FATAL_FAILURE(expectSameItems(joined.slice(first, last), part(model, first, last)));
        ASSERT_NO_FATAL_FAILURE(expectSameItems(leftTree, left));
        ASSERT_NO_FATAL_FAILURE(expectSameItems(rightTree, right));
    }
}

TEST(SumTree, AnEditLeavesCopiesAloneAndSharesTheRest)
{
    using Tree = SumTree<Counted, int64_t, 4>;
    Tree tree;
    for (int64_t i = 0; i < 300; ++i)
        tree.insert(i, Counted(i));
    const Counted item = tree[150];
    EXPECT_EQ(item.value.use_count(), 2); // the tree's and this one
    const Tree copy = tree;
    EXPECT_TRUE(copy.isSameAs(tree));
    tree.edit(7, [](Counted& edited) { edited = Counted(-7); });
    EXPECT_FALSE(copy.isSameAs(tree));
    EXPECT_EQ(*copy[7].value, 7);
    EXPECT_EQ(*tree[7].value, -7);
    EXPECT_EQ(item.value.use_count(), 2) << "a node far from the edit was copied";
    tree.erase(100, 200);
    EXPECT_EQ(*copy[150].value, 150);
}

TEST(SumTree, EditsInPlaceWhatNobodyShares)
{
    using Tree = SumTree<Counted, int64_t, 4>;
    Tree tree;
    for (int64_t i = 0; i < 300; ++i)
        tree.insert(i, Counted(i));
    const Counted* place = &tree[150];
    tree.edit(150, [](Counted& edited) { *edited.value = 7; });
    EXPECT_EQ(&tree[150], place);
    EXPECT_EQ(tree.summary(), 300 * 299 / 2 - 150 + 7);
}

} // namespace
} // namespace quillmark
