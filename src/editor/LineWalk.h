// One pass over a stretch of text that finds its lines.
#pragma once

#include "text/Rope.h"

#include <functional>

namespace quillmark {

/// Calls `visit(part)` for each line of a range in order, without its line feed and cut to the range. A range
/// that ends behind a line feed has a last, empty part.
void forEachLine(const Rope& text, Range range, const std::function<void(Range)>& visit);

} // namespace quillmark
