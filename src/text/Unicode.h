// What the program needs of Unicode, over ICU. Pure functions on UTF-16; offsets are units from the start of
// the text given, and are cut to it. Lone surrogates and NULs are characters like others. Any thread.
#pragma once

#include "text/Rope.h"

#include <string>
#include <string_view>

namespace quillmark {

/// Whether an offset lies between the two halves of a surrogate pair.
bool splitsPair(const Rope& text, int64_t offset);

// Conversion. Ill-formed input becomes U+FFFD, one per maximal ill-formed subpart.
std::u16string utf16(std::string_view utf8);
std::string utf8(std::u16string_view text);

// User-perceived characters (extended grapheme clusters, UAX #29). A cluster of more than some thousand units
// is cut, so that one step stays cheap in any text.
int64_t nextGrapheme(std::u16string_view text, int64_t offset); ///< the boundary behind `offset`
int64_t previousGrapheme(std::u16string_view text, int64_t offset); ///< the boundary before `offset`
int64_t graphemeCount(std::u16string_view text);
std::u16string_view firstGraphemes(
    std::u16string_view text, int64_t count); ///< at most `count` whole characters

// The same on a rope; they look at a few units around the offset.
int64_t nextGrapheme(const Rope& text, int64_t offset);
int64_t previousGrapheme(const Rope& text, int64_t offset);
/// Where one press of Backspace at `offset` deletes from. Scripts whose marks have keys of their own (Indic
/// ones, Thai, Arabic, Hebrew …) lose one code point; an emoji, a flag, CR LF, a Hangul syllable and a Latin,
/// Cyrillic or Greek letter with its marks go as a whole.
int64_t backwardDeletion(const Rope& text, int64_t offset);

// Words for the caret and for double-click. A word is a run of letters, marks, digits and underscores, with
// an apostrophe between letters and a full stop or comma between digits; dictionaries cut scripts without
// spaces. Runs of other signs are stops like words, but one sign alone is passed over with the word that it
// touches
// ("object.method" has two stops). A line feed is a stop of its own. Longer runs than 4 K units are cut.
int64_t nextWordEnd(const Rope& text, int64_t offset); ///< Ctrl+Right: behind the next word
int64_t previousWordStart(const Rope& text, int64_t offset); ///< Ctrl+Left: before the previous word
/// The word, the run of blanks or of other signs that holds the character at `offset`; at the end of a line
/// the last one of the line. Empty on an empty line.
Range wordAt(const Rope& text, int64_t offset);

// Classes and trimming.
bool isWhiteSpace(char32_t c); ///< the property White_Space
bool isHorizontalSpace(char32_t c); ///< general category Zs, and the tab
std::u16string_view trimmedHorizontally(std::u16string_view text);
std::u16string_view trimmed(std::u16string_view text); ///< white space and line breaks at both ends

// Case (the default mapping, no locale) and equivalence.
std::u16string lowercase(std::u16string_view text);
bool canonicallyEqual(std::u16string_view a, std::u16string_view b);

} // namespace quillmark
