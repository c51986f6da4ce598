#include "editor/LineIndex.h"

#include "support/Random.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmark {
namespace {

using Starts = std::vector<int64_t>;

LineIndex indexOf(std::u16string_view text)
{
    LineIndex index;
    index.rebuild(Rope(text));
    return index;
}

/// The starts after `range` of `text` was replaced.
Starts afterReplacing(std::u16string_view text, Range range, std::u16string_view with)
{
    LineIndex index = indexOf(text);
    Rope changed(text);
    changed.replace(range, with);
    const auto length = static_cast<int64_t>(with.size());
    index.applyEdit({{range.location, length}, length - range.length}, changed);
    EXPECT_EQ(index.indexedLength(), changed.length());
    return index.starts();
}

TEST(LineIndex, OnlyALineFeedEndsALine)
{
    EXPECT_EQ(LineIndex().starts(), Starts{0});
    EXPECT_EQ(indexOf(u"").starts(), Starts{0});
    EXPECT_EQ(indexOf(u"a\n").starts(), (Starts{0, 2}));
    EXPECT_EQ(indexOf(u"a\r\nb\rc\u2028d\u2029e\vf\fg\u0085h\u010Ai").starts(), (Starts{0, 3}));
    EXPECT_EQ(indexOf(u"😀\nй").starts(), (Starts{0, 3}));
}

TEST(LineIndex, FindsTheLineOfAnOffset)
{
    const LineIndex index = indexOf(u"a\n\nbc\n");
    Starts lines;
    for (int64_t offset = 0; offset <= index.indexedLength(); ++offset)
        lines.push_back(index.lineNumber(offset));
    EXPECT_EQ(lines, (Starts{1, 1, 2, 3, 3, 3, 4}));
    EXPECT_EQ(index.lineNumber(-5), 1);
    EXPECT_EQ(index.lineCount(), 4);
}

TEST(LineIndex, FollowsEditsAtTheEdgesOfLines)
{
    EXPECT_EQ(afterReplacing(u"a\nb\nc", {1, 3}, u""), Starts{0});
    EXPECT_EQ(afterReplacing(u"a\nb", {2, 1}, u"x\ny"), (Starts{0, 2, 4}));
    EXPECT_EQ(afterReplacing(u"a\nb", {2, 0}, u"\n"), (Starts{0, 2, 3}));
    EXPECT_EQ(afterReplacing(u"a\nb", {0, 0}, u"\n"), (Starts{0, 1, 3}));
    EXPECT_EQ(afterReplacing(u"a\nb\nc", {1, 1}, u" "), (Starts{0, 4})) << "a line feed replaced one for one";
    EXPECT_EQ(afterReplacing(u"a\nb\nc", {0, 5}, u"\n\n\n"), (Starts{0, 1, 2, 3}));
}

TEST(LineIndex, FollowsRandomEdits)
{
    test::Random random;
    Rope text;
    LineIndex index;
    for (int round = 0; round < 5000; ++round) {
        const int64_t start = random.upTo(text.length());
        const int64_t removed
            = random.upTo(std::min<int64_t>(text.length() - start, random.oneIn(40) ? 300 : 8));
        std::u16string inserted;
        for (int64_t left = random.oneIn(40) ? 300 : random.upTo(8); left > 0; --left)
            inserted += u"\n\n\nab\r\u010A"[random.below(7)];
        text.replace({start, removed}, inserted);
        const auto length = static_cast<int64_t>(inserted.size());
        index.applyEdit({{start, length}, length - removed}, text);
        const int64_t offset = random.upTo(text.length());
        ASSERT_EQ(index.lineNumber(offset), number(text.lineAt(offset)) + 1) << "round " << round;
        if (!random.oneIn(4))
            continue; // edits follow one another before anybody looks at all starts
        LineIndex fresh;
        fresh.rebuild(text);
        ASSERT_EQ(index.starts(), fresh.starts()) << "round " << round;
        ASSERT_EQ(index.indexedLength(), text.length());
    }
}

TEST(LineIndex, RebuildsWhenAnEditCannotBeTrue)
{
    LineIndex index = indexOf(u"aaaa\nbbbb\ncccc");
    index.applyEdit({{0, 0}, 0}, Rope(u"x\ny"));
    EXPECT_EQ(index.starts(), (Starts{0, 2}));
    EXPECT_EQ(index.indexedLength(), 3);
}

} // namespace
} // namespace quillmark
