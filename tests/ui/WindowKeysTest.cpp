// Where keys go in the main window, on all sorts of keyboards.
#include "TestWindow.h"

#include "app/editor/EditorView.h"
#include "app/look/TextButton.h"
#include "app/window/CommandKeys.h"
#include "app/window/EditorArea.h"
#include "app/window/sidebar/SearchField.h"
#include "app/window/sidebar/SidebarList.h"
#include "app/window/sidebar/SidebarView.h"
#include "app/window/tabs/TabBarView.h"
#include "text/Unicode.h"

#include <QAction>
#include <QApplication>
#include <QInputMethodEvent>
#include <QMenu>
#include <QMenuBar>
#include <QWindow>

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

constexpr Qt::KeyboardModifiers none = Qt::NoModifier;
constexpr Qt::KeyboardModifiers control = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers alt = Qt::AltModifier;
constexpr quint32 altGr = 0x80;

struct LayoutKey {
    const char* layout;
    quint32 keyCode;
    int key; ///< as the toolkit reports it under this layout
    Qt::KeyboardModifiers modifiers;
    quint32 nativeModifiers;
    const char* meaning; ///< id of a command or title of a menu; empty when it is neither
};

constexpr LayoutKey layoutKeys[] = {
    {"us", 52, Qt::Key_Z, control, 0, "edit.undo"},
    {"us", 35, Qt::Key_BraceRight, both, 0, "view.nextTab"},
    {"us", 23, Qt::Key_Backtab, both, 0, "view.previousTab"},
    {"us", 38, Qt::Key_A, alt, 0, "&Файл"},
    {"us", 38, Qt::Key_A, none, 0, ""},
    {"us", 91, Qt::Key_Delete, Qt::ShiftModifier | Qt::KeypadModifier, 0, "edit.cut"},
    {"ru", 52, 0x042F, control, 0, "edit.undo"},
    {"ru", 57, 0x0422, control, 0, "file.newNote"},
    {"ru", 41, 0x0410, both, 0, "edit.searchNotes"},
    {"ru", 34, 0x0425, both, 0, "view.previousTab"},
    {"ru", 35, 0x042A, both, 0, "view.nextTab"},
    {"ru", 40, 0x0412, alt, 0, "&Вид"},
    {"ru", 19, Qt::Key_0, control, 0, "view.toggleSidebar"},
    {"de", 29, Qt::Key_Z, control, 0, "edit.undo"},
    {"de", 52, Qt::Key_Y, control, 0, "edit.redo"},
    {"de", 34, 0x00DC, both, 0, "view.previousTab"},
    {"de", 35, Qt::Key_Asterisk, both, 0, "view.nextTab"},
    {"de", 18, Qt::Key_BracketRight, both, altGr, ""},
    {"de", 24, Qt::Key_At, control, altGr, ""},
    {"fr", 24, Qt::Key_A, control, 0, "edit.selectAll"},
    {"fr", 38, Qt::Key_Q, control, 0, "app.quit"},
    {"fr", 53, Qt::Key_X, control, 0, "edit.cut"},
    {"fr", 52, Qt::Key_W, control, 0, "file.closeTab"},
    {"fr", 19, 0x00C0, control, 0, "view.toggleSidebar"},
    {"fr", 19, Qt::Key_0, both, 0, "view.toggleSidebar"},
    {"fr", 61, Qt::Key_Exclam, control, 0, ""},
};

TEST(WindowKeys, AreFoundByCharacterAndThenByPlace)
{
    for (const LayoutKey& row : layoutKeys) {
        const QKeyEvent event(
            QEvent::KeyPress, row.key, row.modifiers, row.keyCode, 0, row.nativeModifiers, QString());
        std::string meaning;
        if (const Command* found = commandFor(event))
            meaning = found->id;
        for (const char* menu : {"&Файл", "&Правка", "&Вид"})
            if (isMnemonic(event, QKeySequence::mnemonic(QString::fromUtf8(menu))))
                meaning += menu;
        EXPECT_EQ(meaning, row.meaning) << row.layout << ' ' << row.keyCode << ' ' << row.key;
    }
}

class WindowKeysTest : public testing::Test {
protected:
    WindowKeysTest()
    {
        window.addNote("two", "2");
        window.addNote("one", "1");
        window.show();
    }

    EditorView& editor() { return window.view().editorArea().editor(); }
    std::string text() { return utf8(editor().textView().text().text()); }

    /// One of the two events that the desktop's key makes.
    void send(QEvent::Type type, int key, Qt::KeyboardModifiers modifiers, quint32 keyCode,
        const QString& typed = {})
    {
        QKeyEvent event(type, key, modifiers, keyCode, 0, 0, typed);
        event.ignore();
        QCoreApplication::sendEvent(window.view().windowHandle(), &event);
    }

    static QMenu* popup() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    void closePopups()
    {
        while (QWidget* open = QApplication::activePopupWidget())
            QTest::keyClick(open, Qt::Key_Escape);
        if (qobject_cast<QMenuBar*>(QApplication::focusWidget()))
            window.key(Qt::Key_Escape); // gives the keyboard back
        window.view().activateWindow();
        window.settle();
    }

    TestWindow window;
};

TEST_F(WindowKeysTest, ActInTheirTurnAndComposedTextInIts)
{
    const auto compose = [&] {
        QInputMethodEvent composed;
        composed.setCommitString(QStringLiteral("é"));
        QCoreApplication::sendEvent(QGuiApplication::focusObject(), &composed);
    };
    send(QEvent::ShortcutOverride, Qt::Key_X, none, 53, QStringLiteral("x"));
    send(QEvent::ShortcutOverride, Qt::Key_Tab, control, 23);
    compose();
    send(QEvent::ShortcutOverride, Qt::Key_Y, none, 29, QStringLiteral("y"));
    EXPECT_EQ(text(), "1");
    send(QEvent::KeyPress, Qt::Key_X, none, 53, QStringLiteral("x"));
    EXPECT_EQ(text(), "x1");
    window.app().openNote(window.app().store.notes->back().id); // makes the second tab
    send(QEvent::KeyPress, Qt::Key_Tab, control, 23);
    EXPECT_EQ(text(), "éx1");
    send(QEvent::KeyPress, Qt::Key_Y, none, 29, QStringLiteral("y"));
    EXPECT_EQ(text(), "éyx1");
    compose();
    EXPECT_EQ(text(), "éyéx1") << "no key is under way";
}

TEST_F(WindowKeysTest, EditTheFocusedFieldAsTheyEditTheText)
{
    SearchField& field = window.view().sidebar().searchField();
    QAction* cut = window.view().findChild<QAction*>(QStringLiteral("edit.cut"));
    const auto showEditMenu = [&] {
        window.key(Qt::Key_Alt); // which gives the keyboard to the menu bar
        window.key(Qt::Key_Right);
        window.key(Qt::Key_Down);
    };
    window.key(Qt::Key_F, both);
    window.typeText(QStringLiteral("слово"));
    showEditMenu();
    EXPECT_FALSE(cut->isEnabled());
    closePopups();
    send(QEvent::KeyPress, 0x0424, control, 38); // Ф, where A is
    EXPECT_EQ(field.selectedText(), QStringLiteral("слово"));
    showEditMenu();
    EXPECT_TRUE(cut->isEnabled());
    cut->trigger();
    closePopups();
    EXPECT_EQ(field.text(), QString());
    EXPECT_EQ(window.app().store.searchQuery.get(), "");
    send(QEvent::KeyPress, 0x042F, control, 52);
    EXPECT_EQ(field.text(), QStringLiteral("слово"));
    EXPECT_EQ(text(), "1");
}

TEST_F(WindowKeysTest, OpenTheMenusOfTheBarAndOfWhatHasTheFocus)
{
    window.key(Qt::Key_F10);
    ASSERT_TRUE(popup());
    EXPECT_EQ(popup()->activeAction()->objectName(), QStringLiteral("file.newNote"));
    closePopups();
    send(QEvent::KeyPress, 0x041F, alt, 42); // П
    ASSERT_TRUE(popup());
    EXPECT_EQ(popup()->title(), QStringLiteral("&Правка"));
    closePopups();

    const auto firstOfContextMenu = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        window.key(key, modifiers);
        const QString first = popup() ? popup()->actions().front()->text() : QString();
        closePopups();
        return first.toStdString();
    };
    EXPECT_EQ(firstOfContextMenu(Qt::Key_F10, Qt::ShiftModifier), "Вырезать");
    window.view().sidebar().list().setFocus();
    EXPECT_EQ(firstOfContextMenu(Qt::Key_Menu, none), "Показать в Finder");
    window.view().tabBar().strip().setFocus();
    EXPECT_EQ(firstOfContextMenu(Qt::Key_Menu, none), "Закрыть вкладку");
    window.key(Qt::Key_Escape);
    EXPECT_TRUE(editor().hasFocus());
}

TEST_F(WindowKeysTest, PassTheKeyboardAroundTheWindow)
{
    window.key(Qt::Key_F6);
    auto* language = window.find<TextButton>(QStringLiteral("Текст"));
    EXPECT_TRUE(language->hasFocus());
    window.key(Qt::Key_Return);
    ASSERT_TRUE(popup());
    EXPECT_EQ(popup()->actions().size(), 10);
    closePopups();
    window.key(Qt::Key_F6);
    window.key(Qt::Key_Space);
    EXPECT_EQ(window.app().lineEndings.get(), LineEnds::crlf);
    window.app().openNote(window.app().store.notes->back().id);
    EXPECT_TRUE(editor().hasFocus());
    window.view().tabBar().strip().setFocus();
    window.key(Qt::Key_Left);
    EXPECT_EQ(text(), "1");
    EXPECT_TRUE(window.view().tabBar().strip().hasFocus());
    for (int part = 0; part < 3; ++part)
        window.key(Qt::Key_F6);
    EXPECT_TRUE(editor().hasFocus()) << "after the search field and the list";
    window.key(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_TRUE(window.view().sidebar().list().hasFocus());
}

} // namespace
} // namespace quillmark::test
