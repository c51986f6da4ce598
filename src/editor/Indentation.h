// Indenting lines: functions of a text and a selection that return the edit to make. They cost by the lines
// that the selection touches. Any thread.
#pragma once

#include "editor/Edit.h"

namespace quillmark {

inline constexpr int64_t spacesPerIndent = 4; ///< that Shift+Tab takes where there is no tab

/// Whether a selection reaches from one line into another, so that Tab means its lines rather than itself.
bool spansLines(const Rope& text, const Selection& selection);

/// A tab more at the start, or a tab or some spaces less. The lines are those that the selection touches; one
/// that it only reaches the start of is not touched. Empty lines get no tab. Nothing when nothing changes.
/// The selection keeps covering the same lines.
std::optional<Edit> indent(const Rope& text, const Selection& selection);
std::optional<Edit> unindent(const Rope& text, const Selection& selection);

} // namespace quillmark
