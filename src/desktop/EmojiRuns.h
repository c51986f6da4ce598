// Which stretches of a text are emoji, so that they are drawn in colour whatever other fonts could draw them.
#pragma once

#include "base/Range.h"

#include <string_view>
#include <vector>

namespace quillmark {

/// The characters that are shown as emoji (UTS #51): those that are so by default, those that ask for it with
/// U+FE0F or a skin tone, flags, keycaps and families; not digits, ©, ™ and the like by themselves, nor what
/// is followed by U+FE0E. Neighbours share a run. Costs one look at each unit in a text that has none.
std::vector<Range> emojiRuns(std::u16string_view text);

} // namespace quillmark
