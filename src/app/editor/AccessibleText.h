// How a text is told to a screen reader: the characters, words, sentences, rows and paragraphs that it asks
// for, never more of them at once than anybody listens to. Main thread only.
#pragma once

#include "editor/PlainTextView.h"

#include <QAccessible>
#include <QString>

namespace quillmark {

/// In units: what one answer or event holds at most. No cost grows with the text beyond it.
inline constexpr int64_t longestAnswer = 65'536;

/// A stretch of a text, cut to the text and to the longest answer. NULs, lone surrogates and object
/// placeholders, which no message can carry or which would be taken for something else, are U+FFFD there.
QString spokenText(const Rope& text, Range range);

/// The unit that holds the character at an offset. The units of a kind lie side by side over the whole text,
/// line feeds included; a line is a row on the screen. A sentence ends with its line at the latest, and a
/// unit that is longer than the longest answer falls into several. At the end of the text it is the last
/// unit, or an empty one behind a line feed and for characters.
Range unitAt(QAccessible::TextBoundaryType boundary, int64_t offset, PlainTextView& view);

} // namespace quillmark
