// An EditorView on the screen of a test, and the hands of whoever sits before it.
#pragma once

#include "app/editor/EditorView.h"
#include "support/FakeClipboard.h"
#include "support/ManualScheduler.h"

#include <QApplication>
#include <QDrag>
#include <QKeyEvent>
#include <QMimeData>
#include <QPaintEvent>
#include <QScreen>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace quillmark::test {

class RecordingView : public EditorView {
public:
    using EditorView::EditorView;
    QRegion painted;
    std::unique_ptr<QString> dragged; ///< the text of the last drag
    Qt::DropActions dragActions;
    Qt::DropAction dragEndsAs = Qt::IgnoreAction;
    std::function<void()> duringDrag;

protected:
    Qt::DropAction execute(QDrag& drag, Qt::DropActions actions) override
    {
        dragged = std::make_unique<QString>(drag.mimeData()->text());
        dragActions = actions;
        if (duringDrag)
            duringDrag();
        drag.deleteLater(); // as after a real one
        return dragEndsAs;
    }
    void paintEvent(QPaintEvent* event) override
    {
        painted += event->region();
        EditorView::paintEvent(event);
    }
};

inline constexpr Qt::KeyboardModifiers none = Qt::NoModifier;
inline constexpr Qt::KeyboardModifiers control = Qt::ControlModifier;
inline constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier;

class EditorViewFixture : public testing::Test {
protected:
    EditorViewFixture()
    {
        view.resize(600, 400);
        view.show();
        view.activateWindow();
        view.setFocus();
        settle();
    }

    static void settle()
    {
        for (int turn = 0; turn < 3; ++turn) // a refresh, the painting it asks for, and what that asks for
            QCoreApplication::processEvents();
    }

    PlainTextView& model() { return view.textView(); }
    std::u16string text() { return model().text().text(); }
    Range selected() { return model().selection().range(); }
    int64_t caret() { return model().selection().caret; }
    void install(std::u16string_view text)
    {
        model().setText(Rope(text));
        settle();
    }

    bool press(int key, Qt::KeyboardModifiers modifiers = none, const QString& text = {}, quint32 keyCode = 0)
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers, keyCode, 0, 0, text);
        event.setAccepted(false);
        QCoreApplication::sendEvent(&view, &event);
        settle();
        return event.isAccepted();
    }
    void type(const QString& text)
    {
        for (const QChar unit : text)
            press(unit.toUpper().unicode(), none, QString(unit));
    }

    void mouse(QEvent::Type type, QPointF place, Qt::MouseButton button = Qt::LeftButton,
        Qt::KeyboardModifiers modifiers = none)
    {
        const bool isUp = type == QEvent::MouseButtonRelease;
        const auto held = isUp ? Qt::NoButton : button;
        QMouseEvent event(type, place, view.mapToGlobal(place),
            type == QEvent::MouseMove ? Qt::NoButton : button, held, modifiers);
        QCoreApplication::sendEvent(&view, &event);
        settle();
    }
    void click(QPointF place, Qt::KeyboardModifiers modifiers = none)
    {
        mouse(QEvent::MouseButtonPress, place, Qt::LeftButton, modifiers);
        mouse(QEvent::MouseButtonRelease, place, Qt::LeftButton, modifiers);
    }
    void turnWheel(int angle)
    {
        QWheelEvent event({100, 100}, view.mapToGlobal(QPointF(100, 100)), {}, {0, angle}, Qt::NoButton, none,
            Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view, &event);
        settle();
    }

    /// The middle of the left edge of the character at an offset.
    QPointF placeOf(int64_t offset)
    {
        const CaretPlace place = model().placeOf(offset);
        return {EditorView::horizontalInset + place.x, place.top + place.height / 2};
    }
    double rowHeight() { return model().layoutManager().metrics().height; }
    QImage onScreen()
    {
        return view.screen()->grabWindow(view.winId()).toImage().convertToFormat(QImage::Format_RGB32);
    }
    QImage paintedAnew() { return view.grab().toImage().convertToFormat(QImage::Format_RGB32); }

    ManualScheduler scheduler;
    FakeClipboard clipboard;
    RecordingView view{scheduler, clipboard};
};

inline std::u16string lines(int count)
{
    std::u16string text;
    for (int i = 0; i < count; ++i)
        text += u"строка " + std::u16string(static_cast<size_t>(i % 7), u'x') + u"\n";
    return text;
}

} // namespace quillmark::test
