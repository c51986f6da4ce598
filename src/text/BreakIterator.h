// ICU's break iterators: costly to make, cheap to point at another text. One of each kind a thread.
#pragma once

#include <string_view>
#include <unicode/ubrk.h>

namespace quillmark {

/// This thread's iterator of a kind with the root locale's rules, set to a text that must stay until the next
/// call. The text is shorter than 2 GiB.
UBreakIterator* breakIterator(UBreakIteratorType type, std::u16string_view text);

} // namespace quillmark
