// A Shaper without fonts: every character is as wide as its cells. Narrow characters take one cell, wide ones
// (CJK, emoji) two, combining marks none, tabs reach to the next stop. Rows break behind blanks, which may
// hang over the edge, and around wide characters; a word that is too long breaks anywhere. A line that runs
// from right to left is the mirror image of one that does not.
#pragma once

#include "platform/Shaper.h"

#include <cstdint>

namespace quillmark::test {

class FixedShaper final : public Shaper {
public:
    static constexpr double cellWidth = 10;
    static constexpr double rowHeight = 20;

    explicit FixedShaper(int tabCells = 4)
        : m_tabCells(tabCells)
    {
    }

    RowMetrics metrics() const override;
    std::unique_ptr<ShapedText> shape(
        std::u16string_view text, double wrapWidth, Direction direction) override;

    /// The font became larger: 1 is the size at first.
    void setScale(double scale) { m_scale = scale; }
    int64_t shapedUnits() const { return m_shapedUnits; } ///< all units ever shaped

private:
    int m_tabCells;
    double m_scale = 1;
    int64_t m_shapedUnits = 0;
};

} // namespace quillmark::test
