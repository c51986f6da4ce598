// The segments shaped lately, found by offset, shifted by edits, the least recently used ones let go first.
// Bounded by a cost: the units of a segment and a little for itself.
#pragma once

#include "editor/LayoutManager.h"
#include "editor/RowMap.h"

#include <cstdint>
#include <vector>

namespace quillmark {

class LayoutCache {
public:
    static constexpr int64_t costOfSegment = 64; ///< besides its units

    /// The segment that shows the caret at an offset, or null. Good until the cache changes.
    const Segment* find(int64_t offset, Affinity affinity);
    void insert(Segment segment);
    void remove(int64_t offset); ///< the segment that find() gives downstream, if any
    void applyEdit(const RowMap::Change& change);
    /// Lets go of the segments of a line that were shaped in another direction.
    void keepDirection(Range line, Direction direction);
    void clear();
    void setCapacity(int64_t cost);
    int64_t cost() const { return m_cost; }

private:
    struct Entry {
        Segment segment;
        uint64_t lastUse = 0;
    };
    using Entries = std::vector<Entry>;

    static int64_t costOf(const Entry& entry) { return entry.segment.range.length + costOfSegment; }
    Entries::iterator firstBehind(int64_t offset);
    void shrink();

    Entries m_entries; ///< in the order of the text
    int64_t m_cost = 0;
    int64_t m_capacity = 100'000;
    uint64_t m_clock = 0;
};

} // namespace quillmark
