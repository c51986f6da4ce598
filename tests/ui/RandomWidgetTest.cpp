// Whatever a user does to the editor, in any order, on texts full of traps: the text changes only by what was
// asked for, and all of it can be taken back. The seed of the run is printed; QUILLMARK_SEED repeats it.
#include "EditorViewFixture.h"
#include "desktop/Fonts.h"
#include "editor/SegmentCuts.h"
#include "support/Random.h"
#include "text/Unicode.h"

#include <QInputMethodEvent>

#include <cmath>
#include <iterator>
#include <set>

namespace quillmark {

namespace {

using namespace test;
using Text = std::u16string;

const Text pieces[] = {u"a", u"слово ", u" ", u"\t", u"👩‍👩‍👧", u"🇷🇺", u"\u0301", u"क्षि", u"שלום",
    u"مرحبا ", u"漢字", u"ไทย", Text(1, u'\0'), Text(1, u'\x07'), Text(1, u'\xD83D'), Text(1, u'\xDE00'),
    u"\u2028", u"\uFFFC", u"\u200F", u"object.method(1, \"two\")", Text(70, u'w')};

Text randomText(Random& random, int64_t lines, int64_t piecesInLine)
{
    Text text;
    for (int64_t line = 0; line < lines; ++line) {
        for (int64_t piece = random.upTo(piecesInLine); piece > 0; --piece)
            text += random.pick(pieces);
        text += u'\n';
    }
    return text;
}

class RandomWidget : public EditorViewFixture {
protected:
    void run(const Text& initial, int steps)
    {
        install(initial);
        m_seen = {initial};
        const Connection edits = model().storage().onEdit([this](const TextEdit&, const Rope&) {
            if (!m_isTravelling)
                m_seen.insert(text());
        });
        for (int step = 0; step < steps; ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            act();
            ASSERT_NO_FATAL_FAILURE(check());
            if (step % 20 == 0) {
                settle();
                const QImage shown = onScreen();
                ASSERT_TRUE(shown.isNull() || shown == paintedAnew().copy(shown.rect()));
            }
        }
        takeEverythingBack(initial);
    }

private:
    /// Text and selection as they are once what is composed is typed: what all but looking on does first.
    struct State {
        Text text;
        Range selected;
    };
    State settled()
    {
        State state{text(), selected()};
        if (const Composition* composition = model().composition()) {
            state.text.insert(size_t(caret()), composition->text);
            state.selected.location += int64_t(composition->text.size());
        }
        return state;
    }
    static Text replaced(Text text, Range range, const Text& with)
    {
        return text.replace(size_t(range.location), size_t(range.length), with);
    }
    const Text& piece() { return m_random.pick(pieces); }
    QPointF place()
    {
        return {
            double(m_random.below(view.width() + 40)) - 20, double(m_random.below(view.height() + 80)) - 40};
    }
    Qt::KeyboardModifiers maybe(Qt::KeyboardModifiers modifiers)
    {
        return m_random.oneIn(2) ? modifiers : none;
    }

    void act()
    {
        constexpr int64_t longest = 20'000; // pasting all of it again and again doubles it
        if (model().text().length() > longest)
            model().replace({longest / 4, longest}, u"");
        using W = RandomWidget;
        static constexpr void (W::* actions[])() = {&W::typePiece, &W::typePiece, &W::typePiece, &W::erase,
            &W::move, &W::move, &W::useMouse, &W::look, &W::travel, &W::useInputMethod, &W::useInputMethod,
            &W::useInputMethod, &W::dropPiece, &W::indent, &W::useClipboard, &W::interfere};
        const int64_t action = m_random.below(std::ssize(actions));
        SCOPED_TRACE("action " + std::to_string(action));
        (this->*actions[action])();
    }

    /// What must have become of the text, if it may be edited.
    void expect(const Text& before, const Text& after) { expectText(model().isEditable() ? after : before); }
    void expectText(const Text& wanted)
    {
        const Text is = text();
        const auto differs = std::ranges::mismatch(is, wanted).in1 - is.begin();
        const auto from = size_t(std::max<int64_t>(0, differs - 10));
        EXPECT_TRUE(is == wanted) << "at " << differs << " of " << is.size() << " units instead of "
                                  << wanted.size() << ": " << utf8(is.substr(from, 30)) << " instead of "
                                  << utf8(wanted.substr(from, 30));
    }

    void typePiece()
    {
        const State before = settled();
        const bool isLineFeed = m_random.oneIn(5);
        const Text typed = isLineFeed ? u"\n" : piece();
        const bool isKey = isLineFeed || (typed[0] >= 0x20 && typed != u"\t");
        if (isLineFeed)
            press(Qt::Key_Return, none, QStringLiteral("\r"));
        else
            press(0, maybe(Qt::GroupSwitchModifier), QString::fromStdU16String(typed));
        if (!isKey) // nothing was done that would end the composition
            model().commitComposition();
        expect(before.text, isKey ? replaced(before.text, before.selected, typed) : before.text);
    }

    void erase()
    {
        const State before = settled();
        const Rope rope(before.text);
        const int64_t from = before.selected.location;
        const int64_t kind = m_random.below(4);
        const int64_t ends[] = {backwardDeletion(rope, from), nextGrapheme(rope, from),
            previousWordStart(rope, from), nextWordEnd(rope, from)};
        const Range range = before.selected.isEmpty() ? Range::between(from, ends[kind]) : before.selected;
        press(kind % 2 == 0 ? Qt::Key_Backspace : Qt::Key_Delete, kind < 2 ? none : control);
        expect(before.text, replaced(before.text, range, {}));
    }

    void move()
    {
        const State before = settled();
        constexpr int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home,
            Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown};
        press(m_random.pick(keys), maybe(shift));
        if (m_random.oneIn(4))
            press(Qt::Key_A, control);
        expectText(before.text);
        EXPECT_TRUE(isCharacterBoundary(model().text(), caret()) || isAtEdgeOfRow(caret()));
    }

    /// In a view that is too narrow for it, a character may be wrapped.
    bool isAtEdgeOfRow(int64_t offset)
    {
        const Segment segment = model().layoutManager().segmentAt(offset);
        return segment.row(segment.rowOf(offset, Affinity::downstream)).range.location == offset;
    }

    void useMouse()
    {
        State before = settled();
        const QPointF start = place();
        view.dragEndsAs = m_random.oneIn(3) ? Qt::MoveAction : Qt::CopyAction;
        view.dragged.reset();
        mouse(QEvent::MouseButtonPress, start, Qt::LeftButton, maybe(shift));
        const Range grabbed = selected();
        if (m_random.oneIn(3))
            mouse(QEvent::MouseButtonDblClick, start);
        if (m_random.oneIn(3)) {
            mouse(QEvent::MouseButtonRelease, start);
            mouse(QEvent::MouseButtonPress, start);
        }
        const bool isGrabbed = selected() == grabbed;
        for (int64_t moves = m_random.below(3); moves > 0; --moves)
            mouse(QEvent::MouseMove, place());
        mouse(QEvent::MouseButtonRelease, place());
        if (view.dragged && view.dragEndsAs == Qt::MoveAction && model().isEditable() && isGrabbed)
            before.text = replaced(before.text, grabbed, {});
        else if (view.dragged && view.dragEndsAs == Qt::MoveAction)
            before.text = text();
        expectText(before.text);
        if (m_random.oneIn(4))
            pasteWithTheMiddleButton();
    }

    void pasteWithTheMiddleButton()
    {
        const Text before = text();
        const Text pasted = clipboard.text(Clipboard::Buffer::primarySelection);
        mouse(QEvent::MouseButtonPress, place(), Qt::MiddleButton);
        if (!model().isEditable())
            return expect(before, before);
        const auto length = int64_t(pasted.size());
        ASSERT_GE(caret(), length);
        EXPECT_TRUE(replaced(text(), {caret() - length, length}, {}) == before);
    }

    void look()
    {
        const State before{text(), selected()};
        turnWheel(int(m_random.below(2000)) - 1000);
        if (m_random.oneIn(3)) {
            view.resize(m_random.oneIn(5) ? 1 : 100 + int(m_random.below(500)),
                m_random.oneIn(5) ? 1 : 50 + int(m_random.below(350)));
            settle();
        }
        if (m_random.oneIn(4)) {
            view.setEditorFont(editorFont({}, double(9 + m_random.below(16))));
            settle();
        }
        expectText(before.text);
        EXPECT_EQ(selected(), before.selected);
    }

    void travel()
    {
        const bool isUndo = m_random.oneIn(2);
        const Text before = settled().text;
        model().commitComposition();
        m_isTravelling = true;
        press(Qt::Key_Z, isUndo ? control : control | shift);
        m_isTravelling = false;
        if (!model().isEditable())
            expect(before, before);
        EXPECT_TRUE(m_seen.contains(text())) << "a text that never was";
    }

    void useInputMethod()
    {
        const State before{text(), selected()};
        const bool wasComposing = model().composition() != nullptr;
        if (m_random.oneIn(2)) {
            const QString preedit = QString::fromStdU16String(m_random.oneIn(6) ? Text() : piece());
            QList<QInputMethodEvent::Attribute> attributes;
            if (m_random.oneIn(2))
                attributes.push_back(
                    {QInputMethodEvent::Cursor, int(m_random.below(9)) - 2, int(m_random.below(2)), {}});
            QInputMethodEvent event(preedit, attributes);
            QCoreApplication::sendEvent(&view, &event);
            const bool begins = !wasComposing && !preedit.isEmpty();
            expect(before.text, begins ? replaced(before.text, before.selected, {}) : before.text);
        } else {
            const Text typed = piece();
            QInputMethodEvent event;
            event.setCommitString(QString::fromStdU16String(typed));
            QCoreApplication::sendEvent(&view, &event);
            expect(before.text, replaced(before.text, before.selected, typed));
        }
        settle();
    }

    void dropPiece()
    {
        const State before = settled();
        const Text dropped = piece();
        QMimeData data;
        data.setText(QString::fromStdU16String(dropped));
        const QPointF over = place();
        QDragEnterEvent enter(over.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, none);
        QCoreApplication::sendEvent(&view, &enter);
        settle();
        if (m_random.oneIn(3)) {
            QDragLeaveEvent leave;
            QCoreApplication::sendEvent(&view, &leave);
            settle();
            return;
        }
        QDropEvent drop(over, Qt::CopyAction, &data, Qt::LeftButton, none);
        QCoreApplication::sendEvent(&view, &drop);
        settle();
        if (!model().isEditable())
            return expect(before.text, before.text);
        EXPECT_TRUE(replaced(text(), selected(), {}) == before.text);
        EXPECT_TRUE(model().text().text(selected()) == dropped);
    }

    void indent()
    {
        const State before = settled();
        const bool spans
            = before.text.substr(size_t(before.selected.location), size_t(before.selected.length)).find(u'\n')
            != Text::npos;
        if (m_random.oneIn(2)) {
            press(Qt::Key_Tab, none, QStringLiteral("\t"));
            if (!spans)
                return expect(before.text, replaced(before.text, before.selected, u"\t"));
        } else {
            press(Qt::Key_Backtab, shift);
        }
        const Text after = text();
        size_t start = 0;
        size_t line = 0;
        while (line <= before.text.size()) { // line by line: a tab more, or a tab or some spaces less
            const size_t end = std::min(before.text.find(u'\n', line), before.text.size());
            const size_t endAfter = std::min(after.find(u'\n', start), after.size());
            const Text old = before.text.substr(line, end - line);
            const Text now = after.substr(start, endAfter - start);
            const auto spaces = old.find_first_not_of(u' ');
            const size_t taken = old.starts_with(u'\t') ? 1 : std::min<size_t>({spaces, old.size(), 4});
            EXPECT_TRUE(now == old || now == u"\t" + old || now == old.substr(taken));
            line = end + 1;
            start = endAfter + 1;
        }
    }

    void useClipboard()
    {
        const State before = settled();
        const Text cut = before.text.substr(size_t(before.selected.location), size_t(before.selected.length));
        if (m_random.oneIn(2)) {
            press(Qt::Key_X, control);
            expect(before.text, replaced(before.text, before.selected, {}));
            return;
        }
        press(Qt::Key_C, control);
        EXPECT_TRUE(cut.empty() || clipboard.text(Clipboard::Buffer::clipboard) == cut);
        const Text pasted = clipboard.text(Clipboard::Buffer::clipboard);
        press(Qt::Key_V, control);
        expect(before.text, pasted.empty() ? before.text : replaced(before.text, before.selected, pasted));
    }

    /// What comes from elsewhere, also in the middle of a drag: a theme, a lock, an edit of the text itself.
    void interfere()
    {
        QEvent palette(QEvent::PaletteChange);
        QCoreApplication::sendEvent(&view, &palette);
        if (m_random.oneIn(2))
            mouse(QEvent::MouseButtonPress, place());
        if (m_random.oneIn(3)) {
            const State before = settled();
            view.setEditable(!model().isEditable());
            EXPECT_TRUE(text() == before.text || model().isEditable());
        } else if (model().isEditable()) {
            const int64_t at = m_random.upTo(model().text().length());
            model().replace({at, m_random.below(5)}, piece());
        }
        mouse(QEvent::MouseMove, place());
        mouse(QEvent::MouseButtonRelease, place());
    }

    void check()
    {
        if (!model().isEditable() && m_random.oneIn(4))
            view.setEditable(true);
        const Range range = selected();
        ASSERT_GE(range.location, 0);
        ASSERT_LE(range.end(), model().text().length());
        ASSERT_EQ(model().layoutManager().checkInvariants(), "");
        ASSERT_TRUE(!model().composition() || (range.isEmpty() && model().isEditable()));
        const CaretPlace caret = model().caretPlace();
        ASSERT_TRUE(std::isfinite(caret.x) && std::isfinite(caret.top));
        if (HasFailure())
            FAIL();
    }

    void takeEverythingBack(const Text& initial)
    {
        view.setEditable(true);
        view.resize(600, 400); // where each character has a row of its own, all of it takes seconds
        model().commitComposition();
        const Text final = text();
        int steps = 0;
        for (; model().canUndo(); ++steps)
            model().undo();
        ASSERT_TRUE(text() == initial);
        for (; steps > 0; --steps)
            model().redo();
        ASSERT_TRUE(text() == final);
    }

    Random m_random;
    std::set<Text> m_seen; ///< after every edit but those of undo and redo
    bool m_isTravelling = false;
};

} // namespace

TEST_F(RandomWidget, ChangesNothingThatIsNotAskedForAndTakesAllOfItBack)
{
    Random random;
    run(randomText(random, 30, 6), 250);
    if (!HasFailure())
        run(u"", 150);
    if (!HasFailure())
        run(randomText(random, 2, 900), 100); // lines that are shaped in segments
}

} // namespace quillmark
