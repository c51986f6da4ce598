#include "TestWindow.h"

#include "app/editor/EditorView.h"
#include "app/window/EditorArea.h"
#include "app/window/sidebar/SearchField.h"
#include "app/window/sidebar/SidebarList.h"
#include "app/window/sidebar/SidebarView.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QMenu>
#include <QScrollBar>

#include <gtest/gtest.h>

#include <fstream>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

using Rows = std::vector<std::string>;

class SidebarSearch : public testing::Test {
protected:
    SearchField& field() { return window.view().sidebar().searchField(); }
    SidebarList& list() { return window.view().sidebar().list(); }
    SidebarModel& model() { return window.view().sidebar().model(); }

    void showAndSearch(const QString& query = {})
    {
        window.show();
        QTest::mouseClick(&field(), Qt::LeftButton);
        window.typeText(query);
    }

    Rows notes()
    {
        Rows titles;
        for (int row = 0; row < model().rowCount(); ++row)
            if (model().note(model().index(row)))
                titles.push_back(model().index(row).data().toString().toStdString());
        return titles;
    }

    std::string activeTitle() { return window.app().activeTab()->title.get(); }

    /// The row that the keyboard is at.
    std::string current() { return list().currentIndex().data().toString().toStdString(); }

    int topOf(const std::string& title)
    {
        for (int row = 0; row < model().rowCount(); ++row)
            if (model().index(row).data().toString().toStdString() == title)
                return list().visualRect(model().index(row)).top();
        return -1;
    }

    TestWindow window;
};

TEST_F(SidebarSearch, NarrowsAtOnceAndFindsContentsAMomentLater)
{
    window.addNote("deep", "Дневник\n" + std::string(200, '.') + " молоко");
    window.addNote("list", "Покупки\nМолоко и хлеб");
    window.addNote("plan", "План");
    showAndSearch(QStringLiteral("молок"));
    EXPECT_EQ(window.app().store.searchQuery.get(), "молок");
    EXPECT_EQ(notes(), Rows{"Покупки"});
    window.wait(199ms);
    EXPECT_EQ(notes(), Rows{"Покупки"});
    window.wait(1ms);
    EXPECT_EQ(notes(), (Rows{"Покупки", "Дневник"}));

    // The next key arrives while the files are searched, and is not lost.
    window.typeText(QStringLiteral("о"));
    window.scheduler().advance(200ms);
    window.typeText(QStringLiteral("!"));
    EXPECT_EQ(field().text(), QStringLiteral("молоко!"));
    window.wait(1s);
    EXPECT_EQ(notes(), Rows{});
    EXPECT_EQ(window.app().editorText().length(), 4) << "typed into the note";
}

TEST_F(SidebarSearch, TakesComposedTextOnceItIsCommitted)
{
    window.addNote("a", "Покупки");
    window.addNote("b", "План");
    showAndSearch();
    QInputMethodEvent composing(QStringLiteral("пла"), {});
    QCoreApplication::sendEvent(&field(), &composing);
    EXPECT_EQ(notes().size(), 2u);
    QInputMethodEvent committed;
    committed.setCommitString(QStringLiteral("пла"));
    QCoreApplication::sendEvent(&field(), &committed);
    EXPECT_EQ(notes(), Rows{"План"});
}

TEST_F(SidebarSearch, EscapeClearsThenLeaves)
{
    window.addNote("a", "a");
    window.addNote("b", "b");
    showAndSearch(QStringLiteral("a"));
    EXPECT_EQ(notes(), Rows{"a"});
    window.key(Qt::Key_Escape);
    EXPECT_EQ(notes(), (Rows{"b", "a"}));
    EXPECT_TRUE(field().hasFocus());
    window.key(Qt::Key_Escape);
    EXPECT_TRUE(window.view().editorArea().editor().hasFocus());

    // A search that ends for another reason empties the field too.
    window.app().store.updateSearchQuery("b");
    EXPECT_EQ(field().text(), QStringLiteral("b"));
    window.app().store.updateSearchQuery("");
    EXPECT_EQ(field().text(), QString());
}

TEST_F(SidebarSearch, DownWalksAlongTheNotesFoundAndEnterGoesOnInOne)
{
    window.addNote("y", "y");
    for (const char* name : {"x3", "deep", "x2", "x1"})
        window.addNote(name, name + ("\n" + std::string(100, '.')) + "x");
    const Path file = window.addFile("x.txt", "x");
    showAndSearch();
    window.app().openFile(file); // its row stands above all notes
    QTest::mouseClick(&field(), Qt::LeftButton);
    window.typeText(QStringLiteral("x"));
    window.key(Qt::Key_Down);
    EXPECT_EQ(activeTitle(), "x1");
    window.key(Qt::Key_Down);
    window.key(Qt::Key_Down);
    EXPECT_EQ(activeTitle(), "x3");
    window.wait(200ms); // what the files hold comes in meanwhile
    EXPECT_EQ(notes(), (Rows{"x1", "x2", "deep", "x3"}));
    EXPECT_EQ(current(), "x3");
    EXPECT_TRUE(list().hasFocus());
    window.key(Qt::Key_Return);
    EXPECT_TRUE(window.view().editorArea().editor().hasFocus());

    // Enter in the field opens the first one; from the first row the way up leads back into the field.
    QTest::mouseClick(&field(), Qt::LeftButton);
    window.key(Qt::Key_Return);
    EXPECT_EQ(activeTitle(), "x1");
    EXPECT_TRUE(window.view().editorArea().editor().hasFocus());
    QTest::mouseClick(&field(), Qt::LeftButton);
    window.key(Qt::Key_Down);
    window.key(Qt::Key_Up);
    EXPECT_EQ(activeTitle(), "x.txt");
    window.key(Qt::Key_Up);
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(SidebarSearch, EscapeLeadsBackFromTheListToo)
{
    window.addNote("a", "a");
    window.addNote("b", "b");
    window.show();
    window.key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(field().hasFocus());
    window.typeText(QStringLiteral("a"));
    window.key(Qt::Key_Down);
    window.key(Qt::Key_Escape);
    EXPECT_TRUE(field().hasFocus());
    window.key(Qt::Key_Escape);
    window.key(Qt::Key_Down);
    ASSERT_TRUE(list().hasFocus());
    window.key(Qt::Key_Escape);
    EXPECT_TRUE(window.view().editorArea().editor().hasFocus());
}

TEST_F(SidebarSearch, SaysThatNothingWasFoundOnlyOnceAllWasSearched)
{
    window.addNote("a", "a\n" + std::string(100, '.') + "deep");
    showAndSearch(QStringLiteral("dee"));
    EXPECT_EQ(notes(), Rows{});
    EXPECT_FALSE(model().hasFoundNothing());
    window.wait(200ms);
    EXPECT_EQ(notes(), Rows{"a"});
    window.typeText(QStringLiteral("r"));
    EXPECT_FALSE(model().hasFoundNothing());
    const QImage before = list().grab().toImage();
    window.wait(200ms);
    EXPECT_TRUE(model().hasFoundNothing());
    EXPECT_NE(list().grab().toImage(), before);
    window.key(Qt::Key_Escape);
    EXPECT_FALSE(model().hasFoundNothing());
}

TEST_F(SidebarSearch, AMenuLeavesTheKeyboardWhereItIs)
{
    window.addNote("a", "a");
    window.show();
    const QPoint row = list().visualRect(model().activeIndex()).center();
    QTest::mousePress(list().viewport(), Qt::RightButton, {}, row);
    QContextMenuEvent event(QContextMenuEvent::Mouse, row, list().viewport()->mapToGlobal(row));
    QCoreApplication::sendEvent(list().viewport(), &event);
    ASSERT_TRUE(QApplication::activePopupWidget());
    QApplication::activePopupWidget()->close();
    window.settle();
    EXPECT_EQ(window.view().focusWidget(), &window.view().editorArea().editor());
}

TEST_F(SidebarSearch, WhatStaysKeepsItsPlace)
{
    for (int i = 0; i < 200; ++i)
        window.addNote("n" + std::to_string(i), "n" + std::to_string(i) + (i % 2 ? " odd" : ""));
    showAndSearch();
    window.app().openNote(window.app().store.notes->at(100).id); // "n99 odd"
    window.settle();
    const int before = topOf("n99 odd");
    ASSERT_GT(list().verticalScrollBar()->value(), 0);
    QTest::mouseClick(&field(), Qt::LeftButton);
    window.typeText(QStringLiteral("odd"));
    EXPECT_EQ(notes().size(), 100u);
    EXPECT_EQ(topOf("n99 odd"), before);
    EXPECT_EQ(current(), "n99 odd");
    window.typeText(QStringLiteral("!"));
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
    window.key(Qt::Key_Escape);
    const int after = topOf("n99 odd");
    EXPECT_GE(after, 0);
    EXPECT_LT(after, list().viewport()->height());

    // Where the user has scrolled to, nothing moves when a note above is new.
    list().verticalScrollBar()->setValue(46 * 20 + 7);
    const int seen = topOf("n175 odd");
    std::ofstream(window.notesFolder() / "new.txt") << "new";
    window.app().store.syncWithDisk();
    ASSERT_EQ(notes().size(), 201u);
    EXPECT_EQ(topOf("n175 odd"), seen);
}

TEST_F(SidebarSearch, WhatOthersDoToTheOpenNoteDoesNotTakeTheKeyboard)
{
    window.addNote("a", "before");
    showAndSearch(QStringLiteral("be"));
    std::ofstream(window.notesFolder() / "a.txt") << "better";
    window.app().store.syncWithDisk();
    window.settle();
    ASSERT_EQ(window.app().editorText().length(), 6);
    window.typeText(QStringLiteral("t"));
    EXPECT_EQ(field().text(), QStringLiteral("bet"));
    EXPECT_EQ(window.app().editorText().length(), 6);
    EXPECT_EQ(notes(), Rows{"better"});

    window.key(Qt::Key_Down);
    ASSERT_TRUE(list().hasFocus());
    std::filesystem::remove(window.notesFolder() / "a.txt");
    window.app().store.syncWithDisk();
    window.settle();
    EXPECT_TRUE(list().hasFocus());
}

} // namespace
} // namespace quillmark::test
