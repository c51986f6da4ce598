// The list that --recovered prints.
#pragma once

#include "io/RecoveryStore.h"

#include <string>

namespace quillmark {

/// One line for each text, newest first: local time, size and path; or a sentence that there is none.
std::string recoveredList(const std::vector<RecoveredText>& texts);

} // namespace quillmark
