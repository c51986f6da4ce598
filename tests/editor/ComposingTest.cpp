// Text that an input method is still working on: shown, but not in the document until it is committed.
#include "support/MarkedText.h"
#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr double cell = FixedShaper::cellWidth;
constexpr double row = FixedShaper::rowHeight;

Composition preedit(std::u16string text, int64_t caret)
{
    return {.text = std::move(text), .caret = caret, .isCaretVisible = true, .clauses = {}};
}
Composition preedit(std::u16string text)
{
    const auto end = static_cast<int64_t>(text.size());
    return preedit(std::move(text), end);
}

class Composing : public testing::Test {
protected:
    PlainTextView& view = editor.view;
    TestEditor editor;
};

TEST_F(Composing, ShowsWhatIsNotInTheText)
{
    install(view, "one| two\nthree");
    editor.heard.clear();
    view.compose(preedit(u"XYZ", 1));
    EXPECT_EQ(marked(view), "one| two\nthree");
    EXPECT_EQ(editor.heard, "");
    EXPECT_FALSE(view.canUndo());
    EXPECT_EQ(view.visibleRows().front().layout.edges().right, 10 * cell);
    EXPECT_EQ(view.caretPlace().x, 4 * cell);
    EXPECT_EQ(view.placeOf(4).x, 7 * cell) << "what follows makes room";
    EXPECT_EQ(view.offsetAt(5 * cell, 0), 3);
    EXPECT_EQ(view.offsetAt(8 * cell, 0), 5);

    view.compose(preedit(u"XYZ", 3));
    EXPECT_EQ(view.caretPlace().x, 6 * cell);
    view.compose({});
    EXPECT_EQ(view.visibleRows().front().layout.edges().right, 7 * cell);
    EXPECT_EQ(editor.heard, "");
}

TEST_F(Composing, WrapsWithItsLineAndMovesTheRowsBelow)
{
    install(view, "a word or two|\nbelow");
    EXPECT_EQ(view.placeOf(14).top, row);
    view.compose(preedit(u" and a long clause of an input method"));
    EXPECT_EQ(view.caretPlace().top, 2 * row);
    EXPECT_EQ(view.placeOf(14).top, 3 * row);
    EXPECT_EQ(view.visibleRows().size(), 4u);
    EXPECT_EQ(view.visibleRows()[1].layout.range, (Range{13, 0})) << "a row of nothing but the clause";
    view.commitComposition();
    EXPECT_EQ(view.placeOf(view.text().length()).top, 3 * row);
    EXPECT_EQ(view.layoutManager().checkInvariants(), "");
}

TEST_F(Composing, ReplacesTheSelectionInOneStepWithWhatIsTypedThen)
{
    install(view, "one «two» three");
    view.compose(preedit(u"zw"));
    EXPECT_EQ(marked(view), "one | three");
    view.insertComposed(u"2");
    EXPECT_EQ(marked(view), "one 2| three");
    EXPECT_EQ(view.composition(), nullptr);
    view.undo();
    EXPECT_EQ(marked(view), "one «two» three");
}

TEST_F(Composing, IsCommittedByEveryOtherCommand)
{
    const std::vector<std::pair<ViewCommand, std::string>> commands = {
        {[](PlainTextView& v) { v.commitComposition(); }, "ab漢字|cd"},
        {[](PlainTextView& v) { v.insertText(u"x"); }, "ab漢字x|cd"},
        {[](PlainTextView& v) { v.deleteBackward(); }, "ab漢|cd"},
        {[](PlainTextView& v) { v.move(Motion::characterLeft); }, "ab漢|字cd"},
        {[](PlainTextView& v) { v.select({.anchor = 1, .caret = 3}); }, "a«b漢字c»d"},
        {[](PlainTextView& v) { v.selectAll(); }, "«ab漢字cd»"},
        {[](PlainTextView& v) { v.replace({3, 1}, u"D"); }, "ab漢字cD|"},
        {[](PlainTextView& v) { v.drop(u"!", 4); }, "ab漢字cd«!»"},
        {[](PlainTextView& v) { v.undo(); }, "ab|cd"},
        {[](PlainTextView& v) { v.mousePressed(0, 0, Granularity::character, Extend::no); }, "|ab漢字cd"},
        {[](PlainTextView& v) { v.setEditable(false); }, "ab漢字|cd"},
    };
    for (const auto& [command, after] : commands) {
        TestEditor other;
        install(other.view, "ab|cd");
        other.view.compose(preedit(u"漢字", 1));
        command(other.view);
        EXPECT_EQ(marked(other.view), after);
        EXPECT_EQ(other.view.composition(), nullptr);
    }
}

TEST_F(Composing, AsksTheInputMethodBeforeItHelpsItself)
{
    int resets = 0;
    const Connection reset = view.onResetRequested([&] { ++resets; });
    view.compose(preedit(u"ni hao"));
    {
        const Connection commit = view.onCommitRequested([&] { view.insertComposed(u"你好"); });
        view.commitComposition();
    }
    EXPECT_EQ(marked(view), "你好|");
    EXPECT_EQ(resets, 0);
    view.compose(preedit(u"x"));
    view.commitComposition();
    EXPECT_EQ(marked(view), "你好x|");
    EXPECT_EQ(resets, 1);
    view.compose(preedit(u"y"));
    view.setText(Rope(u"other"));
    EXPECT_EQ(marked(view), "|other") << "a composition belongs to its text";
    EXPECT_EQ(resets, 2);
}

TEST_F(Composing, ReplacesWhatTheInputMethodNames)
{
    install(view, "say 👍 teh|\nnext");
    view.insertComposed(u"the", {-3, 3});
    EXPECT_EQ(marked(view), "say 👍 the|\nnext");
    view.undo();
    EXPECT_EQ(marked(view), "say 👍 teh|\nnext");
    view.insertComposed(u"", {-5, 5}); // would cut the emoji in two
    EXPECT_EQ(marked(view), "say |\nnext");
    view.insertComposed(u"all", {-1000, 5000});
    EXPECT_EQ(marked(view), "all|\nnext") << "never beyond what it was shown";
    install(view, "one «two» three");
    view.insertComposed(u"2", {-4, 4});
    EXPECT_EQ(marked(view), "2| three");
    view.undo();
    EXPECT_EQ(marked(view), "one «two» three");
}

TEST_F(Composing, WorksBetweenTheSegmentsOfALongLine)
{
    view.setText(Rope(std::u16string(20'000, u'x')));
    for (const int64_t offset : {0, 1'999, 2'000, 2'001, 10'000, 19'999, 20'000}) {
        view.select({.anchor = offset, .caret = offset, .affinity = Affinity::upstream});
        view.scrollToCaret();
        const double before = view.contentHeight();
        view.compose(preedit(u"0123456789012345678901234", 25));
        EXPECT_TRUE(view.caretPlace().isVisible) << offset;
        EXPECT_GE(view.contentHeight(), before + row) << offset;
        view.compose({});
        EXPECT_EQ(view.contentHeight(), before) << offset;
    }
}

} // namespace
} // namespace quillmark::test
