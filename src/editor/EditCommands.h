// Typing, deletion and moving of text: functions of a text and a selection that return the edit to make, or
// nothing where there is nothing to change. Offsets from outside are cut to the text and moved to where they
// split no character. Any thread.
#pragma once

#include "editor/Edit.h"

#include <string_view>

namespace quillmark {

/// CR LF and CR as line feeds, which are the only line breaks of a text in memory.
std::u16string withLineFeeds(std::u16string_view text);

/// Typed text in the place of the selection, the caret behind it.
std::optional<Edit> typeText(const Rope& text, const Selection& selection, std::u16string typed);

/// Without the selection or, where it is empty, without what lies between the caret and `target(text,
/// caret)`.
using CaretTarget = int64_t (*)(const Rope& text, int64_t offset);
std::optional<Edit> eraseTo(const Rope& text, const Selection& selection, CaretTarget target);
std::optional<Edit> eraseSelection(const Rope& text, const Selection& selection);

/// Another text in the place of `range`, the caret behind it.
std::optional<Edit> replaceRange(const Rope& text, Range range, std::u16string with);

/// What an input method types in the place of a stretch of its context, and of the selection. The stretch is
/// counted from the caret, as it stands once the selection is gone, and cut to the context.
std::optional<Edit> replaceNearCaret(
    const Rope& text, const Selection& selection, Range fromCaret, std::u16string with);
/// What an input method may see and change: the caret's line, cut to a bounded length around it.
Range inputContextAt(const Rope& text, int64_t caret);

/// What is dropped is selected then.
std::optional<Edit> dropText(const Rope& text, int64_t offset, std::u16string dropped);
/// A stretch of the text itself. Nothing when `offset` lies within it or at its edges.
std::optional<Edit> dropOwnText(const Rope& text, Range dragged, int64_t offset, DropKind kind);

} // namespace quillmark
