// The offsets at which the lines of a text start, for the line-number gutter. Only U+000A ends a line.
// Main thread only.
#pragma once

#include "text/TextStorage.h"

#include <cstdint>
#include <vector>

namespace quillmark {

class LineIndex {
public:
    /// Element k is where line k + 1 starts; the first is 0, and the array is strictly increasing.
    const std::vector<int64_t>& starts() const { return m_starts; }
    int64_t indexedLength() const { return m_indexedLength; } ///< of the text when it was last indexed

    void rebuild(const Rope& text); ///< walks the whole text
    /// Follows an edit: a scan of what was put in, and one pass of additions over the starts behind it.
    void applyEdit(const TextEdit& edit, const Rope& newText);

    int64_t lineNumber(int64_t offset) const; ///< 1-based, of the line that holds the offset
    int64_t lineCount() const { return static_cast<int64_t>(m_starts.size()); }

private:
    std::vector<int64_t> m_starts{0};
    int64_t m_indexedLength = 0;
};

} // namespace quillmark
