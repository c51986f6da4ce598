#include "app/editor/Coordinator.h"
#include "app/editor/EditorView.h"
#include "support/FakeClipboard.h"
#include "support/World.h"

#include <QApplication>
#include <QLineEdit>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace quillmark {

namespace {

class CoordinatorTest : public testing::Test, public test::World {
protected:
    void start(const std::string& text)
    {
        putNote("first.txt", text);
        app = makeApp();
        view = new EditorView(scheduler, clipboard, &window);
        window.resize(600, 400);
        view->setGeometry(window.rect());
        coordinator = std::make_unique<Coordinator>(*app, *view);
        window.show();
        window.activateWindow();
        settle();
    }
    ~CoordinatorTest() override
    {
        coordinator.reset();
        app.reset();
        scheduler.settle();
    }

    void settle()
    {
        scheduler.settle();
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::processEvents();
    }
    void open(const std::string& name, const std::string& text)
    {
        disk.putFile(Path("/files") / name, text);
        app->openFile(Path("/files") / name);
        settle();
    }
    PlainTextView& text() { return view->textView(); }
    void putCaret(int64_t offset) { text().select({.anchor = offset, .caret = offset}); }
    std::pair<int64_t, int64_t> place() const { return {*app->cursorLine, *app->cursorColumn}; }

    test::FakeClipboard clipboard;
    QWidget window;
    EditorView* view = nullptr;
    std::unique_ptr<AppState> app;
    std::unique_ptr<Coordinator> coordinator;
};

} // namespace

TEST_F(CoordinatorTest, AnotherDocumentStartsAtItsTopWithoutUndo)
{
    start("abc");
    QLineEdit field(&window);
    field.show();
    text().insertText(u"x");
    text().scrollTo(1e9);
    field.setFocus();
    open("other.txt", "one\ntwo\n");
    EXPECT_EQ(text().text().text(), u"one\ntwo\n");
    EXPECT_EQ(text().selection(), Selection{});
    EXPECT_EQ(text().scrollTop(), 0);
    text().undo();
    EXPECT_EQ(text().text().text(), u"one\ntwo\n");
    EXPECT_TRUE(view->hasFocus());
}

TEST_F(CoordinatorTest, CountsLinesAndColumnsInUnits)
{
    start("\xF0\x9F\x98\x80"
          "x\n\ntail");
    putCaret(2);
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{1, 3}));
    putCaret(5);
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{3, 1}));
    text().select({.anchor = 9, .caret = 4});
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{2, 1})) << "where the selection begins";
    text().select({.anchor = 4, .caret = 9});
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{2, 1}));

    open("short.txt", "x\nz");
    putCaret(2);
    text().deleteBackward();
    putCaret(2);
    text().undo();
    EXPECT_EQ(text().selection().caret, 2);
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{2, 1})) << "the same offset is in another line";
}

TEST_F(CoordinatorTest, CountsNoLinesInVeryLongTexts)
{
    std::string longText;
    while (longText.size() < 499'999)
        longText += longText.size() % 50 == 49 ? '\n' : 'x';
    start(longText);
    putCaret(400'001);
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{8001, 2}));
    text().insertText(u"y");
    EXPECT_EQ(place(), (std::pair<int64_t, int64_t>{1, 400'003}));
}

TEST_F(CoordinatorTest, ReportsTheVisiblePart)
{
    start("short");
    EXPECT_EQ(*app->viewportStart, 0);
    EXPECT_EQ(*app->viewportFraction, 1);

    open("long.txt", std::string(100, '\n'));
    const double document = text().contentHeight();
    EXPECT_NEAR(*app->viewportFraction, view->height() / document, 1e-9);
    text().scrollTo(1e9);
    EXPECT_NEAR(*app->viewportStart + *app->viewportFraction, 1, 1e-9);

    view->resize(view->width(), static_cast<int>(document) / 2);
    EXPECT_NEAR(*app->viewportFraction, 0.5, 0.001);
    EXPECT_NEAR(*app->viewportStart, 0.5, 0.001);
}

TEST_F(CoordinatorTest, FollowsFontAndEditability)
{
    start("abc");
    const double before = text().contentHeight();
    app->settings.fontSize.set(20);
    EXPECT_GT(text().contentHeight(), before);
    EXPECT_EQ(text().text().text(), u"abc");

    disk.putFile("/files/large", std::string(20 * 1024 * 1024 + 1, 'l'));
    app->openFile("/files/large");
    ASSERT_TRUE(app->isLoading.get());
    EXPECT_FALSE(text().isEditable());
    settle();
    text().insertText(u"x");
    EXPECT_EQ(text().text().at(0), u'l');
    open("small", "abc");
    EXPECT_TRUE(text().isEditable());
}

TEST_F(CoordinatorTest, LeavesNothingBehind)
{
    start("abc");
    EXPECT_EQ(app->textView(), &text());
    app->openFile("/files/another"); // the focus is now on its way
    coordinator.reset();
    EXPECT_EQ(app->textView(), nullptr);
    delete view;
    settle();
    app->settings.fontSize.set(18);
    open("large", std::string(20 * 1024 * 1024 + 1, 'l'));
}

} // namespace quillmark
