#include "app/window/CommandKeys.h"

#include <QKeyEvent>

#include <algorithm>
#include <string_view>
#include <vector>

namespace quillmark {

namespace {

constexpr quint32 thirdLevel = 1 << 7; ///< of the native modifiers: AltGr
constexpr int firstNotAscii = 0x80;
constexpr int firstNamed = 0x01000000; ///< Qt::Key_Escape and the other keys without a character

/// What stands on the keys of a row of the keyboard, from a key code of X and Wayland on.
struct KeyRow {
    quint32 first;
    std::u16string_view characters;
};
constexpr KeyRow latinRows[]
    = {{10, u"1234567890-="}, {24, u"QWERTYUIOP[]"}, {38, u"ASDFGHJKL;'`"}, {51, u"\\ZXCVBNM,./"}};
constexpr KeyRow cyrillicRows[] = {{24, u"ЙЦУКЕНГШЩЗХЪ"}, {38, u"ФЫВАПРОЛДЖЭЁ"}, {52, u"ЯЧСМИТЬБЮ"}};

/// 0 where a key has no character.
int characterAt(quint32 keyCode, std::span<const KeyRow> rows)
{
    for (const KeyRow& row : rows) {
        if (keyCode >= row.first && keyCode < row.first + row.characters.size())
            return row.characters[keyCode - row.first];
    }
    return 0;
}

bool isLetter(int character)
{
    return QChar::isLetter(static_cast<char32_t>(character));
}

Qt::KeyboardModifiers heldModifiers(const QKeyEvent& event)
{
    return event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier | Qt::MetaModifier);
}

const Command* rowWith(int key, Qt::KeyboardModifiers modifiers)
{
    using Entry = std::pair<QKeyCombination, const Command*>;
    static const std::vector<Entry> entries = [] {
        std::vector<Entry> all;
        for (const Command& command : commands())
            for (const QKeySequence& sequence : keySequences(command))
                all.emplace_back(sequence[0], &command);
        return all;
    }();
    const auto found
        = std::ranges::find(entries, QKeyCombination(modifiers, static_cast<Qt::Key>(key)), &Entry::first);
    return found != entries.end() ? found->second : nullptr;
}

} // namespace

QList<QKeySequence> keySequences(const Command& command)
{
    QList<QKeySequence> sequences;
    for (const std::string_view key : command.linuxKeys)
        sequences.append(QKeySequence::fromString(QString::fromUtf8(key), QKeySequence::PortableText));
    return sequences;
}

const Command* commandFor(const QKeyEvent& event)
{
    if (event.nativeModifiers() & thirdLevel)
        return nullptr;
    const Qt::KeyboardModifiers modifiers = heldModifiers(event);
    const int key = event.key() == Qt::Key_Backtab ? int(Qt::Key_Tab) : event.key();
    if (const Command* row = rowWith(key, modifiers))
        return row;
    if (key <= Qt::Key_Space || key >= firstNamed)
        return nullptr;
    // A Latin keyboard has all letters, in places of its own; signs and digits it may have above others.
    const int inPlace = characterAt(event.nativeScanCode(), latinRows);
    if (inPlace != 0 && (key >= firstNotAscii || !isLetter(inPlace))) {
        if (const Command* row = rowWith(inPlace, modifiers))
            return row;
    }
    // Shift may have been needed for the sign alone.
    return isLetter(key) ? nullptr : rowWith(key, modifiers & ~Qt::ShiftModifier);
}

bool isMnemonic(const QKeyEvent& event, const QKeySequence& mnemonic)
{
    if (mnemonic.isEmpty() || heldModifiers(event) != Qt::AltModifier
        || (event.nativeModifiers() & thirdLevel))
        return false;
    const int letter = mnemonic[0].key();
    return event.key() == letter
        || (event.key() < firstNotAscii && characterAt(event.nativeScanCode(), cyrillicRows) == letter);
}

} // namespace quillmark
