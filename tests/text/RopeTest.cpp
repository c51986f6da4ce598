#include "text/Rope.h"

#include "support/Random.h"

#include <gtest/gtest.h>

#include <thread>

namespace quillmark {
namespace {

using test::Random;

/// A short text in which lines, both widths of leaf, surrogate pairs and their halves meet often.
std::u16string randomText(Random& random, int64_t longest)
{
    static const std::u16string_view pieces[]
        = {u"a", u"z", u" ", u"\n", u"\n", u"é", u"ÿ", u"Ā", u"Я", u"😀", u"\xD83D", u"\xDE00"};
    // ASCII alone, Latin-1, everything, or hardly anything but halves of pairs
    static const Range choices[] = {{0, 5}, {0, 7}, {0, 12}, {9, 3}};
    const Range choice = choices[random.below(4)];
    std::u16string text;
    for (int64_t left = random.upTo(longest); left > 0; --left)
        text += pieces[choice.location + random.below(choice.length)];
    return text;
}

Range randomRange(Random& random, int64_t length, int64_t longest)
{
    const int64_t location = random.upTo(length);
    return {location, random.upTo(std::min(longest, length - location))};
}

template <class Rope> void expectLinesOf(const Rope& rope, const std::u16string& model)
{
    std::vector<int64_t> starts = {0};
    for (size_t i = 0; i < model.size(); ++i) {
        ASSERT_EQ(rope.lineAt(static_cast<int64_t>(i)), Line{static_cast<int64_t>(starts.size()) - 1});
        if (model[i] == u'\n')
            starts.push_back(static_cast<int64_t>(i) + 1);
    }
    const auto lineCount = static_cast<int64_t>(starts.size());
    const auto length = static_cast<int64_t>(model.size());
    ASSERT_EQ(rope.lineCount(), lineCount);
    ASSERT_EQ(rope.lineAt(length), Line{lineCount - 1});
    for (int64_t line = 0; line < lineCount; ++line) {
        const int64_t start = starts[static_cast<size_t>(line)];
        const int64_t end = line + 1 < lineCount ? starts[static_cast<size_t>(line) + 1] - 1 : length;
        ASSERT_EQ(rope.startOf(Line{line}), start);
        ASSERT_EQ(rope.lineRange(Line{line}), Range::between(start, end));
    }
    ASSERT_EQ(rope.startOf(Line{lineCount}), length);
    ASSERT_EQ(rope.lineRange(Line{lineCount}), (Range{length, 0}));
}

template <class Rope> void expectSameText(const Rope& rope, const std::u16string& model)
{
    ASSERT_EQ(rope.checkInvariants(), "");
    ASSERT_EQ(rope.length(), static_cast<int64_t>(model.size()));
    ASSERT_EQ(rope.text(), model);
}

TEST(Rope, AnEmptyTextHasOneEmptyLine)
{
    for (const Rope& rope : {Rope(), Rope(u""), Rope::Builder().finish(), Rope(u"\n").slice({0, 0})}) {
        EXPECT_TRUE(rope.isEmpty());
        EXPECT_EQ(rope.lineCount(), 1);
        EXPECT_EQ(rope.lineAt(0), Line{0});
        EXPECT_EQ(rope.lineRange(Line{0}), (Range{0, 0}));
        EXPECT_EQ(rope.at(0), u'\0');
        EXPECT_EQ(rope.text(), u"");
        EXPECT_EQ(rope, Rope());
    }
}

TEST(Rope, EditsAtRandomAgreeWithAString)
{
    Random random;
    TinyRope rope;
    std::u16string model;
    std::vector<std::pair<TinyRope, std::u16string>> snapshots;
    for (int step = 0; step < 4000; ++step) {
        const Range range = randomRange(random, rope.length(), random.oneIn(10) ? 300 : 6);
        const std::u16string with = randomText(random, random.oneIn(10) ? 200 : 4);
        const TinyRope before = rope;
        if (random.oneIn(4))
            rope.replace(range, TinyRope(with));
        else
            rope.replace(range, with);
        ASSERT_EQ(before.text(), model);
        model.replace(static_cast<size_t>(range.location), static_cast<size_t>(range.length), with);
        ASSERT_NO_FATAL_FAILURE(expectSameText(rope, model)) << "step " << step;
        if (random.oneIn(20))
            snapshots.emplace_back(rope, model);
        if (random.oneIn(20)) {
            ASSERT_NO_FATAL_FAILURE(expectLinesOf(rope, model));
        }
    }
    for (const auto& [snapshot, text] : snapshots)
        ASSERT_NO_FATAL_FAILURE(expectSameText(snapshot, text));
}

TEST(Rope, SlicesAndAppendsAgreeWithAString)
{
    Random random;
    for (int round = 0; round < 500; ++round) {
        const std::u16string model = randomText(random, 300);
        const TinyRope rope(model);
        const Range range = randomRange(random, rope.length(), rope.length());
        const std::u16string part
            = model.substr(static_cast<size_t>(range.location), static_cast<size_t>(range.length));
        ASSERT_NO_FATAL_FAILURE(expectSameText(rope.slice(range), part));
        TinyRope joined = rope.slice(range);
        joined.append(rope);
        joined.append(joined);
        ASSERT_NO_FATAL_FAILURE(expectSameText(joined, part + model + part + model));
        ASSERT_EQ(rope.text(range), part);
        ASSERT_EQ(rope.text(), model);
    }
}

TEST(Rope, TheBuilderTakesPiecesOfAnySize)
{
    Random random;
    for (int round = 0; round < 500; ++round) {
        TinyRope::Builder builder;
        std::u16string model;
        for (int64_t piece = random.upTo(12); piece > 0; --piece) {
            if (random.oneIn(2)) {
                const std::u16string units = randomText(random, random.oneIn(2) ? 3 : 30);
                builder.append(units);
                model += units;
            } else {
                std::vector<uint8_t> bytes(static_cast<size_t>(random.upTo(40)));
                for (uint8_t& byte : bytes)
                    byte = static_cast<uint8_t>(random.below(256));
                builder.appendLatin1(bytes);
                model.append(bytes.begin(), bytes.end());
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectSameText(builder.finish(), model));
        ASSERT_TRUE(builder.finish().isEmpty());
    }
}

TEST(Rope, ChunksOfARangeAreItsUnits)
{
    Random random;
    for (int round = 0; round < 300; ++round) {
        const std::u16string model = randomText(random, 200);
        const TinyRope rope(model);
        const Range range = randomRange(random, rope.length(), 100);
        const std::u16string part
            = model.substr(static_cast<size_t>(range.location), static_cast<size_t>(range.length));
        std::u16string chunks;
        rope.forEachChunk(range, [&chunks](const TinyRope::Chunk& chunk) {
            std::visit([&chunks](auto units) { chunks.append(units.begin(), units.end()); }, chunk);
            return true;
        });
        ASSERT_EQ(chunks, part);
        ASSERT_EQ(
            rope.isLatin1(range), std::ranges::all_of(part, [](char16_t unit) { return unit <= 0xFF; }));
        for (int64_t offset = range.location; offset < range.end(); ++offset)
            ASSERT_EQ(rope.at(offset), model[static_cast<size_t>(offset)]);
        int visits = 0;
        rope.forEachSpan({0, rope.length()}, [&visits](auto) { return ++visits < 2; });
        ASSERT_LE(visits, 2);
    }
}

TEST(Rope, IsEqualToARopeOfTheSameUnitsInOtherLeaves)
{
    Random random;
    for (int round = 0; round < 200; ++round) {
        const std::u16string model = randomText(random, 100) + u"x";
        TinyRope edited(model.substr(model.size() / 2));
        edited.replace({0, 0}, model.substr(0, model.size() / 2));
        ASSERT_EQ(edited, TinyRope(model));
        const Range range{random.below(edited.length()), 1};
        edited.replace(range, std::u16string(1, edited.at(range.location) ^ 1));
        ASSERT_NE(edited, TinyRope(model));
    }
}

TEST(Rope, ASnapshotIsReadAndDroppedOnAnotherThreadWhileTheTextIsEdited)
{
    Random random;
    TinyRope rope(randomText(random, 2000) + u"end");
    for (int round = 0; round < 50; ++round) {
        std::thread reader([snapshot = rope, expected = rope.text()]() mutable {
            for (int i = 0; i < 5; ++i)
                EXPECT_EQ(snapshot.text(), expected);
            TinyRope part = snapshot.slice({3, 50});
            snapshot = {};
            part.replace({1, 1}, u"edited here too");
        });
        for (int step = 0; step < 100; ++step)
            rope.replace(randomRange(random, rope.length(), 5), randomText(random, 5));
        reader.join();
    }
    EXPECT_EQ(rope.checkInvariants(), "");
}

} // namespace
} // namespace quillmark
