#include "io/Utf8.h"

#include "text/Units.h"

#include <bit>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace quillmark {
namespace {

using Byte = unsigned char;

constexpr char16_t replacement = 0xFFFD;

bool isContinuation(Byte byte)
{
    return (byte & 0xC0) == 0x80;
}

/// A sequence at the start of some bytes. Ill-formed ones have the length of their maximal subpart.
struct Sequence {
    char32_t codePoint;
    size_t length;
    bool isWellFormed;
};

/// The Unicode standard, table 3-7: only the second byte has a range that depends on the first.
Sequence readSequence(const Byte* p, const Byte* end)
{
    const Byte first = *p;
    if (first < 0x80)
        return {first, 1, true};
    if (first < 0xC2 || first > 0xF4)
        return {0, 1, false};
    const size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const Byte lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const Byte highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (p + 1 == end || p[1] < lowest || p[1] > highest)
        return {0, 1, false};
    char32_t codePoint = first & (0x7Fu >> length);
    codePoint = codePoint << 6 | (p[1] & 0x3Fu);
    for (size_t i = 2; i < length; ++i) {
        if (p + i == end || !isContinuation(p[i]))
            return {0, i, false};
        codePoint = codePoint << 6 | (p[i] & 0x3Fu);
    }
    return {codePoint, length, true};
}

char16_t* put(char32_t codePoint, char16_t* target)
{
    if (codePoint < 0x10000) {
        *target++ = static_cast<char16_t>(codePoint);
        return target;
    }
    *target++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
    *target++ = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
    return target;
}

#ifdef __SSE2__

constexpr size_t blockSize = 16;

__m128i load(const Byte* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
void store(char16_t* p, __m128i units)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), units);
}
unsigned mask(__m128i bytes)
{
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

/// The units that start at each of eight bytes (as 16-bit lanes), if one or two bytes make a character there.
__m128i unitsOf(__m128i bytes, __m128i followers)
{
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(_mm_and_si128(bytes, _mm_set1_epi16(0x1F)), 6),
        _mm_and_si128(followers, _mm_set1_epi16(0x3F)));
    const __m128i isSingle = _mm_cmplt_epi16(bytes, _mm_set1_epi16(0x80));
    return _mm_or_si128(_mm_and_si128(isSingle, bytes), _mm_andnot_si128(isSingle, pairs));
}

/// Converts whole blocks in which every character has one or two bytes, as in Latin, Greek, Cyrillic, Hebrew
/// and Arabic text, and stops before the first that has something else. A character that straddles the end of
/// a block belongs to it. Reads one byte and writes blockSize units past what it converts at most: the caller
/// keeps room.
Utf8Progress convertBlocks(const Byte* p, const Byte* end, char16_t* target)
{
    const __m128i zero = _mm_setzero_si128();
    while (end - p > static_cast<std::ptrdiff_t>(blockSize)) {
        const __m128i bytes = load(p);
        const unsigned high = mask(bytes);
        if (high == 0) {
            store(target, _mm_unpacklo_epi8(bytes, zero));
            store(target + 8, _mm_unpackhi_epi8(bytes, zero));
            p += blockSize;
            target += blockSize;
            continue;
        }
        // As signed bytes, continuations are 0x80..0xBF = -128..-65 and leads of two bytes 0xC2..0xDF =
        // -62..-33.
        const unsigned continuations = mask(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-64)));
        const unsigned leads = mask(_mm_and_si128(
            _mm_cmpgt_epi8(bytes, _mm_set1_epi8(-63)), _mm_cmplt_epi8(bytes, _mm_set1_epi8(-32))));
        const bool straddles = leads >> (blockSize - 1);
        const bool isPaired = (leads << 1 & 0xFFFF) == continuations && (leads | continuations) == high;
        if (!isPaired || (straddles && !isContinuation(p[blockSize])))
            break;
        const __m128i followers = load(p + 1);
        alignas(16) char16_t units[blockSize];
        store(units, unitsOf(_mm_unpacklo_epi8(bytes, zero), _mm_unpacklo_epi8(followers, zero)));
        store(units + 8, unitsOf(_mm_unpackhi_epi8(bytes, zero), _mm_unpackhi_epi8(followers, zero)));
        // Each unit overwrites the one before if that was of a continuation: no branch to mispredict.
        const unsigned starts = ~continuations;
        for (unsigned i = 0; i < blockSize; ++i) {
            *target = units[i];
            target += starts >> i & 1;
        }
        p += blockSize + straddles;
    }
    return {reinterpret_cast<const char*>(p), target};
}

size_t asciiPrefix(const Byte* p, size_t size)
{
    size_t i = 0;
    for (; i + blockSize <= size; i += blockSize) {
        if (const unsigned high = mask(load(p + i)))
            return i + static_cast<size_t>(std::countr_zero(high));
    }
    while (i < size && p[i] < 0x80)
        ++i;
    return i;
}

#else

constexpr size_t blockSize = 1;

Utf8Progress convertBlocks(const Byte* p, const Byte*, char16_t* target)
{
    return {reinterpret_cast<const char*>(p), target};
}

size_t asciiPrefix(const Byte* p, size_t size)
{
    size_t i = 0;
    while (i < size && p[i] < 0x80)
        ++i;
    return i;
}

#endif

const Byte* bytesOf(std::string_view text)
{
    return reinterpret_cast<const Byte*>(text.data());
}

char* put(char32_t codePoint, char* target)
{
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    if (codePoint < 0x80) {
        *target++ = byte(codePoint);
        return target;
    }
    if (codePoint < 0x800) {
        *target++ = byte(0xC0 | codePoint >> 6);
    } else {
        if (codePoint < 0x10000) {
            *target++ = byte(0xE0 | codePoint >> 12);
        } else {
            *target++ = byte(0xF0 | codePoint >> 18);
            *target++ = byte(0x80 | (codePoint >> 12 & 0x3F));
        }
        *target++ = byte(0x80 | (codePoint >> 6 & 0x3F));
    }
    *target++ = byte(0x80 | (codePoint & 0x3F));
    return target;
}

} // namespace

bool isAscii(std::string_view bytes)
{
    return asciiPrefix(bytesOf(bytes), bytes.size()) == bytes.size();
}

bool isWellFormedUtf8(std::string_view bytes)
{
    const Byte* p = bytesOf(bytes);
    const Byte* const end = p + bytes.size();
    while ((p += asciiPrefix(p, static_cast<size_t>(end - p))) < end) {
        const Sequence sequence = readSequence(p, end);
        if (!sequence.isWellFormed)
            return false;
        p += sequence.length;
    }
    return true;
}

Utf8Progress utf8ToUtf16(std::string_view bytes, char16_t* target)
{
    const Byte* p = bytesOf(bytes);
    const Byte* const end = p + bytes.size();
    while (p < end) {
        const Utf8Progress blocks = convertBlocks(p, end, target);
        p = reinterpret_cast<const Byte*>(blocks.source);
        target = blocks.target;
        for (const Byte* const blockEnd = p + std::min<size_t>(blockSize, static_cast<size_t>(end - p));
            p < blockEnd;) {
            const Sequence sequence = readSequence(p, end);
            if (!sequence.isWellFormed)
                return {reinterpret_cast<const char*>(p), target};
            target = put(sequence.codePoint, target);
            p += sequence.length;
        }
    }
    return {reinterpret_cast<const char*>(p), target};
}

size_t illFormedLength(std::string_view bytes)
{
    return readSequence(bytesOf(bytes), bytesOf(bytes) + bytes.size()).length;
}

char* utf16ToUtf8(std::span<const char16_t> units, char* target)
{
    for (size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (isHighSurrogate(unit) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
            const char32_t high = unit & 0x3FFu;
            target = put(0x10000 + (high << 10 | (units[++i] & 0x3FFu)), target);
        } else {
            target = put(isSurrogate(unit) ? replacement : unit, target);
        }
    }
    return target;
}

char* latin1ToUtf8(std::span<const uint8_t> units, char* target)
{
    while (!units.empty()) {
        const size_t ascii = asciiPrefix(units.data(), units.size());
        std::memcpy(target, units.data(), ascii);
        target += ascii;
        units = units.subspan(ascii);
        if (!units.empty()) {
            target = put(units.front(), target);
            units = units.subspan(1);
        }
    }
    return target;
}

} // namespace quillmark
