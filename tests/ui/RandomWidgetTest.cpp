// Whatever events come to the editor, in any order, on texts full of traps: its parts stay sound, and the
// window looks as if painted from scratch. What becomes of the text RandomEditing says, below the toolkit.
// The seed of the run is printed; QUILLMARK_SEED repeats it.
#include "EditorViewFixture.h"
#include "desktop/Fonts.h"
#include "support/Random.h"

#include <QInputMethodEvent>

#include <cmath>

namespace quillmark {

namespace {

using namespace test;
using Text = std::u16string;

const Text pieces[] = {u"a", u"слово ", u" ", u"\t", u"👩‍👩‍👧", u"🇷🇺", u"\u0301", u"क्षि", u"שלום",
    u"مرحبا ", u"漢字", u"ไทย", Text(1, u'\0'), Text(1, u'\x07'), Text(1, u'\xD83D'), Text(1, u'\xDE00'),
    u"\u2028", u"\uFFFC", u"\u200F", u"object.method(1, \"two\")", Text(70, u'w')};

class RandomWidget : public EditorViewFixture {
protected:
    Text randomText(int64_t lines, int64_t piecesInLine)
    {
        Text text;
        for (int64_t line = 0; line < lines; ++line) {
            for (int64_t piece = m_random.upTo(piecesInLine); piece > 0; --piece)
                text += m_random.pick(pieces);
            text += u'\n';
        }
        return text;
    }

    void run(const Text& initial, int steps)
    {
        install(initial);
        using W = RandomWidget;
        static constexpr void (W::* actions[])() = {&W::typePiece, &W::pressKey, &W::pressKey, &W::useMouse,
            &W::look, &W::useInputMethod, &W::useInputMethod, &W::dropPiece, &W::interfere};
        for (int step = 0; step < steps; ++step) {
            if (model().text().length() > 20'000) // pasting all of it again and again doubles it
                model().replace({5'000, 15'000}, u"");
            const int64_t action = m_random.below(std::ssize(actions));
            (this->*actions[action])();
            settle();
            const Range range = selected();
            ASSERT_TRUE(range.location >= 0 && range.end() <= model().text().length())
                << step << ' ' << action;
            ASSERT_EQ(model().layoutManager().checkInvariants(), "") << step << ' ' << action;
            ASSERT_TRUE(!model().composition() || (range.isEmpty() && model().isEditable()))
                << step << ' ' << action;
            const QImage shown = onScreen(); // its top left part where a scale makes the picture larger
            ASSERT_TRUE(shown.isNull() || shown == paintedAnew().copy(shown.rect())) << step << ' ' << action;
        }
    }

private:
    QString piece() { return QString::fromStdU16String(m_random.pick(pieces)); }
    QPointF place()
    {
        return {
            double(m_random.below(view.width() + 40)) - 20, double(m_random.below(view.height() + 80)) - 40};
    }
    Qt::KeyboardModifiers maybe(Qt::KeyboardModifiers modifiers)
    {
        return m_random.oneIn(2) ? modifiers : none;
    }

    void typePiece() { press(0, maybe(Qt::GroupSwitchModifier), piece()); }

    void pressKey()
    {
        constexpr int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home,
            Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Return,
            Qt::Key_Tab, Qt::Key_Backtab};
        press(m_random.pick(keys), (m_random.oneIn(4) ? control : none) | maybe(shift));
        if (m_random.oneIn(4))
            chooseCommand();
    }

    void chooseCommand()
    {
        using Command = void (*)(PlainTextView&);
        constexpr Command menu[]
            = {[](PlainTextView& text) { text.undo(); }, [](PlainTextView& text) { text.redo(); },
                [](PlainTextView& text) { text.cut(); }, [](PlainTextView& text) { text.copy(); },
                [](PlainTextView& text) { text.paste(); }, [](PlainTextView& text) { text.selectAll(); }};
        m_random.pick(menu)(model());
        settle();
    }

    void useMouse()
    {
        view.dragEndsAs = m_random.oneIn(3) ? Qt::MoveAction : Qt::CopyAction;
        const QPointF start = place();
        const auto button = m_random.oneIn(4) ? Qt::MiddleButton : Qt::LeftButton;
        mouse(QEvent::MouseButtonPress, start, button, maybe(shift));
        if (m_random.oneIn(3))
            mouse(QEvent::MouseButtonDblClick, start);
        for (int64_t moves = m_random.below(3); moves > 0; --moves)
            mouse(QEvent::MouseMove, place());
        mouse(QEvent::MouseButtonRelease, place(), button);
    }

    void look()
    {
        turnWheel(int(m_random.below(2000)) - 1000);
        if (m_random.oneIn(3))
            view.resize(m_random.oneIn(5) ? 1 : 100 + int(m_random.below(500)),
                m_random.oneIn(5) ? 1 : 50 + int(m_random.below(350)));
        if (m_random.oneIn(4))
            view.setEditorFont(editorFont({}, double(9 + m_random.below(16))));
    }

    void useInputMethod()
    {
        QInputMethodEvent event(m_random.oneIn(6) ? QString() : piece(),
            {{QInputMethodEvent::Cursor, int(m_random.below(9)) - 2, int(m_random.below(2)), {}}});
        if (m_random.oneIn(2))
            event.setCommitString(piece());
        QCoreApplication::sendEvent(&view, &event);
    }

    void dropPiece()
    {
        QMimeData data;
        data.setText(piece());
        QDragEnterEvent enter(place().toPoint(), Qt::CopyAction, &data, Qt::LeftButton, none);
        QCoreApplication::sendEvent(&view, &enter);
        settle();
        QDragLeaveEvent leave;
        QDropEvent drop(place(), Qt::CopyAction, &data, Qt::LeftButton, none);
        QCoreApplication::sendEvent(&view, m_random.oneIn(3) ? static_cast<QEvent*>(&leave) : &drop);
    }

    /// What comes from elsewhere, also in the middle of a drag: a theme, a lock, an edit of the text itself.
    void interfere()
    {
        QEvent palette(QEvent::PaletteChange);
        QCoreApplication::sendEvent(&view, &palette);
        if (m_random.oneIn(2))
            mouse(QEvent::MouseButtonPress, place());
        view.setEditable(!m_random.oneIn(4));
        if (model().isEditable())
            model().replace(
                {m_random.upTo(model().text().length()), m_random.below(5)}, m_random.pick(pieces));
        mouse(QEvent::MouseMove, place());
        mouse(QEvent::MouseButtonRelease, place());
    }

    Random m_random;
};

} // namespace

TEST_F(RandomWidget, LooksAsIfPaintedAnewWhateverWasDone)
{
    run(randomText(30, 6), 250);
    if (!HasFailure())
        run(u"", 150);
    if (!HasFailure())
        run(randomText(2, 900), 100); // lines that are shaped in segments
}

} // namespace quillmark
