// What a screen reader is told of the window's own widgets, which the toolkit knows nothing of: what they
// are, what can be done with them. Their names are their accessible names.
#pragma once

namespace quillmark {

/// Lets the toolkit ask for it. Before the first of these widgets is made; may be called again.
void installAccessibleWidgets();

} // namespace quillmark
