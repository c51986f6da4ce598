// What a tab or a row of the list says of itself under the mouse.
#pragma once

#include "platform/FileSystem.h"

#include <QString>

namespace quillmark {

class AppState;
struct EditorTab;

/// The whole title and, on the next line, the path, with the home folder as "~". Long lines are broken.
QString itemToolTip(std::string_view title, const Path& file);
QString itemToolTip(const AppState& app, const EditorTab& tab);

} // namespace quillmark
