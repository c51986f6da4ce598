#include "text/Unicode.h"

#include "support/Repeated.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace quillmark {
namespace {

using namespace std::string_literals;
using test::repeated;

void append(std::u16string& text, char32_t c)
{
    if (c > 0xFFFF)
        text += static_cast<char16_t>(0xD7C0 + (c >> 10));
    text += static_cast<char16_t>(c > 0xFFFF ? 0xDC00 + (c & 0x3FF) : c);
}

/// All boundaries that ICU finds in the whole text.
std::vector<int64_t> boundariesOf(const std::u16string& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UBreakIterator, decltype(&ubrk_close)> iterator(
        ubrk_open(UBRK_CHARACTER, "", text.data(), static_cast<int32_t>(text.size()), &status), ubrk_close);
    std::vector<int64_t> boundaries;
    for (int32_t i = ubrk_first(iterator.get()); i != UBRK_DONE; i = ubrk_next(iterator.get()))
        boundaries.push_back(i);
    return boundaries;
}

void expectBoundaries(const std::u16string& text)
{
    SCOPED_TRACE(utf8(text));
    const std::vector<int64_t> boundaries = boundariesOf(text);
    const Rope rope(text);
    for (int64_t i = 0; i < static_cast<int64_t>(text.size()); ++i) {
        const int64_t next = *std::ranges::upper_bound(boundaries, i);
        ASSERT_EQ(nextGrapheme(text, i), next) << "after " << i;
        ASSERT_EQ(nextGrapheme(rope, i), next) << "after " << i << " in the rope";
        const int64_t previous = *std::prev(std::ranges::upper_bound(boundaries, i));
        ASSERT_EQ(previousGrapheme(text, i + 1), previous) << "before " << i + 1;
        ASSERT_EQ(previousGrapheme(rope, i + 1), previous) << "before " << i + 1 << " in the rope";
    }
    EXPECT_EQ(graphemeCount(text), static_cast<int64_t>(boundaries.size()) - 1);
}

TEST(Grapheme, AgreesWithIcuWhateverStandsSideBySide)
{
    constexpr char32_t mixture[]
        = {'a', 'b', ' ', '\n', '\r', 0, 0xAD, 0xA9, 0x300, 0x301, 0x438, 0x306, // Latin…
            0x600, 0x628, 0x64E, 0x915, 0x937, 0x94D, 0x93F, 0x9CD, 0x995, 0xD15, 0xD4D, 0xD4E, 0x200D,
            0x200C, // Indic
            0xE01, 0xE33, 0xE48, 0xEB3, 0x1780, 0x17D2, 0x1100, 0x1161, 0x11A8, 0xAC00, 0xAC01, 0xA960,
            0xD7B0, 0xD7CB, 0x1F1F7, 0x1F1FA, 0x1F1FA, 0x1F468, 0x1F469, 0x1F467, 0x1F3FD, 0x2764, 0xFE0F,
            0x20E3, '1', 0xE0062, 0xE007F, 0x1F3F4, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0x2028, 0xFEFF, 0x110BD,
            0x11083, 0x1F9D1, 0x10FFFF};
    std::mt19937_64 random(test::seed());
    for (int round = 0; round < 1500; ++round) {
        // A few characters at a time, so that each text is full of what these do to each other.
        std::vector<char32_t> chosen;
        std::ranges::sample(mixture, std::back_inserter(chosen), 2 + static_cast<int>(random() % 12), random);
        std::u16string text;
        for (uint64_t count = 1 + random() % 60; count > 0; --count)
            append(text, chosen[random() % chosen.size()]);
        expectBoundaries(text);
        if (HasFatalFailure())
            return;
    }
}

TEST(Grapheme, AgreesWithIcuInClustersLongerThanAWindow)
{
    expectBoundaries(repeated(u"👩‍👩‍👧‍👦\u200D", 60) + u"x" + repeated(u"🇷🇺", 60) + u"क"
        + repeated(u"\u094Dष", 60) + u"yа" + repeated(u"\u0301\u0327", 60) + u"\u0301z");
}

TEST(Grapheme, EndlessClustersAreCutAndStillLedThrough)
{
    const std::u16string marks = u"a" + std::u16string(300'000, u'\u0301');
    const std::u16string flags = repeated(u"🇷🇺", 50'000);
    const Rope markRope(marks), flagRope(flags);
    const auto end = static_cast<int64_t>(marks.size());
    int64_t forward = 0, backward = end, steps = 0;
    while (forward < end && ++steps < 2000)
        forward = nextGrapheme(markRope, forward);
    EXPECT_EQ(forward, end);
    while (backward > 0 && ++steps < 2000)
        backward = previousGrapheme(markRope, backward);
    EXPECT_EQ(backward, 0);
    for (const int64_t flag : {0, 12'000, 49'999}) {
        EXPECT_EQ(nextGrapheme(flagRope, 4 * flag), 4 * flag + 4);
        EXPECT_EQ(previousGrapheme(flagRope, 4 * flag + 4), 4 * flag);
    }
    EXPECT_EQ(graphemeCount(flags), 50'000);
}

/// What one press of Backspace at the end leaves.
std::u16string afterBackspace(std::u16string text)
{
    text.resize(static_cast<size_t>(backwardDeletion(Rope(text), static_cast<int64_t>(text.size()))));
    return text;
}

TEST(BackwardDeletion, TakesWholeCharactersWhereMarksAreNotTypedAlone)
{
    EXPECT_EQ(afterBackspace(u"xab"), u"xa");
    EXPECT_EQ(afterBackspace(u"xи\u0306"), u"x");
    EXPECT_EQ(afterBackspace(u"xe\u0301\u0327"), u"x");
    EXPECT_EQ(afterBackspace(u"x👩🏽‍👩‍👧‍👦"), u"x");
    EXPECT_EQ(afterBackspace(u"x🇷🇺🇩🇪"), u"x🇷🇺");
    EXPECT_EQ(afterBackspace(u"x1\uFE0F\u20E3"), u"x");
    EXPECT_EQ(afterBackspace(u"x\u1112\u1161\u11AB"), u"x");
    EXPECT_EQ(afterBackspace(u"x\r\n"), u"x");
    EXPECT_EQ(afterBackspace(u""), u"");
}

TEST(BackwardDeletion, TakesOneCodePointWhereMarksAreTypedAlone)
{
    EXPECT_EQ(afterBackspace(u"क्षि"), u"क्ष");
    EXPECT_EQ(afterBackspace(u"क्ष"), u"क्");
    EXPECT_EQ(afterBackspace(u"ที่"), u"ที");
    EXPECT_EQ(afterBackspace(u"ក្ក"), u"ក្");
    EXPECT_EQ(afterBackspace(u"بَ"), u"ب");
    EXPECT_EQ(afterBackspace(u"שׁ"), u"ש");
}

/// The text with a bar wherever Ctrl+Right stops, from the start on.
std::string wordEnds(std::u16string text)
{
    const Rope rope(text);
    std::vector<int64_t> stops;
    for (int64_t i = 0; i < rope.length();)
        stops.push_back(i = nextWordEnd(rope, i));
    for (auto stop = stops.rbegin(); stop != stops.rend(); ++stop)
        text.insert(static_cast<size_t>(*stop), u"|");
    return utf8(text);
}

/// The text with a bar wherever Ctrl+Left stops, from the end on.
std::string wordStarts(std::u16string text)
{
    const Rope rope(text);
    for (int64_t i = rope.length(); i > 0;)
        text.insert(static_cast<size_t>(i = previousWordStart(rope, i)), u"|");
    return utf8(text);
}

TEST(WordMotion, StopsAtTheEndOfTheNextAndTheStartOfThePreviousWord)
{
    EXPECT_EQ(wordEnds(u"one  two\tтри"), "one|  two|\tтри|");
    EXPECT_EQ(wordStarts(u"one  two\tтри "), "|one  |two\t|три ");
    EXPECT_EQ(wordEnds(u"it’s don't об'єкт 'a'"), "it’s| don't| об'єкт| 'a|'|");
}

TEST(WordMotion, KeepsUnderscoresNumbersAndMarksInTheWord)
{
    EXPECT_EQ(wordEnds(u"_ __a max_len 3.14 1,000 v2 и\u0306о\u0301"),
        "_| __a| max_len| 3.14| 1,000| v2| и\u0306о\u0301|");
    EXPECT_EQ(wordStarts(u"_x 3.14 v2"), "|_x |3.14 |v2");
}

TEST(WordMotion, TakesOneMarkInFrontOfAWordWithItAndStopsBehindMore)
{
    EXPECT_EQ(wordEnds(u"object.method(x); из-за"), "object|.method|(x|);| из|-за|");
    EXPECT_EQ(wordStarts(u"object.method == из-за"), "|object.|method |== |из-|за");
    EXPECT_EQ(wordEnds(u"да, нет — 👍👍"), "да|,| нет| —| 👍👍|");
}

TEST(WordMotion, LineFeedsAreStops)
{
    EXPECT_EQ(wordEnds(u"a  \n\n  b"), "a|  |\n|\n|  b|");
    EXPECT_EQ(wordStarts(u"a  \n\n  b"), "|a  |\n|\n|  |b");
}

TEST(WordMotion, CutsScriptsWithoutSpacesByDictionary)
{
    EXPECT_EQ(wordEnds(u"สวัสดีครับ"), "สวัสดี|ครับ|");
    EXPECT_EQ(wordEnds(u"abc漢字です"), "abc|漢字|です|");
    const Rope rope(repeated(u"สวัสดีครับ", 2000));
    EXPECT_EQ(nextWordEnd(rope, 5000), 5006);
    EXPECT_EQ(previousWordStart(rope, 5010), 5006);
}

TEST(WordMotion, EndlessRunsAndOddUnitsStillLeadThrough)
{
    std::mt19937_64 random(test::seed());
    std::u16string odd;
    for (int i = 0; i < 300; ++i)
        append(odd, U"\0a \n.'_\u0301\u200D\xD83D\xDE00\xDFFF\u3042\u0E01\U0001F468"[random() % 15]);
    for (const std::u16string& text :
        {std::u16string(100'000, u'x'), std::u16string(100'000, u' '), std::u16string(100'000, u'!'), odd}) {
        const Rope rope(text);
        const auto isBoundary = [&rope](int64_t stop) {
            return stop == rope.length() || previousGrapheme(rope, nextGrapheme(rope, stop)) == stop;
        };
        int64_t offset = 0;
        for (int64_t next; offset < rope.length(); offset = next) {
            ASSERT_GT(next = nextWordEnd(rope, offset), offset);
            ASSERT_TRUE(isBoundary(next)) << next << " in " << utf8(text);
        }
        for (int64_t next; offset > 0; offset = next) {
            ASSERT_LT(next = previousWordStart(rope, offset), offset);
            ASSERT_TRUE(isBoundary(next)) << next << " in " << utf8(text);
        }
    }
}

TEST(WordAt, HoldsTheOffset)
{
    const Rope text(u"one  two.three\nend\n");
    EXPECT_EQ(wordAt(text, 1), (Range{0, 3}));
    EXPECT_EQ(wordAt(text, 3), (Range{3, 2}));
    EXPECT_EQ(wordAt(text, 8), (Range{8, 1}));
    EXPECT_EQ(wordAt(text, 9), (Range{9, 5}));
    EXPECT_EQ(wordAt(text, 14), (Range{9, 5})) << "the end of a line belongs to its last word";
    EXPECT_EQ(wordAt(text, 19), (Range{19, 0})) << "an empty line holds nothing";
    EXPECT_EQ(wordAt(Rope(u"🇷🇺🇩🇪 x"), 2), (Range{0, 8}));
    EXPECT_EQ(wordAt(Rope(), 0), (Range{0, 0}));
}

TEST(Trim, KnowsTheClassesOfSpaces)
{
    EXPECT_EQ(trimmedHorizontally(u"\t\u00A0 \u3000a b\u2003"), u"a b");
    EXPECT_EQ(trimmedHorizontally(u" \na\n "), u"\na\n") << "line breaks stay";
    EXPECT_EQ(trimmed(u"\r\n\u2028\u0085 \t a\nb \n"), u"a\nb");
    EXPECT_EQ(trimmed(u" \n\t"), u"");
    EXPECT_EQ(trimmed(u"\u200Ba"), u"\u200Ba") << "the zero-width space is no white space";
}

TEST(Case, UsesTheDefaultMapping)
{
    EXPECT_EQ(lowercase(u"ΟΔΟΣ İ I Й"), u"οδος i\u0307 i й");
    EXPECT_EQ(lowercase(std::u16string(1000, u'İ')).size(), 2000u) << "a result twice as long";
    EXPECT_EQ(lowercase(u""), u"");
}

TEST(CanonicallyEqual, IgnoresComposition)
{
    EXPECT_TRUE(canonicallyEqual(u"мой Ångström", u"мои\u0306 A\u030Angstro\u0308m"));
    EXPECT_TRUE(canonicallyEqual(u"a\u0323\u0307", u"a\u0307\u0323")) << "the order of marks";
    EXPECT_FALSE(canonicallyEqual(u"ﬁ", u"fi"));
    EXPECT_FALSE(canonicallyEqual(u"a", u"A"));
    EXPECT_FALSE(canonicallyEqual(u"", u"a"));
    EXPECT_FALSE(canonicallyEqual(u"й", u""));
}

} // namespace
} // namespace quillmark
