#include "TestWindow.h"

#include "app/look/Paint.h"
#include "app/look/SymbolButton.h"
#include "app/look/TextButton.h"
#include "app/recovered/RecoveredWindow.h"
#include "app/window/EditorArea.h"
#include "app/window/LoadingOverlay.h"
#include "app/window/banners/NoticeBanner.h"
#include "app/window/banners/ReadOnlyBanner.h"
#include "app/window/sidebar/SidebarView.h"
#include "app/window/status/SaveStateLabel.h"
#include "app/window/status/StatusBarView.h"
#include "app/window/tabs/TabBarView.h"
#include "desktop/QtAppearance.h"

#include <QAction>
#include <QMenu>

#include <gtest/gtest.h>

#include <fstream>

namespace quillmark::test {
namespace {

using namespace std::chrono_literals;

QColor pixel(QWidget& widget, QPoint place)
{
    return widget.grab().toImage().pixelColor(place);
}

TEST(ContentView, WhatIsTypedIsSavedAndNamesTheTabTheRowAndTheWindow)
{
    TestWindow window;
    window.show();
    EXPECT_EQ(window.view().windowTitle(), QStringLiteral("Untitled"));
    EXPECT_TRUE(window.shows(QStringLiteral("Ln 1, Col 1")));

    window.type("Milk");
    EXPECT_TRUE(window.shows(QStringLiteral("Ln 1, Col 5")));
    EXPECT_EQ(
        window.find<SaveStateLabel>()->accessibleName(), QStringLiteral("Есть несохранённые изменения"));
    window.wait(799ms);
    EXPECT_EQ(TestWindow::contents(window.notesFolder() / "Untitled.txt"), "");
    window.wait(1ms);
    EXPECT_EQ(TestWindow::contents(window.notesFolder() / "Untitled.txt"), "Milk");
    EXPECT_EQ(window.find<SaveStateLabel>()->accessibleName(), QStringLiteral("Сохранено"));

    EXPECT_EQ(window.view().windowTitle(), QStringLiteral("Milk"));
    const SidebarModel& rows = window.view().sidebar().model();
    EXPECT_EQ(rows.index(1).data().toString(), QStringLiteral("Milk"));
    EXPECT_EQ(window.tabTitles(), std::vector<std::string>{"Milk"});
}

TEST(ContentView, TitleIsNotRewrittenByTheToolkit)
{
    TestWindow window;
    window.addNote("list", "[*] buy & sell");
    window.show();
    // The toolkit reads "[*]" as the place of a sign for changes unless it is doubled.
    EXPECT_EQ(window.view().windowTitle(), QStringLiteral("[*][*] buy & sell"));
}

TEST(ContentView, ReadOnlyBannerStandsAboveTheNotice)
{
    TestWindow window;
    const Path large = window.addFile("large", std::string(20 * 1024 * 1024 + 1, 'l'));
    window.show();
    EXPECT_FALSE(window.find<ReadOnlyBanner>());
    EXPECT_FALSE(window.find<NoticeBanner>());

    window.app().showNotice("Сначала слово");
    window.app().openFile(large);
    window.settle();
    ASSERT_TRUE(window.shows(QStringLiteral("Файл больше 20 МБ — открыт только для чтения")));
    ASSERT_TRUE(window.shows(QStringLiteral("Сначала слово")));
    const auto top = [&](QWidget* widget) { return widget->mapTo(&window.view(), QPoint()).y(); };
    EXPECT_LT(top(&window.view().tabBar()), top(window.find<ReadOnlyBanner>()));
    EXPECT_LT(top(window.find<ReadOnlyBanner>()), top(window.find<NoticeBanner>()));
    EXPECT_LT(top(window.find<NoticeBanner>()), top(&window.view().editorArea()));

    window.app().selectAdjacentTab(1);
    window.wait(7s);
    EXPECT_FALSE(window.find<ReadOnlyBanner>());
    EXPECT_TRUE(window.find<NoticeBanner>());
    QTest::mouseClick(window.find<SymbolButton>(QStringLiteral("Закрыть")), Qt::LeftButton);
    window.settle();
    EXPECT_FALSE(window.find<NoticeBanner>());

    window.app().showNotice("Ещё одно");
    window.settle();
    EXPECT_TRUE(window.shows(QStringLiteral("Ещё одно")));
    window.wait(8s);
    EXPECT_FALSE(window.find<NoticeBanner>());
}

TEST(ContentView, UnsafeWordsAndADeletedNoteShowUntilTheyAreSafeOrBack)
{
    TestWindow window;
    window.addNote("other", "other");
    window.addNote("list", "<b>list</b>");
    window.show();
    window.app().deleteNote(Note(window.app().store.notes->front()));
    window.settle();
    EXPECT_TRUE(window.shows(QStringLiteral("Заметка «<b>list</b>» в корзине")));
    auto* restore = window.find<TextButton>(QStringLiteral("Вернуть"));
    ASSERT_TRUE(restore);
    window.wait(10s);
    EXPECT_FALSE(restore->isVisible());

    const Path folder = window.notesFolder().parent_path() / "docs";
    const Path away = folder.native() + " away";
    std::filesystem::create_directory(folder);
    window.app().openFile(folder / "plan");
    window.type("a");
    window.wait(1s);
    std::filesystem::rename(folder, away);
    std::ofstream(folder) << "no folder";
    window.type("x");
    window.wait(1s);
    ASSERT_TRUE(window.app().unsafeWords.get());
    const QString text = QString::fromStdString(window.app().unsafeWords.get()->text);
    EXPECT_TRUE(window.shows(text)) << text.toStdString();
    std::filesystem::remove(folder);
    std::filesystem::rename(away, folder);
    window.wait(60s);
    EXPECT_FALSE(window.app().unsafeWords.get());
    EXPECT_FALSE(window.shows(text));
}

TEST(ContentView, OverlayHidesTheEditorWhileAFileLoads)
{
    TestWindow window;
    const Path file = window.addFile("large.txt", std::string(600'000, 'x'));
    window.show();
    window.app().openFile(file);
    QCoreApplication::processEvents();
    ASSERT_TRUE(window.app().isLoading.get());
    auto* overlay = window.find<LoadingOverlay>();
    ASSERT_TRUE(overlay);
    EXPECT_EQ(overlay->size(), window.view().editorArea().size());
    EXPECT_TRUE(window.shows(QStringLiteral("Загрузка…")));
    window.settle();
    EXPECT_FALSE(window.find<LoadingOverlay>());
    EXPECT_FALSE(window.shows(QStringLiteral("Загрузка…")));
}

TEST(ContentView, FollowsTheAppearanceAtOnce)
{
    TestWindow window;
    window.show();
    QtAppearance appearance(window.scheduler());
    for (const AppearanceMode mode : {AppearanceMode::light, AppearanceMode::dark}) {
        appearance.apply(mode);
        window.settle();
        const QPoint corner(3, 3);
        EXPECT_EQ(pixel(window.view().tabBar(), corner), color(ThemeColor::barBackground));
        EXPECT_EQ(pixel(window.view().editorArea(), corner), color(ThemeColor::background));
        EXPECT_EQ(pixel(window.view().sidebar(), corner), color(ThemeColor::panelBackground));
    }
}

TEST(ContentView, KeysReachTheCommands)
{
    TestWindow window;
    window.addNote("one", "one");
    window.show();
    window.key(Qt::Key_N, Qt::ControlModifier);
    window.key(Qt::Key_T, Qt::ControlModifier);
    ASSERT_EQ(window.app().tabs->size(), 3u);
    const auto activeIndex = [&] {
        const auto& tabs = window.app().tabs.get();
        return std::ranges::find(tabs, window.app().activeTab()) - tabs.begin();
    };
    EXPECT_EQ(activeIndex(), 2);
    window.key(Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(activeIndex(), 0);
    window.key(Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(activeIndex(), 2);
    window.key(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(activeIndex(), 1);
    window.key(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(window.app().tabs->size(), 2u);

    window.key(Qt::Key_0, Qt::ControlModifier);
    EXPECT_FALSE(window.view().sidebar().isVisible());
    window.key(Qt::Key_0, Qt::ControlModifier);
    EXPECT_TRUE(window.view().sidebar().isVisible());
}

TEST(ContentView, EditingCommandsActOnTheFocusedText)
{
    TestWindow window;
    window.addNote("one", "text");
    window.show();
    window.key(Qt::Key_A, Qt::ControlModifier);
    window.key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(window.app().editorText().length(), 0);
    window.key(Qt::Key_Insert, Qt::ShiftModifier);
    window.key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(window.app().editorText().length(), 8);
    window.key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(window.app().editorText().length(), 4);

    // A menu that was open while there was nothing to redo must not take the key away afterwards.
    QAction* redo = window.view().findChild<QAction*>(QStringLiteral("edit.redo"));
    ASSERT_TRUE(redo);
    window.key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(window.app().editorText().length(), 8);
    for (QMenu* menu : window.view().findChildren<QMenu*>()) {
        menu->popup(QPoint());
        menu->hide();
    }
    window.key(Qt::Key_Z, Qt::ControlModifier);
    window.key(Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(window.app().editorText().length(), 8);
}

TEST(RecoveredWindow, ListsWhatWasKeptAndOpensACopy)
{
    TestWindow window;
    window.addNote("note", "note");
    window.show();
    ASSERT_TRUE(window.recovery().keep(Rope(u"\nХлеб\nсоль"), "/old/Покупки.txt"));
    command("file.recovered").run(window.app(), window.view());
    window.settle();
    auto* recovered = window.find<RecoveredWindow>();
    ASSERT_TRUE(recovered);
    const QModelIndex row = recovered->list().currentIndex();
    EXPECT_EQ(row.data().toString(), QStringLiteral("Хлеб"));
    EXPECT_TRUE(
        row.data(Qt::AccessibleDescriptionRole).toString().contains(QStringLiteral("· Покупки.txt ·")));

    QTest::keyClick(&recovered->list(), Qt::Key_Return);
    window.settle();
    EXPECT_EQ(window.app().editorText(), Rope(u"\nХлеб\nсоль"));
    EXPECT_TRUE(window.app().activeNoteID());
    window.wait(1s);
    EXPECT_EQ(window.app().activeTab()->title.get(), "Хлеб");
    EXPECT_EQ(window.recovery().list()->size(), 1u);

    recovered->activateWindow();
    window.settle();
    QTest::keyClick(recovered->windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(recovered->isVisible());
}

} // namespace
} // namespace quillmark::test
