// Tight loops over stretches of text: Latin-1 bytes or UTF-16 units. Pure functions, any thread.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

namespace quillmark {

constexpr bool isSurrogate(char16_t unit)
{
    return (unit & 0xF800) == 0xD800;
}
constexpr bool isHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool isLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

namespace units {

// The compiler maps these on whatever vector registers the machine has.
using Bytes8 [[gnu::vector_size(8)]] = uint8_t;
using Bytes16 [[gnu::vector_size(16)]] = uint8_t;
using Words8 [[gnu::vector_size(16)]] = uint16_t;

template <class Vector> inline Vector load(const void* from)
{
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Unit> using VectorOf = std::conditional_t<sizeof(Unit) == 1, Bytes16, Words8>;

/// How many units of a short stretch are line feeds: at most 255 vectors, so that no lane overflows.
template <class Unit> inline int64_t countLineFeedsInVectors(const Unit* text, size_t vectors)
{
    assert(vectors <= 255);
    using Vector = VectorOf<Unit>;
    constexpr size_t lanes = sizeof(Vector) / sizeof(Unit);
    Vector counts{};
    for (size_t i = 0; i < vectors; ++i)
        counts -= static_cast<Vector>(load<Vector>(text + i * lanes) == u'\n'); // true is −1
    int64_t count = 0;
    for (size_t lane = 0; lane < lanes; ++lane)
        count += counts[lane];
    return count;
}

template <class Unit> inline int64_t countLineFeeds(std::span<const Unit> text)
{
    constexpr size_t lanes = sizeof(VectorOf<Unit>) / sizeof(Unit);
    int64_t count = 0;
    while (text.size() >= lanes) {
        const size_t vectors = std::min<size_t>(text.size() / lanes, 255);
        count += countLineFeedsInVectors(text.data(), vectors);
        text = text.subspan(vectors * lanes);
    }
    for (const Unit unit : text)
        count += unit == u'\n';
    return count;
}

/// The offset of the line feed before which there are `skip` others. There must be one.
template <class Unit> inline int64_t offsetOfLineFeed(std::span<const Unit> text, int64_t skip)
{
    constexpr size_t lanes = sizeof(VectorOf<Unit>) / sizeof(Unit);
    size_t offset = 0;
    for (; offset + lanes <= text.size(); offset += lanes) {
        const int64_t here = countLineFeedsInVectors(text.data() + offset, 1);
        if (skip < here)
            break;
        skip -= here;
    }
    for (; offset < text.size(); ++offset) {
        if (text[offset] == u'\n' && skip-- == 0)
            return static_cast<int64_t>(offset);
    }
    assert(false && "the text has fewer line feeds");
    return static_cast<int64_t>(text.size());
}

inline bool isLatin1(std::span<const char16_t> text)
{
    Words8 seen{};
    for (; text.size() >= 8; text = text.subspan(8))
        seen |= load<Words8>(text.data());
    uint16_t all = 0;
    for (const char16_t unit : text)
        all |= unit;
    for (size_t lane = 0; lane < 8; ++lane)
        all |= seen[lane];
    return all <= 0xFF;
}
inline bool isLatin1(std::span<const uint8_t>)
{
    return true;
}

// Copies of the same units in another width; `to` has room for them. Narrowing wants Latin-1.

inline void copy(std::span<const uint8_t> from, uint8_t* to)
{
    if (!from.empty())
        std::memcpy(to, from.data(), from.size());
}

inline void copy(std::span<const char16_t> from, char16_t* to)
{
    if (!from.empty())
        std::memcpy(to, from.data(), from.size_bytes());
}

inline void copy(std::span<const uint8_t> from, char16_t* to)
{
    for (; from.size() >= 8; from = from.subspan(8), to += 8) {
        const Words8 wide = __builtin_convertvector(load<Bytes8>(from.data()), Words8);
        std::memcpy(to, &wide, sizeof wide);
    }
    for (const uint8_t byte : from)
        *to++ = byte;
}

inline void copy(std::span<const char16_t> from, uint8_t* to)
{
    for (; from.size() >= 8; from = from.subspan(8), to += 8) {
        const Bytes8 narrow = __builtin_convertvector(load<Words8>(from.data()), Bytes8);
        std::memcpy(to, &narrow, sizeof narrow);
    }
    for (const char16_t unit : from)
        *to++ = static_cast<uint8_t>(unit);
}

} // namespace units
} // namespace quillmark
