// The user's preferences for the editor: read once, written back as soon as one changes. Main thread only.
#pragma once

#include "base/Observable.h"
#include "platform/UserDefaults.h"

#include <string>
#include <vector>

namespace quillmark {

class EditorSettings {
public:
    explicit EditorSettings(UserDefaults& defaults); ///< which outlives it

    Variable<std::string> fontName; ///< empty: the system's monospaced font
    Variable<double> fontSize{13.0}; ///< device-independent pixels
    Variable<std::string> quickNoteHotKeyID{std::string("ctrl-opt-cmd-n")};
    Variable<bool> cleanupQuotes;
    Variable<bool> cleanupDashes;
    Variable<bool> cleanupTrimTrailing;
    Variable<bool> cleanupCollapseBlank;

private:
    std::vector<Connection> m_connections;
};

} // namespace quillmark
