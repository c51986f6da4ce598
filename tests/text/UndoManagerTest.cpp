#include "text/UndoManager.h"

#include "support/Random.h"

#include <gtest/gtest.h>

#include <chrono>
#include <malloc.h>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmark {
namespace {

using namespace std::chrono_literals;
using test::Random;
using Kind = UndoManager::Kind;
using Selection = UndoManager::Selection;

/// What a text view does with keys: a group a key.
class UndoManagerTest : public testing::Test {
protected:
    void key(Kind kind, Range range, std::u16string_view with)
    {
        undo.begin(kind, selection, now);
        storage.replace(range, with);
        const int64_t caret = range.location + static_cast<int64_t>(with.size());
        selection = {caret, caret};
        undo.end(selection);
        now += 100ms;
    }
    void type(std::u16string_view keys)
    {
        for (const char16_t unit : keys)
            key(Kind::typing, selected(), {&unit, 1});
    }
    void backspace(int count)
    {
        for (; count > 0; --count)
            key(Kind::deletingBackward, {selection.caret - 1, 1}, u"");
    }
    void deleteForward(int count)
    {
        for (; count > 0; --count)
            key(Kind::deletingForward, {selection.caret, 1}, u"");
    }
    void select(int64_t anchor, int64_t caret)
    {
        selection = {anchor, caret};
        undo.breakJoin();
    }
    Range selected() const { return Range::between(selection.anchor, selection.caret); }

    bool pressUndo() { return apply(undo.undo()); }
    bool pressRedo() { return apply(undo.redo()); }
    bool apply(std::optional<Selection> restored)
    {
        selection = restored.value_or(selection);
        return restored.has_value();
    }

    /// The texts that one undo after the other brings back, down to the first.
    std::vector<std::u16string> history()
    {
        std::vector<std::u16string> texts;
        while (pressUndo())
            texts.push_back(text());
        return texts;
    }
    std::u16string text() const { return storage.text().text(); }

    TextStorage storage;
    UndoManager undo{storage};
    Selection selection;
    SteadyTime now{};
};

using Texts = std::vector<std::u16string>;

TEST_F(UndoManagerTest, TypingIsTakenBackByWords)
{
    type(u"раз  два, три");
    EXPECT_EQ(history(), (Texts{u"раз  два, ", u"раз  ", u""}));
    while (pressRedo())
        ;
    EXPECT_EQ(text(), u"раз  два, три");
    EXPECT_EQ(selection, (Selection{13, 13}));
}

TEST_F(UndoManagerTest, StepsEndWhereSomethingElseBegins)
{
    const auto expectHistory = [&](const char* what, const std::function<void()>& act, const Texts& texts) {
        storage.replace({0, storage.length()}, u"");
        undo.removeAll();
        selection = {};
        act();
        EXPECT_EQ(history(), texts) << what;
    };
    expectHistory("line feeds", [&] { type(u"a\n\n b"); }, {u"a\n\n ", u"a\n\n", u"a\n", u"a", u""});
    expectHistory("a pause",
        [&] {
            type(u"ab");
            now += UndoManager::longestPause - 100ms;
            type(u"cd");
            now += UndoManager::longestPause;
            type(u"ef");
        },
        {u"abcd", u""});
    expectHistory("another place",
        [&] {
            type(u"bc");
            select(0, 0);
            type(u"a");
            selection = {3, 3}; // moved without a word
            type(u"d");
        },
        {u"abc", u"bc", u""});
    expectHistory("dropped behind the typing, without the caret",
        [&] {
            type(u"a");
            selection = {0, 0};
            key(Kind::typing, {1, 0}, u"b");
        },
        {u"a", u""});
    expectHistory("the same place, but told so",
        [&] {
            type(u"a");
            undo.breakJoin();
            type(u"b");
        },
        {u"a", u""});
}

TEST_F(UndoManagerTest, DeletionsJoinTheirOwnKind)
{
    storage.replace({0, 0}, u"abcdefgh");
    undo.removeAll();
    select(4, 4);
    backspace(2);
    deleteForward(3);
    type(u"x");
    backspace(1);
    EXPECT_EQ(text(), u"abh");
    EXPECT_EQ(history(), (Texts{u"abxh", u"abh", u"abefgh", u"abcdefgh"}));
    EXPECT_EQ(selection, (Selection{4, 4}));
    EXPECT_TRUE(pressRedo());
    EXPECT_EQ(text(), u"abefgh");
}

TEST_F(UndoManagerTest, GroupsNestAndTheOutermostCounts)
{
    storage.replace({0, 0}, u"text");
    undo.removeAll();
    undo.begin(Kind::other, {1, 2}, now);
    storage.replace({0, 1}, u"T");
    undo.begin(Kind::typing, {3, 3}, now);
    storage.replace({4, 0}, u"ing");
    undo.end({9, 9});
    EXPECT_FALSE(undo.canUndo());
    EXPECT_EQ(undo.undo(), std::nullopt);
    storage.replace({0, 0}, u"«");
    undo.end({5, 5});
    EXPECT_EQ(text(), u"«Texting");
    EXPECT_EQ(undo.undo(), (Selection{1, 2}));
    EXPECT_EQ(text(), u"text");
    EXPECT_EQ(undo.redo(), (Selection{5, 5}));
    EXPECT_EQ(text(), u"«Texting");
}

TEST_F(UndoManagerTest, AnEditOutsideOfGroupsIsAStepWithTheCaretBehindWhatChanged)
{
    storage.replace({0, 0}, u"one two");
    storage.replace({4, 3}, u"x");
    EXPECT_EQ(undo.undo(), (Selection{7, 7}));
    EXPECT_EQ(text(), u"one two");
    EXPECT_EQ(undo.redo(), (Selection{5, 5}));
    EXPECT_EQ(text(), u"one x");
}

TEST_F(UndoManagerTest, ANewEditForgetsWhatWasTakenBack)
{
    type(u"one two");
    pressUndo();
    undo.begin(Kind::other, {}, now);
    undo.end({});
    EXPECT_TRUE(undo.canRedo()) << "a group without edits is none";
    type(u"x");
    EXPECT_FALSE(undo.canRedo());
    EXPECT_EQ(history(), (Texts{u"one ", u""})); // the x did not grow the step before it
}

TEST_F(UndoManagerTest, WhatItForgetsIsFreedByWhomeverTheStorageGivesItTo)
{
    std::vector<std::shared_ptr<void>> given;
    storage.setLetGo([&](std::shared_ptr<void> value) { given.push_back(std::move(value)); });
    type(u"one two");
    pressUndo();
    EXPECT_EQ(given.size(), 0u);
    type(u"x");
    EXPECT_EQ(given.size(), 1u) << "what could have been redone";
    undo.removeAll();
    EXPECT_EQ(given.size(), 2u);
    undo.removeAll();
    EXPECT_EQ(given.size(), 2u) << "nothing to free";
}

/// Of the heap; 0 where a sanitizer keeps it.
int64_t heapBytes()
{
    const auto info = mallinfo2();
    return static_cast<int64_t>(info.uordblks + info.hblkhd);
}

TEST_F(UndoManagerTest, KeepsNoMoreThanWhatIsGone)
{
    constexpr int64_t length = 4'000'000;
    constexpr int64_t megabyte = 1'000'000;
    storage.replace({0, 0}, Rope(std::u16string(length, u'x')));
    undo.removeAll();
    int64_t before = heapBytes();
    if (before < length)
        GTEST_SKIP() << "the heap is not counted";
    const auto grown = [&] {
        const int64_t held = heapBytes();
        return held - std::exchange(before, held);
    };

    for (int64_t i = 0; i < 300; ++i)
        key(Kind::other, {0, 10'000}, u"");
    EXPECT_LT(grown(), megabyte) << "what long texts were stored in is still there";
    for (int64_t i = 0; i < 300; ++i)
        undo.undo();
    EXPECT_LT(grown(), megabyte);
    key(Kind::other, {0, 0}, u"x");
    EXPECT_LT(grown(), 0) << "nothing to redo any more";

    for (int64_t i = 0; i < 100; ++i)
        key(Kind::other, {i, 0}, std::u16string(100'000, u'y'));
    EXPECT_LT(grown(), 12 * megabyte) << "what came in is in the text and nowhere else";
    for (int64_t i = 0; i < 10'000; ++i)
        key(Kind::other, {i * 1'000, 50}, std::u16string(50, u'z'));
    EXPECT_LT(grown(), 6 * megabyte) << "short texts are kept as they are, not in leaves of a rope";
    undo.removeAll();
    EXPECT_LT(grown(), -megabyte);
}

/// Edits of all kinds at random: every text on the way back is one that was there, the last the first one.
TEST_F(UndoManagerTest, AtRandomUndoReturnsToTheStartAndRedoToTheEnd)
{
    Random random;
    const std::u16string_view words[] = {u"a", u" ", u"\n", u"слово", u"😀", u""};
    storage.replace({0, 0}, std::u16string(3000, u'ж'));
    undo.removeAll();
    const std::u16string original = text();
    for (int round = 0; round < 20; ++round) {
        std::optional<Selection> afterLastEdit;
        for (int step = 0; step < 100; ++step) {
            const Rope before = storage.text();
            const int64_t caret = random.oneIn(3) ? random.upTo(storage.length()) : selection.caret;
            if (caret != selection.caret || random.oneIn(10))
                select(random.oneIn(3) ? random.upTo(storage.length()) : caret, caret);
            const Range range = selected();
            switch (random.below(5)) {
            case 0:
                key(Kind::other, range, std::u16string(static_cast<size_t>(random.upTo(2000)), u'ы'));
                break;
            case 1:
                key(Kind::deletingBackward, {std::max<int64_t>(0, caret - 1), caret > 0}, u"");
                break;
            case 2:
                key(Kind::deletingForward, {caret, caret < storage.length()}, u"");
                break;
            case 3:
                undo.begin(Kind::other, selection, now);
                for (int64_t edits = random.upTo(4); edits > 0; --edits)
                    storage.replace({random.upTo(storage.length()), random.upTo(10)}, words[random.below(6)]);
                selection = {random.upTo(storage.length()), random.upTo(storage.length())};
                undo.end(selection);
                break;
            default:
                key(Kind::typing, range, words[random.below(6)]);
            }
            now += std::chrono::milliseconds(random.below(500));
            if (!storage.text().isSameAs(before))
                afterLastEdit = selection;
        }
        const std::u16string final = text();
        Texts passed{final};
        while (pressUndo())
            passed.push_back(text());
        ASSERT_EQ(text(), original);
        ASSERT_EQ(storage.text().checkInvariants(), "");
        for (size_t i = passed.size() - 1; pressRedo(); --i)
            ASSERT_EQ(text(), passed[i - 1]);
        ASSERT_EQ(text(), final);
        ASSERT_EQ(selection, afterLastEdit);
        for (int64_t back = random.upTo(20); back > 0; --back)
            pressUndo();
    }
}

} // namespace
} // namespace quillmark
