// A leaf of the rope: a short stretch of text, as bytes when all of it is Latin-1 and as UTF-16 units
// otherwise. Copies share the text; a leaf that nobody shares is edited in place. A copy may be read on any
// thread.
#pragma once

#include "base/IntrusivePointer.h"
#include "text/Units.h"

#include <cassert>
#include <cstdint>
#include <span>
#include <string_view>

namespace quillmark {

struct TextSummary {
    int64_t units = 0;
    int64_t lineFeeds = 0;

    TextSummary& operator+=(const TextSummary& other)
    {
        units += other.units;
        lineFeeds += other.lineFeeds;
        return *this;
    }
    bool operator==(const TextSummary&) const = default;
};

class RopeLeaf {
public:
    RopeLeaf() = default;
    explicit RopeLeaf(std::span<const uint8_t> latin1); ///< exactly as large as its text
    explicit RopeLeaf(std::u16string_view text); ///< exactly as large as its text

    TextSummary summary() const { return {m_length, m_lineFeeds}; }
    int64_t length() const { return m_length; } ///< in units
    bool isLatin1() const { return !m_isWide; }

    char16_t operator[](int64_t offset) const
    {
        assert(offset >= 0 && offset < m_length);
        return m_isWide ? wide()[static_cast<size_t>(offset)] : narrow()[static_cast<size_t>(offset)];
    }

    /// Calls `use` with a part of the text as it is stored, a span of uint8_t or of char16_t.
    template <class Use> auto with(int64_t offset, int64_t length, Use&& use) const
    {
        assert(offset >= 0 && length >= 0 && offset + length <= m_length);
        const auto at = static_cast<size_t>(offset);
        const auto count = static_cast<size_t>(length);
        return m_isWide ? use(wide().subspan(at, count)) : use(narrow().subspan(at, count));
    }

    /// Replaces `count` units at `at`. A new block of text, when one is needed, gets some slack for further
    /// edits.
    void replace(int64_t at, int64_t count, std::u16string_view with);

private:
    struct Block : ReferenceCounted {
        static Block* create(size_t capacity);
        static void destroy(Block* block);
        void* text() { return this + 1; }

        uint32_t capacity = 0; ///< bytes behind this header
    };

    std::span<const uint8_t> narrow() const
    {
        return {static_cast<const uint8_t*>(m_block->text()), m_length};
    }
    std::span<const char16_t> wide() const
    {
        return {static_cast<const char16_t*>(m_block->text()), m_length};
    }
    bool isLatin1Without(int64_t at, int64_t count) const;
    template <class Unit> void splice(int64_t at, int64_t count, std::u16string_view with);

    IntrusivePointer<Block> m_block;
    uint32_t m_length = 0;
    uint32_t m_lineFeeds : 31 = 0;
    uint32_t m_isWide : 1 = false; ///< exactly when some unit is above U+00FF
};

static_assert(sizeof(RopeLeaf) == 16);

} // namespace quillmark
