// The part of a text that is in the window. Its place is an anchor: an offset in the text and where its row
// stands, so that neither an edit nor a corrected estimate above it moves what the eye rests on. Main thread
// only.
#pragma once

#include "editor/LayoutManager.h"
#include "editor/Selection.h"

#include <vector>

namespace quillmark {

/// A row as it stands in the window.
struct VisibleRow {
    Row row{};
    double top = 0; ///< from the top of the visible area, may be negative for the first
    RowLayout layout;
};

/// Where the caret of a position is drawn.
struct CaretPlace {
    double x = 0;
    double top = 0; ///< from the top of the visible area
    double height = 0;
    bool isVisible = false; ///< at least a part of it
};

/// Lays out just what is visible. Pixels are counted from the top of the visible area unless said otherwise.
class Viewport {
public:
    explicit Viewport(LayoutManager& layout);

    void setSize(double width, double height); ///< width is the wrap width
    void setVerticalInset(
        double inset); ///< empty pixels above the first and below the last row, which scroll too
    double height() const { return m_height; }

    void scrollToStart();
    void applyEdit(const TextEdit& edit); ///< after the layout manager has heard of it
    void settle(); ///< lays out what is visible and stops the place at both ends
    const std::vector<VisibleRow>& rows(); ///< empty while the height is 0

    double top(); ///< pixels from the top of the content to the top of the visible area
    double contentHeight() const; ///< of all rows, estimates included, and both insets
    void scrollTo(
        double top); ///< lands near by where estimates are corrected on the way; both ends are exact
    void scrollBy(double pixels); ///< down when positive
    enum class Landing { nearest, third };
    /// Shows the whole row of a position. Where it has to scroll, as little as that takes, or so that the row
    /// stands a third from the top.
    void reveal(TextPosition position, Landing landing = Landing::nearest);

    CaretPlace placeOf(TextPosition position);
    /// The position nearest to a point. Beyond the insets above the first and below the last row it is the
    /// start and the end of the text.
    TextPosition hitTest(double x, double y);
    int64_t characterAt(double x, double y); ///< the start of the character under a point, for double-clicks
    int64_t rowsPerPage() const; ///< what Page Down moves by: a row less than fits

private:
    struct Cursor {
        Segment segment;
        int index = 0; ///< of the row in the segment
        double top = 0;
    };

    Cursor cursorAt(TextPosition position, double top);
    bool stepUp(Cursor& cursor);
    bool stepDown(Cursor& cursor);
    void climb(Cursor& cursor);
    double fill(const Cursor& first);
    void anchorAt(const Cursor& first);
    double restingTop(const Cursor& row, double top) const;
    bool endsText(const RowLayout& row) const;
    const VisibleRow* find(const Cursor& row) const;
    const RowLayout& rowAtY(double y) const;

    LayoutManager& m_layout;
    double m_height = 0;
    double m_inset = 0;
    int64_t m_anchorOffset = 0; ///< somewhere in the first visible row
    double m_anchorTop = 0; ///< where that row stands
    std::vector<VisibleRow> m_rows;
    Segment m_firstSegment; ///< of the first visible row
    bool m_isStale = true;
    Connection m_rowsMoved;
};

} // namespace quillmark
