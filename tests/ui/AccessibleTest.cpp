// What the editor answers to a screen reader and what it announces, without a screen reader.
#include "TestWindow.h"
#include "app/editor/EditorAccessible.h"
#include "app/editor/EditorView.h"
#include "app/window/banners/Banner.h"
#include "app/window/sidebar/SidebarList.h"
#include "app/window/sidebar/SidebarView.h"
#include "desktop/Fonts.h"
#include "support/FakeClipboard.h"
#include "support/ManualScheduler.h"
#include "support/Random.h"
#include "text/Unicode.h"

#include <QApplication>

#include <gtest/gtest.h>

namespace quillmark {

namespace {

constexpr QAccessible::TextBoundaryType allBoundaries[]
    = {QAccessible::CharBoundary, QAccessible::WordBoundary, QAccessible::SentenceBoundary,
        QAccessible::LineBoundary, QAccessible::ParagraphBoundary, QAccessible::NoBoundary};

/// "insert 3 abc", "remove 3 abc", "caret 5", "select 1 5", "state".
std::vector<std::string> announced;

void record(QAccessibleEvent* event)
{
    const auto note = [](const char* what, int place, const QString& text = {}) {
        announced.push_back(
            QStringLiteral("%1 %2 %3").arg(QLatin1String(what)).arg(place).arg(text).trimmed().toStdString());
    };
    switch (event->type()) {
    case QAccessible::TextInserted: {
        const auto& edit = *static_cast<QAccessibleTextInsertEvent*>(event);
        return note("insert", edit.changePosition(), edit.textInserted());
    }
    case QAccessible::TextRemoved: {
        const auto& edit = *static_cast<QAccessibleTextRemoveEvent*>(event);
        return note("remove", edit.changePosition(), edit.textRemoved());
    }
    case QAccessible::TextUpdated: {
        const auto& edit = *static_cast<QAccessibleTextUpdateEvent*>(event);
        return note(
            "update", edit.changePosition(), edit.textRemoved() + QLatin1Char('>') + edit.textInserted());
    }
    case QAccessible::TextCaretMoved:
        return note("caret", static_cast<QAccessibleTextCursorEvent*>(event)->cursorPosition());
    case QAccessible::TextSelectionChanged: {
        const auto& change = *static_cast<QAccessibleTextSelectionEvent*>(event);
        return note("select", change.selectionStart(), QString::number(change.selectionEnd()));
    }
    case QAccessible::StateChanged:
        return note("state", 0);
    default:
        return;
    }
}

class AccessibleTest : public testing::Test {
protected:
    AccessibleTest()
    {
        view.setEditorFont(editorFont({}, 13));
        view.resize(600, 400);
        view.show();
        QCoreApplication::processEvents();
        accessible = QAccessible::queryAccessibleInterface(&view);
    }
    ~AccessibleTest() override { QAccessible::setActive(false); }

    void listen()
    {
        QAccessible::setActive(true);
        announced.clear();
    }
    std::vector<std::string> heard() { return std::exchange(announced, {}); }
    using Heard = std::vector<std::string>;

    PlainTextView& model() { return view.textView(); }
    void install(std::u16string_view text) { model().setText(Rope(text)); }
    std::string contents() { return utf8(model().text().text()); }
    QAccessibleTextInterface& text() { return *accessible->textInterface(); }
    QAccessibleEditableTextInterface& editing() { return *accessible->editableTextInterface(); }
    std::string at(int offset, QAccessible::TextBoundaryType boundary)
    {
        int start = 0;
        int end = 0;
        return text().textAtOffset(offset, boundary, &start, &end).toStdString();
    }

    test::ManualScheduler scheduler;
    test::FakeClipboard clipboard;
    EditorView view{scheduler, clipboard};
    EditorAnnouncer announcer{view, record};
    QAccessibleInterface* accessible = nullptr;
};

} // namespace

TEST_F(AccessibleTest, IsAnEditableTextWithANameAndItsStates)
{
    ASSERT_TRUE(accessible && accessible->textInterface() && accessible->editableTextInterface());
    EXPECT_EQ(accessible->role(), QAccessible::EditableText);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Текст"));
    EXPECT_TRUE(accessible->state().multiLine && accessible->state().focusable);
    EXPECT_TRUE(accessible->state().editable && !accessible->state().readOnly);
    listen();
    view.setEditable(false);
    announcer.editabilityChanged();
    EXPECT_EQ(heard(), Heard{"state 0"});
    EXPECT_TRUE(!accessible->state().editable && accessible->state().readOnly);
}

TEST_F(AccessibleTest, TellsTheUnitsOfATextByTheirKind)
{
    install(u"Раз, два. Три 👩‍👩‍👧‍👦!\nвторая e\u0301 строка\n");
    EXPECT_EQ(at(0, QAccessible::CharBoundary), "Р");
    EXPECT_EQ(at(16, QAccessible::CharBoundary), "👩‍👩‍👧‍👦");
    EXPECT_EQ(at(6, QAccessible::WordBoundary), "два");
    EXPECT_EQ(at(6, QAccessible::SentenceBoundary), "Раз, два. ");
    EXPECT_EQ(at(12, QAccessible::LineBoundary), "Раз, два. Три 👩‍👩‍👧‍👦!\n");
    EXPECT_EQ(at(-1, QAccessible::LineBoundary), "");
    EXPECT_EQ(at(40, QAccessible::ParagraphBoundary), "вторая e\u0301 строка\n");

    int start = 0;
    int end = 0;
    EXPECT_EQ(text().textAfterOffset(2, QAccessible::ParagraphBoundary, &start, &end).toStdString(),
        "вторая e\u0301 строка\n");
    EXPECT_EQ(start, 27);
    EXPECT_EQ(text().textBeforeOffset(start, QAccessible::CharBoundary, &start, &end), QStringLiteral("\n"));
    EXPECT_EQ(text().textBeforeOffset(0, QAccessible::WordBoundary, &start, &end), QString());
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 0);
}

TEST_F(AccessibleTest, UnitsOfEveryKindTileEveryText)
{
    std::u16string text;
    const std::u16string_view pieces[] = {u"слово", u" ", u"\n", u". ", u"👩‍👩‍👧‍👦",
        u"e\u0301", u"שלום", std::u16string_view(u"\0", 1), std::u16string_view(u"\xD800", 1), u"A?", u"क्ष",
        u"\t", u"long-word_2"};
    test::Random random;
    while (text.size() < 9000) {
        const auto& piece = random.pick(pieces);
        if (piece != u"\n" || text.size() > 6000) // a first line that is cut for shaping
            text += piece;
    }
    install(text);
    for (const auto boundary : allBoundaries) {
        int64_t reached = 0;
        while (reached < static_cast<int64_t>(text.size())) {
            const Range unit = unitAt(boundary, reached, model());
            ASSERT_EQ(unit.location, reached) << boundary;
            ASSERT_GT(unit.length, 0) << boundary;
            const int64_t inside = unit.location + random.below(unit.length);
            ASSERT_EQ(unitAt(boundary, inside, model()), unit) << boundary << ' ' << inside;
            reached = unit.end();
        }
        const Range last = unitAt(boundary, reached, model());
        ASSERT_EQ(last.end(), reached) << boundary;
    }
}

TEST_F(AccessibleTest, BoundsEveryAnswerAndEventOfALargeText)
{
    const auto large = static_cast<int>(20'000'000);
    install(std::u16string(static_cast<size_t>(large), u'x'));
    EXPECT_EQ(text().characterCount(), large);
    EXPECT_EQ(text().text(0, large).size(), longestAnswer);
    EXPECT_EQ(accessible->text(QAccessible::Value).size(), longestAnswer);
    for (const auto boundary : allBoundaries) {
        for (const int offset : {0, 10'000'001, large}) {
            int start = 0;
            int end = 0;
            EXPECT_LE(text().textAtOffset(offset, boundary, &start, &end).size(), longestAnswer) << boundary;
            EXPECT_LE(start, offset) << boundary;
            EXPECT_GE(end, offset) << boundary;
        }
    }
    EXPECT_LT(at(10'000'000, QAccessible::LineBoundary).size(), 200U); // a row of the one line

    listen();
    model().selectAll();
    model().deleteSelection();
    for (const std::string& event : heard())
        EXPECT_LE(event.size(), static_cast<size_t>(longestAnswer) + 20);
}

TEST_F(AccessibleTest, ShowsWhereCharactersAreAndWhatIsAtAPoint)
{
    install(u"abc\nשלום\n" + std::u16string(300, u'\n') + u"end");
    for (const int offset : {0, 1, 2, 4, 5, 7}) {
        const QRect place = text().characterRect(offset);
        EXPECT_TRUE(view.rect().translated(view.mapToGlobal(QPoint())).contains(place)) << offset;
        EXPECT_EQ(text().offsetAtPoint(place.center()), offset);
    }
    EXPECT_LT(text().characterRect(0).left(), text().characterRect(1).left());
    EXPECT_GT(text().characterRect(4).left(), text().characterRect(5).left()); // right to left
    EXPECT_EQ(text().offsetAtPoint(view.mapToGlobal(QPoint(-5, 50))), -1);

    const int end = text().characterCount() - 1;
    EXPECT_TRUE(text().characterRect(end).isEmpty());
    text().scrollToSubstring(end, end + 1);
    EXPECT_FALSE(text().characterRect(end).isEmpty());
    EXPECT_EQ(text().cursorPosition(), 0);
    EXPECT_TRUE(text().characterRect(0).isEmpty());
}

TEST_F(AccessibleTest, SelectsAndMovesTheCaret)
{
    install(u"one two");
    listen();
    text().setCursorPosition(3);
    text().addSelection(4, 7);
    int start = 0;
    int end = 0;
    text().selection(0, &start, &end);
    EXPECT_EQ(std::pair(start, end), std::pair(4, 7));
    text().removeSelection(0);
    EXPECT_EQ(text().selectionCount(), 0);
    EXPECT_EQ(text().cursorPosition(), 7);
    text().setCursorPosition(1'000'000);
    EXPECT_EQ(heard(), (Heard{"caret 3", "caret 7", "select 4 7", "select 7 7"}));
}

TEST_F(AccessibleTest, EditsAsStepsOfUndoAndNotWhileReadOnly)
{
    install(u"one three");
    editing().insertText(4, QStringLiteral("two\r\n"));
    EXPECT_EQ(contents(), "one two\nthree");
    editing().deleteText(0, 4);
    editing().replaceText(4, -1, QStringLiteral("3"));
    EXPECT_EQ(contents(), "two\n3");
    // What Qt's bridge makes of three characters and a count of six bytes.
    editing().insertText(0, QStringLiteral("раз") + QChar(0) + QStringLiteral("zz"));
    EXPECT_EQ(contents(), "разtwo\n3");
    for (int step = 0; step < 4; ++step)
        model().undo();
    EXPECT_EQ(contents(), "one three");

    view.setEditable(false);
    editing().insertText(0, QStringLiteral("x"));
    editing().deleteText(0, 3);
    EXPECT_EQ(contents(), "one three");
}

TEST(AccessibleWindow, TellsBannersAsNotificationsAndTheSecondLinesOfNotes)
{
    test::TestWindow window;
    window.addNote("list", "Список\nхлеб, соль");
    window.show();
    window.app().showNotice("Готово");
    window.settle();
    const auto* banner = QAccessible::queryAccessibleInterface(window.find<Banner>());
    ASSERT_TRUE(banner);
    EXPECT_EQ(banner->role(), QAccessible::Notification); // which is spoken when it appears
    EXPECT_EQ(banner->text(QAccessible::Name), QStringLiteral("Готово"));

    auto* list = QAccessible::queryAccessibleInterface(&window.view().sidebar().list());
    ASSERT_TRUE(list && list->childCount() == 2);
    EXPECT_EQ(list->child(1)->text(QAccessible::Name), QStringLiteral("Список"));
    EXPECT_EQ(list->child(1)->text(QAccessible::Description), QStringLiteral("хлеб, соль"));
}

TEST_F(AccessibleTest, AnnouncesEachChangeOnceAndOnlyToListeners)
{
    announced.clear();
    install(u"hidden");
    EXPECT_EQ(heard(), Heard{});

    listen();
    install(u"text");
    EXPECT_EQ(heard(), Heard{"update 0 hidden>text"});
    model().insertText(u"a");
    EXPECT_EQ(heard(), (Heard{"insert 0 a", "caret 1"}));
    model().deleteBackward();
    EXPECT_EQ(heard(), (Heard{"remove 0 a", "caret 0"}));
    model().undo();
    EXPECT_EQ(heard(), (Heard{"insert 0 a", "caret 1"}));
    model().move(Motion::characterRight, Extend::yes);
    EXPECT_EQ(heard(), (Heard{"caret 2", "select 1 2"}));
    model().insertText(std::u16string_view(u"\0\xD800", 2));
    EXPECT_EQ(heard(), (Heard{"update 1 t>\uFFFD\uFFFD", "caret 3", "select 3 3"}));
}

} // namespace quillmark
