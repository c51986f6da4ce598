// The panels that choose files: the toolkit's own, in Russian and in the program's colours.
#pragma once

#include "core/AppState.h"

#include <memory>
#include <optional>
#include <vector>

class QFileDialog;
class QWidget;

namespace quillmark {

/// Modal for `window`. Starts in the folder of `beside` when that is a file, else in the home folder.
/// Empty when cancelled.
std::vector<Path> runOpenPanel(QWidget& window, const std::shared_ptr<EditorTab>& beside);

/// Modal for `window`. Starts in `folder` and asks before it returns a file that exists. Nothing when
/// cancelled.
std::optional<Path> runSavePanel(
    QWidget& window, const Path& folder, const AppState::SaveSuggestion& suggestion);

} // namespace quillmark
