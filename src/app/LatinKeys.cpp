#include "app/LatinKeys.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QWidget>

#include <string_view>
#include <utility>

namespace quillmark {

namespace {

/// The Latin letter that a keyboard has at the place of a key code of X and Wayland; 0 for other keys.
int letterAt(quint32 keyCode)
{
    constexpr std::pair<quint32, std::string_view> rows[]
        = {{24, "QWERTYUIOP"}, {38, "ASDFGHJKL"}, {52, "ZXCVBNM"}};
    for (const auto& [first, letters] : rows) {
        if (keyCode >= first && keyCode < first + letters.size())
            return letters[keyCode - first];
    }
    return 0;
}

bool send(QWidget& widget, QEvent::Type type, int key, const QKeyEvent& pressed)
{
    QKeyEvent event(type, key, pressed.modifiers(), QString(), pressed.isAutoRepeat());
    event.ignore();
    QCoreApplication::sendEvent(&widget, &event);
    return event.isAccepted();
}

bool trigger(QWidget& window, const QKeySequence& keys)
{
    for (QAction* action : window.actions()) {
        if (action->shortcuts().contains(keys)) {
            action->trigger();
            return true;
        }
    }
    return false;
}

} // namespace

int latinKey(const QKeyEvent& event)
{
    constexpr int firstNonLatin = 0x80;
    constexpr int firstNamed = 0x01000000; // Qt::Key_Escape and the other keys without a character
    const int key = event.key();
    if (key < firstNonLatin || key >= firstNamed)
        return key;
    const int letter = letterAt(event.nativeScanCode());
    return letter != 0 ? letter : key;
}

LatinShortcuts::LatinShortcuts(QObject& application, QObject* parent)
    : QObject(parent)
{
    application.installEventFilter(this);
}

bool LatinShortcuts::eventFilter(QObject* receiver, QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !receiver->isWidgetType())
        return false;
    const auto& pressed = static_cast<const QKeyEvent&>(*event);
    auto& widget = static_cast<QWidget&>(*receiver);
    const int key = latinKey(pressed);
    if (key == pressed.key() || !(pressed.modifiers() & Qt::ControlModifier)
        || widget.window()->windowType() == Qt::Popup)
        return false;
    if (send(widget, QEvent::ShortcutOverride, key, pressed))
        return send(widget, QEvent::KeyPress, key, pressed);
    return trigger(*widget.window(), QKeySequence(int(pressed.modifiers()) | key));
}

} // namespace quillmark
