#include "app/editor/EditorKeys.h"

#include <QKeyEvent>

#include <algorithm>
#include <array>

namespace quillmark {

namespace {

struct MotionKey {
    int key;
    Qt::KeyboardModifiers modifiers; ///< Shift extends the selection and is not among them
    Motion motion;
};

constexpr MotionKey motionKeys[] = {
    {Qt::Key_Left, Qt::NoModifier, Motion::characterLeft},
    {Qt::Key_Right, Qt::NoModifier, Motion::characterRight},
    {Qt::Key_Left, Qt::ControlModifier, Motion::wordLeft},
    {Qt::Key_Right, Qt::ControlModifier, Motion::wordRight},
    {Qt::Key_Up, Qt::NoModifier, Motion::rowUp},
    {Qt::Key_Down, Qt::NoModifier, Motion::rowDown},
    {Qt::Key_Home, Qt::NoModifier, Motion::rowStart},
    {Qt::Key_End, Qt::NoModifier, Motion::rowEnd},
    {Qt::Key_PageUp, Qt::NoModifier, Motion::pageUp},
    {Qt::Key_PageDown, Qt::NoModifier, Motion::pageDown},
    {Qt::Key_Home, Qt::ControlModifier, Motion::documentStart},
    {Qt::Key_End, Qt::ControlModifier, Motion::documentEnd},
};

struct CommandKey {
    int key;
    Qt::KeyboardModifiers modifiers;
    KeyCommand command;
};

constexpr KeyCommand newline = [](PlainTextView& text) { text.insertNewline(); };
constexpr KeyCommand deleteBackward = [](PlainTextView& text) { text.deleteBackward(); };
constexpr KeyCommand unindent = [](PlainTextView& text) { text.unindent(); };

const CommandKey commandKeys[] = {
    {Qt::Key_Return, Qt::NoModifier, newline},
    {Qt::Key_Return, Qt::ShiftModifier, newline},
    {Qt::Key_Enter, Qt::NoModifier, newline},
    {Qt::Key_Enter, Qt::ShiftModifier, newline},
    {Qt::Key_Tab, Qt::NoModifier, [](PlainTextView& text) { text.insertTab(); }},
    {Qt::Key_Backtab, Qt::ShiftModifier, unindent},
    {Qt::Key_Backtab, Qt::NoModifier, unindent},
    {Qt::Key_Tab, Qt::ShiftModifier, unindent},
    {Qt::Key_Backspace, Qt::NoModifier, deleteBackward},
    {Qt::Key_Backspace, Qt::ShiftModifier, deleteBackward},
    {Qt::Key_Backspace, Qt::ControlModifier, [](PlainTextView& text) { text.deleteWordBackward(); }},
    {Qt::Key_Delete, Qt::NoModifier, [](PlainTextView& text) { text.deleteForward(); }},
    {Qt::Key_Delete, Qt::ControlModifier, [](PlainTextView& text) { text.deleteWordForward(); }},
};

} // namespace

std::optional<KeyAction> actionFor(const QKeyEvent& event)
{
    const int key = event.key();
    const Qt::KeyboardModifiers modifiers
        = event.modifiers() & ~(Qt::KeypadModifier | Qt::GroupSwitchModifier);

    const auto motion = std::ranges::find_if(motionKeys, [&](const MotionKey& row) {
        return row.key == key && row.modifiers == (modifiers & ~Qt::ShiftModifier);
    });
    if (motion != std::end(motionKeys))
        return KeyMotion{motion->motion, modifiers & Qt::ShiftModifier ? Extend::yes : Extend::no};

    const auto command = std::ranges::find_if(
        commandKeys, [&](const CommandKey& row) { return row.key == key && row.modifiers == modifiers; });
    if (command != std::end(commandKeys))
        return command->command;
    return std::nullopt;
}

void run(const KeyAction& action, PlainTextView& text)
{
    if (const auto* motion = std::get_if<KeyMotion>(&action))
        text.move(motion->motion, motion->extend);
    else
        std::get<KeyCommand>(action)(text);
}

QString typedText(const QKeyEvent& event)
{
    const bool isDead = event.key() >= Qt::Key_Dead_Grave && event.key() <= Qt::Key_Dead_Longsolidusoverlay;
    const QString text = event.text();
    if (text.isEmpty() || isDead
        || (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return {};
    // Formatting characters such as the zero-width non-joiner are on some keyboards; control characters are
    // not text.
    return text.at(0).category() == QChar::Other_Control ? QString() : text;
}

} // namespace quillmark
