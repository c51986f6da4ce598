// Boundaries of user-perceived characters. Almost all of them can be told from the two code points at their
// sides; only a stretch without such a certain boundary inside it is given to ICU. So the text around the
// place is never flattened, and the result is the one that ICU gives for the whole text.
#include "text/Graphemes.h"

#include "text/BreakIterator.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

namespace quillmark {
namespace {

/// How far a certain boundary is looked for, in units. A longer cluster is cut; an even number of flags fits
/// in, so that a longer run of flags is still cut between flags.
constexpr int64_t reach = 1024;

int32_t clusterBreakOf(char32_t c)
{
    return u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_GRAPHEME_CLUSTER_BREAK);
}

bool isPictograph(char32_t c)
{
    return u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_EXTENDED_PICTOGRAPHIC);
}

bool isIndicConsonant(char32_t c)
{
    return u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_CONSONANT;
}

bool isControl(int32_t clusterBreak)
{
    return clusterBreak == U_GCB_CONTROL || clusterBreak == U_GCB_CR || clusterBreak == U_GCB_LF;
}

/// Both values belong to Hangul: do they join?
bool joinsSyllable(int32_t before, int32_t after)
{
    switch (after) {
    case U_GCB_V:
        return before == U_GCB_L || before == U_GCB_V || before == U_GCB_LV;
    case U_GCB_T:
        return before == U_GCB_V || before == U_GCB_LV || before == U_GCB_T || before == U_GCB_LVT;
    default:
        return before == U_GCB_L;
    }
}

/// Two such code points never join: Latin and Cyrillic without marks, a quick answer for most texts.
constexpr bool standsAlone(char32_t c)
{
    return c < 0x300 ? c != '\r' : (c >= 0x400 && c < 0x483) || (c >= 0x48A && c < 0x530);
}

/// True when there is a boundary between the two, whatever stands around them.
bool isCertainBoundary(char32_t a, char32_t b)
{
    if (standsAlone(a) && standsAlone(b))
        return true;
    const int32_t before = clusterBreakOf(a);
    const int32_t after = clusterBreakOf(b);
    if (isControl(before) || isControl(after))
        return before != U_GCB_CR || after != U_GCB_LF;
    if (before == U_GCB_PREPEND)
        return false;
    switch (after) {
    case U_GCB_EXTEND:
    case U_GCB_ZWJ:
    case U_GCB_SPACING_MARK:
        return false;
    case U_GCB_REGIONAL_INDICATOR:
        return before != U_GCB_REGIONAL_INDICATOR;
    case U_GCB_L:
    case U_GCB_V:
    case U_GCB_T:
    case U_GCB_LV:
    case U_GCB_LVT:
        return !joinsSyllable(before, after);
    default:
        break;
    }
    if (before == U_GCB_ZWJ)
        return !isPictograph(b) && !isIndicConsonant(b);
    return before != U_GCB_EXTEND || !isIndicConsonant(b);
}

/// The last certain boundary from `lowest` to `offset`, else a code point that is not before `lowest − 1`.
int64_t certainBoundaryUpTo(UnitReader& text, int64_t offset, int64_t lowest)
{
    lowest = std::max<int64_t>(lowest, 0);
    char32_t after = text.codePointAt(offset);
    while (offset > lowest) {
        const char32_t before = text.codePointBefore(offset);
        if (isCertainBoundary(before, after))
            return offset;
        offset -= unitLength(before);
        after = before;
    }
    return offset;
}

/// The first certain boundary behind the code point at `offset`, else one at most a code point behind the
/// reach.
int64_t certainBoundaryBehind(UnitReader& text, int64_t offset)
{
    const int64_t highest = std::min(text.length(), offset + reach);
    char32_t before = text.codePointAt(offset);
    offset += unitLength(before);
    while (offset < highest) {
        const char32_t after = text.codePointAt(offset);
        if (isCertainBoundary(before, after))
            return offset;
        offset += unitLength(after);
        before = after;
    }
    return offset;
}

UBreakIterator* clusters(const UnitReader& text, Range stretch, std::u16string& storage)
{
    return breakIterator(UBRK_CHARACTER, text.contiguous(stretch, storage));
}

int32_t distance(int64_t from, int64_t to)
{
    assert(from <= to && to - from <= std::numeric_limits<int32_t>::max());
    return static_cast<int32_t>(to - from);
}

/// Scripts whose marks are typed with a key of their own, so that Backspace takes back one code point.
bool deletesByCodePoint(UScriptCode script)
{
    switch (script) {
    case USCRIPT_COMMON:
    case USCRIPT_INHERITED:
    case USCRIPT_UNKNOWN:
    case USCRIPT_LATIN:
    case USCRIPT_GREEK:
    case USCRIPT_CYRILLIC:
    case USCRIPT_ARMENIAN:
    case USCRIPT_GEORGIAN:
    case USCRIPT_HAN:
    case USCRIPT_HANGUL:
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
    case USCRIPT_BOPOMOFO:
        return false;
    default:
        return true;
    }
}

bool deletesByCodePoint(char32_t c)
{
    UErrorCode status = U_ZERO_ERROR;
    return deletesByCodePoint(uscript_getScript(static_cast<UChar32>(c), &status));
}

} // namespace

int64_t nextGrapheme(UnitReader& text, int64_t offset)
{
    offset = std::max<int64_t>(offset, 0);
    if (offset >= text.length())
        return text.length();
    const int64_t first = text.startOfCodePoint(offset);
    const int64_t end = certainBoundaryBehind(text, first);
    if (end == first + unitLength(text.codePointAt(first)))
        return end;
    const int64_t start = certainBoundaryUpTo(text, first, first - reach);
    std::u16string storage;
    UBreakIterator* iterator = clusters(text, Range::between(start, end), storage);
    const int32_t boundary = ubrk_following(iterator, distance(start, first));
    return boundary == UBRK_DONE ? end : start + boundary;
}

int64_t previousGrapheme(UnitReader& text, int64_t offset)
{
    offset = std::min(offset, text.length());
    if (offset <= 0)
        return 0;
    if (text.startOfCodePoint(offset) < offset)
        ++offset; // inside a surrogate pair: no boundary lies before its end but behind its start
    const int64_t last = offset - unitLength(text.codePointBefore(offset));
    const int64_t start = certainBoundaryUpTo(text, last, offset - reach);
    if (start == last)
        return last;
    std::u16string storage;
    UBreakIterator* iterator = clusters(text, Range::between(start, offset), storage);
    const int32_t boundary = ubrk_preceding(iterator, distance(start, offset));
    return boundary == UBRK_DONE ? start : start + boundary;
}

int64_t nextGrapheme(std::u16string_view text, int64_t offset)
{
    UnitReader reader(text);
    return nextGrapheme(reader, offset);
}

int64_t previousGrapheme(std::u16string_view text, int64_t offset)
{
    UnitReader reader(text);
    return previousGrapheme(reader, offset);
}

int64_t nextGrapheme(const Rope& text, int64_t offset)
{
    UnitReader reader(text);
    return nextGrapheme(reader, offset);
}

int64_t previousGrapheme(const Rope& text, int64_t offset)
{
    UnitReader reader(text);
    return previousGrapheme(reader, offset);
}

int64_t graphemeCount(std::u16string_view text)
{
    UnitReader reader(text);
    std::u16string storage;
    int64_t count = 0;
    for (int64_t offset = 0; offset < reader.length();) {
        const int64_t end = certainBoundaryBehind(reader, offset);
        ++count;
        if (end > offset + unitLength(reader.codePointAt(offset))) {
            UBreakIterator* iterator = clusters(reader, Range::between(offset, end), storage);
            while (ubrk_next(iterator) < distance(offset, end))
                ++count;
        }
        offset = end;
    }
    return count;
}

std::u16string_view firstGraphemes(std::u16string_view text, int64_t count)
{
    UnitReader reader(text);
    int64_t end = 0;
    for (; count > 0 && end < reader.length(); --count) {
        const bool isAlone
            = end + 1 < reader.length() && standsAlone(reader[end]) && standsAlone(reader[end + 1]);
        end = isAlone ? end + 1 : nextGrapheme(reader, end);
    }
    return text.substr(0, static_cast<size_t>(end));
}

int64_t backwardDeletion(const Rope& text, int64_t offset)
{
    UnitReader reader(text);
    offset = std::min(offset, reader.length());
    const int64_t start = previousGrapheme(reader, offset);
    if (start >= offset)
        return start;
    const char32_t last = reader.codePointBefore(offset);
    const bool byCodePoint = deletesByCodePoint(last) || deletesByCodePoint(reader.codePointAt(start));
    return byCodePoint ? offset - unitLength(last) : start;
}

} // namespace quillmark
