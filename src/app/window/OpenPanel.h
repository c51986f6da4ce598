// The panel that chooses files to open.
#pragma once

#include "core/EditorTab.h"

#include <memory>
#include <vector>

class QWidget;

namespace quillmark {

/// Modal for `window`. Starts in the folder of `beside` when that is a file, else in the home folder.
/// Empty when cancelled.
std::vector<Path> runOpenPanel(QWidget& window, const std::shared_ptr<EditorTab>& beside);

} // namespace quillmark
