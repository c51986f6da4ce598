// The offsets at which the lines of a text start, for the line-number gutter. Only U+000A ends a line.
// Main thread only.
#pragma once

#include "text/TextStorage.h"

#include <cstdint>
#include <vector>

namespace quillmark {

class LineIndex {
public:
    /// Element k is where line k + 1 starts; the first is 0, and the array is strictly increasing. After an
    /// edit the first call adds up the starts behind it.
    const std::vector<int64_t>& starts() const;
    int64_t indexedLength() const { return m_indexedLength; } ///< of the text when it was last indexed

    void rebuild(const Rope& text); ///< walks the whole text
    /// Follows an edit: a scan of what was put in, and additions over the starts between this edit and the
    /// last.
    void applyEdit(const TextEdit& edit, const Rope& newText);

    int64_t lineNumber(int64_t offset) const; ///< 1-based, of the line that holds the offset
    int64_t lineCount() const { return static_cast<int64_t>(m_starts.size()); }

private:
    int64_t startAt(size_t index) const;
    size_t firstStartBehind(int64_t offset) const;
    void moveDebt(size_t index) const;

    // Typing would add to all starts behind the caret at each key. The sum is owed instead, from an index on,
    // and paid for the starts that the next edit has between itself and this one.
    mutable std::vector<int64_t> m_starts{0};
    mutable size_t m_owedFrom = 1;
    mutable int64_t m_owed = 0;
    int64_t m_indexedLength = 0;
};

} // namespace quillmark
