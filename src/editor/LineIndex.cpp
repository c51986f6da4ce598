#include "editor/LineIndex.h"

#include "editor/LineWalk.h"

#include <algorithm>

namespace quillmark {

int64_t LineIndex::lineNumber(int64_t offset) const
{
    return 1 + number(m_text.lineAt(std::clamp<int64_t>(offset, 0, m_text.length())));
}

std::vector<int64_t> LineIndex::starts() const
{
    std::vector<int64_t> starts;
    starts.reserve(static_cast<size_t>(lineCount()));
    forEachLine(m_text, {0, m_text.length()}, [&starts](Range line) { starts.push_back(line.location); });
    return starts;
}

} // namespace quillmark
