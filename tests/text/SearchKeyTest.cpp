#include "text/SearchKey.h"

#include "support/Random.h"
#include "support/TestEnvironment.h"
#include "text/Unicode.h"

#include <gtest/gtest.h>

namespace quillmark::test {
namespace {

bool finds(std::u16string_view query, std::u16string_view text)
{
    const SearchKey key(query);
    const bool found = key.isFoundIn(text);
    EXPECT_EQ(key.isFoundInUtf8(utf8(text)), found) << utf8(query) << " in " << utf8(text);
    return found;
}

TEST(SearchKey, IgnoresCaseAndBlanksAround)
{
    EXPECT_TRUE(finds(u"ПЛАН", u"мой план"));
    EXPECT_TRUE(finds(u"план", u"МОЙ ПЛАН"));
    EXPECT_TRUE(finds(u" \tplan\u00A0", u"A PLAN"));
    EXPECT_TRUE(finds(u"ЎҐЁ", u"ўґё"));
    EXPECT_TRUE(finds(u"ÀÞ", u"àþ"));
    EXPECT_FALSE(finds(u"×", u"÷")) << "signs between the letters have no case";
    EXPECT_TRUE(finds(u"ΣΟΦΟΣ", u"σοφος") || finds(u"ΣΟΦΟΣ", u"σοφος ΣΟΦΟΣ"));
    EXPECT_FALSE(finds(u"a b", u"a  b")) << "blanks inside count";
    EXPECT_TRUE(SearchKey(u" \t\u3000").isEmpty());
    EXPECT_FALSE(SearchKey(u"\n").isEmpty());
}

TEST(SearchKey, LettersAreFoundHoweverTheyAreWrittenButNotWithoutTheirMarks)
{
    EXPECT_FALSE(finds(u"е", u"ё"));
    EXPECT_FALSE(finds(u"е", u"е\u0308"));
    EXPECT_TRUE(finds(u"е", u"е\u0308 е"));
    EXPECT_TRUE(finds(u"ё", u"Е\u0308"));
    EXPECT_TRUE(finds(u"и\u0306", u"Й"));
    EXPECT_TRUE(finds(u"é", u"e\u0301"));
    EXPECT_TRUE(finds(u"가", u"\u1100\u1161"));
    EXPECT_TRUE(finds(u"👍", u"так 👍🏽 — “да…”"));
}

TEST(SearchKey, TheQuickAnswerIsTheFullOne)
{
    Random random;
    const std::u16string all = u"аАёЁйЙ яaZé×\u0306\u0308·—“№ßİк\u0301\u2000ж\u1E9E";
    const std::u16string common = u"аАпПрРяЯѐЀџЏ aAzZ@[àÀþÞ×÷ß·—"; // texts of these are folded in blocks
    const auto text = [&](const std::u16string& letters, int64_t most) {
        std::u16string result;
        for (int64_t n = random.below(most + 1); n > 0; --n)
            result += random.below(20) == 0 ? std::u16string(u"\U0001F600")
                                            : std::u16string(1, random.pick(letters));
        return result;
    };
    for (int i = 0; i < 20'000; ++i) {
        finds(text(all, 3), text(all, 12));
        finds(text(common, 2), text(common, 24));
    }
    for (int i = 0; i < 20'000; ++i) {
        std::string bytes;
        for (int64_t n = random.below(6); n > 0; --n)
            bytes += static_cast<char>(random.below(256));
        SearchKey(u"ж").isFoundInUtf8(bytes);
    }
}

} // namespace
} // namespace quillmark::test
