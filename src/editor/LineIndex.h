// At which offsets the lines of a text start, for the line-number gutter. Only U+000A ends a line. The text
// itself knows its lines, so that the index is the text it was last brought up to date with: an update takes
// no time, a look-up O(log n). Main thread only.
#pragma once

#include "text/TextStorage.h"

#include <cassert>
#include <cstdint>
#include <vector>

namespace quillmark {

class LineIndex {
public:
    void rebuild(const Rope& text) { m_text = text; }
    void applyEdit([[maybe_unused]] const TextEdit& edit, const Rope& newText)
    {
        assert(newText.length() == m_text.length() + edit.changeInLength && "an edit was left out");
        m_text = newText;
    }

    int64_t lineNumber(int64_t offset) const; ///< 1-based, of the line that holds the offset
    int64_t lineCount() const { return m_text.lineCount(); }
    int64_t indexedLength() const { return m_text.length(); } ///< of the text when it was last indexed

    /// Element k is where line k + 1 starts; the first is 0, and the array is strictly increasing. Walks the
    /// whole text.
    std::vector<int64_t> starts() const;

private:
    Rope m_text;
};

} // namespace quillmark
