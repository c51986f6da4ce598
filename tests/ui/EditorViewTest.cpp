#include "EditorViewFixture.h"
#include "TurnUntil.h"
#include "app/look/Paint.h"

#include <QMenu>

namespace quillmark {

namespace {

using namespace test;
using EditorViewTest = EditorViewFixture;

} // namespace

TEST_F(EditorViewTest, KeysThatTypeNothingAreLeftToOthers)
{
    EXPECT_FALSE(press(Qt::Key_N, control, QStringLiteral("\x0E")));
    EXPECT_FALSE(press(Qt::Key_F, Qt::AltModifier, QStringLiteral("f")));
    EXPECT_FALSE(press(Qt::Key_F3));
    EXPECT_FALSE(press(Qt::Key_Escape, none, QStringLiteral("\x1b")));
    EXPECT_FALSE(press(Qt::Key_Dead_Acute, none, QStringLiteral("´")));
    EXPECT_EQ(text(), u"");
    EXPECT_TRUE(press(Qt::Key_At, Qt::GroupSwitchModifier, QStringLiteral("@"))); // AltGr
    EXPECT_EQ(text(), u"@");
}

TEST_F(EditorViewTest, MovesAndSelectsByKeys)
{
    install(u"один два три\nчетыре");
    press(Qt::Key_Right, control);
    press(Qt::Key_Right, control | shift);
    EXPECT_EQ(selected().length > 0, true);
    press(Qt::Key_End, shift);
    EXPECT_EQ(selected().end(), 12);
    press(Qt::Key_Down, none);
    press(Qt::Key_Home, control | shift | Qt::KeypadModifier);
    EXPECT_EQ(selected().location, 0);
}

TEST_F(EditorViewTest, ClicksSelectCharactersWordsAndLines)
{
    install(u"alpha beta\ngamma");
    click(placeOf(3));
    EXPECT_EQ(caret(), 3);
    click(placeOf(8), shift);
    EXPECT_EQ(selected(), (Range{3, 5}));

    const QPointF inBeta = placeOf(8);
    click(inBeta);
    mouse(QEvent::MouseButtonDblClick, inBeta);
    EXPECT_EQ(selected(), (Range{6, 4}));
    click(inBeta);
    EXPECT_EQ(selected().location, 0);
    EXPECT_GE(selected().length, 10);
    EXPECT_EQ(
        clipboard.text(Clipboard::Buffer::primarySelection), text().substr(0, size_t(selected().length)));
    click(inBeta); // a fourth click, after the third, is a first one again
    EXPECT_TRUE(selected().isEmpty());
}

TEST_F(EditorViewTest, DraggingSelectsAndTheMiddleButtonPastesTheSelection)
{
    install(u"alpha beta");
    mouse(QEvent::MouseButtonPress, placeOf(0));
    mouse(QEvent::MouseMove, placeOf(5));
    mouse(QEvent::MouseButtonRelease, placeOf(5));
    EXPECT_EQ(selected(), (Range{0, 5}));
    mouse(QEvent::MouseButtonPress, placeOf(10), Qt::MiddleButton);
    EXPECT_EQ(text(), u"alpha betaalpha");
    view.setEditable(false);
    mouse(QEvent::MouseButtonPress, placeOf(0), Qt::MiddleButton);
    EXPECT_EQ(text(), u"alpha betaalpha");
}

TEST_F(EditorViewTest, DraggingBelowTheWindowKeepsScrolling)
{
    install(lines(200));
    mouse(QEvent::MouseButtonPress, placeOf(0));
    mouse(QEvent::MouseMove, {50, view.height() + 40.0});
    const double first = model().scrollTop();
    EXPECT_TRUE(turnUntil([&] { return model().scrollTop() >= first + 3 * rowHeight(); }));
    mouse(QEvent::MouseButtonRelease, {50, view.height() + 40.0});
    EXPECT_GT(selected().length, 100);
}

TEST_F(EditorViewTest, TheWheelScrollsByRowsAndKeepsFractions)
{
    install(lines(200));
    turnWheel(-120);
    EXPECT_NEAR(model().scrollTop(), 3 * rowHeight(), 1e-6);
    for (int step = 0; step < 120; ++step)
        turnWheel(1);
    EXPECT_NEAR(model().scrollTop(), 0, 1.0); // less than a pixel is kept for the next turn
    turnWheel(100'000);
    EXPECT_EQ(model().scrollTop(), 0);
    turnWheel(-1'000'000);
    EXPECT_NEAR(model().scrollTop(), model().contentHeight() - view.height(), 1e-6);
}

TEST_F(EditorViewTest, TheScrollBarIsThereOnlyWhenNeeded)
{
    const auto* bar = view.findChild<QWidget*>();
    ASSERT_NE(bar, nullptr);
    install(u"short");
    EXPECT_FALSE(bar->isVisible());
    install(lines(200));
    ASSERT_TRUE(bar->isVisible());
    const auto press = [&](double y) {
        QMouseEvent event(QEvent::MouseButtonPress, QPointF(6, y), bar->mapToGlobal(QPointF(6, y)),
            Qt::LeftButton, Qt::LeftButton, none);
        QCoreApplication::sendEvent(const_cast<QWidget*>(bar), &event);
        settle();
    };
    press(view.height() - 1);
    EXPECT_NEAR(model().scrollTop(), model().contentHeight() - view.height(), 1e-6);
}

TEST_F(EditorViewTest, PaintsBackgroundTextSelectionAndCaret)
{
    install(u"ММММ\n\n");
    const QRgb background = color(ThemeColor::background).rgb();
    const QRgb accent = color(ThemeColor::accent).rgb();
    QImage image = paintedAnew();
    const double scale = image.devicePixelRatio();
    const auto pixel = [&](double x, double y) { return image.pixel(int(x * scale), int(y * scale)); };
    const double middle = EditorView::verticalInset + rowHeight() / 2;
    EXPECT_EQ(pixel(5, 5), background);
    EXPECT_EQ(pixel(EditorView::horizontalInset, middle), accent) << "the caret";
    int inked = 0;
    for (int x = EditorView::horizontalInset + 3; x < 60; ++x)
        inked += qGray(pixel(x, middle)) < 128 ? 1 : 0;
    EXPECT_GT(inked, 4);

    model().selectAll();
    settle();
    image = paintedAnew();
    const double secondRow = middle + rowHeight();
    EXPECT_NE(pixel(EditorView::horizontalInset + 2, secondRow), background) << "a selected empty line";
    EXPECT_EQ(pixel(300, secondRow), background);
}

TEST_F(EditorViewTest, AKeyRepaintsItsRowOnly)
{
    std::u16string words; // no row is so full that one letter more sends a word to the next
    for (int i = 0; i < 60; ++i)
        words += std::u16string(25, u'w') + u' ';
    for (const std::u16string& text : {lines(100), words}) {
        install(text);
        view.painted = {};
        type(QStringLiteral("w"));
        EXPECT_FALSE(view.painted.isEmpty());
        EXPECT_LE(view.painted.boundingRect().height(), rowHeight() + 4);
        view.painted = {};
        settle();
        EXPECT_TRUE(view.painted.isEmpty());
    }
}

TEST_F(EditorViewTest, TheContextMenuOffersWhatIsPossible)
{
    install(u"слово");
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {10, 10}, view.mapToGlobal(QPoint(10, 10)));
    QCoreApplication::sendEvent(&view, &event);
    auto* menu = view.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    QStringList enabled;
    for (const QAction* action : menu->actions()) {
        if (action->isEnabled() && !action->isSeparator())
            enabled += action->text();
    }
    EXPECT_EQ(enabled, QStringList{QStringLiteral("Выбрать все")});
    menu->actions().last()->trigger();
    EXPECT_EQ(selected(), (Range{0, 5}));
    menu->close();
}

} // namespace quillmark
