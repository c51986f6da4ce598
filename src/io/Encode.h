// Text into the bytes of a file.
#pragma once

#include "io/AtomicFile.h"
#include "io/TextFormat.h"
#include "text/Rope.h"

namespace quillmark {

/// Hands the text on as UTF-8 in pieces, each line feed as `lineEnds` says, a lone surrogate as U+FFFD. Stops
/// at the first failure. Any thread.
Status encode(const Rope& text, LineEnds lineEnds, const Sink& take);

FileContent contentOf(const Rope& text, LineEnds lineEnds);

/// In bytes, with line feeds. A lone surrogate counts as half of its pair; it is written as U+FFFD, a byte
/// more.
int64_t utf8Length(const Rope& text);

} // namespace quillmark
