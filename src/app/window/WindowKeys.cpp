#include "app/window/WindowKeys.h"

#include "app/editor/EditorView.h"
#include "app/window/CommandKeys.h"
#include "app/window/ContentView.h"
#include "app/window/MainMenu.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QWindow>

namespace quillmark {

namespace {

bool isPlain(const QKeyEvent& event, Qt::Key key)
{
    return event.key() == key && event.modifiers() == Qt::NoModifier;
}

bool isShifted(const QKeyEvent& event, Qt::Key key)
{
    return event.key() == key && event.modifiers() == Qt::ShiftModifier;
}

bool asksForContextMenu(const QKeyEvent& event)
{
    return isPlain(event, Qt::Key_Menu) || isShifted(event, Qt::Key_F10);
}

bool asksForNextPart(const QKeyEvent& event)
{
    return isPlain(event, Qt::Key_F6) || isShifted(event, Qt::Key_F6);
}

/// Whether the focused widget does something of its own with a key, as a text field does with Ctrl+Z.
bool isWantedByFocus(const QKeyEvent& key)
{
    QWidget* const focused = QApplication::focusWidget();
    if (!focused)
        return false;
    QKeyEvent question(QEvent::ShortcutOverride, key.key(), key.modifiers(), key.nativeScanCode(),
        key.nativeVirtualKey(), key.nativeModifiers(), key.text(), key.isAutoRepeat());
    question.ignore();
    QCoreApplication::sendEvent(focused, &question);
    return question.isAccepted();
}

void openContextMenu()
{
    QWidget* const focused = QApplication::focusWidget();
    if (!focused)
        return;
    const QPoint place = focused->inputMethodQuery(Qt::ImCursorRectangle).toRectF().center().toPoint();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, focused->mapToGlobal(place));
    QCoreApplication::sendEvent(focused, &event);
}

} // namespace

WindowKeys::WindowKeys(AppState& app, ContentView& window, MainMenu& menu)
    : QObject(&window)
    , m_app(app)
    , m_view(window)
    , m_menu(menu)
{
    connect(qApp, &QGuiApplication::focusObjectChanged, this, &WindowKeys::focusMoved);
}

void WindowKeys::listenTo(QWindow& handle)
{
    m_handle = &handle;
    m_order.setWindow(&handle);
    handle.installEventFilter(this);
}

void WindowKeys::focusMoved(QObject* focused)
{
    if (m_focused)
        m_focused->removeEventFilter(this);
    const auto* widget = qobject_cast<QWidget*>(focused);
    m_focused = widget && widget->window() == &m_view ? focused : nullptr;
    if (m_focused)
        m_focused->installEventFilter(this);
}

bool WindowKeys::eventFilter(QObject* receiver, QEvent* event)
{
    if (receiver != m_handle) {
        const auto* editor = dynamic_cast<const EditorView*>(receiver);
        const bool isAnswer = m_isActing || (editor && editor->isTalkingToInputMethod());
        return event->type() == QEvent::InputMethod && !isAnswer && m_order.keepsBackComposed(*event);
    }
    switch (event->type()) {
    case QEvent::ShortcutOverride: {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        m_order.keyRead(key);
        if (!isTaken(key))
            return false;
        event->accept();
        return true;
    }
    case QEvent::KeyPress:
        return keyPressed(static_cast<QKeyEvent&>(*event));
    case QEvent::ContextMenu: // the toolkit's for the menu key, ahead of the key itself
        return static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard
            && !QApplication::activePopupWidget();
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return m_order.keepsBackMouse(static_cast<const QMouseEvent&>(*event));
    default:
        return false;
    }
}

bool WindowKeys::isForMenuBar(const QKeyEvent& key) const
{
    return isPlain(key, Qt::Key_F10) || m_menu.menuFor(key);
}

/// Whether the key is not for the toolkit's shortcuts.
bool WindowKeys::isTaken(const QKeyEvent& key) const
{
    if (QApplication::activePopupWidget() || QApplication::activeModalWidget())
        return false;
    return commandFor(key) || isForMenuBar(key) || asksForContextMenu(key) || asksForNextPart(key);
}

bool WindowKeys::keyPressed(QKeyEvent& key)
{
    m_order.keyArrived(key);
    {
        const QScopedValueRollback acting(m_isActing, true);
        if (!act(key))
            static_cast<QObject*>(m_handle)->event(&key); // now, so that what waits for it can follow
    }
    m_order.deliverReady();
    return true;
}

/// False: it is for whatever has the focus.
bool WindowKeys::act(const QKeyEvent& key)
{
    if (QApplication::activeModalWidget())
        return true; // typed before the panel was there; the text behind it is not what it was for
    if (!isTaken(key) || isWantedByFocus(key))
        return false;
    if (const Command* row = commandFor(key))
        row->run(m_app, m_view);
    else if (QAction* menu = m_menu.menuFor(key))
        m_menu.open(*menu);
    else if (asksForContextMenu(key))
        openContextMenu();
    else if (asksForNextPart(key))
        m_view.passKeyboard(key.modifiers() == Qt::NoModifier);
    else
        m_menu.openFirst();
    return true;
}

} // namespace quillmark
