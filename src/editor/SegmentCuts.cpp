#include "editor/SegmentCuts.h"

#include "text/Unicode.h"
#include "text/Units.h"

namespace quillmark {
namespace {

constexpr int64_t blankSearch = 96; ///< how far before the wanted cut a blank is looked for

/// Characters below the first combining mark stand alone, but for CR LF.
bool standsAlone(char16_t before, char16_t after)
{
    constexpr char16_t firstCombiningMark = 0x0300;
    return before < firstCombiningMark && after < firstCombiningMark && !(before == u'\r' && after == u'\n');
}

/// Without a character boundary in reach, a pair of surrogates still stays together.
int64_t forcedCut(const Rope& text, int64_t wanted)
{
    const bool splitsPair = isLowSurrogate(text.at(wanted)) && isHighSurrogate(text.at(wanted - 1));
    return splitsPair ? wanted - 1 : wanted;
}

int64_t cutNear(const Rope& text, int64_t wanted)
{
    const std::u16string before = text.text({wanted - blankSearch, blankSearch});
    const size_t blank = before.find_last_of(u" \t");
    if (blank != std::u16string::npos) {
        const int64_t behindBlank = wanted - blankSearch + static_cast<int64_t>(blank) + 1;
        if (isCharacterBoundary(text, behindBlank))
            return behindBlank;
    }
    const int64_t boundary = characterBoundaryAtOrBefore(text, wanted);
    return boundary > wanted - blankSearch ? boundary : forcedCut(text, wanted);
}

} // namespace

bool isCharacterBoundary(const Rope& text, int64_t offset)
{
    return characterBoundaryAtOrBefore(text, offset) == offset;
}

int64_t characterBoundaryAtOrBefore(const Rope& text, int64_t offset)
{
    if (offset <= 0)
        return 0;
    if (offset >= text.length())
        return text.length();
    if (standsAlone(text.at(offset - 1), text.at(offset)))
        return offset;
    return previousGrapheme(text, offset + 1);
}

std::vector<int64_t> segmentLengths(const Rope& text, Range range)
{
    if (range.length <= longestWholeLine)
        return {range.length};
    const int64_t count = (range.length + segmentTarget - 1) / segmentTarget;
    std::vector<int64_t> lengths;
    lengths.reserve(static_cast<size_t>(count));
    int64_t start = range.location;
    for (int64_t left = count; left > 1; --left) {
        const int64_t end = cutNear(text, start + (range.end() - start) / left);
        lengths.push_back(end - start);
        start = end;
    }
    lengths.push_back(range.end() - start);
    return lengths;
}

} // namespace quillmark
