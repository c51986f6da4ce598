#include "text/Regex.h"

#include "support/Repeated.h"

#include "text/Unicode.h"

#include <gtest/gtest.h>

#include <thread>

namespace quillmark {
namespace {

using namespace std::chrono_literals;
using test::repeated;
using Outcome = Regex::Outcome;

Regex compiled(std::u16string_view pattern, Regex::Options options = {})
{
    Result<Regex> regex = Regex::compile(pattern, options);
    EXPECT_TRUE(regex.has_value()) << utf8(pattern);
    return std::move(*regex);
}

Range all(std::u16string_view text)
{
    return {0, static_cast<int64_t>(text.size())};
}

/// The text with each match in angle brackets.
std::string marked(Regex regex, const std::u16string& text)
{
    std::u16string result = text;
    std::vector<Range> ranges;
    EXPECT_EQ(regex.forEachMatch(text, all(text), {},
                  [&](const Regex::Match& match) {
                      ranges.push_back(match.range());
                      return true;
                  }),
        Outcome::finished);
    for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
        result.insert(static_cast<size_t>(range->end()), u">");
        result.insert(static_cast<size_t>(range->location), u"<");
    }
    return utf8(result);
}

TEST(Regex, FindsAllMatchesTheEmptyOnesIncluded)
{
    EXPECT_EQ(marked(compiled(u"\\w+"), u"один, 2 😀"), "<один>, <2> 😀");
    EXPECT_EQ(marked(compiled(u"x*"), u"axxb"), "<>a<xx><>b<>");
    EXPECT_EQ(marked(compiled(u"x*"), u"😀"), "<>😀<>") << "an empty match moves on by whole code points";
    EXPECT_EQ(marked(compiled(u"a"), u""), "");
    EXPECT_EQ(marked(compiled(u"$"), u""), "<>");
}

TEST(Regex, ObeysItsOptions)
{
    EXPECT_EQ(marked(compiled(u"йод", {.caseInsensitive = true}), u"ЙОД Йод"), "<ЙОД> <Йод>");
    EXPECT_EQ(marked(compiled(u"^b$"), u"a\nb\nc"), "a\nb\nc");
    EXPECT_EQ(marked(compiled(u"^b$", {.anchorsMatchLines = true}), u"a\nb\nc"), "a\n<b>\nc");
    EXPECT_EQ(marked(compiled(u"a.b", {.dotMatchesLineSeparators = true}), u"a\nb"), "<a\nb>");
    EXPECT_EQ(marked(compiled(u"\\bb", {}), u"a.b"), "a.<b>");
    EXPECT_EQ(marked(compiled(u"\\bb", {.wordBoundariesByUnicode = true}), u"a.b"), "a.b");
}

TEST(Regex, SearchesARangeButLooksAroundIt)
{
    const std::u16string text = u"xab\nab";
    std::vector<Range> found;
    Regex regex = compiled(u"(?<=x)a|\\bab|^a|b(?=\n)");
    regex.forEachMatch(text, {1, 2}, {}, [&](const Regex::Match& match) {
        found.push_back(match.range());
        return true;
    });
    EXPECT_EQ(found, (std::vector<Range>{{1, 1}, {2, 1}}));
    EXPECT_EQ(compiled(u"a").forEachMatch(text, {50, 9}, {}, [](auto&) { return false; }), Outcome::finished);
}

TEST(Regex, SaysWhereAPatternIsWrong)
{
    const auto error = [](std::u16string_view pattern) { return Regex::compile(pattern).error().message; };
    EXPECT_EQ(error(u"("), "Ошибка в выражении, символ 1");
    EXPECT_EQ(error(u"йц)"), "Ошибка в выражении, символ 3");
    EXPECT_EQ(error(u"(?x)a\n*("), "Ошибка в выражении, строка 2, символ 2");
    EXPECT_EQ(error(u""), "Пустое выражение");
    EXPECT_EQ(error(std::u16string(1'000'000, u'a')), "Слишком длинное выражение");
    for (const auto pattern :
        {u"[", u"\\", u"a{2,1}", u"(?<=a*)b", u"\\p{nothing}", u"x{99999999999}", u"(?<n"})
        EXPECT_FALSE(Regex::compile(pattern)) << utf8(pattern);
    EXPECT_FALSE(Regex::compile(std::u16string(50'000, u'(') + std::u16string(50'000, u')')));
}

// Bounds

constexpr std::u16string_view stringRule = u"\"(?:[^\"\\\\\\n]|\\\\.)*\"";

TEST(RegexLimits, WhatNeedsTooMuchMemorySaysSo)
{
    const std::u16string text(12'000'000, u'x');
    Regex regex = compiled(u"\\A(?:(x)|(y)|z)*!");
    EXPECT_EQ(regex.forEachMatch(text, all(text), {}, [](auto&) { return true; }), Outcome::tooComplex);
    EXPECT_TRUE(regex.firstMatch(u"xyz!")) << "and the expression still works";
}

TEST(RegexLimits, CatastrophesEndInTime)
{
    struct Case {
        std::u16string pattern;
        std::u16string text;
        Regex::Options options = {};
    };
    const Case cases[] = {
        {u"(a+)+$", std::u16string(40, u'a') + u"b"},
        {std::u16string(stringRule), repeated(u"\\\"", 40'000)},
        {u"/\\*[\\s\\S]*?\\*/", repeated(u"/* ", 50'000)},
        {u"^\\s*#\\s*[a-z]+", std::u16string(50'000, u'\n'), {.anchorsMatchLines = true}},
        {u"a*+b", std::u16string(1'000'000, u'a')},
        {u"(?=.*b)a", std::u16string(1'000'000, u'a')},
        {u"(a*)\\1b", std::u16string(1'000'000, u'a')},
        {u"(?:a{0,65535}){0,65535}b", std::u16string(5000, u'a')},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.pattern));
        Regex regex = compiled(c.pattern, c.options);
        const auto start = std::chrono::steady_clock::now();
        const Outcome outcome = regex.forEachMatch(
            c.text, all(c.text), {.cancel = {}, .time = 20ms}, [](auto&) { return true; });
        EXPECT_EQ(outcome, Outcome::timedOut);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << "a hundred deadlines, for slow machines";
    }
}

TEST(RegexLimits, TheDeadlineHoldsOverManyShortMatches)
{
    const std::u16string text(20'000'000, u'a');
    int64_t count = 0;
    Regex regex = compiled(u"a");
    const auto countUp = [&](const Regex::Match&) { return ++count > 0; };
    EXPECT_EQ(regex.forEachMatch(text, all(text), {.cancel = {}, .time = 5ms}, countUp), Outcome::timedOut);
    EXPECT_GT(count, 0);
    EXPECT_LT(count, 20'000'000);
}

TEST(RegexLimits, CancellingStopsBetweenMatchesAndInsideOne)
{
    const auto flag = std::make_shared<std::atomic<bool>>(false);
    const Regex::Limits limits{.cancel = CancelToken(flag), .time = {}};
    int count = 0;
    Regex many = compiled(u"a");
    EXPECT_EQ(many.forEachMatch(u"aaaaaa", {0, 6}, limits,
                  [&](const Regex::Match&) {
                      *flag = ++count == 3;
                      return true;
                  }),
        Outcome::cancelled);
    EXPECT_EQ(count, 3);

    *flag = false;
    const std::u16string text = std::u16string(40, u'a') + u"b"; // days, left alone
    std::jthread canceller([&] { *flag = true; });
    EXPECT_EQ(compiled(u"(a+)+$").forEachMatch(text, all(text), limits, [](auto&) { return true; }),
        Outcome::cancelled);
}

} // namespace
} // namespace quillmark
