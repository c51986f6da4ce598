#include "text/RopeLeaf.h"

#include <cassert>
#include <new>

namespace quillmark {

namespace {

constexpr size_t mostUnits = 0x7FFF'FFFF; // the line feeds are counted in 31 bits
constexpr size_t slack = 256; // units that an edited leaf may grow by before it is moved again

std::span<const char16_t> spanOf(std::u16string_view text)
{
    return {text.data(), text.size()};
}

} // namespace

RopeLeaf::Block* RopeLeaf::Block::create(size_t capacity)
{
    auto* block = new (::operator new(sizeof(Block) + capacity)) Block;
    block->capacity = static_cast<uint32_t>(capacity);
    return block;
}

void RopeLeaf::Block::destroy(Block* block)
{
    block->~Block();
    ::operator delete(block);
}

RopeLeaf::RopeLeaf(std::span<const uint8_t> latin1)
    : m_block(Block::create(latin1.size()))
    , m_length(static_cast<uint32_t>(latin1.size()))
{
    assert(latin1.size() <= mostUnits);
    units::copy(latin1, static_cast<uint8_t*>(m_block->text()));
    m_lineFeeds = static_cast<uint32_t>(units::countLineFeeds(latin1)) & 0x7FFF'FFFF;
}

RopeLeaf::RopeLeaf(std::u16string_view text)
    : m_length(static_cast<uint32_t>(text.size()))
{
    assert(text.size() <= mostUnits);
    const auto from = spanOf(text);
    m_isWide = !units::isLatin1(from);
    m_lineFeeds = static_cast<uint32_t>(units::countLineFeeds(from)) & 0x7FFF'FFFF;
    m_block = IntrusivePointer<Block>(Block::create(m_isWide ? from.size_bytes() : from.size()));
    if (m_isWide)
        units::copy(from, static_cast<char16_t*>(m_block->text()));
    else
        units::copy(from, static_cast<uint8_t*>(m_block->text()));
}

/// Whether what remains without a part of the text is Latin-1. Looks at the rest only when the part was not.
bool RopeLeaf::isLatin1Without(int64_t at, int64_t count) const
{
    if (!m_isWide)
        return true;
    const auto text = wide();
    const auto start = static_cast<size_t>(at);
    const auto length = static_cast<size_t>(count);
    return !units::isLatin1(text.subspan(start, length)) && units::isLatin1(text.first(start))
        && units::isLatin1(text.subspan(start + length));
}

void RopeLeaf::replace(int64_t at, int64_t count, std::u16string_view with)
{
    const int64_t removedLineFeeds
        = this->with(at, count, [](auto removed) { return units::countLineFeeds(removed); });
    const int64_t lineFeeds = m_lineFeeds - removedLineFeeds + units::countLineFeeds(spanOf(with));
    if (units::isLatin1(spanOf(with)) && isLatin1Without(at, count))
        splice<uint8_t>(at, count, with);
    else
        splice<char16_t>(at, count, with);
    m_lineFeeds = static_cast<uint32_t>(lineFeeds) & 0x7FFF'FFFF;
}

/// Replaces in a text that consists of `Unit`s afterwards.
template <class Unit> void RopeLeaf::splice(int64_t at, int64_t count, std::u16string_view with)
{
    const size_t tailLength = m_length - static_cast<size_t>(at + count);
    const size_t newLength = m_length - static_cast<size_t>(count) + with.size();
    assert(newLength <= mostUnits);
    const bool becomesWide = sizeof(Unit) == sizeof(char16_t);
    if (becomesWide == m_isWide && newLength * sizeof(Unit) <= m_block->capacity && m_block.isUnique()) {
        Unit* hole = static_cast<Unit*>(m_block->text()) + at;
        std::memmove(hole + with.size(), hole + count, tailLength * sizeof(Unit));
        units::copy(spanOf(with), hole);
    } else {
        IntrusivePointer<Block> block(Block::create((newLength + slack) * sizeof(Unit)));
        Unit* to = static_cast<Unit*>(block->text());
        this->with(0, at, [&](auto head) { units::copy(head, to); });
        units::copy(spanOf(with), to + at);
        this->with(at + count, static_cast<int64_t>(tailLength),
            [&](auto tail) { units::copy(tail, to + static_cast<size_t>(at) + with.size()); });
        m_block = std::move(block);
        m_isWide = becomesWide;
    }
    m_length = static_cast<uint32_t>(newLength);
}

} // namespace quillmark
