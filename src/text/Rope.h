// The text of a document: a persistent sequence of UTF-16 code units. A Rope is a value: copying it costs one
// reference count, editing it never touches the copies, and any thread may read a copy while another is
// edited. Lone surrogates are content like any other unit. Freeing a large text takes time (up to 0.1 ms per
// million units): whoever lets the last copy go on the main thread moves it into a background job instead.
#pragma once

#include "base/Range.h"
#include "base/SumTree.h"
#include "text/RopeLeaf.h"

#include <cassert>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillmark {

/// A rope with leaves of about `leafUnits` units in nodes of `fanout` slots. Rope is the size that the
/// program uses; TinyRope has many leaves and levels in a short text, for tests.
template <int leafUnits, int fanout> class BasicRope {
public:
    /// A stretch of units as it is stored: Latin-1 bytes or UTF-16 units. Valid until its rope is changed or
    /// gone.
    using Chunk = std::variant<std::span<const uint8_t>, std::span<const char16_t>>;

    class Builder;

    BasicRope() = default;
    explicit BasicRope(std::u16string_view text);
    static BasicRope fromUtf8(std::string_view utf8); ///< ill-formed sequences become U+FFFD

    int64_t length() const { return m_leaves.summary().units; } ///< in units
    bool isEmpty() const { return m_leaves.isEmpty(); }
    int64_t lineCount() const { return m_leaves.summary().lineFeeds + 1; } ///< line feeds + 1

    char16_t at(int64_t offset) const; ///< U+0000 at length(), as in a string
    std::u16string text(Range range) const; ///< a contiguous copy; the range is cut to the text
    std::u16string text() const { return text({0, length()}); }
    BasicRope slice(Range range) const; ///< shares leaves with this rope, all but the two at its edges
    bool isLatin1(Range range) const; ///< no unit is above U+00FF

    /// Replaces a range (cut to the text). `with` must not be a chunk of this rope.
    void replace(Range range, std::u16string_view with);
    void replace(Range range, const BasicRope& with);
    void append(const BasicRope& other);

    Line lineAt(int64_t offset) const; ///< the line that holds the offset; the last line for length()
    int64_t startOf(Line line) const; ///< length() for a line past the end
    Range lineRange(Line line) const; ///< without its line feed

    /// Calls `visit(chunk)` for the stored stretches of the range (cut to the text) in order, until it
    /// returns false.
    template <class Visit> void forEachChunk(Range range, Visit&& visit) const
    {
        forEachSpan(range, [&visit](auto units) -> bool { return visit(Chunk(units)); });
    }

    /// The same for a visitor that takes both kinds of span: [](auto units) { …; return true; }
    template <class Visit> void forEachSpan(Range range, Visit&& visit) const;

    bool operator==(const BasicRope& other) const; ///< the same units

    /// True when both are copies of one rope, unchanged since. Takes no time, unlike ==.
    bool isSameAs(const BasicRope& other) const { return m_leaves.isSameAs(other.m_leaves); }

    /// The first broken rule in words; empty when the rope is sound. Walks the whole text: for tests.
    std::string checkInvariants() const;

private:
    using Tree = SumTree<RopeLeaf, TextSummary, fanout>;

    static constexpr int64_t minUnits = leafUnits / 2; ///< of every leaf but an only one
    static constexpr int64_t maxUnits = leafUnits + leafUnits / 2; ///< and one more where a pair was joined

    Range cut(Range range) const
    {
        assert(range.length >= 0);
        return intersection(range, {0, length()});
    }
    typename Tree::Found leafAt(int64_t offset) const
    {
        return m_leaves.template find<&TextSummary::units>(offset);
    }
    bool replaceInLeaf(Range range, std::u16string_view with);
    void appendLeaf(RopeLeaf leaf);
    void rejoin(int64_t index);

    Tree m_leaves;
};

/// Builds a rope from pieces in order; leaves are as large as their text. Any thread, one at a time.
template <int leafUnits, int fanout> class BasicRope<leafUnits, fanout>::Builder {
public:
    void append(std::u16string_view units); ///< a surrogate pair may be split over two calls
    void appendLatin1(std::span<const uint8_t> bytes); ///< bytes 0x00–0xFF as U+0000–U+00FF
    BasicRope finish(); ///< the builder is empty again

private:
    void push(RopeLeaf leaf);
    void flush(size_t count);

    typename Tree::Builder m_leaves;
    RopeLeaf m_last; ///< complete, but not in the tree: takes a remainder that is too short for a leaf
    std::u16string m_pending; ///< at most leafUnits units
};

template <int leafUnits, int fanout>
template <class Visit>
void BasicRope<leafUnits, fanout>::forEachSpan(Range range, Visit&& visit) const
{
    range = cut(range);
    if (range.isEmpty())
        return;
    const auto first = leafAt(range.location);
    int64_t skipped = range.location - first.before.units;
    int64_t left = range.length;
    m_leaves.forEach(first.index, m_leaves.size(), [&](const RopeLeaf& leaf) {
        const int64_t count = std::min(left, leaf.length() - skipped);
        const bool goesOn = leaf.with(skipped, count, [&visit](auto units) -> bool { return visit(units); });
        skipped = 0;
        left -= count;
        return goesOn && left > 0;
    });
}

extern template class BasicRope<1024, 16>;
extern template class BasicRope<8, 4>;

using Rope = BasicRope<1024, 16>;
using TinyRope = BasicRope<8, 4>;

} // namespace quillmark
