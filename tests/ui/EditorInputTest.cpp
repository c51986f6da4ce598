// Input methods at the editor: what is composed is seen and asked for, and never lost.
#include "EditorViewFixture.h"
#include "app/look/Paint.h"
#include "desktop/Fonts.h"

#include <QInputMethodEvent>
#include <QTextCharFormat>

namespace quillmark {

namespace {

using namespace test;
using Attribute = QInputMethodEvent::Attribute;

class EditorInput : public EditorViewFixture {
protected:
    void compose(const QString& text, QList<Attribute> attributes = {})
    {
        QInputMethodEvent event(text, attributes);
        QCoreApplication::sendEvent(&view, &event);
        settle();
    }
    void commit(const QString& text, int start = 0, int length = 0)
    {
        QInputMethodEvent event;
        event.setCommitString(text, start, length);
        QCoreApplication::sendEvent(&view, &event);
        settle();
    }
    static Attribute format(int start, int length, QTextCharFormat::UnderlineStyle style, bool highlighted)
    {
        QTextCharFormat format;
        format.setUnderlineStyle(style);
        if (highlighted)
            format.setBackground(Qt::cyan);
        return {QInputMethodEvent::TextFormat, start, length, format};
    }
    static Attribute cursor(int place, int length = 1)
    {
        return {QInputMethodEvent::Cursor, place, length, {}};
    }
    template <class Value> Value query(Qt::InputMethodQuery query)
    {
        return view.inputMethodQuery(query).value<Value>();
    }
    QRectF cursorRectangle() { return query<QRectF>(Qt::ImCursorRectangle); }

    /// How many pixels are painted otherwise than the background, in a strip of a row. Parts of a row.
    int inked(int64_t fromOffset, int64_t toOffset, double fromPart, double toPart)
    {
        const QImage image = paintedAnew();
        const double scale = image.devicePixelRatio();
        const CaretPlace from = model().placeOf(fromOffset);
        const CaretPlace to = model().placeOf(toOffset);
        int count = 0;
        for (int y = int((from.top + fromPart * rowHeight()) * scale);
            y < int((from.top + toPart * rowHeight()) * scale); ++y) {
            for (int x = int((EditorView::horizontalInset + from.x + 2) * scale);
                x < int((EditorView::horizontalInset + to.x - 2) * scale); ++x)
                count += image.pixel(x, y) != color(ThemeColor::background).rgb() ? 1 : 0;
        }
        return count;
    }
};

} // namespace

TEST_F(EditorInput, PreeditIsSeenAtTheCaretAndUnderlined)
{
    install(u"ab  cd");
    model().select({.anchor = 3, .caret = 3});
    settle();
    const QRectF before = cursorRectangle();
    const int bare = inked(2, 4, 0.6, 1);
    compose(QStringLiteral("    "), {cursor(4, 0)}); // blanks and no caret: what is inked is the underline
    EXPECT_EQ(text(), u"ab  cd");
    EXPECT_GT(cursorRectangle().left(), before.left() + 10);
    EXPECT_GT(inked(2, 4, 0.6, 1), 8);
    EXPECT_EQ(inked(2, 4, 0, 0.6), 0);
    EXPECT_EQ(onScreen(), paintedAnew().copy(onScreen().rect()));
    compose({});
    EXPECT_EQ(inked(2, 4, 0.6, 1), bare);
    EXPECT_EQ(cursorRectangle(), before);
}

TEST_F(EditorInput, ClausesAreDrawnAsTheInputMethodMarksThem)
{
    compose(QStringLiteral("        "),
        {format(0, 4, QTextCharFormat::SingleUnderline, false),
            format(4, 4, QTextCharFormat::NoUnderline, true), cursor(4, 0)});
    ASSERT_NE(model().composition(), nullptr);
    const auto clauses = model().composition()->clauses;
    ASSERT_EQ(clauses.size(), 2u);
    EXPECT_EQ(clauses[1].units, (Range{4, 4}));
    EXPECT_FALSE(clauses[0].isHighlighted);
    EXPECT_TRUE(clauses[1].isHighlighted);
    EXPECT_FALSE(model().composition()->isCaretVisible);
    EXPECT_FALSE(cursorRectangle().isEmpty()) << "the list of candidates needs a place all the same";
    const QImage image = paintedAnew();
    const double advance = model().layoutManager().metrics().averageAdvance;
    const auto pixel = [&](double column) {
        const double scale = image.devicePixelRatio();
        return image.pixel(int((EditorView::horizontalInset + column * advance) * scale),
            int((EditorView::verticalInset + rowHeight() / 4) * scale));
    };
    EXPECT_EQ(pixel(2), color(ThemeColor::background).rgb());
    EXPECT_NE(pixel(6), color(ThemeColor::background).rgb());

    // Attributes that lie anywhere and overlap.
    compose(QStringLiteral("abcd"),
        {format(-5, 7, QTextCharFormat::WaveUnderline, false), format(1, 99, QTextCharFormat::DotLine, true),
            format(3, -3, QTextCharFormat::DashUnderline, false), cursor(77)});
    int64_t covered = 0;
    for (const auto& clause : model().composition()->clauses)
        covered += clause.units.location == covered ? clause.units.length : 1000;
    EXPECT_EQ(covered, 4);
    EXPECT_EQ(model().composition()->caret, 4);
}

TEST_F(EditorInput, TheCandidateWindowFollowsTheCaretUnderWrapScrollAndScale)
{
    install(lines(100) + std::u16string(30, u'w'));
    press(Qt::Key_End, control);
    compose(QString(60, QLatin1Char('m')) + QLatin1Char(' ') + QString(60, QLatin1Char('m')));
    const QRectF wrapped = cursorRectangle();
    EXPECT_GT(wrapped.left(), EditorView::horizontalInset);
    EXPECT_LT(wrapped.right(), view.width());
    EXPECT_LE(wrapped.bottom(), view.height()) << "it is scrolled into view";
    EXPECT_GT(model().placeOf(model().text().length()).top, 0);
    turnWheel(120);
    EXPECT_NEAR(cursorRectangle().top(), wrapped.top() + 3 * rowHeight(), 0.01);
    view.resize(300, 400);
    settle();
    EXPECT_LT(cursorRectangle().right(), 300);
    for (const double size : {9.0, 24.0}) {
        view.setEditorFont(editorFont({}, size));
        settle();
        EXPECT_NEAR(cursorRectangle().height(), rowHeight() - 4, 0.01) << size;
    }
    view.resize(1, 1);
    settle();
    view.resize(600, 400);
    settle();
    EXPECT_EQ(text(), lines(100) + std::u16string(30, u'w'));
    EXPECT_EQ(view.inputMethodQuery(Qt::ImFont).value<QFont>().pixelSize(), 24);
}

TEST_F(EditorInput, SurroundingTextIsTheCaretsLineAndBounded)
{
    install(u"above\none two\nbelow");
    model().select({.anchor = 6, .caret = 9});
    EXPECT_EQ(query<QString>(Qt::ImSurroundingText), QStringLiteral("one two"));
    EXPECT_EQ(query<int>(Qt::ImCursorPosition), 3);
    EXPECT_EQ(query<int>(Qt::ImAnchorPosition), 0);
    EXPECT_EQ(query<QString>(Qt::ImCurrentSelection), QStringLiteral("one"));
    EXPECT_EQ(query<QString>(Qt::ImTextBeforeCursor), QStringLiteral("one"));
    EXPECT_EQ(query<QString>(Qt::ImTextAfterCursor), QStringLiteral(" two"));
    EXPECT_EQ(query<int>(Qt::ImAbsolutePosition), 9);
    commit(QStringLiteral("1"), -1, 1); // of the line without the selection: the line feed is out of reach
    EXPECT_EQ(text(), u"above\n1 two\nbelow");

    install(std::u16string(100'000, u'x'));
    model().select({.anchor = 0, .caret = 50'000});
    EXPECT_LE(query<QString>(Qt::ImSurroundingText).size(), 2'100);
    EXPECT_LE(query<QString>(Qt::ImCurrentSelection).size(), 2'100);
    const int place = query<int>(Qt::ImCursorPosition);
    EXPECT_EQ(query<QString>(Qt::ImTextBeforeCursor).size(), place);
    EXPECT_EQ(query<int>(Qt::ImAnchorPosition), 0) << "cut to what is shown";
}

TEST_F(EditorInput, LosingTheFocusOrTheRightToEditCommits)
{
    compose(QStringLiteral("字"));
    QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCoreApplication::sendEvent(&view, &out);
    EXPECT_EQ(text(), u"字");
    compose(QStringLiteral("語"));
    view.setEditable(false);
    EXPECT_EQ(text(), u"字語");
    EXPECT_TRUE(query<bool>(Qt::ImReadOnly));
    EXPECT_FALSE(query<bool>(Qt::ImEnabled));
    compose(QStringLiteral("x"));
    EXPECT_EQ(model().composition(), nullptr);
    EXPECT_EQ(text(), u"字語");
}

TEST_F(EditorInput, TheInputMethodMovesTheSelection)
{
    install(u"above\none two");
    press(Qt::Key_End, control);
    compose({}, {{QInputMethodEvent::Selection, 0, 3, {}}});
    EXPECT_EQ(selected(), (Range{6, 3}));
}

} // namespace quillmark
