// Words for the caret: what the keys Ctrl+Left and Ctrl+Right and a double-click take for one.
//
// A word is a run of letters, marks, digits and underscores, with an apostrophe between letters and a full
// stop or comma between digits. Unlike UAX #29 alone it ends at the full stop of `object.method`. Runs in
// scripts that do without spaces are cut by ICU's dictionaries.
#include "text/BreakIterator.h"
#include "text/Graphemes.h"
#include "text/Unicode.h"

#include <algorithm>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

namespace quillmark {
namespace {

constexpr int64_t longestRun = 4096; ///< units looked at in each direction; longer runs are cut
constexpr int64_t dictionaryReach = 256; ///< units around the place that a dictionary is shown

enum class Kind { lineFeed, blank, word, mark };

bool hasCategory(char32_t c, uint32_t categories)
{
    return (U_GET_GC_MASK(static_cast<UChar32>(c)) & categories) != 0;
}

bool isLetter(char32_t c)
{
    return hasCategory(c, U_GC_L_MASK | U_GC_M_MASK);
}

bool isDigit(char32_t c)
{
    return hasCategory(c, U_GC_ND_MASK);
}

bool isWordCharacter(char32_t c)
{
    return hasCategory(c, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK | U_GC_PC_MASK | U_GC_CF_MASK);
}

/// Signs that belong to a word between two letters: apostrophes, the Catalan middle dot, geresh and
/// gershayim.
bool joinsLetters(char32_t c)
{
    return c == '\'' || c == 0x2019 || c == 0xB7 || c == 0x5F3 || c == 0x5F4;
}

bool joinsDigits(char32_t c)
{
    return c == '.' || c == ',';
}

/// Does a character of a script without spaces between its words?
bool needsDictionary(char32_t c)
{
    if (c < 0xE00)
        return false;
    const auto codePoint = static_cast<UChar32>(c);
    if (u_getIntPropertyValue(codePoint, UCHAR_LINE_BREAK) == U_LB_COMPLEX_CONTEXT
        || u_hasBinaryProperty(codePoint, UCHAR_IDEOGRAPHIC))
        return true;
    UErrorCode status = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(codePoint, &status);
    return script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA;
}

/// What kind of thing the character that starts at the offset is part of.
Kind kindAt(UnitReader& text, int64_t offset)
{
    constexpr char32_t zeroWidthSpace = 0x200B;
    const char32_t c = text.codePointAt(offset);
    if (c == '\n')
        return Kind::lineFeed;
    if (isWhiteSpace(c) || c == zeroWidthSpace)
        return Kind::blank;
    if (isWordCharacter(c))
        return Kind::word;
    if ((joinsLetters(c) || joinsDigits(c)) && offset > 0 && offset + 1 < text.length()) {
        const char32_t before = text.codePointBefore(offset);
        const char32_t after = text.codePointAt(offset + 1);
        if (joinsLetters(c) ? isLetter(before) && isLetter(after) : isDigit(before) && isDigit(after))
            return Kind::word;
    }
    return Kind::mark;
}

Kind kindBefore(UnitReader& text, int64_t offset)
{
    return kindAt(text, previousGrapheme(text, offset));
}

/// A code point that belongs to the character before it.
bool isAttached(char32_t c)
{
    if (c < 0x300)
        return false;
    const int32_t clusterBreak = u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_GRAPHEME_CLUSTER_BREAK);
    return clusterBreak == U_GCB_EXTEND || clusterBreak == U_GCB_ZWJ || clusterBreak == U_GCB_SPACING_MARK;
}

// Runs are walked by code points: those that make one character are of one kind, but for the attached ones.

int64_t endOfRun(UnitReader& text, int64_t offset, Kind kind)
{
    if (offset >= text.length() || kindAt(text, offset) != kind)
        return offset;
    const int64_t limit = std::min(text.length(), offset + longestRun);
    do {
        offset += unitLength(text.codePointAt(offset));
    } while (offset < limit && (isAttached(text.codePointAt(offset)) || kindAt(text, offset) == kind));
    return offset;
}

int64_t startOfRun(UnitReader& text, int64_t offset, Kind kind)
{
    const int64_t limit = std::max<int64_t>(0, offset - longestRun);
    int64_t start = offset;
    while (offset > limit) {
        const char32_t c = text.codePointBefore(offset);
        offset -= unitLength(c);
        if (isAttached(c) && offset > limit)
            continue;
        if (kindAt(text, offset) != kind)
            break;
        start = offset;
    }
    return start;
}

bool needsDictionary(UnitReader& text, Range stretch)
{
    for (int64_t offset = stretch.location; offset < stretch.end();) {
        const char32_t c = text.codePointAt(offset);
        if (needsDictionary(c))
            return true;
        offset += unitLength(c);
    }
    return false;
}

/// The word that holds the character at `offset`, which is of kind `word`.
Range wordHolding(UnitReader& text, int64_t offset)
{
    const Range run
        = Range::between(startOfRun(text, offset, Kind::word), endOfRun(text, offset, Kind::word));
    const int64_t windowStart = text.startOfCodePoint(std::max(run.location, offset - dictionaryReach));
    const int64_t windowEnd = text.startOfCodePoint(std::min(run.end(), offset + dictionaryReach));
    const Range window = Range::between(windowStart, windowEnd);
    if (!needsDictionary(text, window))
        return run;
    std::u16string storage;
    UBreakIterator* words = breakIterator(UBRK_WORD, text.contiguous(window, storage));
    const int32_t end = ubrk_following(words, static_cast<int32_t>(offset - windowStart));
    const int32_t start = ubrk_previous(words);
    if (end == UBRK_DONE || start == UBRK_DONE)
        return run;
    return Range::between(windowStart + start, windowStart + end);
}

/// The word or the run of one kind that holds the character at `offset`.
Range unitHolding(UnitReader& text, int64_t offset)
{
    const Kind kind = kindAt(text, offset);
    if (kind == Kind::word)
        return wordHolding(text, offset);
    return Range::between(startOfRun(text, offset, kind), endOfRun(text, offset, kind));
}

} // namespace

int64_t nextWordEnd(const Rope& rope, int64_t offset)
{
    UnitReader text(rope);
    offset = std::max<int64_t>(offset, 0);
    if (offset >= text.length())
        return text.length();
    const int64_t start = endOfRun(text, offset, Kind::blank);
    if (start == text.length())
        return start;
    switch (kindAt(text, start)) {
    case Kind::lineFeed:
        return start > offset ? start : start + 1;
    case Kind::blank: // a run that was cut
        return start;
    case Kind::word:
        return wordHolding(text, start).end();
    case Kind::mark:
        break;
    }
    const int64_t end = endOfRun(text, start, Kind::mark);
    const bool isOneMark = nextGrapheme(text, start) == end;
    if (isOneMark && end < text.length() && kindAt(text, end) == Kind::word)
        return wordHolding(text, end).end();
    return end;
}

int64_t previousWordStart(const Rope& rope, int64_t offset)
{
    UnitReader text(rope);
    offset = std::min(offset, text.length());
    if (offset <= 0)
        return 0;
    const int64_t end = startOfRun(text, offset, Kind::blank);
    if (end == 0)
        return 0;
    const int64_t last = previousGrapheme(text, end);
    switch (kindAt(text, last)) {
    case Kind::lineFeed:
        return end < offset ? end : last;
    case Kind::blank: // a run that was cut
        return end;
    case Kind::word:
        return wordHolding(text, last).location;
    case Kind::mark:
        break;
    }
    const int64_t start = startOfRun(text, end, Kind::mark);
    const bool isOneMark = start == last;
    const bool joinsWords = isOneMark && start > 0 && kindBefore(text, start) == Kind::word
        && end < text.length() && kindAt(text, end) == Kind::word;
    return joinsWords ? wordHolding(text, previousGrapheme(text, start)).location : start;
}

Range wordAt(const Rope& rope, int64_t offset)
{
    UnitReader text(rope);
    offset = std::clamp<int64_t>(offset, 0, text.length());
    if (offset < text.length()) {
        const int64_t start = previousGrapheme(text, nextGrapheme(text, offset));
        if (kindAt(text, start) != Kind::lineFeed)
            return unitHolding(text, start);
    }
    const bool startsLine = offset == 0 || text[offset - 1] == '\n';
    return startsLine ? Range{offset, 0} : unitHolding(text, previousGrapheme(text, offset));
}

} // namespace quillmark
