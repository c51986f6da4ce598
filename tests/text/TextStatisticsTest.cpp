#include "text/TextStatistics.h"

#include "support/Random.h"
#include "support/Repeated.h"
#include "text/Unicode.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quillmark::test {
namespace {

TextStatistics count(std::u16string_view text)
{
    return countText(Rope(text), CancelToken()).value();
}

/// Character by character, as ICU cuts them.
TextStatistics model(const std::u16string& text)
{
    TextStatistics result;
    std::vector<int64_t> lengths{0};
    bool isInWord = false;
    for (int64_t offset = 0; offset < static_cast<int64_t>(text.size());) {
        const int64_t next = nextGrapheme(text, offset);
        const std::u16string character
            = text.substr(static_cast<size_t>(offset), static_cast<size_t>(next - offset));
        offset = next;
        ++result.stats.chars;
        if (character == u"\n") {
            ++result.stats.lines;
            lengths.push_back(0);
        } else {
            ++lengths.back();
        }
        const bool isPair = character.size() > 1 && character[0] >= 0xD800 && character[0] < 0xDC00;
        const bool isWord = isPair || !isWhiteSpace(character[0]);
        result.stats.words += isWord && !isInWord;
        isInWord = isWord;
    }
    const int64_t rows = std::min<int64_t>(result.stats.lines, 400);
    for (int64_t i = 0; i < rows; ++i) {
        const double length
            = static_cast<double>(lengths[static_cast<size_t>(i * result.stats.lines / rows)]);
        result.minimapSamples.push_back(static_cast<float>(std::min(length / 80, 1.0)));
    }
    return result;
}

TEST(TextStatistics, CountsWhatTheUserSees)
{
    EXPECT_EQ(count(u""), (TextStatistics{{1, 0, 0}, {0}}));
    EXPECT_EQ(count(u"a b\nc"), (TextStatistics{{2, 3, 5}, {0.0375F, 0.0125F}}));
    EXPECT_EQ(count(u"a\n").stats, (TextStats{2, 1, 2}));
    EXPECT_EQ(count(u"  раз \t два\u2003три\u2028").stats, (TextStats{1, 3, 16}));
    EXPECT_EQ(count(u"👩‍👩‍👧 🇷🇺🇩🇪 е\u0308").stats, (TextStats{1, 3, 6}));
    EXPECT_EQ(count(u"a\r\nb").stats, (TextStats{1, 2, 3})) << "a pair is one character and no line feed";
    EXPECT_EQ(count(std::u16string(200, u'x')).minimapSamples, std::vector<float>{1});
}

TEST(TextStatistics, EqualsICUOnAnyText)
{
    Random random;
    const std::vector<std::u16string> pieces{u"a", u"я", u" ", u"\n", u"\t", u"\r", u"\u0301", u"\u200D",
        u"👩", u"❤", u"\uFE0F", u"🇷", u"\u0915", u"\u094D", u"\u0937", u"\u1100", u"\u1161", u"\uAC00",
        u"\u11A8", u"\u0600", u"\U000110BD", u"\u0E33", u"漢", std::u16string(1, u'\xD800'),
        std::u16string(1, u'\xDC00'), u"\u2028", u"\u00A0", u"\u0085", std::u16string(1, u'\0')};
    for (int round = 0; round < 3000; ++round) {
        std::u16string text;
        const int64_t kinds = round == 0 ? 5 : 1 + random.below(static_cast<int64_t>(pieces.size()));
        for (int64_t n = round == 0 ? 20'000 : random.below(40); n > 0;
            --n) // once with more lines than samples
            text += pieces[static_cast<size_t>(random.below(kinds))];
        ASSERT_EQ(count(text), model(text)) << testing::PrintToString(text);
    }
}

TEST(TextStatistics, LongStretchesAreCutBetweenCharacters)
{
    EXPECT_EQ(count(repeated(u"👩‍👩‍👧", 20'000)).stats, (TextStats{1, 1, 20'000}));
    EXPECT_EQ(count(u"a" + std::u16string(200'000, u'\u0301') + u"b").stats, (TextStats{1, 1, 2}));
    EXPECT_EQ(count(repeated(u"🇷🇺", 30'001)).stats.chars, 30'001);
}

TEST(TextStatistics, EndsEarlyWhenCancelled)
{
    const CancelToken cancelled(std::make_shared<std::atomic<bool>>(true));
    EXPECT_FALSE(countText(Rope(u"text"), cancelled));
}

} // namespace
} // namespace quillmark::test
