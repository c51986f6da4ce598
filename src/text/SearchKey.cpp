#include "text/SearchKey.h"

#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

constexpr size_t blockSize = 16;

#ifdef __SSE2__

__m128i each(int byte)
{
    return _mm_set1_epi8(static_cast<char>(byte));
}

/// Where a byte lies between two, as signed bytes: 0x80 … 0xFF are the lowest.
__m128i isBetween(__m128i bytes, int lowest, int highest)
{
    return _mm_andnot_si128(
        _mm_or_si128(_mm_cmplt_epi8(bytes, each(lowest)), _mm_cmpgt_epi8(bytes, each(highest))), each(0xFF));
}

/// Folds a block that starts with a character, when all of it is ASCII, Latin-1 and Cyrillic up to U+045F.
/// Returns how many bytes that was, less than the block when a character goes on behind it, or 0.
size_t foldBlock(const char* from, char* to)
{
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i d0 = _mm_cmpeq_epi8(bytes, each(0xD0));
    const __m128i d1 = _mm_cmpeq_epi8(bytes, each(0xD1));
    const __m128i c3 = _mm_cmpeq_epi8(bytes, each(0xC3));
    const __m128i leads
        = _mm_or_si128(_mm_or_si128(d0, d1), _mm_or_si128(c3, _mm_cmpeq_epi8(bytes, each(0xC2))));
    const __m128i trails = isBetween(bytes, 0x80, 0xBF);
    const __m128i afterD0 = _mm_slli_si128(d0, 1);
    const __m128i afterD1 = _mm_slli_si128(d1, 1);
    const __m128i others = _mm_andnot_si128(_mm_or_si128(leads, trails), _mm_cmplt_epi8(bytes, each(0)));
    const __m128i unpaired = _mm_xor_si128(trails, _mm_slli_si128(leads, 1));
    const __m128i tooHigh = _mm_and_si128(afterD1, isBetween(bytes, 0xA0, 0xBF));
    if (_mm_movemask_epi8(_mm_or_si128(others, _mm_or_si128(unpaired, tooHigh))) != 0)
        return 0;

    const auto plus = [](__m128i where, int amount) { return _mm_and_si128(where, each(amount)); };
    const __m128i a0 = _mm_and_si128(afterD0, isBetween(bytes, 0xA0, 0xAF)); // Р … Я
    const __m128i s80 = _mm_and_si128(afterD0, isBetween(bytes, 0x80, 0x8F)); // Ѐ … Џ
    const __m128i s90 = _mm_and_si128(afterD0, isBetween(bytes, 0x90, 0x9F)); // А … П
    const __m128i latin1 = _mm_and_si128(_mm_slli_si128(c3, 1),
        _mm_andnot_si128(_mm_cmpeq_epi8(bytes, each(0x97)), isBetween(bytes, 0x80, 0x9E)));
    const __m128i ascii = isBetween(bytes, 'A', 'Z');
    __m128i folded = _mm_add_epi8(bytes, plus(_mm_or_si128(_mm_or_si128(ascii, latin1), s90), 0x20));
    folded = _mm_add_epi8(folded, _mm_add_epi8(plus(s80, 0x10), plus(a0, -0x20)));
    folded = _mm_add_epi8(folded, plus(_mm_srli_si128(_mm_or_si128(s80, a0), 1), 1)); // their leads
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), folded);
    return _mm_movemask_epi8(leads) >> (blockSize - 1) ? blockSize - 1 : blockSize;
}

#else

size_t foldBlock(const char*, char*)
{
    return 0;
}

#endif

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
            foldBlocks(out);
            const size_t end = std::min(m_at + blockSize, m_bytes.size());
            while (m_at < end) {
                const size_t length = foldCharacter(out);
                if (length == 0)
                    return false;
                m_at += length;
            }
        }
        return true;
    }

private:
    unsigned char byte(size_t offset) const
    {
        return m_at + offset < m_bytes.size() ? static_cast<unsigned char>(m_bytes[m_at + offset]) : 0;
    }

    void foldBlocks(char* out)
    {
        while (m_bytes.size() - m_at >= blockSize) {
            const size_t length = foldBlock(m_bytes.data() + m_at, out + m_at);
            if (length == 0)
                return;
            m_at += length;
        }
    }

    size_t foldCharacter(char* out) const
    {
        const unsigned char lead = byte(0);
        if (lead >= 0x80)
            return lead == 0xD0 || lead == 0xD1 || lead == 0xC2 || lead == 0xC3 ? foldPair(out)
                                                                                : copySign(out);
        out[m_at] = static_cast<char>(lead >= 'A' && lead <= 'Z' ? lead + 0x20 : lead);
        return 1;
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
    // Not find(): in Cyrillic text every other byte is the first one of the query.
    return memmem(all.data(), bytes.size(), m_utf8.data(), m_utf8.size()) ? Answer::yes : Answer::no;
}

bool SearchKey::isFoundInUtf8(std::string_view bytes) const
{
    const Answer answer = quickAnswer(bytes);
    return answer == Answer::mayNotSay ? isFoundIn(utf16(bytes)) : answer == Answer::yes;
}

} // namespace quillmark
