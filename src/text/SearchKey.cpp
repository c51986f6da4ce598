#include "text/SearchKey.h"

#include "text/Unicode.h"

#include <cassert>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

namespace quillmark {
namespace {

std::u16string composed(std::u16string_view text)
{
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* const nfc = unorm2_getNFCInstance(&status);
    const auto length = static_cast<int32_t>(text.size());
    if (unorm2_spanQuickCheckYes(nfc, text.data(), length, &status) == length)
        return std::u16string(text);
    std::u16string result(text.size() * 3 + 16, u'\0'); // no composition grows more (UAX #15)
    const int32_t used = unorm2_normalize(
        nfc, text.data(), length, result.data(), static_cast<int32_t>(result.size()), &status);
    assert(U_SUCCESS(status));
    result.resize(static_cast<size_t>(used));
    return result;
}

std::u16string folded(std::u16string_view text)
{
    return composed(lowercase(text));
}

/// A letter whose mark is not part of the match is another letter.
bool isCutByMark(std::u16string_view text, size_t end)
{
    if (end >= text.size())
        return false;
    char32_t next;
    U16_NEXT(text.data(), end, text.size(), next);
    return u_getCombiningClass(static_cast<UChar32>(next)) != 0;
}

constexpr bool isTrail(unsigned char byte)
{
    return byte >= 0x80 && byte < 0xC0;
}

/// Folds UTF-8 whose characters have the same length in lower case and nothing to compose with: ASCII,
/// Latin-1, the Cyrillic of today, common punctuation, emoji. Stops at anything else.
class QuickFolder {
public:
    explicit QuickFolder(std::string_view bytes)
        : m_bytes(bytes)
    {
    }

    /// False when there was something else.
    bool fold(char* out)
    {
        while (m_at < m_bytes.size()) {
            const unsigned char lead = byte(0);
            size_t length = 1;
            if (lead < 0x80)
                out[m_at] = static_cast<char>(lead >= 'A' && lead <= 'Z' ? lead + 0x20 : lead);
            else if (lead == 0xD0 || lead == 0xD1 || lead == 0xC2 || lead == 0xC3)
                length = foldPair(out);
            else
                length = copySign(out);
            if (length == 0)
                return false;
            m_at += length;
        }
        return true;
    }

private:
    unsigned char byte(size_t offset) const
    {
        return m_at + offset < m_bytes.size() ? static_cast<unsigned char>(m_bytes[m_at + offset]) : 0;
    }

    size_t foldPair(char* out) const
    {
        const unsigned char trail = byte(1);
        if (!isTrail(trail))
            return 0;
        uint32_t c = (byte(0) & 0x1FU) << 6 | (trail & 0x3FU);
        if (c >= 0x460)
            return 0;
        if (c >= 0x410 && c < 0x430)
            c += 0x20;
        else if (c >= 0x400 && c < 0x410)
            c += 0x50;
        else if (c >= 0xC0 && c < 0xDF && c != 0xD7)
            c += 0x20;
        out[m_at] = static_cast<char>(0xC0 | c >> 6);
        out[m_at + 1] = static_cast<char>(0x80 | (c & 0x3F));
        return 2;
    }

    /// Punctuation and emoji have no case.
    size_t copySign(char* out) const
    {
        size_t length = 0;
        if (byte(0) == 0xE2 && byte(1) == 0x80 && byte(2) >= 0x82 && isTrail(byte(2)))
            length = 3;
        else if (byte(0) == 0xF0 && byte(1) == 0x9F && isTrail(byte(2)) && isTrail(byte(3)))
            length = 4;
        m_bytes.substr(m_at).copy(out + m_at, length);
        return length;
    }

    std::string_view m_bytes;
    size_t m_at = 0;
};

} // namespace

SearchKey::SearchKey(std::u16string_view query)
    : m_text(folded(trimmedHorizontally(query)))
    , m_utf8(utf8(m_text))
{
}

bool SearchKey::isFoundIn(std::u16string_view text) const
{
    const std::u16string all = folded(text);
    for (size_t at = all.find(m_text); at != all.npos; at = all.find(m_text, at + 1)) {
        if (!isCutByMark(all, at + m_text.size()))
            return true;
    }
    return false;
}

SearchKey::Answer SearchKey::quickAnswer(std::string_view bytes) const
{
    thread_local std::string all; // kept, so that searching many texts allocates once
    if (all.size() < bytes.size())
        all.resize(bytes.size());
    if (!QuickFolder(bytes).fold(all.data()))
        return Answer::mayNotSay;
    const std::string_view folded(all.data(), bytes.size());
    return folded.find(m_utf8) != folded.npos ? Answer::yes : Answer::no;
}

bool SearchKey::isFoundInUtf8(std::string_view bytes) const
{
    const Answer answer = quickAnswer(bytes);
    return answer == Answer::mayNotSay ? isFoundIn(utf16(bytes)) : answer == Answer::yes;
}

} // namespace quillmark
