#include "desktop/QtShaper.h"
#include "desktop/DisplayText.h"
#include "desktop/EmojiRuns.h"
#include "desktop/Fonts.h"
#include "text/Unicode.h"

#include <QFontInfo>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

namespace quillmark {

namespace {

constexpr double unlimited = 100'000;

QtShaper shaperAt(double devicePixelRatio, double fontSize = 13)
{
    return QtShaper(editorFont({}, fontSize), devicePixelRatio);
}

std::unique_ptr<QtShapedText> shaped(
    std::u16string_view text, double width = unlimited, Direction direction = Direction::leftToRight)
{
    const QtShaper shaper = shaperAt(1);
    return std::make_unique<QtShapedText>(text, width, direction, shaper.font(), shaper.metrics());
}

QImage drawn(const QtShapedText& text, int width)
{
    const RowMetrics metrics = shaperAt(1).metrics();
    QImage image(width, static_cast<int>(metrics.height), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    text.draw(painter, 0, {0, 0});
    return image;
}

} // namespace

TEST(DisplayText, ReplacesWhatAnEngineWouldObeyUnitForUnit)
{
    const std::u16string text
        = u"a\tb" + std::u16string(1, u'\0') + u"\r\x1b\x7f\x85\u2028\u2029\uFFFC\u00A0" + u"\U0001F600";
    const std::u16string shown = displayText(text);
    EXPECT_EQ(shown, u"a\tb\u2400\u240D\u241B\u2421\uFFFD\u2424\u2424\uFFFD\u00A0\U0001F600");
}

TEST(DisplayText, ShowsLoneSurrogatesAsReplacementCharacters)
{
    const char16_t units[] = {0xDC00, 0xD83D, u'x', 0xD83D, 0xD83D, 0xDE00, 0xD83D};
    const char16_t expected[] = {0xFFFD, 0xFFFD, u'x', 0xFFFD, 0xD83D, 0xDE00, 0xFFFD};
    EXPECT_EQ(displayText({units, 7}), std::u16string(expected, 7));
}

TEST(QtShaper, RowsCoverTheTextAndCaretStopsAscend)
{
    const std::u16string texts[] = {u"", u"word", u"Съешь ещё этих мягких французских булок, да выпей чаю",
        u"unbreakable" + std::u16string(300, u'x'), u"tab\tand\ttab", std::u16string(80, u' '),
        u"ноль" + std::u16string(1, u'\0') + u"и\u2028разделители\u2029 в\rстроке",
        u"漢字かな交じり文 и 👩‍👩‍👧‍👦 семья 🇷🇺 e\u0301",
        std::u16string(1, char16_t(0xD800)) + u" lone"};
    for (const std::u16string& text : texts) {
        for (const double width : {0.0, 5.0, 60.0, 200.0, unlimited}) {
            const auto layout = shaped(text, width);
            ASSERT_GE(layout->rowCount(), 1);
            int64_t reached = 0;
            for (int row = 0; row < layout->rowCount(); ++row) {
                const Range range = layout->row(row);
                ASSERT_EQ(range.location, reached);
                ASSERT_TRUE(range.length > 0 || text.empty());
                double x = 0;
                for (int64_t offset = range.location; offset <= range.end(); ++offset) {
                    ASSERT_GE(layout->xOfOffset(row, offset), x);
                    x = layout->xOfOffset(row, offset);
                }
                reached = range.end();
            }
            ASSERT_EQ(reached, static_cast<int64_t>(text.size()));
        }
    }
}

TEST(QtShaper, BreaksNoLineAtSeparatorsInsideIt)
{
    EXPECT_EQ(shaped(u"one\u2028two\u2029three\x85four\rfive\vsix\fseven")->rowCount(), 1);
}

TEST(QtShaper, HitsTheNearestCaretStop)
{
    const auto layout = shaped(u"abc");
    const double b = layout->xOfOffset(0, 1);
    const double c = layout->xOfOffset(0, 2);
    EXPECT_EQ(layout->offsetAtX(0, -50), 0);
    EXPECT_EQ(layout->offsetAtX(0, b + (c - b) * 0.4), 1);
    EXPECT_EQ(layout->offsetAtX(0, b + (c - b) * 0.6), 2);
    EXPECT_EQ(layout->offsetAtX(0, 5000), 3);
}

TEST(QtShaper, NeverPutsTheCaretIntoAnEmoji)
{
    const std::u16string family = u"👩‍👩‍👧‍👦";
    const auto layout = shaped(u"a" + family + u"b");
    const auto end = static_cast<int64_t>(1 + family.size());
    const double left = layout->xOfOffset(0, 1);
    const double right = layout->xOfOffset(0, end);
    ASSERT_GT(right, left);
    for (int step = 0; step <= 20; ++step) {
        const int64_t hit = layout->offsetAtX(0, left + (right - left) * step / 20);
        EXPECT_TRUE(hit == 1 || hit == end) << hit;
    }
}

TEST(QtShaper, WrapsBetweenWordsAndKeepsSpacesInTheRow)
{
    const double advance = shaperAt(1).metrics().averageAdvance;
    const auto layout = shaped(u"aaaa    bbbb", 6 * advance);
    ASSERT_EQ(layout->rowCount(), 2);
    EXPECT_EQ(layout->row(0), (Range{0, 8}));
}

TEST(QtShaper, TabsStopEveryFourCharacters)
{
    const double advance = shaperAt(1).metrics().averageAdvance;
    const auto layout = shaped(u"\tab\tc");
    EXPECT_DOUBLE_EQ(layout->xOfOffset(0, 1), 4 * advance);
    EXPECT_DOUBLE_EQ(layout->xOfOffset(0, 4), 8 * advance);
}

TEST(QtShaper, RowsAreWholeDevicePixelsAndOneAndAHalfFontsHigh)
{
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        for (const double size : {9.0, 12.5, 13.0, 24.0}) {
            const RowMetrics metrics = shaperAt(ratio, size).metrics();
            for (const double pixels : {metrics.height * ratio, metrics.baseline * ratio})
                EXPECT_NEAR(pixels, std::round(pixels), 1e-9) << ratio << ' ' << size;
            EXPECT_NEAR(metrics.height / size, 1.5 * 1.17, 0.15);
        }
    }
}

TEST(QtShaper, FallbackFontsDoNotMoveTheBaseline)
{
    const auto plain = shaped(u"Ag");
    const int width = static_cast<int>(plain->edges(0).right);
    EXPECT_EQ(drawn(*plain, width), drawn(*shaped(u"Ag\u3000漢😀ཪྵ"), width));
}

TEST(EmojiRuns, AreWhatIsShownAsEmojiAndNothingElse)
{
    const std::u16string_view emoji[]
        = {u"😀", u"👩‍👩‍👧‍👦", u"👍🏽", u"☝🏽", u"🇷🇺", u"1\uFE0F\u20E3", u"❤\uFE0F",
            u"❤\uFE0F\u200D🔥", u"⚡", u"✅", u"🏴󠁧󠁢󠁳󠁣󠁴󠁿", u"©\uFE0F"};
    for (const auto character : emoji) {
        const auto length = static_cast<int64_t>(character.size());
        EXPECT_EQ(emojiRuns(character), std::vector{Range({0, length})}) << utf8(character);
        const std::u16string twice = std::u16string(character) + std::u16string(character);
        EXPECT_EQ(emojiRuns(u"аб" + twice + u"в"), std::vector{Range({2, 2 * length})}) << utf8(character);
    }
    for (const std::u16string_view plain :
        {u"12 #* ©®™ ℹ ☺ ❤ ↔ ▶", u"⚡\uFE0E", u"─│┌ ⠿ ■", u"漢字 हिन्दी שלום", u"\xFE0F", u"x\xFE0F", u""})
        EXPECT_TRUE(emojiRuns(plain).empty()) << utf8(plain);
    const char16_t broken[] = {0xD83D, u'x', 0xDE00, 0xD83C};
    EXPECT_TRUE(emojiRuns({broken, 4}).empty());
}

TEST(QtShaper, DrawsEmojiInColorAndTheirNeighboursInThePen)
{
    const auto isColored = [](std::u16string_view text) {
        const auto layout = shaped(text);
        const QImage image = drawn(*layout, static_cast<int>(layout->edges(0).right) + 4);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (QColor(image.pixel(x, y)).saturation() > 60)
                    return true;
        return false;
    };
    for (const std::u16string_view emoji : {u"😀", u"⚡", u"❤\uFE0F", u"1\uFE0F\u20E3"})
        EXPECT_TRUE(isColored(emoji)) << utf8(emoji);
    for (const std::u16string_view plain : {u"123#", u"©™", u"❤", u"⚡\uFE0E"})
        EXPECT_FALSE(isColored(plain)) << utf8(plain);
}

TEST(QtShaper, ComposesAnEmojiOfManyCharacters)
{
    const double one = shaped(u"😀")->edges(0).right;
    for (const std::u16string_view emoji : {u"👩‍👩‍👧‍👦", u"👍🏽", u"🇷🇺", u"1\uFE0F\u20E3",
             u"❤\uFE0F", u"❤\uFE0F\u200D🔥", u"🏳\uFE0F\u200D🌈", u"🏴󠁧󠁢󠁳󠁣󠁴󠁿"})
        EXPECT_NEAR(shaped(emoji)->edges(0).right, one, 0.5) << utf8(emoji);
}

TEST(QtShaper, SelectionFollowsMixedDirections)
{
    const auto layout = shaped(u"abc שלום def");
    const auto half
        = layout->spans(0, {0, 6}); // "abc " and the first half of the Hebrew word, which stands right
    ASSERT_EQ(half.size(), 2U);
    EXPECT_NEAR(half[0].left, 0, 0.01);
    EXPECT_GT(half[1].left, half[0].right + 1);
    EXPECT_EQ(layout->spans(0, {0, 12}).size(), 1U);
    EXPECT_TRUE(layout->spans(0, {3, 0}).empty());
}

TEST(QtShaper, ALineFromRightToLeftStandsAtTheRightEdge)
{
    constexpr double width = 400;
    const auto line = shaped(u"שלום abc 12 טוב", width, Direction::rightToLeft);
    ASSERT_EQ(line->rowCount(), 1);
    const Span edges = line->edges(0);
    EXPECT_EQ(edges.right, width);
    EXPECT_NEAR(edges.left, width - shaped(u"שלום abc 12 טוב")->edges(0).right, 1);
    EXPECT_NEAR(line->xOfOffset(0, 0), width, 0.5);
    EXPECT_NEAR(line->xOfOffset(0, 15), edges.left, 0.5);
    EXPECT_EQ(line->offsetAtX(0, width + 50), 0);
    EXPECT_EQ(line->offsetAtX(0, 0), 15);
    const auto word = line->spans(0, {0, 4});
    ASSERT_EQ(word.size(), 1U);
    EXPECT_NEAR(word[0].right, width, 1);
    EXPECT_GT(word[0].left, edges.left + 10);
    EXPECT_FALSE(line->isDrawnAlike(0, *shaped(u"שלום abc 12 טוב", 500, Direction::rightToLeft), 0));

    const auto foreign = shaped(u"abc abc", width, Direction::rightToLeft); // a row of its line
    EXPECT_NEAR(foreign->spans(0, {0, 7}).front().right, width, 1);
    EXPECT_FALSE(foreign->isDrawnAlike(0, *shaped(u"abc abc", width), 0));

    const auto wrapped = shaped(u"שלום     שלום", edges.right / 8, Direction::rightToLeft);
    ASSERT_EQ(wrapped->rowCount(), 2);
    for (int row = 0; row < 2; ++row)
        EXPECT_NEAR(wrapped->spans(row, {row * 9, 4}).front().right, width / 8, 1) << row;
}

TEST(Fonts, SizesArePixelsFractionsIncluded)
{
    for (const double size : {9.0, 12.5, 13.0, 13.3, 24.0})
        EXPECT_NEAR(QFontInfo(editorFont({}, size)).pixelSize(), std::round(size), 0.51) << size;
    const double small = shaperAt(2, 13).metrics().height;
    const double large = shaperAt(2, 13.5).metrics().height;
    EXPECT_GT(large, small);
}

TEST(Fonts, TakesTheNamedFontOnlyWhenItIsInstalledExactly)
{
    const QString monospaced = QFontInfo(editorFont({}, 13)).family();
    EXPECT_EQ(QFontInfo(editorFont("JetBrains Mono", 13)).family(), QStringLiteral("JetBrains Mono"));
    EXPECT_EQ(QFontInfo(editorFont("JetBrains", 13)).family(), monospaced);
    EXPECT_FALSE(isFontInstalled("jetbrains mono no such font"));
    EXPECT_TRUE(QFontInfo(editorFont({}, 13)).fixedPitch());
}

} // namespace quillmark
