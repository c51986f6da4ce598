// What must be true of the rows on the screen, whatever was done before.
#pragma once

#include "support/TestEditor.h"

#include <gtest/gtest.h>

namespace quillmark::test {

/// The rows on the screen follow one another, cover the height and know their numbers.
inline void expectSound(PlainTextView& view, double height)
{
    const std::vector<VisibleRow> rows = view.visibleRows();
    ASSERT_FALSE(rows.empty());
    const double rowHeight = view.layoutManager().metrics().height;
    for (size_t i = 1; i < rows.size(); ++i) {
        const RowLayout& before = rows[i - 1].layout;
        EXPECT_EQ(rows[i].top, rows[i - 1].top + rowHeight);
        EXPECT_EQ(number(rows[i].row), number(rows[i - 1].row) + 1);
        EXPECT_EQ(rows[i].layout.range.location, before.range.end() + (before.endsLine ? 1 : 0));
        EXPECT_EQ(number(rows[i].layout.line), number(before.line) + (before.endsLine ? 1 : 0));
    }
    for (const VisibleRow& visible : rows) {
        EXPECT_EQ(view.layoutManager().rowAt(visible.layout.range.location), visible.row);
        EXPECT_EQ(visible.layout.shaped->direction(),
            view.layoutManager().directionAt(visible.layout.range.location));
    }
    const bool showsEnd
        = rows.back().layout.range.end() == view.text().length() && rows.back().layout.endsLine;
    const bool showsStart = rows.front().layout.range.location == 0;
    EXPECT_TRUE(rows.front().top <= 0 || showsStart);
    EXPECT_TRUE(rows.back().top + rowHeight >= height || (showsEnd && showsStart) || showsEnd);
    EXPECT_EQ(view.layoutManager().checkInvariants(), "");
}

} // namespace quillmark::test
