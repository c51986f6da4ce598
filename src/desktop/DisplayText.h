// What of a text is shown in place of characters that a text engine would interpret or could not draw. The
// shown text has the length of the text, unit for unit, so that offsets mean the same in both.
#pragma once

#include <string>
#include <string_view>

namespace quillmark {

/// Control characters become their control pictures, line and paragraph separators likewise, lone surrogates
/// and placeholders of objects U+FFFD. A tab stays. For display only: never goes back into a document.
std::u16string displayText(std::u16string_view text);

/// True when the text has a character that is written from right to left, or one that could turn the
/// direction.
bool mayBeBidirectional(std::u16string_view text);

} // namespace quillmark
