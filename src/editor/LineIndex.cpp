#include "editor/LineIndex.h"

#include <algorithm>

namespace quillmark {
namespace {

/// Appends the start of the line behind each line feed in a range of the text.
void collectStarts(const Rope& text, Range range, std::vector<int64_t>& starts)
{
    int64_t offset = range.location;
    text.forEachSpan(range, [&](auto units) {
        for (const auto unit : units) {
            ++offset;
            if (unit == '\n')
                starts.push_back(offset);
        }
        return true;
    });
}

} // namespace

void LineIndex::rebuild(const Rope& text)
{
    m_starts.assign(1, 0);
    m_starts.reserve(static_cast<size_t>(text.lineCount()));
    collectStarts(text, {0, text.length()}, m_starts);
    m_indexedLength = text.length();
}

void LineIndex::applyEdit(const TextEdit& edit, const Rope& newText)
{
    // A start at the edit's location survives, for its line feed lies before; one at the end of what was
    // replaced goes, for its line feed was the last unit replaced.
    const int64_t oldEnd = edit.replaced().end();
    const auto low = std::ranges::upper_bound(m_starts, edit.edited.location);
    const auto high = std::find_if(low, m_starts.end(), [oldEnd](int64_t start) { return start > oldEnd; });

    std::vector<int64_t> inserted;
    collectStarts(newText, edit.edited, inserted);
    for (auto start = high; start != m_starts.end() && edit.changeInLength != 0; ++start)
        *start += edit.changeInLength;

    const auto replaced = std::min<ptrdiff_t>(high - low, std::ssize(inserted));
    const auto rest = std::copy_n(inserted.begin(), replaced, low);
    if (rest != high)
        m_starts.erase(rest, high);
    else
        m_starts.insert(rest, inserted.begin() + replaced, inserted.end());
    m_indexedLength = newText.length();
    if (m_starts.back() > m_indexedLength)
        rebuild(newText);
}

int64_t LineIndex::lineNumber(int64_t offset) const
{
    const auto next = std::ranges::upper_bound(m_starts, offset);
    return std::max<int64_t>(1, next - m_starts.begin());
}

} // namespace quillmark
