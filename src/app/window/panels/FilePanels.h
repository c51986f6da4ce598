// The panels that choose files: the toolkit's own, in Russian and in the program's colours.
#pragma once

#include "core/AppState.h"

#include <optional>
#include <vector>

class QFileDialog;
class QWidget;

namespace quillmark {

/// Modal for `window`. Starts in `folder`, or in the home folder. Empty when cancelled.
std::vector<Path> runOpenPanel(QWidget& window, const std::optional<Path>& folder);

/// Modal for `window`. Asks before it returns a file that exists. Nothing when cancelled.
std::optional<Path> runSavePanel(QWidget& window, const AppState::SaveSuggestion& suggestion);

} // namespace quillmark
