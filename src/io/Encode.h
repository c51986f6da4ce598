// Text into the bytes of a file.
#pragma once

#include "io/AtomicFile.h"
#include "text/Rope.h"

namespace quillmark {

enum class LineEnds { lf, crlf };

/// Hands the text on as UTF-8 in pieces, each line feed as `lineEnds` says, a lone surrogate as U+FFFD. Stops
/// at the first failure. Any thread.
Status encode(const Rope& text, LineEnds lineEnds, const Sink& take);

FileContent contentOf(const Rope& text, LineEnds lineEnds);

} // namespace quillmark
