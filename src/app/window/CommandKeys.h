// Which row of the command table a key means. A key is known by its character and, on keyboards that have the
// character elsewhere or not at all, by its place.
#pragma once

#include "core/Commands.h"

#include <QKeySequence>

class QKeyEvent;

namespace quillmark {

/// The keys of a row as the toolkit knows them; the first are shown in the menu.
QList<QKeySequence> keySequences(const Command& command);

/// Null when the key is no command's. What AltGr writes is a character and never a command.
const Command* commandFor(const QKeyEvent& event);

/// Whether the key asks for the menu whose title marks this letter, whichever of a keyboard's layouts is
/// active.
bool isMnemonic(const QKeyEvent& event, const QKeySequence& mnemonic);

} // namespace quillmark
