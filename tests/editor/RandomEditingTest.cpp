// Random commands against a stupid model of a text and its selection; then all of it is taken back and made
// again.
#include "VisibleRows.h"
#include "editor/RowMap.h"
#include "support/MarkedText.h"
#include "support/Random.h"
#include "support/TestEditor.h"
#include "text/Unicode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ranges>
#include <vector>

namespace quillmark::test {
namespace {

class RandomEditing {
public:
    void install(std::u16string text)
    {
        const StretchSizes sizes[]
            = {{}, {.walked = 100, .longest = 100}, {.walked = 2'000, .longest = 3'000}};
        editor.view.layoutManager().setStretchSizes(m_random.pick(sizes));
        editor.view.setText(Rope(text));
        m_text = std::move(text);
    }

    void step()
    {
        const int64_t command = m_random.below(11);
        if (command < 3)
            type();
        else if (command < 5)
            erase();
        else if (command < 7)
            select();
        else if (command == 7)
            move();
        else if (command == 8)
            look();
        else if (command == 9)
            editMany();
        else
            goBack();
    }

    void expectEqual() const
    {
        ASSERT_EQ(utf8(editor.view.text().text()), utf8(m_text));
        const Range selected = editor.view.selection().range();
        ASSERT_GE(selected.location, 0);
        ASSERT_LE(selected.end(), editor.view.text().length());
    }

    TestEditor editor;
    double height = 10 * FixedShaper::rowHeight;

private:
    Range selected() const { return editor.view.selection().range(); }

    /// The model's edit, and what the view must have made of it.
    void replaceInModel(Range range, std::u16string_view with)
    {
        m_text.replace(static_cast<size_t>(range.location), static_cast<size_t>(range.length), with);
        const int64_t caret = range.location + static_cast<int64_t>(with.size());
        const bool changes = !range.isEmpty() || !with.empty();
        if (changes) {
            EXPECT_EQ(editor.view.selection(), (Selection{.anchor = caret, .caret = caret}));
            EXPECT_TRUE(editor.view.caretPlace().isVisible);
        }
    }

    void type()
    {
        const std::u16string_view pieces[]
            = {u"a", u"b ", u"\n", u"\t", u"слово ", u"👩‍👩‍👧", u"\u0301", u"🇷🇺", u"क्षि", u"漢字",
                u"שלום ", u"a_word_longer_than_the_view_is_wide", u"\xD800", std::u16string_view(u"\0", 1)};
        const std::u16string_view text = m_random.pick(pieces);
        const Range range = selected();
        if (m_random.oneIn(5)) {
            editor.clipboard.setText(std::u16string(text), Clipboard::Buffer::clipboard);
            editor.view.paste();
        } else {
            editor.view.insertText(text);
        }
        replaceInModel(range, text);
    }

    void erase()
    {
        const Rope text(m_text);
        const int64_t caret = editor.view.selection().caret;
        const int64_t kind = m_random.below(4);
        const int64_t ends[] = {backwardDeletion(text, caret), nextGrapheme(text, caret),
            previousWordStart(text, caret), nextWordEnd(text, caret)};
        const Range range = selected().isEmpty() ? Range::between(caret, ends[kind]) : selected();
        using Command = void (PlainTextView::*)();
        const Command commands[] = {&PlainTextView::deleteBackward, &PlainTextView::deleteForward,
            &PlainTextView::deleteWordBackward, &PlainTextView::deleteWordForward};
        (editor.view.*commands[kind])();
        replaceInModel(range, u"");
    }

    void select()
    {
        const int64_t limit = static_cast<int64_t>(m_text.size()) + 1;
        const int64_t anchor = m_random.below(limit);
        editor.view.select({.anchor = anchor, .caret = m_random.oneIn(2) ? anchor : m_random.below(limit)});
        if (m_random.oneIn(3)) {
            editor.view.mousePressed(static_cast<double>(m_random.below(300)) - 50,
                static_cast<double>(m_random.below(400)) - 100, static_cast<Granularity>(m_random.below(3)),
                m_random.oneIn(2) ? Extend::yes : Extend::no);
            editor.view.mouseDragged(
                static_cast<double>(m_random.below(300)), static_cast<double>(m_random.below(400)) - 100);
            editor.view.mouseReleased();
        }
    }

    void move()
    {
        const auto last = static_cast<int64_t>(Motion::documentEnd);
        editor.view.move(
            static_cast<Motion>(m_random.below(last + 1)), m_random.oneIn(2) ? Extend::yes : Extend::no);
        EXPECT_TRUE(editor.view.caretPlace().isVisible);
    }

    /// Scrolling, resizing, another font and idle moments change nothing in the text.
    void look()
    {
        if (m_random.oneIn(4))
            editor.scheduler.advance(std::chrono::milliseconds(m_random.below(200)));
        if (m_random.oneIn(8)) {
            editor.shaper.setScale(static_cast<double>(1 + m_random.below(3)));
            editor.view.fontChanged();
        }
        if (m_random.oneIn(4)) {
            height = static_cast<double>(1 + m_random.below(300));
            editor.view.setVisibleSize(static_cast<double>(1 + m_random.below(400)), height);
        }
        editor.view.scrollBy(static_cast<double>(m_random.below(2000)) - 1000);
        if (m_random.oneIn(4))
            editor.view.scrollTo(editor.view.contentHeight() * static_cast<double>(m_random.below(11)) / 10);
    }

    /// Disjoint edits anywhere, of which some put in another part of the text.
    void editMany()
    {
        const Rope old(m_text);
        Edit edit;
        for (int64_t end = 0; edit.replacements.size() < 8;) {
            const int64_t start = boundary(old, end + m_random.below(200));
            end = boundary(old, start + m_random.below(20));
            if (start >= old.length())
                break;
            const Rope part = old.slice({0, boundary(old, m_random.below(30))});
            if (m_random.oneIn(2))
                edit.replacements.push_back({Range::between(start, end), part});
            else
                edit.replacements.push_back({Range::between(start, end), u"новое\n"});
        }
        if (edit.replacements.empty())
            return;
        for (const Replacement& made : edit.replacements | std::views::reverse) {
            const auto* units = std::get_if<std::u16string>(&made.with);
            m_text.replace(static_cast<size_t>(made.range.location), static_cast<size_t>(made.range.length),
                units ? *units : std::get<Rope>(made.with).text());
        }
        const int64_t caret = boundary(Rope(m_text), m_random.upTo(static_cast<int64_t>(m_text.size())));
        edit.selection = Selection::at({caret});
        editor.heard.clear();
        editor.view.perform(UndoManager::Kind::other, [&](const Rope&, const Selection&) { return edit; });
        EXPECT_EQ(editor.heard, "text selection ");
        EXPECT_EQ(editor.view.selection(), edit.selection);
    }

    static int64_t boundary(const Rope& text, int64_t offset)
    {
        offset = std::min(offset, text.length());
        return offset - (splitsPair(text, offset) ? 1 : 0);
    }

    void goBack()
    {
        if (!editor.view.canUndo())
            return;
        editor.view.undo();
        if (m_random.oneIn(2)) {
            editor.view.redo();
            expectEqual();
            return;
        }
        m_text = editor.view.text().text();
    }

    Random m_random;
    std::u16string m_text;
};

TEST(RandomEditing, AgreesWithAModelAndCanBeTakenBack)
{
    for (int run = 0; run < 20; ++run) {
        SCOPED_TRACE("run " + std::to_string(run));
        RandomEditing editing;
        std::u16string initial
            = u"first line\n\nmany words that wrap to several rows 漢字漢字漢字漢字\n\tend";
        while (
            run % 4 == 0 && initial.size() < 12'000) // a long line, of which some are longer than all others
            initial += u"word словцо 👍 ";
        while (run % 4 > 1 && initial.size() < 3'000)
            initial += u"word\nword словцо word словцо word словцо word словцо 👍\n";
        editing.install(initial);
        for (int step = 0; step < 400; ++step) {
            editing.step();
            ASSERT_NO_FATAL_FAILURE(editing.expectEqual()) << "step " << step;
            ASSERT_NO_FATAL_FAILURE(expectSound(editing.editor.view, editing.height)) << "step " << step;
        }
        PlainTextView& view = editing.editor.view;
        const Rope final = view.text();
        int steps = 0;
        for (; view.canUndo(); ++steps)
            view.undo();
        ASSERT_EQ(utf8(view.text().text()), utf8(initial));
        for (int i = 0; i < steps; ++i)
            view.redo();
        ASSERT_TRUE(view.text() == final);
        ASSERT_LE(view.selection().range().end(), final.length());
    }
}

} // namespace
} // namespace quillmark::test
