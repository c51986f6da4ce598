#include "editor/LineWalk.h"

#include "text/Units.h"

#include <cassert>
#include <cstring>

namespace quillmark {
namespace {

const uint8_t* findLineFeed(const uint8_t* from, const uint8_t* end)
{
    const void* found = std::memchr(from, '\n', static_cast<size_t>(end - from));
    return found ? static_cast<const uint8_t*>(found) : end;
}

const char16_t* findLineFeed(const char16_t* from, const char16_t* end)
{
    constexpr size_t vectors = 4; // tested at once
    constexpr ptrdiff_t block = vectors * sizeof(units::Words8) / sizeof(char16_t);
    while (end - from >= block && units::countLineFeedsInVectors(from, vectors) == 0)
        from += block;
    while (from != end && *from != u'\n')
        ++from;
    return from;
}

} // namespace

void forEachLine(const Rope& text, Range range, const std::function<void(Range)>& visit)
{
    assert(range.location >= 0 && range.length >= 0 && range.end() <= text.length());
    int64_t lineStart = range.location;
    int64_t spanStart = range.location;
    text.forEachSpan(range, [&](auto span) {
        const auto* const first = span.data();
        const auto* const end = first + span.size();
        for (const auto* at = findLineFeed(first, end); at != end; at = findLineFeed(at + 1, end)) {
            const int64_t lineEnd = spanStart + (at - first);
            visit({lineStart, lineEnd - lineStart});
            lineStart = lineEnd + 1;
        }
        spanStart += static_cast<int64_t>(span.size());
        return true;
    });
    visit({lineStart, range.end() - lineStart});
}

} // namespace quillmark
