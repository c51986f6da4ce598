#include "TestWindow.h"

#include "app/look/SymbolButton.h"
#include "app/window/sidebar/NoteRow.h"
#include "app/window/sidebar/SidebarLayout.h"
#include "app/window/sidebar/SidebarList.h"
#include "app/window/sidebar/SidebarView.h"

#include <QMenu>
#include <QScrollBar>

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

using Kind = SidebarLayout::Kind;

class Sidebar : public testing::Test {
protected:
    SidebarView& view() { return window.view().sidebar(); }
    SidebarList& list() { return view().list(); }
    SidebarModel& model() { return view().model(); }

    std::vector<std::string> rows()
    {
        std::vector<std::string> texts;
        for (int row = 0; row < model().rowCount(); ++row)
            texts.push_back(model().index(row).data().toString().toStdString());
        return texts;
    }

    int activeRow() { return model().activeIndex().row(); }

    void click(int row)
    {
        QTest::mouseClick(
            list().viewport(), Qt::LeftButton, {}, list().visualRect(model().index(row)).center());
        window.settle();
    }

    /// Chooses an item of a row's context menu.
    void choose(int row, const char* item)
    {
        QMenu* menu = view().makeContextMenu(model().index(row));
        for (QAction* action : menu->actions())
            if (action->text().toStdString() == item)
                return action->trigger();
        FAIL() << item;
    }

    TestWindow window;
};

using Rows = std::vector<std::string>;

TEST_F(Sidebar, ListsFilesAndNotesAndOpensWhatIsClicked)
{
    window.addNote("old", "Старая\nтекст");
    window.addNote("new", "Новая");
    const Path file = window.addFile("todo.md", "x");
    window.show();
    EXPECT_EQ(rows(), (Rows{"Заметки", "Новая", "Старая"}));
    EXPECT_EQ(activeRow(), 1);
    click(2);
    EXPECT_EQ(activeRow(), 2);
    EXPECT_EQ(window.tabTitles(), (Rows{"Новая", "Старая"}));
    click(0); // the title of the section
    EXPECT_EQ(activeRow(), 2);

    window.app().openFile(file);
    window.settle();
    EXPECT_EQ(rows(), (Rows{"Открытые файлы", "todo.md", "Заметки", "Новая", "Старая"}));
    EXPECT_EQ(activeRow(), 1);
    click(3);
    EXPECT_EQ(activeRow(), 3);
    click(1);
    EXPECT_EQ(activeRow(), 1);
    choose(1, "Закрыть");
    EXPECT_EQ(rows(), (Rows{"Заметки", "Новая", "Старая"}));
}

TEST_F(Sidebar, MenuDuplicatesAndDeletes)
{
    window.addNote("b", "Вторая");
    window.addNote("a", "Первая");
    window.show();
    choose(2, "Показать в Finder");
    EXPECT_EQ(window.revealed(), std::vector<Path>{window.notesFolder() / "b.txt"});
    choose(2, "Дублировать");
    ASSERT_EQ(model().rowCount(), 4);
    const Path doomed = window.app().store.notes->back().url;
    choose(3, "Удалить");
    EXPECT_EQ(model().rowCount(), 3);
    ASSERT_EQ(window.trash().recycled().size(), 1u);
    EXPECT_EQ(window.trash().recycled().front(), doomed);

    // A menu may be older than what it was opened on.
    QMenu* late = view().makeContextMenu(model().index(1));
    window.app().deleteNote(Note(*model().note(model().index(1))));
    window.settle();
    for (QAction* action : late->actions())
        action->trigger();
    EXPECT_EQ(window.trash().recycled().size(), 2u);
}

TEST_F(Sidebar, KeysWalkAlongTheRows)
{
    for (const char* name : {"3", "2", "1"})
        window.addNote(name, name);
    const Path file = window.addFile("todo.md", "x");
    window.show();
    window.app().openFile(file);
    window.settle();
    list().setFocus();
    ASSERT_EQ(activeRow(), 1);
    window.key(Qt::Key_Down);
    EXPECT_EQ(activeRow(), 3);
    window.key(Qt::Key_End);
    EXPECT_EQ(activeRow(), 5);
    window.key(Qt::Key_Up);
    EXPECT_EQ(activeRow(), 4);
    window.key(Qt::Key_Home);
    EXPECT_EQ(activeRow(), 1);
    window.type("3");
    EXPECT_EQ(activeRow(), 5);
    EXPECT_TRUE(list().hasFocus());
    window.key(Qt::Key_Tab);
    EXPECT_FALSE(list().hasFocus());
    window.type("x");
    EXPECT_EQ(window.app().editorText().length(), 2);
}

TEST_F(Sidebar, ScrollsToTheActiveNoteOnly)
{
    for (int i = 0; i < 200; ++i)
        window.addNote("n" + std::to_string(i), "n" + std::to_string(i));
    window.show();
    const auto isVisible
        = [&] { return list().viewport()->rect().contains(list().visualRect(model().activeIndex())); };
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
    EXPECT_TRUE(isVisible());
    window.app().openNote(window.app().store.notes->at(150).id);
    window.settle();
    EXPECT_TRUE(isVisible());
    EXPECT_GT(list().verticalScrollBar()->value(), 0);
    // The first note, with the title of its section.
    window.app().openNote(window.app().store.notes->front().id);
    window.settle();
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
    click(3);
    EXPECT_EQ(list().verticalScrollBar()->value(), 0);
}

TEST_F(Sidebar, ButtonMakesANoteInFront)
{
    window.addNote("a", "Первая");
    window.show();
    QTest::mouseClick(window.find<SymbolButton>(QStringLiteral("Новая заметка")), Qt::LeftButton);
    window.settle();
    EXPECT_EQ(rows(), (Rows{"Заметки", "Untitled", "Первая"}));
    EXPECT_EQ(activeRow(), 1);
}

TEST(NoteRow, SaysWhatThereIsInsteadOfAPreview)
{
    Note note;
    EXPECT_EQ(NoteRow::previewLine(note), QStringLiteral("Пусто"));
    note.byteSize = 40;
    EXPECT_EQ(NoteRow::previewLine(note), QStringLiteral("Нет дополнительного текста"));
    note.preview = "вторая\tстрока";
    EXPECT_EQ(NoteRow::previewLine(note), QStringLiteral("вторая строка"));
}

TEST(SidebarLayout, RowsStandOnEachOther)
{
    for (const auto& [files, notes] : {std::pair{0, 0}, {0, 3}, {1, 0}, {3, 4}, {40, 1000}}) {
        const SidebarLayout layout(files, notes);
        EXPECT_EQ(layout.rowCount(), notes + 1 + (files > 0 ? files + 1 : 0));
        int64_t y = 0;
        for (int row = 0; row < layout.rowCount(); ++row) {
            ASSERT_EQ(layout.top(row), y);
            ASSERT_EQ(layout.rowAt(y), row);
            y += layout.height(row);
            ASSERT_EQ(layout.rowAt(y - 1), row);
        }
        EXPECT_EQ(layout.rowAt(-1), -1);
        EXPECT_EQ(layout.rowAt(y), -1);
        EXPECT_GE(layout.totalHeight(), y);
        if (files > 0) {
            EXPECT_EQ(layout.item(layout.rowOfFile(files - 1)), (SidebarLayout::Item{Kind::file, files - 1}));
        }
        if (notes > 0) {
            EXPECT_EQ(layout.item(layout.rowOfNote(notes - 1)), (SidebarLayout::Item{Kind::note, notes - 1}));
        }
    }
}

} // namespace
} // namespace quillmark::test
