#include "support/FixedShaper.h"

#include "text/Unicode.h"

#include <algorithm>
#include <string>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <vector>

namespace quillmark::test {
namespace {

bool isBlank(char16_t unit)
{
    return unit == u' ' || unit == u'\t';
}

int cellsOf(std::u16string_view character)
{
    if (character[0] < 0x300)
        return 1;
    UChar32 c = 0;
    size_t i = 0;
    U16_NEXT(character.data(), i, character.size(), c);
    constexpr uint32_t marks = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK;
    if (U_GET_GC_MASK(c) & marks)
        return 0;
    const int width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

int64_t endOfCharacter(std::u16string_view text, int64_t start)
{
    const auto at = static_cast<size_t>(start);
    constexpr char16_t firstMark = 0x300;
    if (text[at] < firstMark && (at + 1 == text.size() || text[at + 1] < firstMark))
        return start + 1;
    return nextGrapheme(text, start);
}

class FixedText final : public ShapedText {
public:
    FixedText(std::u16string_view text, double wrapWidth, Direction direction, int tabCells, double cellWidth)
        : m_cellWidth(cellWidth)
        , m_width(wrapWidth)
        , m_direction(direction)
        , m_cells(text.size() + 1)
        , m_isStop(text.size() + 1)
    {
        const auto columns = std::max<int64_t>(1, static_cast<int64_t>(wrapWidth / cellWidth));
        int64_t start = 0;
        do
            start = addRow(text, start, columns, tabCells);
        while (start < static_cast<int64_t>(text.size()));
    }

    int rowCount() const override { return static_cast<int>(m_rows.size()); }
    Range row(int row) const override { return m_rows.at(static_cast<size_t>(row)); }
    Direction direction() const override { return m_direction; }
    Span edges(int row) const override
    {
        const double end = xOfOffset(row, this->row(row).end());
        return m_direction == Direction::leftToRight ? Span{0, end} : Span{end, m_width};
    }
    double xOfOffset(int row, int64_t offset) const override
    {
        // The cells at a wrap are those of the next row's start; what stands before it tells where a row
        // ends.
        const Range units = this->row(row);
        const bool isAtWrap = offset == units.end() && !units.isEmpty();
        const double x = m_cellWidth
            * (isAtWrap ? m_rowEnds[static_cast<size_t>(row)] : m_cells.at(static_cast<size_t>(offset)));
        return m_direction == Direction::leftToRight ? x : m_width - x;
    }
    int64_t offsetAtX(int row, double x) const override
    {
        const Range units = this->row(row);
        int64_t best = units.location;
        double bestDistance = std::abs(xOfOffset(row, best) - x);
        for (int64_t offset = units.location + 1; offset <= units.end(); ++offset) {
            if (offset < units.end() && !m_isStop[static_cast<size_t>(offset)])
                continue;
            const double distance = std::abs(xOfOffset(row, offset) - x);
            if (distance < bestDistance) {
                best = offset;
                bestDistance = distance;
            }
        }
        return best;
    }

private:
    /// Returns where the next row starts.
    int64_t addRow(std::u16string_view text, int64_t start, int64_t columns, int tabCells)
    {
        const auto length = static_cast<int64_t>(text.size());
        int64_t breakAt = start; // behind the last blank or beside a wide character
        int cellsAtBreak = 0;
        int cells = 0;
        bool endsInBlank = false;
        for (int64_t at = start; at < length;) {
            const int64_t end = endOfCharacter(text, at);
            const char16_t first = text[static_cast<size_t>(at)];
            const int wanted = cellsOf(text.substr(static_cast<size_t>(at), static_cast<size_t>(end - at)));
            const int width = first == u'\t' ? tabCells - cells % tabCells : wanted;
            if (endsInBlank || width == 2) {
                breakAt = at;
                cellsAtBreak = cells;
            }
            if (!isBlank(first) && cells + width > columns && at > start) {
                const bool hasBreak = breakAt > start;
                return finishRow(start, hasBreak ? breakAt : at, hasBreak ? cellsAtBreak : cells);
            }
            m_isStop[static_cast<size_t>(at)] = true;
            for (int64_t unit = at; unit < end; ++unit)
                m_cells[static_cast<size_t>(unit)] = cells;
            cells += width;
            endsInBlank = isBlank(first) || width == 2;
            at = end;
        }
        return finishRow(start, length, cells);
    }

    int64_t finishRow(int64_t start, int64_t end, int cells)
    {
        m_rows.push_back({start, end - start});
        m_rowEnds.push_back(cells);
        return end;
    }

    double m_cellWidth;
    double m_width;
    Direction m_direction;
    std::vector<int> m_cells; ///< from the start of the row to each unit
    std::vector<bool> m_isStop;
    std::vector<Range> m_rows;
    std::vector<int> m_rowEnds; ///< in cells
};

} // namespace

RowMetrics FixedShaper::metrics() const
{
    return {.height = rowHeight * m_scale, .baseline = 15 * m_scale, .averageAdvance = cellWidth * m_scale};
}

std::unique_ptr<ShapedText> FixedShaper::shape(
    std::u16string_view text, double wrapWidth, Direction direction)
{
    m_shapedUnits += static_cast<int64_t>(text.size());
    return std::make_unique<FixedText>(text, wrapWidth, direction, m_tabCells, cellWidth * m_scale);
}

} // namespace quillmark::test
