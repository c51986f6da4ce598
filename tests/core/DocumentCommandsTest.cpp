#include "AppTest.h"

#include "core/SaveAsFormat.h"

namespace quillmark::test {
namespace {

struct DocumentCommandsTest : AppTest {
    std::string noticeShown() const { return app->notice->value_or(""); }
};

TEST_F(DocumentCommandsTest, OtherLineEndingsAreAnEdit)
{
    disk.putFile("/docs/a", "one\ntwo\n");
    start();
    open("/docs/a");
    app->setLineEndings(LineEnds::lf);
    EXPECT_FALSE(app->isDirty.get());
    EXPECT_EQ(noticeShown(), "");

    app->setLineEndings(LineEnds::crlf);
    EXPECT_EQ(noticeShown(), "Переносы строк: CRLF — файл будет пересохранён");
    EXPECT_TRUE(app->activeTab()->isDirty.get());
    scheduler.advance(799ms);
    EXPECT_EQ(disk.bytes("/docs/a"), "one\ntwo\n");
    scheduler.advance(1ms);
    EXPECT_EQ(disk.bytes("/docs/a"), "one\r\ntwo\r\n");
}

TEST_F(DocumentCommandsTest, APastedTextTellsTheLanguageOfOneThatHasNone)
{
    start();
    const auto paste = [&](const std::u16string& text) {
        clipboard.setText(Rope(text), Clipboard::Buffer::clipboard);
        view.paste();
        return app->syntaxLanguage.get();
    };
    const std::u16string page = u"<!doctype html>12345";
    EXPECT_EQ(paste(page.substr(1)), Language::plain);
    EXPECT_EQ(paste(page.substr(0, 19)), Language::plain) << "too short to tell";
    EXPECT_EQ(paste(page), Language::html);
    app->setLanguageOverride(Language::plain);
    EXPECT_EQ(paste(page), Language::plain);
}

TEST_F(DocumentCommandsTest, AFractionOfTheDocumentComesToTheMiddle)
{
    start();
    app->scrollEditorToFraction(1);
    EXPECT_EQ(view.scrollTop(), 0) << "all of it is visible";
    type(std::string(99, '\n'));
    const auto topAfter = [&](double fraction) {
        app->scrollEditorToFraction(fraction);
        return view.scrollTop() / FixedShaper::rowHeight;
    };
    EXPECT_EQ(topAfter(0), 0);
    EXPECT_EQ(topAfter(0.5), 45);
    EXPECT_EQ(topAfter(1), 90);
}

TEST_F(DocumentCommandsTest, GoingToALine)
{
    start();
    type("one\ntwo\nthree");
    int focused = 0;
    const Connection focus(view.onFirstResponderRequested([&] { ++focused; }));
    const auto caretAfter = [&](int64_t line) {
        app->setGoToLineVisible(true);
        app->goToLine(line);
        EXPECT_FALSE(app->goToLineVisible.get());
        return view.selection().caret;
    };
    EXPECT_EQ(caretAfter(0), 13);
    EXPECT_EQ(focused, 0) << "only hides the field";
    EXPECT_EQ(caretAfter(2), 4);
    EXPECT_EQ(caretAfter(10), 8) << "the last line";
    EXPECT_EQ(caretAfter(1), 0);
    EXPECT_EQ(caretAfter(INT64_MAX), 8);
    EXPECT_EQ(focused, 4);
}

TEST_F(DocumentCommandsTest, StatisticsFollowLoadsAtOnceAndTypingAfterAPause)
{
    disk.putFile("/docs/a", "раз два\nтри");
    start();
    open("/docs/a");
    scheduler.settle();
    EXPECT_EQ(app->stats.get(), (TextStats{2, 3, 11}));
    EXPECT_EQ(app->minimapSamples->size(), 2u);
    int changes = 0;
    const Connection counted = app->stats.onChange([&](const TextStats&) { ++changes; });
    for (int i = 0; i < 5; ++i) {
        type("x");
        scheduler.advance(299ms);
        scheduler.settle();
    }
    EXPECT_EQ(changes, 0);
    scheduler.advance(1ms);
    type("y"); // while it is being counted
    scheduler.settle();
    EXPECT_EQ(app->stats->chars, 11) << "a count of an older text is given up";
    scheduler.advance(300ms);
    scheduler.settle();
    EXPECT_EQ(app->stats->chars, 17);
}

// ---- Another name

TEST_F(DocumentCommandsTest, ANoteSavedUnderAnotherNameBecomesAFile)
{
    disk.putFolder("/docs");
    start();
    type("Plan: a/b\nmore");
    scheduler.advance(1s);
    const auto suggestion = app->saveSuggestion();
    ASSERT_TRUE(suggestion);
    EXPECT_EQ(suggestion->name, "Plan- a-b.txt");
    EXPECT_EQ(suggestion->folder, notes);

    type("!");
    app->flushSave(AppState::AllowBackground::no);
    app->saveAs("/docs/./plan.py");
    EXPECT_EQ(noticeShown(), "Сохранено: /docs/plan.py");
    EXPECT_EQ(disk.bytes("/docs/plan.py"), "Plan: a/b\nmore!");
    EXPECT_EQ(titles(), Strings{"plan.py"});
    EXPECT_EQ(app->syntaxLanguage.get(), Language::python);
    EXPECT_FALSE(app->isDirty.get());
    EXPECT_EQ(app->store.notes->size(), 1u);
    EXPECT_EQ(view.text().length(), 15) << "neither text nor undo are touched";

    type("?");
    scheduler.advance(800ms);
    EXPECT_EQ(disk.bytes("/docs/plan.py"), "Plan: a/b\nmore!?");
    EXPECT_EQ(noteText("Untitled.txt"), "Plan: a/b\nmore!");
    scheduler.advance(2s);
    disk.putFile("/docs/plan.py", "theirs");
    watching.deliver();
    scheduler.advance(400ms);
    EXPECT_EQ(shown(), "theirs") << "the new file is the one that is watched";
    restart();
    EXPECT_EQ(titles(), Strings{"plan.py"});
}

TEST_F(DocumentCommandsTest, PanelsStartBesideTheFileElseWhereTheLastOneWas)
{
    disk.putFile("/docs/\xff/a.txt", "A");
    start();
    EXPECT_EQ(app->panelFolder(), std::nullopt);
    app->rememberPanelFolder("/docs/\xff/a.txt");
    restart();
    EXPECT_EQ(app->saveSuggestion()->folder, "/docs/\xff");
    disk.putFile("/other/b.txt", "B");
    open("/other/b.txt");
    EXPECT_EQ(app->saveSuggestion()->folder, "/other");
    app->saveAs("/docs/\xff/c.txt");
    app->newNote();
    EXPECT_EQ(app->panelFolder(), "/docs/\xff");
    app->rememberPanelFolder("/gone/d.txt");
    EXPECT_EQ(app->saveSuggestion()->folder, notes);
}

TEST_F(DocumentCommandsTest, SavingOverTheFileOfAnotherTabLeavesOne)
{
    disk.putFile("/docs/a.txt", "A");
    disk.putFile("/docs/b.txt", "B");
    start();
    open("/docs/a.txt");
    open("/docs/b.txt");
    EXPECT_EQ(app->saveSuggestion()->name, "b.txt");
    app->saveAs("/docs/a.txt");
    EXPECT_EQ(titles(), (Strings{"Untitled", "a.txt"}));
    EXPECT_EQ(disk.bytes("/docs/a.txt"), "B");
    EXPECT_EQ(shown(), "B");
}

TEST_F(DocumentCommandsTest, AFailedSaveLeavesTheTabAsItWas)
{
    disk.putFile("/docs/a.txt", "A");
    start();
    open("/docs/a.txt");
    disk.failAlways(DiskOperation::createNew, ENOSPC, "/docs");
    app->saveAs("/docs/c.txt");
    EXPECT_EQ(noticeShown(), "Не удалось сохранить: Нет места на диске");
    EXPECT_EQ(titles().back(), "a.txt");
    disk.heal();
    type("x");
    scheduler.advance(1s);
    EXPECT_EQ(disk.bytes("/docs/a.txt"), "xA");
}

TEST(SaveAsFormat, NamesInAFormat)
{
    const auto in = [](std::string_view name, std::string_view ext) {
        return nameInFormat(name, SaveAsFormat::all()[ext.empty() ? 15 : *formatWithExtension(ext)]);
    };
    EXPECT_EQ(in("notes.txt", ""), "notes");
    EXPECT_EQ(in("notes", "json"), "notes.json");
    EXPECT_EQ(in("archive.tar.gz", "csv"), "archive.tar.csv");
    EXPECT_EQ(in("README", "md"), "README.md");
    EXPECT_EQ(in(".profile", "sh"), ".profile.sh");
    EXPECT_EQ(in("ends with.", "txt"), "ends with..txt");
    EXPECT_EQ(in("/home/me/.config/notes", "md"), "/home/me/.config/notes.md");
    EXPECT_EQ(in("a.b/.profile", "sh"), "a.b/.profile.sh");
    EXPECT_EQ(SaveAsFormat::all().size(), 16u);
    for (const Language language : allLanguages()) {
        const bool isOffered = language != Language::c && language != Language::rust;
        EXPECT_EQ(formatWithExtension(defaultSaveExtension(language)).has_value(), isOffered);
    }
}

// ---- The notes folder

TEST_F(DocumentCommandsTest, AnotherNotesFolder)
{
    putNote("old.txt", "old");
    disk.putFile("/docs/a", "A");
    disk.putFile("/other/one.txt", "one");
    start();
    open("/docs/a");
    select(0);
    type("unsaved ");
    app->chooseNotesFolder("/other");
    EXPECT_EQ(noticeShown(), "Папка заметок: /other");
    EXPECT_EQ(titles(), (Strings{"one", "a"}));
    EXPECT_EQ(shown(), "one");
    EXPECT_EQ(noteText("unsaved old.txt"), "unsaved old");

    app->chooseNotesFolder("/missing");
    EXPECT_EQ(noticeShown(), "Не удалось получить доступ к папке");
    EXPECT_EQ(titles(), (Strings{"one", "a"}));
    app->chooseNotesFolder("/other");
    EXPECT_EQ(titles(), (Strings{"one", "a"}));

    disk.putFolder("/empty");
    app->chooseNotesFolder("/empty");
    EXPECT_EQ(titles(), Strings{"a"});
    close(0);
    app->chooseNotesFolder("/empty");
    EXPECT_EQ(titles(), Strings{"Untitled"});
    EXPECT_TRUE(disk.bytes("/empty/Untitled.txt"));
}

TEST_F(DocumentCommandsTest, WordsOfAFullFolderAreKeptWhenItIsLeft)
{
    disk.putFile("/other/one.txt", "one");
    start();
    disk.failAlways(DiskOperation::write, ENOSPC, notes);
    type("unsaved");
    app->chooseNotesFolder("/other");
    EXPECT_EQ(kept(), Strings{"unsaved"});
    EXPECT_EQ(shown(), "one");
    EXPECT_FALSE(app->isDirty.get());
}

} // namespace
} // namespace quillmark::test
