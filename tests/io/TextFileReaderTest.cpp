#include "io/TextFileReader.h"

#include "io/Encode.h"
#include "support/TestEnvironment.h"
#include "text/Unicode.h"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <random>

namespace quillmark::test {
namespace {

using namespace std::string_literals;

struct Decoded {
    std::u16string text;
    std::string encoding;
    std::string lineEndings = "LF";
    bool operator==(const Decoded&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Decoded& decoded)
{
    return out << testing::PrintToString(decoded.text) << " " << decoded.encoding << " "
               << decoded.lineEndings;
}

Decoded decode(std::string_view bytes)
{
    const auto result = TextFileReader::decode(bytes);
    EXPECT_EQ(result.lossy, result.encodingName == TextEncoding::repairedUtf8);
    EXPECT_EQ(result.text.text().find(u'\r'), std::u16string::npos);
    return {result.text.text(), std::string(nameOf(result.encodingName)),
        std::string(nameOf(result.lineEndings))};
}

std::string encoded(const Rope& text, LineEnds lineEnds = LineEnds::lf)
{
    std::string bytes;
    EXPECT_TRUE(encode(text, lineEnds, [&](std::string_view piece) {
        bytes += piece;
        return Status();
    }));
    return bytes;
}

/// What ICU makes of bytes, or nothing when it finds some that are ill-formed or not assigned.
std::optional<std::u16string> icu(const char* converter, std::string_view bytes)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const open = ucnv_open(converter, &status);
    ucnv_setToUCallBack(open, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    std::u16string text(bytes.size() + 1, u'\0');
    const int32_t length = ucnv_toUChars(open, text.data(), static_cast<int32_t>(text.size()), bytes.data(),
        static_cast<int32_t>(bytes.size()), &status);
    ucnv_close(open);
    if (U_FAILURE(status))
        return std::nullopt;
    text.resize(static_cast<size_t>(length));
    return text;
}

TEST(TextFileReader, TheFirstEncodingThatFitsWins)
{
    EXPECT_EQ(TextFileReader::decode(""), TextFileReader::Result());
    EXPECT_EQ(decode("М"), (Decoded{u"М", "UTF-8"}));
    EXPECT_EQ(decode("\xEF\xBB\xBF"), (Decoded{u"", "UTF-8"}));
    EXPECT_EQ(decode("\xEF\xBB\xBFя"), (Decoded{u"я", "UTF-8"}));
    EXPECT_EQ(decode("\xEF\xBB\xBF\xC0"), (Decoded{u"п»їА", "CP1251"}));
    EXPECT_EQ(decode("\xCF\xF0\xE8\xE2\xE5\xF2"), (Decoded{u"Привет", "CP1251"}));
    EXPECT_EQ(decode("\x98\xE9"), (Decoded{u"\u02DC\u00E9", "CP1252"}));
    EXPECT_EQ(decode("a\x98\x81"), (Decoded{u"a\uFFFD\uFFFD", "UTF-8?"}));
    EXPECT_EQ(decode("\xFF\xFE\x1F\x04"), (Decoded{u"П", "UTF-16"}));
    EXPECT_EQ(decode("\xFE\xFF\x04\x1F"), (Decoded{u"П", "UTF-16"}));
    EXPECT_EQ(decode("\xFF\xFE"), (Decoded{u"", "UTF-16"}));
    EXPECT_EQ(decode("\xFF\xFE\x1F"), (Decoded{u"яю\x1F", "CP1251"})) << "an odd number of bytes";
    EXPECT_EQ(decode("\xFF\xFE\x00\xD8"s).encoding, "CP1251") << "a high surrogate alone at the end";
    EXPECT_EQ(decode("\xFF\xFE\x00\xDC\x41\x00"s).encoding, "CP1251") << "a low surrogate alone";
    EXPECT_EQ(decode("\xFF\xFE\x3D\xD8\x00\xDE"s), (Decoded{u"😀", "UTF-16"}));
    EXPECT_EQ(decode("\xFF\xFE\x00\x00"s), (Decoded{u"\0"s, "UTF-16"}));
    EXPECT_EQ(decode("a\0b"s), (Decoded{u"a\0b"s, "UTF-8"}));
}

TEST(TextFileReader, LineBreaksBecomeLineFeeds)
{
    EXPECT_EQ(decode("a\r\nb\nc\rd"), (Decoded{u"a\nb\nc\nd", "UTF-8", "CRLF"}));
    EXPECT_EQ(decode("a\rb"), (Decoded{u"a\nb", "UTF-8", "LF"}));
    EXPECT_EQ(decode("\r\r\n\n\r"), (Decoded{u"\n\n\n\n", "UTF-8", "CRLF"}));
    EXPECT_EQ(decode("\xCF\r\n\xCF"), (Decoded{u"П\nП", "CP1251", "CRLF"}));
    EXPECT_EQ(decode("\xFF\xFE\x0D\x00\x0A\x00\x0D\x00\x41\x00\x0A\x0D"s),
        (Decoded{u"\n\nA\u0D0A", "UTF-16", "CRLF"}));
    // Wherever the reader cuts its input, a pair is a pair and a character is a character.
    for (size_t before = 1000; before < 1050; ++before) {
        const std::string filler(before, 'x');
        const std::u16string wide(before, u'x');
        EXPECT_EQ(decode(filler + "\r\n€"), (Decoded{wide + u"\n€", "UTF-8", "CRLF"}));
        EXPECT_EQ(decode(filler + "\r\r\n"), (Decoded{wide + u"\n\n", "UTF-8", "CRLF"}));
        EXPECT_EQ(decode(filler + "я\rя"), (Decoded{wide + u"я\nя", "UTF-8", "LF"}));
        EXPECT_EQ(decode(filler + "😀😀"), (Decoded{wide + u"😀😀", "UTF-8", "LF"}));
        EXPECT_EQ(decode(filler + "\xF0\x9F\x98\x98\x81").text, wide + u"\U0001F618\uFFFD");
    }
}

TEST(TextFileReader, CodePagesAreThoseOfIcu)
{
    // A byte that decides for the code page first: 0xC0 is never UTF-8, 0x98 not Windows-1251.
    for (int byte = 0x80; byte < 0x100; ++byte) {
        const char tail = static_cast<char>(byte);
        const std::string cyrillic = "\xC0 "s + tail;
        if (tail != '\x98') { // which ICU's table takes for a control character
            EXPECT_EQ(decode(cyrillic), (Decoded{*icu("ibm-5347_P100-1998", cyrillic), "CP1251"})) << byte;
        }
        const std::string western = "\x98 "s + tail;
        const bool isAssigned = std::string_view("\x81\x8D\x8F\x90\x9D").find(tail) == std::string_view::npos;
        const Decoded found = decode(western);
        EXPECT_EQ(found.encoding, isAssigned ? "CP1252" : "UTF-8?") << byte;
        EXPECT_EQ(found.text == icu("ibm-5348_P100-1997", western), isAssigned) << byte;
    }
}

TEST(TextFileReader, RepairsLikeTheStandardRecommends)
{
    // 0x98 and 0x81 keep the code pages out. The examples are those of the Unicode standard, tables 3-8 to
    // 3-11.
    const auto repaired = [](const std::string& bytes) {
        const Decoded result = decode("\x98\x81 " + bytes);
        EXPECT_EQ(result.encoding, "UTF-8?");
        return result.text.substr(3);
    };
    EXPECT_EQ(repaired("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"),
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA");
    EXPECT_EQ(repaired("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"),
        u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA");
    EXPECT_EQ(
        repaired("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"), u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB");
    EXPECT_EQ(repaired("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), u"\uFFFD\uFFFD\uFFFD\uFFFDA");
}

/// Text-like bytes: words of different scripts with some damage.
std::string randomBytes(std::mt19937_64& random, bool isDamaged)
{
    static const std::vector<std::string> parts = {"a", "word ", "Привет", " — ", "«№»", "\r\n", "\r", "\n",
        "😀", "中文", std::string(40, 'x'), "é", "\u0301", "абвгдежзийклмнопрстуф", "\0"s};
    std::string bytes;
    for (size_t count = random() % 400; count > 0; --count)
        bytes += parts[random() % parts.size()];
    if (isDamaged && !bytes.empty()) {
        for (size_t count = random() % 4; count > 0; --count)
            bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    return bytes;
}

std::u16string folded(std::u16string text)
{
    for (size_t at = 0; (at = text.find(u"\r\n", at)) != std::u16string::npos; ++at)
        text.erase(at, 1);
    std::ranges::replace(text, u'\r', u'\n');
    return text;
}

TEST(TextFileReader, AgreesWithIcuOnAnyBytesAndComesBackTheSame)
{
    std::mt19937_64 random(seed());
    for (int round = 0; round < 1500; ++round) {
        const std::string bytes = randomBytes(random, round % 2 == 0);
        const Decoded result = decode(bytes);
        if (const auto strict = icu("UTF-8", bytes)) {
            EXPECT_TRUE(result.text == folded(*strict)) << testing::PrintToString(bytes);
        } else if (result.encoding == "UTF-8?") {
            EXPECT_TRUE(result.text == folded(utf16(bytes))) << testing::PrintToString(bytes);
        } else {
            EXPECT_EQ(result.encoding.substr(0, 2), "CP");
        }
        const Rope text(result.text);
        const std::string saved = encoded(text);
        EXPECT_TRUE(saved == utf8(result.text));
        const auto again = TextFileReader::decode("x" + encoded(text, LineEnds::crlf));
        EXPECT_TRUE(again.text.text() == u"x" + result.text);
        EXPECT_EQ(again.lineEndings, text.lineCount() > 1 ? LineEnds::crlf : LineEnds::lf);
    }
    for (int round = 0; round < 300; ++round) {
        std::string bytes(random() % 3000, '\0');
        std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
        decode(bytes);
    }
}

TEST(Encode, LoneSurrogatesBecomeReplacementCharacters)
{
    EXPECT_EQ(encoded(Rope(u"a\xD83D")), "a\uFFFD");
    EXPECT_EQ(encoded(Rope(u"\xDE00\xD83D\xD83D\xDE00я")), "\uFFFD\uFFFD😀я");
    // Longer than the encoder's buffer and its steps, with pairs at every kind of offset.
    std::u16string text;
    for (int i = 0; i < 150'000; ++i)
        text += i % 7 == 0 ? u"\n" : i % 3 == 0 ? u"😀" : u"\u4E2D";
    EXPECT_EQ(encoded(Rope(text)), utf8(text));
    EXPECT_EQ(TextFileReader::decode(encoded(Rope(text), LineEnds::crlf)).text, Rope(text));
}

TEST(Encode, StopsWhenTheDiskDoes)
{
    int pieces = 0;
    const Status status = encode(Rope(std::u16string(2'000'000, u'x')), LineEnds::lf,
        [&](std::string_view) { return ++pieces == 2 ? Status(systemFailure(ENOSPC)) : Status(); });
    EXPECT_EQ(status.error().code, ENOSPC);
    EXPECT_EQ(pieces, 2);
}

} // namespace
} // namespace quillmark::test
