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

    Observable<std::string> fontName; ///< empty: the system's monospaced font
    Observable<double> fontSize{13.0}; ///< device-independent pixels
    Observable<std::string> quickNoteHotKeyID{std::string("ctrl-opt-cmd-n")};
    Observable<bool> cleanupQuotes;
    Observable<bool> cleanupDashes;
    Observable<bool> cleanupTrimTrailing;
    Observable<bool> cleanupCollapseBlank;

private:
    std::vector<Connection> m_connections;
};

} // namespace quillmark
