#include "TestWindow.h"

#include "app/editor/EditorView.h"
#include "app/look/TextButton.h"
#include "app/look/TextLabel.h"
#include "app/window/DroppedFiles.h"
#include "app/window/EditorArea.h"
#include "app/window/panels/GoToLineView.h"
#include "app/window/panels/SaveFormatAccessory.h"
#include "app/window/status/StatusBarView.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

using Titles = std::vector<std::string>;

// ---- Go to line

TEST(TypedLine, TakesDigitsAndNothingElse)
{
    EXPECT_EQ(typedLine(QStringLiteral(" 15 ")), 15);
    EXPECT_EQ(typedLine(QStringLiteral("12:5")), 125);
    EXPECT_EQ(typedLine(QStringLiteral("1,000")), 1000);
    EXPECT_EQ(typedLine(QStringLiteral("-7")), 7);
    EXPECT_EQ(typedLine(QStringLiteral("9223372036854775807")), INT64_MAX);
    for (const char* nothing : {"", "abc", "0", "9223372036854775808", "1²", "٣", "Ⅷ"})
        EXPECT_EQ(typedLine(QString::fromUtf8(nothing)), std::nullopt) << nothing;
}

struct GoToLine : testing::Test {
    GoToLine()
    {
        window.addNote("lines", "1\n2\n3\n4");
        window.show();
    }
    void open() { window.key(Qt::Key_L, Qt::ControlModifier); }
    bool editorHasFocus() { return window.view().editorArea().editor().hasFocus(); }

    TestWindow window;
};

TEST_F(GoToLine, GoesAndCloses)
{
    open();
    ASSERT_TRUE(window.view().goToLineView());
    const QRect place = window.view().goToLineView()->geometry();
    EXPECT_EQ(place.top(), 74);
    EXPECT_EQ(place.width(), 220);
    EXPECT_EQ(place.center().x(), window.view().rect().center().x());
    window.type("3");
    window.key(Qt::Key_Return);
    EXPECT_FALSE(window.view().goToLineView());
    EXPECT_EQ(window.app().cursorLine.get(), 3);
    EXPECT_TRUE(editorHasFocus());

    open();
    EXPECT_EQ(window.view().goToLineView()->field().text(), QString());
    window.type("99");
    window.view().editorArea().editor().setFocus();
    open(); // it is there already, and takes the keyboard alone
    ASSERT_TRUE(window.view().goToLineView());
    window.key(Qt::Key_Enter);
    EXPECT_EQ(window.app().cursorLine.get(), 4);
    EXPECT_EQ(window.app().editorText().length(), 7) << "typed into the note";
}

TEST_F(GoToLine, EscapeAndNonsenseCloseItAndMoveNothing)
{
    window.app().goToLine(2);
    for (const char* typed : {"", "0", "abc"}) {
        open();
        window.type(typed);
        window.key(Qt::Key_Return);
        EXPECT_FALSE(window.view().goToLineView());
        EXPECT_TRUE(editorHasFocus());
    }
    open();
    window.type("4");
    window.key(Qt::Key_Escape);
    EXPECT_FALSE(window.view().goToLineView());
    EXPECT_TRUE(editorHasFocus());
    EXPECT_EQ(window.app().cursorLine.get(), 2);
}

// ---- Save as

struct SaveAs : testing::Test {
    /// Acts once on the modal window of this kind, as soon as it is there, for as long as the timer lives.
    template <class Window, class Act> static std::unique_ptr<QTimer> onModal(Act act)
    {
        auto timer = std::make_unique<QTimer>();
        QObject::connect(timer.get(), &QTimer::timeout, [timer = timer.get(), act] {
            auto* modal = qobject_cast<Window*>(QApplication::activeModalWidget());
            if (!modal)
                return;
            timer->stop();
            act(*modal);
        });
        timer->start(0);
        return timer;
    }

    /// Ctrl+Shift+S, and what the user does in the panel while it runs.
    template <class Act> void inPanel(Act act)
    {
        const auto timer = onModal<QFileDialog>(act);
        window.view().activateWindow(); // no window manager gives it back after a panel
        window.settle();
        window.key(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_FALSE(timer->isActive()) << "there was no panel";
    }
    static QLineEdit& nameField(QFileDialog& panel)
    {
        return *panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    }
    static void choose(QFileDialog& panel, const char* format)
    {
        for (QComboBox* popup : panel.findChildren<QComboBox*>())
            if (const int index = popup->findText(QString::fromUtf8(format)); index >= 0) {
                popup->setCurrentIndex(index);
                Q_EMIT popup->activated(index);
            }
    }

    TestWindow window;
};

TEST_F(SaveAs, ProposesANameAndWritesUnderTheChosenOne)
{
    window.addNote("plan", "План\nработы");
    const Path beside = window.addFile("x", "");
    window.show();
    inPanel([&](QFileDialog& panel) {
        EXPECT_EQ(nameField(panel).text(), QStringLiteral("План.txt"));
        EXPECT_EQ(panel.directory().path().toStdString(), window.notesFolder().string());
        nameField(panel).setText(QString::fromStdString((beside.parent_path() / "план.тар.md").string()));
        choose(panel, "JSON (.json)");
        EXPECT_TRUE(nameField(panel).text().endsWith(QStringLiteral("/план.тар.json")));
        QTest::keyClick(&nameField(panel), Qt::Key_Return);
    });
    const Path saved = beside.parent_path() / "план.тар.json";
    EXPECT_EQ(TestWindow::contents(saved), "План\nработы");
    EXPECT_EQ(window.tabTitles(), Titles{"план.тар.json"});

    // The panel is where it was last, and cancelling it changes nothing.
    inPanel([&](QFileDialog& panel) {
        EXPECT_EQ(panel.directory().path().toStdString(), beside.parent_path().string());
        EXPECT_EQ(nameField(panel).text(), QStringLiteral("план.тар.json"));
        panel.reject();
    });
    EXPECT_EQ(window.tabTitles(), Titles{"план.тар.json"});
}

TEST_F(SaveAs, AsksBeforeItReplacesAFile)
{
    window.addNote("new", "new");
    const Path other = window.addFile("other.txt", "other");
    window.show();
    inPanel([&](QFileDialog& panel) {
        nameField(panel).setText(QString::fromStdString(other.string()));
        const auto timer
            = onModal<QMessageBox>([](QMessageBox& question) { question.button(QMessageBox::No)->click(); });
        QTest::keyClick(&nameField(panel), Qt::Key_Return);
        EXPECT_FALSE(timer->isActive()) << "there was no question";
        panel.reject();
    });
    EXPECT_EQ(TestWindow::contents(other), "other");
}

// ---- Status bar

TEST(StatusBar, CountsAndConverts)
{
    TestWindow window;
    window.addNote("note", "a b\nc");
    window.show();
    EXPECT_TRUE(window.shows(QStringLiteral("строк 2 · слов 3 · симв. 5")));
    window.type("x ");
    window.wait(299ms);
    EXPECT_TRUE(window.shows(QStringLiteral("строк 2 · слов 3 · симв. 5")));
    window.wait(1ms);
    EXPECT_TRUE(window.shows(QStringLiteral("строк 2 · слов 4 · симв. 7")));

    auto* endings = window.find<TextButton>(QStringLiteral("LF"));
    ASSERT_TRUE(endings);
    EXPECT_EQ(endings->toolTip(), QStringLiteral("Кликните для конвертации LF ↔ CRLF"));
    QTest::mouseClick(endings, Qt::LeftButton);
    EXPECT_EQ(endings->text(), QStringLiteral("CRLF"));
    EXPECT_TRUE(window.shows(QStringLiteral("Переносы строк: CRLF — файл будет пересохранён")));
    window.wait(1s);
    EXPECT_EQ(TestWindow::contents(window.app().store.notes->front().url), "x a b\r\nc");
    QTest::mouseClick(endings, Qt::LeftButton);
    EXPECT_EQ(window.app().lineEndings.get(), LineEnds::lf);
}

TEST(StatusBar, LeavesOutWhatThereIsNoRoomFor)
{
    TestWindow window;
    window.addNote("note", "a b\nc");
    window.show();
    auto& bar = *window.find<StatusBarView>();
    const auto showsIn = [&](int width, const char* text) {
        bar.resize(width, bar.height());
        return window.shows(QString::fromUtf8(text));
    };
    const int whole = bar.sizeHint().width();
    EXPECT_TRUE(showsIn(whole, "строк 2 · слов 3 · симв. 5"));
    EXPECT_TRUE(showsIn(whole - 1, "строк 2 · слов 3"));
    bool hadEncoding = true;
    for (int width = whole; width >= 240; --width) { // each part is whole or not there
        bar.resize(width, bar.height());
        bar.layout()->activate();
        for (const TextLabel* label : bar.findChildren<TextLabel*>()) {
            const int needed = label->isVisible() ? label->sizeHint().width() : 0;
            ASSERT_GE(label->width(), needed) << label->text().toStdString() << " at " << width;
        }
        EXPECT_TRUE(window.shows(QStringLiteral("Ln 1, Col 1")));
        const bool hasEncoding = window.shows(QStringLiteral("UTF-8"));
        EXPECT_TRUE(hadEncoding || !hasEncoding);
        hadEncoding = hasEncoding;
    }
    EXPECT_FALSE(hadEncoding);
    EXPECT_TRUE(showsIn(whole, "строк 2 · слов 3 · симв. 5"));
    EXPECT_TRUE(showsIn(whole, "UTF-8"));
}

TEST(StatusBar, ListsTheLanguages)
{
    TestWindow window;
    window.show();
    auto* language = window.find<TextButton>(QStringLiteral("Текст"));
    ASSERT_TRUE(language);
    QMenu* menu = window.find<StatusBarView>()->makeLanguageMenu();
    ASSERT_EQ(menu->actions().size(), 10);
    EXPECT_TRUE(menu->actions().front()->isChecked());
    menu->actions().back()->trigger();
    EXPECT_EQ(language->text(), QStringLiteral("Rust"));
    EXPECT_EQ(window.app().activeTab()->languageOverride, Language::rust);
}

TEST(MainMenu, ShowsWhichLineEndsAreInUse)
{
    TestWindow window;
    window.show();
    const auto row = [&](const char* id) { return window.view().findChild<QAction*>(QLatin1String(id)); };
    window.app().setLineEndings(LineEnds::crlf);
    QMenu* view = nullptr;
    for (QMenu* menu : window.view().findChildren<QMenu*>())
        if (menu->actions().contains(row("view.crlf")))
            view = menu;
    ASSERT_TRUE(view);
    EXPECT_EQ(view->title(), QStringLiteral("Переносы строк"));
    auto* parent = qobject_cast<QMenu*>(view->parent());
    ASSERT_TRUE(parent);
    parent->popup(QPoint());
    EXPECT_TRUE(row("view.crlf")->isChecked());
    EXPECT_FALSE(row("view.lf")->isChecked());
    row("view.lf")->trigger();
    parent->hide();
    EXPECT_EQ(window.app().lineEndings.get(), LineEnds::lf);
    row("file.revealNotesFolder")->trigger();
    EXPECT_EQ(window.revealed(), std::vector<Path>{window.notesFolder()});
}

// ---- Dropped files

TEST(DroppedFiles, AreReadAsBytes)
{
    using Paths = std::vector<Path>;
    EXPECT_EQ(filesInUriList("# comment\r\nfile:///a/b%20c.txt\r\nfile://localhost/d\r\n"),
        (Paths{"/a/b c.txt", "/d"}));
    EXPECT_EQ(filesInUriList("file:///%FFx"), Paths{"/\xffx"});
    EXPECT_EQ(filesInUriList("file:/e\nhttp://example.org/f\nfile://elsewhere.example/g\nfile://\n/h\n\n"),
        Paths{"/e"});
    EXPECT_EQ(filesInUriList("file:///a%00b"), Paths{});
}

TEST(DroppedFiles, OpenAsTabsInTheirOrder)
{
    TestWindow window;
    const Path first = window.addFile("first.txt", "1");
    const Path second = window.addFile("второй файл.md", "2");
    window.addNote("note", "note");
    window.show();
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QString::fromStdString(first.string())),
        QUrl::fromLocalFile(QString::fromStdString(window.notesFolder().string())),
        QUrl::fromLocalFile(QString::fromStdString(second.string()))});
    QWidget& editor = window.view().editorArea().editor(); // through which the drop comes to the window
    const QPoint place = editor.rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton, {});
    enter.setDropAction(Qt::MoveAction);
    QCoreApplication::sendEvent(&editor, &enter);
    ASSERT_TRUE(enter.isAccepted());
    EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
    QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, &files, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&window.view(), &drop);
    window.settle();
    EXPECT_EQ(window.tabTitles(), (Titles{"note", "first.txt", "второй файл.md"}));
    EXPECT_EQ(window.app().activeTab()->title.get(), "второй файл.md");
}

} // namespace
} // namespace quillmark::test
