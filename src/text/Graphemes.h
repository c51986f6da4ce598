// Grapheme boundaries over a UnitReader, for the helpers of this folder that step through a text with one.
#pragma once

#include "text/UnitReader.h"

namespace quillmark {

int64_t nextGrapheme(UnitReader& text, int64_t offset);
int64_t previousGrapheme(UnitReader& text, int64_t offset);

} // namespace quillmark
