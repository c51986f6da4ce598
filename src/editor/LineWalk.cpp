#include "editor/LineWalk.h"

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
    constexpr ptrdiff_t block = 32; // tested as a whole, which the compiler does with vectors
    while (end - from >= block) {
        bool hasLineFeed = false;
        for (ptrdiff_t i = 0; i < block; ++i)
            hasLineFeed |= from[i] == u'\n';
        if (hasLineFeed)
            break;
        from += block;
    }
    while (from != end && *from != u'\n')
        ++from;
    return from;
}

} // namespace

void forEachLine(const Rope& text, Range range, const std::function<void(Range)>& visit)
{
    int64_t lineStart = range.location;
    int64_t chunkStart = range.location;
    text.forEachChunk(range, [&](const Rope::Chunk& chunk) {
        std::visit(
            [&](auto units) {
                const auto* const first = units.data();
                const auto* const end = first + units.size();
                for (const auto* at = findLineFeed(first, end); at != end; at = findLineFeed(at + 1, end)) {
                    const int64_t lineEnd = chunkStart + (at - first);
                    visit({lineStart, lineEnd - lineStart});
                    lineStart = lineEnd + 1;
                }
                chunkStart += static_cast<int64_t>(units.size());
            },
            chunk);
        return true;
    });
    visit({lineStart, range.end() - lineStart});
}

} // namespace quillmark
