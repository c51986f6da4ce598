// Text that is dragged within the editor, out of it and into it.
#include "EditorViewFixture.h"
#include "TurnUntil.h"

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>

namespace quillmark {

namespace {

using namespace test;

class EditorDrag : public EditorViewFixture {
protected:
    /// What another program drags.
    static std::unique_ptr<QMimeData> textData(const QString& text)
    {
        auto data = std::make_unique<QMimeData>();
        data->setText(text);
        return data;
    }
    bool dragOver(const QMimeData& data, QPointF place)
    {
        QDragEnterEvent enter(place.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, none);
        QCoreApplication::sendEvent(&view, &enter);
        QDragMoveEvent move(place.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, none);
        QCoreApplication::sendEvent(&view, &move);
        settle();
        return enter.isAccepted() && move.isAccepted();
    }
    bool drop(const QMimeData& data, QPointF place)
    {
        QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, none);
        event.setAccepted(false);
        QCoreApplication::sendEvent(&view, &event);
        settle();
        return event.isAccepted();
    }
    void dragSelection()
    {
        const QPointF start = placeOf(selected().location) + QPointF(2, 0);
        mouse(QEvent::MouseButtonPress, start);
        mouse(QEvent::MouseMove, start + QPointF(QApplication::startDragDistance() - 1, 0));
        EXPECT_EQ(view.dragged, nullptr);
        mouse(QEvent::MouseMove, start + QPointF(QApplication::startDragDistance(), 0));
        mouse(QEvent::MouseButtonRelease, start);
    }
};

} // namespace

TEST_F(EditorDrag, ASelectionIsDraggedOutAndGoesOnlyWhenItArrived)
{
    const auto expectDrag = [&](Qt::DropAction answer, Qt::DropActions offered, const char16_t* after) {
        view.dragEndsAs = answer;
        view.dragged.reset();
        dragSelection();
        ASSERT_NE(view.dragged, nullptr);
        EXPECT_EQ(*view.dragged, QStringLiteral("two"));
        EXPECT_EQ(view.dragActions, offered);
        EXPECT_EQ(text(), after);
    };
    install(u"one two three");
    model().select({.anchor = 4, .caret = 7});
    settle();
    expectDrag(Qt::IgnoreAction, Qt::CopyAction | Qt::MoveAction, u"one two three");
    expectDrag(Qt::CopyAction, Qt::CopyAction | Qt::MoveAction, u"one two three");
    view.setEditable(false);
    expectDrag(Qt::CopyAction, Qt::CopyAction, u"one two three");
    view.setEditable(true);
    expectDrag(Qt::MoveAction, Qt::CopyAction | Qt::MoveAction, u"one  three");
    model().undo();
    EXPECT_EQ(text(), u"one two three");
}

TEST_F(EditorDrag, AClickIntoTheSelectionCollapsesItAtTheRelease)
{
    install(u"one two three");
    model().select({.anchor = 4, .caret = 7});
    settle();
    const QPointF place = placeOf(6);
    mouse(QEvent::MouseButtonPress, place);
    EXPECT_EQ(selected(), (Range{4, 3}));
    mouse(QEvent::MouseButtonRelease, place);
    EXPECT_EQ(selected(), (Range{6, 0}));
    model().select({.anchor = 4, .caret = 7});
    settle();
    mouse(QEvent::MouseButtonPress, placeOf(13) + QPointF(60, 0));
    EXPECT_EQ(selected(), (Range{13, 0})) << "beside the selection";
}

TEST_F(EditorDrag, TextFromElsewhereIsDroppedWhereTheCaretShowsIt)
{
    install(u"one three");
    const auto data = textData(QStringLiteral("two\r\n"));
    EXPECT_TRUE(dragOver(*data, placeOf(4)));
    EXPECT_EQ(onScreen(), paintedAnew().copy(onScreen().rect()));
    const QImage withCaret = paintedAnew();
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&view, &leave);
    settle();
    EXPECT_NE(paintedAnew(), withCaret);
    dragOver(*data, placeOf(4));
    EXPECT_TRUE(drop(*data, placeOf(4)));
    EXPECT_EQ(text(), u"one two\nthree");
    EXPECT_EQ(selected(), (Range{4, 4}));
    model().undo();
    EXPECT_EQ(text(), u"one three");

    dragOver(*data, placeOf(4));
    view.setEditable(false); // while it hangs over the text
    EXPECT_FALSE(drop(*data, placeOf(4)));
    EXPECT_FALSE(dragOver(*data, placeOf(4)));
    EXPECT_EQ(text(), u"one three");
}

TEST_F(EditorDrag, FilesAreLeftToTheWindowAndLinksAreText)
{
    QMimeData files;
    files.setUrls({QUrl(QStringLiteral("file:///etc/passwd"))});
    files.setText(QStringLiteral("/etc/passwd"));
    EXPECT_FALSE(dragOver(files, placeOf(0)));
    EXPECT_FALSE(drop(files, placeOf(0)));
    QMimeData picture;
    picture.setData(QStringLiteral("image/png"), "x");
    EXPECT_FALSE(dragOver(picture, placeOf(0)));
    EXPECT_FALSE(drop(picture, placeOf(0)));
    EXPECT_EQ(text(), u"");
    QMimeData link;
    link.setUrls({QUrl(QStringLiteral("https://example.org/"))});
    link.setText(QStringLiteral("https://example.org/"));
    EXPECT_TRUE(dragOver(link, placeOf(0)));
    EXPECT_TRUE(drop(link, placeOf(0)));
    EXPECT_EQ(text(), u"https://example.org/");
}

TEST_F(EditorDrag, NearAnEdgeTheTextScrolls)
{
    install(lines(200));
    const auto data = textData(QStringLiteral("x"));
    dragOver(*data, {50, view.height() - 2.0});
    EXPECT_TRUE(turnUntil([&] { return model().scrollTop() >= 2 * rowHeight(); }));
    dragOver(*data, {50, 200});
    const double stopped = model().scrollTop();
    settle();
    EXPECT_EQ(model().scrollTop(), stopped);
    view.resize(1, 1); // in the middle of it
    settle();
    install(u"another document");
    view.resize(600, 400);
    settle();
    EXPECT_TRUE(drop(*data, placeOf(0)));
    EXPECT_EQ(text(), u"xanother document");
}

TEST_F(EditorDrag, ADragOverAnotherTextTakesNothingFromIt)
{
    install(u"one two");
    model().select({.anchor = 0, .caret = 3});
    settle();
    view.dragEndsAs = Qt::MoveAction;
    view.duringDrag = [&] { model().setText(Rope(u"another document")); };
    dragSelection();
    EXPECT_EQ(text(), u"another document");
}

} // namespace quillmark
