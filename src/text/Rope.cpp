#include "text/Rope.h"

#include "text/Unicode.h"

#include <cassert>

namespace quillmark {

namespace {

/// How many of the first `wanted` units make a leaf, so that no surrogate pair is split from what follows.
size_t wholeUnits(std::u16string_view text, size_t wanted)
{
    const bool splitsPair
        = wanted < text.size() && isHighSurrogate(text[wanted - 1]) && isLowSurrogate(text[wanted]);
    return splitsPair ? wanted - 1 : wanted;
}

} // namespace

template <int leafUnits, int fanout> BasicRope<leafUnits, fanout>::BasicRope(std::u16string_view text)
{
    Builder builder;
    builder.append(text);
    *this = builder.finish();
}

template <int leafUnits, int fanout>
auto BasicRope<leafUnits, fanout>::fromUtf8(std::string_view utf8) -> BasicRope
{
    return BasicRope(utf16(utf8));
}

// Reading

template <int leafUnits, int fanout> char16_t BasicRope<leafUnits, fanout>::at(int64_t offset) const
{
    assert(0 <= offset && offset <= length());
    const auto found = leafAt(offset);
    return found.item ? (*found.item)[offset - found.before.units] : u'\0';
}

template <int leafUnits, int fanout> std::u16string BasicRope<leafUnits, fanout>::text(Range range) const
{
    range = cut(range);
    std::u16string copy(static_cast<size_t>(range.length), u'\0');
    char16_t* to = copy.data();
    forEachSpan(range, [&to](auto units) {
        units::copy(units, to);
        to += units.size();
        return true;
    });
    return copy;
}

template <int leafUnits, int fanout> bool BasicRope<leafUnits, fanout>::isLatin1(Range range) const
{
    bool allLatin1 = true;
    forEachSpan(range, [&allLatin1](auto units) { return allLatin1 = units::isLatin1(units); });
    return allLatin1;
}

template <int leafUnits, int fanout>
bool BasicRope<leafUnits, fanout>::operator==(const BasicRope& other) const
{
    if (isSameAs(other))
        return true;
    if (length() != other.length() || lineCount() != other.lineCount())
        return false;
    bool areEqual = true;
    int64_t offset = 0;
    forEachSpan({0, length()}, [&](auto ours) {
        const Range range{offset, static_cast<int64_t>(ours.size())};
        offset = range.end();
        other.forEachSpan(range, [&](auto theirs) {
            areEqual = std::equal(theirs.begin(), theirs.end(), ours.begin());
            ours = ours.subspan(theirs.size());
            return areEqual;
        });
        return areEqual;
    });
    return areEqual;
}

// Lines

template <int leafUnits, int fanout> Line BasicRope<leafUnits, fanout>::lineAt(int64_t offset) const
{
    assert(0 <= offset && offset <= length());
    const auto found = leafAt(offset);
    if (!found.item)
        return Line{found.before.lineFeeds};
    const int64_t inLeaf = found.item->with(
        0, offset - found.before.units, [](auto units) { return units::countLineFeeds(units); });
    return Line{found.before.lineFeeds + inLeaf};
}

template <int leafUnits, int fanout> int64_t BasicRope<leafUnits, fanout>::startOf(Line line) const
{
    assert(number(line) >= 0);
    if (number(line) == 0)
        return 0;
    const int64_t lineFeed = number(line) - 1; // the one that ends the line before
    const auto found = m_leaves.template find<&TextSummary::lineFeeds>(lineFeed);
    if (!found.item)
        return length();
    const int64_t inLeaf = found.item->with(0, found.item->length(),
        [&](auto units) { return units::offsetOfLineFeed(units, lineFeed - found.before.lineFeeds); });
    return found.before.units + inLeaf + 1;
}

template <int leafUnits, int fanout> Range BasicRope<leafUnits, fanout>::lineRange(Line line) const
{
    const int64_t start = startOf(line);
    const int64_t end = number(line) + 1 < lineCount() ? startOf(line + 1) - 1 : length();
    return Range::between(start, end);
}

// Editing

template <int leafUnits, int fanout>
void BasicRope<leafUnits, fanout>::replace(Range range, std::u16string_view with)
{
    range = cut(range);
    if (!replaceInLeaf(range, with))
        replace(range, BasicRope(with));
}

/// The way of almost every keystroke: the range lies in one leaf, which takes the new text and stays a sound
/// leaf.
template <int leafUnits, int fanout>
bool BasicRope<leafUnits, fanout>::replaceInLeaf(Range range, std::u16string_view with)
{
    if (isEmpty())
        return false;
    const bool goesBehindLeaf = range.isEmpty() && range.location > 0;
    const auto found = leafAt(goesBehindLeaf ? range.location - 1 : range.location);
    if (!found.item)
        return false;
    const RopeLeaf& leaf = *found.item;
    const int64_t start = range.location - found.before.units;
    const int64_t end = start + range.length;
    const int64_t newLength = leaf.length() - range.length + static_cast<int64_t>(with.size());
    const int64_t least = m_leaves.size() == 1 ? 1 : minUnits;
    if (end > leaf.length() || newLength < least || newLength > maxUnits)
        return false;
    // An edge of the leaf that changes might make a pair with the neighbour's.
    if (start == 0 && isLowSurrogate(with.empty() ? leaf[end] : with.front()))
        return false;
    if (end == leaf.length() && isHighSurrogate(with.empty() ? leaf[start - 1] : with.back()))
        return false;
    m_leaves.edit(found.index, [&](RopeLeaf& edited) { edited.replace(start, range.length, with); });
    return true;
}

template <int leafUnits, int fanout>
void BasicRope<leafUnits, fanout>::replace(Range range, const BasicRope& with)
{
    range = cut(range);
    const BasicRope tail = slice(Range::between(range.end(), length()));
    BasicRope edited = slice({0, range.location});
    edited.append(with);
    edited.append(tail);
    *this = std::move(edited);
}

template <int leafUnits, int fanout> auto BasicRope<leafUnits, fanout>::slice(Range range) const -> BasicRope
{
    range = cut(range);
    BasicRope part;
    if (range.isEmpty())
        return part;
    const auto first = leafAt(range.location);
    const auto last = leafAt(range.end() - 1);
    const auto partOf = [range](const auto& found) {
        const Range leaf{found.before.units, found.item->length()};
        const Range kept = intersection(range, leaf);
        if (kept == leaf)
            return *found.item;
        return found.item->with(kept.location - leaf.location, kept.length, [](auto units) {
            if constexpr (sizeof(units.front()) == 1)
                return RopeLeaf(units);
            else
                return RopeLeaf(std::u16string_view(units.data(), units.size()));
        });
    };
    part.appendLeaf(partOf(first));
    if (first.index == last.index)
        return part;
    BasicRope whole;
    whole.m_leaves = m_leaves.slice(first.index + 1, last.index);
    part.append(whole);
    part.appendLeaf(partOf(last));
    return part;
}

template <int leafUnits, int fanout> void BasicRope<leafUnits, fanout>::append(const BasicRope& other)
{
    const int64_t seam = m_leaves.size();
    m_leaves.append(other.m_leaves);
    if (seam > 0 && seam < m_leaves.size())
        rejoin(seam);
}

template <int leafUnits, int fanout> void BasicRope<leafUnits, fanout>::appendLeaf(RopeLeaf leaf)
{
    BasicRope single;
    single.m_leaves.insert(0, std::move(leaf));
    append(single);
}

/// Makes the leaf before a seam and the leaf behind it sound: large enough, and no pair split between them.
template <int leafUnits, int fanout> void BasicRope<leafUnits, fanout>::rejoin(int64_t seam)
{
    assert(0 < seam && seam < m_leaves.size());
    const RopeLeaf& left = m_leaves[seam - 1];
    const RopeLeaf& right = m_leaves[seam];
    const bool splitsPair = isHighSurrogate(left[left.length() - 1]) && isLowSurrogate(right[0]);
    if (left.length() >= minUnits && right.length() >= minUnits && !splitsPair)
        return;
    const int64_t start = m_leaves.at(seam - 1).before.units;
    const std::u16string text = this->text({start, left.length() + right.length()});
    const std::u16string_view all = text;
    if (all.size() <= static_cast<size_t>(maxUnits)) {
        const RopeLeaf joined(all);
        m_leaves.replace(seam - 1, seam + 1, {&joined, 1});
        return;
    }
    const size_t half = wholeUnits(all, all.size() / 2);
    const RopeLeaf halves[] = {RopeLeaf(all.substr(0, half)), RopeLeaf(all.substr(half))};
    m_leaves.replace(seam - 1, seam + 1, halves);
}

// Building

template <int leafUnits, int fanout> void BasicRope<leafUnits, fanout>::Builder::push(RopeLeaf leaf)
{
    assert(leaf.length() >= minUnits && leaf.length() <= maxUnits);
    if (m_last.length() > 0)
        m_leaves.push(std::move(m_last));
    m_last = std::move(leaf);
}

/// Makes a leaf of the first pending units.
template <int leafUnits, int fanout> void BasicRope<leafUnits, fanout>::Builder::flush(size_t count)
{
    assert(0 < count && count <= m_pending.size());
    push(RopeLeaf(std::u16string_view(m_pending).substr(0, count)));
    m_pending.erase(0, count);
}

template <int leafUnits, int fanout>
void BasicRope<leafUnits, fanout>::Builder::append(std::u16string_view units)
{
    while (!units.empty()) {
        if (m_pending.size() == leafUnits) {
            const bool splitsPair = isHighSurrogate(m_pending.back()) && isLowSurrogate(units.front());
            flush(splitsPair ? leafUnits - 1 : leafUnits);
        }
        const bool makesLeaf = m_pending.empty() && units.size() > leafUnits;
        const size_t taken
            = makesLeaf ? wholeUnits(units, leafUnits) : std::min(units.size(), leafUnits - m_pending.size());
        if (makesLeaf)
            push(RopeLeaf(units.substr(0, taken)));
        else
            m_pending.append(units, 0, taken);
        units.remove_prefix(taken);
    }
}

template <int leafUnits, int fanout>
void BasicRope<leafUnits, fanout>::Builder::appendLatin1(std::span<const uint8_t> bytes)
{
    while (!bytes.empty()) {
        if (m_pending.size() == leafUnits)
            flush(leafUnits);
        const bool makesLeaf = m_pending.empty() && bytes.size() >= leafUnits;
        const size_t taken = std::min(bytes.size(), leafUnits - m_pending.size());
        if (makesLeaf)
            push(RopeLeaf(bytes.first(taken)));
        else
            m_pending.append(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(taken));
        bytes = bytes.subspan(taken);
    }
}

template <int leafUnits, int fanout> auto BasicRope<leafUnits, fanout>::Builder::finish() -> BasicRope
{
    BasicRope rope;
    if (m_last.length() > 0)
        m_leaves.push(std::exchange(m_last, {}));
    rope.m_leaves = m_leaves.finish();
    if (!m_pending.empty())
        rope.appendLeaf(RopeLeaf(std::exchange(m_pending, {})));
    return rope;
}

// Checking

template <int leafUnits, int fanout> std::string BasicRope<leafUnits, fanout>::checkInvariants() const
{
    std::string broken = m_leaves.checkInvariants();
    char16_t previous = 0;
    m_leaves.forEach(0, m_leaves.size(), [&](const RopeLeaf& leaf) {
        const auto length = leaf.length();
        const auto lineFeeds = leaf.with(0, length, [](auto units) { return units::countLineFeeds(units); });
        if (length > maxUnits + 1 || length < (m_leaves.size() == 1 ? 1 : minUnits))
            broken = "a leaf has " + std::to_string(length) + " units";
        else if (leaf.isLatin1() != leaf.with(0, length, [](auto units) {
                     return sizeof(units.front()) == 1 || units::isLatin1(units);
                 }))
            broken = "a leaf of Latin-1 is stored as units";
        else if (leaf.summary().lineFeeds != lineFeeds)
            broken = "a leaf counts its line feeds wrongly";
        else if (isHighSurrogate(previous) && isLowSurrogate(leaf[0]))
            broken = "a surrogate pair is split between leaves";
        previous = leaf[length - 1];
        return broken.empty();
    });
    return broken;
}

template class BasicRope<1024, 16>;
template class BasicRope<8, 4>;

} // namespace quillmark
