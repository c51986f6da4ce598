#include "TestWindow.h"

#include "app/look/SymbolButton.h"
#include "app/window/tabs/TabBarView.h"

#include <QMenu>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

using Titles = std::vector<std::string>;

class TabBar : public testing::Test {
protected:
    void open(int count)
    {
        for (int i = 0; i < count; ++i)
            m_files.push_back(window.addFile("file" + std::to_string(i) + ".md", "text"));
        window.addNote("note", "note");
        window.show();
        for (const Path& file : m_files)
            window.app().openFile(file);
        window.settle();
    }

    TabStrip& strip() { return window.view().tabBar().strip(); }
    TabItemView& item(size_t index) { return *strip().items().at(index); }

    void click(QWidget& widget, Qt::MouseButton button)
    {
        QTest::mouseClick(&widget, button, {}, QPoint(12, widget.height() / 2));
        window.settle();
    }

    /// Whether the strip shows the whole active tab.
    bool showsActive()
    {
        for (const TabItemView* each : strip().items())
            if (each->isActive())
                return strip().rect().contains(each->geometry());
        return false;
    }

    TestWindow window;

private:
    std::vector<Path> m_files;
};

TEST_F(TabBar, ClicksSelectAndClose)
{
    open(3);
    ASSERT_EQ(window.tabTitles(), (Titles{"note", "file0.md", "file1.md", "file2.md"}));
    EXPECT_TRUE(item(3).isActive());
    click(item(1), Qt::LeftButton);
    EXPECT_TRUE(item(1).isActive());
    EXPECT_FALSE(item(3).isActive());

    click(item(2), Qt::MiddleButton);
    EXPECT_EQ(window.tabTitles(), (Titles{"note", "file0.md", "file2.md"}));
    EXPECT_TRUE(item(1).isActive());
    QTest::mouseClick(&item(1).closeButton(), Qt::LeftButton);
    window.settle();
    EXPECT_EQ(window.tabTitles(), (Titles{"note", "file2.md"}));
    EXPECT_TRUE(item(1).isActive());
    EXPECT_EQ(strip().items().size(), 2u);

    click(*window.find<SymbolButton>(QStringLiteral("Новая вкладка (⌘T)")), Qt::LeftButton);
    EXPECT_EQ(window.tabTitles(), (Titles{"note", "file2.md", "Untitled"}));
    EXPECT_TRUE(item(2).isActive());
}

TEST_F(TabBar, MenuClosesTheTabItWasOpenedOn)
{
    open(2);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(4, 4), item(1).mapToGlobal(QPoint(4, 4)));
    QCoreApplication::sendEvent(&item(1), &event);
    QMenu* menu = nullptr;
    for (QMenu* each : window.view().findChildren<QMenu*>())
        if (each->isVisible())
            menu = each;
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_EQ(menu->actions().front()->text(), QStringLiteral("Закрыть вкладку"));
    menu->actions().front()->trigger();
    window.settle();
    EXPECT_EQ(window.tabTitles(), (Titles{"note", "file1.md"}));
}

TEST_F(TabBar, KeepsTheActiveTabInViewAndScrollsByWheel)
{
    open(30);
    EXPECT_GT(strip().offset(), 0);
    EXPECT_TRUE(showsActive());
    click(*window.find<SymbolButton>(QStringLiteral("Новая вкладка (⌘T)")), Qt::LeftButton);
    EXPECT_TRUE(showsActive());
    window.app().selectTab(window.app().tabs->front()->id);
    EXPECT_EQ(strip().offset(), 0);
    for (int i = 0; i < 31; ++i) {
        window.app().selectAdjacentTab(1);
        EXPECT_TRUE(showsActive());
    }
    window.app().selectAdjacentTab(1); // around the end
    EXPECT_EQ(strip().offset(), 0);
    const QPointF place(20, 10);
    QWheelEvent down(
        place, strip().mapToGlobal(place), {}, QPoint(0, -240), Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&strip(), &down);
    EXPECT_EQ(strip().offset(), 120);
    for (int i = 0; i < 100; ++i)
        QCoreApplication::sendEvent(&strip(), &down);
    EXPECT_EQ(strip().items().back()->geometry().right(), strip().rect().right());
    window.view().resize(640, 480);
    window.settle();
    EXPECT_TRUE(showsActive());
}

TEST_F(TabBar, WhatTheActiveTabGrowsByIsInViewTooUnlessItWasScrolledAway)
{
    open(30);
    window.type("x"); // it gets its dot
    EXPECT_TRUE(showsActive());
    window.wait(std::chrono::seconds(1));
    const QPointF place(20, 10);
    QWheelEvent up(
        place, strip().mapToGlobal(place), {}, QPoint(0, 2400), Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&strip(), &up);
    const int offset = strip().offset();
    window.type("y");
    EXPECT_EQ(strip().offset(), offset);
}

TEST_F(TabBar, LongTitlesAreCutAndDirtyOnesGrowByTheirDot)
{
    window.addNote("long", std::string(70, 'w'));
    window.show();
    // 20 of padding, 180 of title, 6 of spacing and 16 of the close button.
    EXPECT_EQ(item(0).sizeHint().width(), 222);
    window.type("x");
    EXPECT_EQ(item(0).width(), 222 + 12);
}

} // namespace
} // namespace quillmark::test
