#include "editor/LayoutCache.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace quillmark {

/// The first entry that starts behind an offset.
LayoutCache::Entries::iterator LayoutCache::firstBehind(int64_t offset)
{
    return std::upper_bound(m_entries.begin(), m_entries.end(), offset,
        [](int64_t wanted, const Entry& entry) { return wanted < entry.segment.range.location; });
}

const Segment* LayoutCache::find(int64_t offset, Affinity affinity)
{
    auto entry = firstBehind(offset);
    if (entry == m_entries.begin())
        return nullptr;
    --entry;
    const auto belongsBefore = [&](const Segment& segment) {
        return affinity == Affinity::upstream && !segment.startsLine && offset == segment.range.location;
    };
    if (belongsBefore(entry->segment)) {
        if (entry == m_entries.begin())
            return nullptr;
        --entry;
    }
    const Segment& segment = entry->segment;
    const bool holds = offset < segment.range.end()
        || (offset == segment.range.end() && (segment.endsLine || affinity == Affinity::upstream));
    if (!holds)
        return nullptr;
    entry->lastUse = ++m_clock;
    return &segment;
}

void LayoutCache::insert(Segment segment)
{
    auto behind = firstBehind(segment.range.location);
    assert(segment.shaped);
    assert(behind == m_entries.end() || segment.range.end() <= behind->segment.range.location);
    Entry entry{std::move(segment), ++m_clock};
    m_cost += costOf(entry);
    if (behind != m_entries.begin()
        && std::prev(behind)->segment.range.location == entry.segment.range.location) {
        m_cost -= costOf(*std::prev(behind));
        *std::prev(behind) = std::move(entry);
    } else {
        m_entries.insert(behind, std::move(entry));
    }
    if (m_cost > m_capacity)
        shrink();
}

void LayoutCache::remove(int64_t offset)
{
    const Segment* segment = find(offset, Affinity::downstream);
    if (!segment)
        return;
    const auto entry = std::prev(firstBehind(segment->range.location));
    m_cost -= costOf(*entry);
    m_entries.erase(entry);
}

void LayoutCache::applyEdit(const RowMap::Change& change)
{
    const auto firstAt = [&](int64_t offset) {
        return std::lower_bound(m_entries.begin(), m_entries.end(), offset,
            [](const Entry& entry, int64_t wanted) { return entry.segment.range.location < wanted; });
    };
    const auto first = firstAt(change.replaced.location);
    const auto last = firstAt(change.replaced.end() + (change.endsInsideLine ? 0 : 1));
    for (auto entry = first; entry != last; ++entry)
        m_cost -= costOf(*entry);
    for (auto entry = m_entries.erase(first, last); entry != m_entries.end(); ++entry) {
        entry->segment.range.location += change.changeInLength;
        entry->segment.line = entry->segment.line + change.changeInLines;
    }
    assert(m_cost >= 0 && (m_cost > 0 || m_entries.empty()));
}

void LayoutCache::keepDirection(Range line, Direction direction)
{
    std::erase_if(m_entries, [&](const Entry& entry) {
        const Range units = entry.segment.range;
        const bool isWrong = units.location >= line.location && units.end() <= line.end()
            && entry.segment.shaped->direction() != direction;
        m_cost -= isWrong ? costOf(entry) : 0;
        return isWrong;
    });
}

void LayoutCache::clear()
{
    m_entries.clear();
    m_cost = 0;
}

void LayoutCache::setCapacity(int64_t cost)
{
    m_capacity = cost;
    if (m_cost > m_capacity)
        shrink();
}

/// Lets the least recently used segments go until a quarter of the capacity is free, but keeps the last one
/// used.
void LayoutCache::shrink()
{
    std::vector<std::pair<uint64_t, int64_t>> uses;
    uses.reserve(m_entries.size());
    for (const Entry& entry : m_entries)
        uses.emplace_back(entry.lastUse, costOf(entry));
    std::sort(uses.begin(), uses.end());
    uint64_t oldestKept = 0;
    for (const auto& [lastUse, cost] : uses) {
        oldestKept = lastUse;
        if (m_cost <= m_capacity - m_capacity / 4 || lastUse == m_clock)
            break;
        m_cost -= cost;
    }
    std::erase_if(m_entries, [oldestKept](const Entry& entry) { return entry.lastUse < oldestKept; });
}

} // namespace quillmark
