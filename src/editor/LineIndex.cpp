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

const std::vector<int64_t>& LineIndex::starts() const
{
    moveDebt(m_starts.size());
    return m_starts;
}

int64_t LineIndex::startAt(size_t index) const
{
    return m_starts[index] + (index >= m_owedFrom ? m_owed : 0);
}

size_t LineIndex::firstStartBehind(int64_t offset) const
{
    const auto owed = m_starts.begin() + static_cast<ptrdiff_t>(m_owedFrom);
    auto next = std::upper_bound(m_starts.begin(), owed, offset);
    if (next == owed)
        next = std::upper_bound(owed, m_starts.end(), offset - m_owed);
    return static_cast<size_t>(next - m_starts.begin());
}

/// Makes the debt begin at another start; without starts behind it there is none.
void LineIndex::moveDebt(size_t index) const
{
    for (size_t i = m_owedFrom; i < index; ++i)
        m_starts[i] += m_owed;
    for (size_t i = index; i < m_owedFrom; ++i)
        m_starts[i] -= m_owed;
    m_owedFrom = index;
    if (m_owedFrom == m_starts.size())
        m_owed = 0;
}

void LineIndex::rebuild(const Rope& text)
{
    m_starts.assign(1, 0);
    m_starts.reserve(static_cast<size_t>(text.lineCount()));
    collectStarts(text, {0, text.length()}, m_starts);
    m_owedFrom = m_starts.size();
    m_owed = 0;
    m_indexedLength = text.length();
}

void LineIndex::applyEdit(const TextEdit& edit, const Rope& newText)
{
    // A start at the edit's location survives, for its line feed lies before; one at the end of what was
    // replaced goes, for its line feed was the last unit replaced.
    const int64_t oldEnd = edit.replaced().end();
    const size_t low = firstStartBehind(edit.edited.location);
    size_t high = low;
    while (high < m_starts.size() && startAt(high) <= oldEnd)
        ++high;
    moveDebt(high);

    std::vector<int64_t> inserted;
    collectStarts(newText, edit.edited, inserted);
    const auto first = m_starts.begin() + static_cast<ptrdiff_t>(low);
    const auto last = m_starts.begin() + static_cast<ptrdiff_t>(high);
    const auto replaced = std::min<ptrdiff_t>(last - first, std::ssize(inserted));
    const auto rest = std::copy_n(inserted.begin(), replaced, first);
    if (rest != last)
        m_starts.erase(rest, last);
    else
        m_starts.insert(rest, inserted.begin() + replaced, inserted.end());

    m_owedFrom = low + inserted.size();
    m_owed = m_owedFrom < m_starts.size() ? m_owed + edit.changeInLength : 0;
    m_indexedLength = newText.length();
    if (startAt(m_starts.size() - 1) > m_indexedLength)
        rebuild(newText);
}

int64_t LineIndex::lineNumber(int64_t offset) const
{
    return std::max<int64_t>(1, static_cast<int64_t>(firstStartBehind(offset)));
}

} // namespace quillmark
