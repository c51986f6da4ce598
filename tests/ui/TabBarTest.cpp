#include "TestWindow.h"

#include "app/look/Style.h"
#include "app/look/SymbolButton.h"
#include "app/window/ItemToolTip.h"
#include "app/window/sidebar/SidebarView.h"
#include "app/window/tabs/TabBarView.h"

#include <QApplication>
#include <QDir>
#include <QHelpEvent>
#include <QLabel>
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

    /// By the wheel, to the left.
    void scroll(int pixels)
    {
        const QPointF place(20, 10);
        QWheelEvent event(place, strip().mapToGlobal(place), {}, QPoint(0, 2 * pixels), Qt::NoButton, {},
            Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&strip(), &event);
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
    scroll(-120);
    EXPECT_EQ(strip().offset(), 120);
    scroll(-100'000);
    EXPECT_EQ(strip().items().back()->geometry().right(), strip().rect().right());
}

TEST_F(TabBar, TheMarkOfUnsavedWordsMovesNothing)
{
    open(30);
    const QRect place = item(30).geometry();
    window.type("x");
    ASSERT_TRUE(window.app().activeTab()->isDirty.get());
    EXPECT_EQ(item(30).geometry(), place);
    // Nor does typing bring back a row that was scrolled away.
    scroll(2400);
    const int offset = strip().offset();
    window.type("y");
    EXPECT_EQ(strip().offset(), offset);
}

TEST_F(TabBar, WholeInEveryWidthUnderWhateverFades)
{
    open(30);
    for (const int width : {900, 700, 500, 420, 380}) {
        window.view().resize(width, 480);
        window.settle();
        for (const size_t index : {0u, 14u, 30u}) {
            window.app().selectTab(item(index).tabID());
            const QRect place = item(index).geometry();
            EXPECT_TRUE(strip().rect().contains(place)) << width << ' ' << index;
            for (const int x : {place.left(), place.right()}) // nothing fades it
                EXPECT_EQ(strip().childAt(x, place.center().y()), &item(index)) << width << ' ' << index;
        }
    }
}

TEST_F(TabBar, TabsAreClosedOneAfterTheOtherInOnePlace)
{
    open(30);
    scroll(1200); // the active tab, the last one, is out of view
    const int offset = strip().offset();
    ASSERT_GT(offset, 0);
    const size_t under = 20;
    ASSERT_TRUE(strip().rect().contains(item(under).geometry()));
    const int left = item(under).x();
    const Uuid next = item(under + 1).tabID();
    click(item(under), Qt::MiddleButton);
    EXPECT_EQ(item(under).tabID(), next);
    EXPECT_EQ(item(under).x(), left);
    EXPECT_EQ(strip().offset(), offset);

    const auto placeOfClose = [&] { return item(under).closeButton().mapTo(&strip(), QPoint()); };
    const QPoint place = placeOfClose();
    while (strip().items().size() > under + 1) { // also beyond the end of the row that is left
        QTest::mouseClick(&item(under).closeButton(), Qt::LeftButton);
        window.settle();
        EXPECT_EQ(placeOfClose(), place);
    }
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&strip(), &leave);
    EXPECT_TRUE(showsActive());
    EXPECT_EQ(strip().items().back()->geometry().right(), strip().rect().right());
}

TEST_F(TabBar, NamesAreNeverMarkup)
{
    QApplication::setStyle(new Style);
    window.addNote("name", "<b>x</b> &amp; y");
    window.show();
    const QString toolTip = window.view().sidebar().model().index(1).data(Qt::ToolTipRole).toString();
    EXPECT_EQ(toolTip, itemToolTip(window.app(), *window.app().activeTab()));
    EXPECT_TRUE(toolTip.startsWith(QStringLiteral("<b>x</b> &amp; y\n"))) << toolTip.toStdString();
    QHelpEvent help(QEvent::ToolTip, QPoint(4, 4), item(0).mapToGlobal(QPoint(4, 4)));
    QCoreApplication::sendEvent(&item(0), &help);
    const auto tops = QApplication::topLevelWidgets();
    const auto shown
        = std::ranges::find_if(tops, [](const QWidget* top) { return top->inherits("QTipLabel"); });
    ASSERT_NE(shown, tops.end());
    EXPECT_EQ(static_cast<QLabel*>(*shown)->text(), toolTip);
    EXPECT_EQ(static_cast<QLabel*>(*shown)->textFormat(), Qt::PlainText);
    QApplication::setStyle(QStringLiteral("Fusion"));
}

TEST(ItemToolTip, ShowsTheHomeFolderShortAndBreaksLongLines)
{
    const std::string home = QDir::homePath().toStdString();
    EXPECT_EQ(itemToolTip("a", home + "/Notes/a.txt"), QStringLiteral("a\n~/Notes/a.txt"));
    const QString lines
        = itemToolTip(std::string(200, 'w'), "/tmp/" + std::string(70, 'a') + "/b c/" + std::string(30, 'd'));
    for (const QString& line : lines.split(QLatin1Char('\n')))
        EXPECT_LE(line.size(), 80);
    EXPECT_TRUE(lines.contains(QStringLiteral("/b c/\nd")) || lines.contains(QStringLiteral("b c/\n")))
        << lines.toStdString();
}

} // namespace
} // namespace quillmark::test
