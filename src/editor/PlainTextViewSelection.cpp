// Selection: by command, by the keyboard and by the mouse.
#include "editor/Motions.h"
#include "editor/PlainTextView.h"
#include "editor/PlainTextViewImpl.h"
#include "editor/SegmentCuts.h"
#include "text/Unicode.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace quillmark {
namespace {

/// How many whole pixels a drag outside the visible area scrolls at once: the farther outside, the more.
double autoscrollStep(double y, double height, double rowHeight)
{
    const double outside = y < 0 ? y : std::max(0.0, y - height);
    if (outside == 0)
        return 0;
    const double step = std::min(rowHeight / 4 + std::abs(outside) / 2, std::max(height, rowHeight));
    return std::copysign(std::round(step), outside);
}

} // namespace

const Selection& PlainTextView::selection() const
{
    return m_impl->selection;
}

void PlainTextView::select(Selection selection)
{
    Impl& self = *m_impl;
    const TextEdit commit = self.finishComposing();
    const Selection before = self.selection;
    selection.anchor = characterBoundaryAtOrBefore(text(), commit.moved(selection.anchor));
    selection.caret = characterBoundaryAtOrBefore(text(), commit.moved(selection.caret));
    self.selection = selection;
    self.goalX.reset();
    self.drag.reset();
    if (selection == before)
        return;
    self.undo.breakJoin();
    self.finish(before, Impl::Changed::nothing, Impl::Reveal::nothing);
}

void PlainTextView::selectAll()
{
    commitComposition();
    select({.anchor = 0, .caret = m_impl->length()});
    m_impl->shareSelection();
}

/// Makes what is selected the primary selection, which an empty one leaves alone.
void PlainTextView::Impl::shareSelection()
{
    if (!selection.isEmpty())
        clipboard.setText(storage.text().slice(selection.range()), Clipboard::Buffer::primarySelection);
}

void PlainTextView::move(Motion motion, Extend extend)
{
    commitComposition();
    Impl& self = *m_impl;
    const Selection before = self.selection;
    self.drag.reset();
    if (!isVertical(motion))
        self.goalX.reset();
    else if (!self.goalX)
        self.goalX = xOf(before.position(), self.layout);

    const MotionContext context{.goalX = self.goalX.value_or(0), .rowsPerPage = self.viewport.rowsPerPage()};
    const TextPosition to = target(motion, before, extend, self.layout, context);
    self.selection = Selection::at(to);
    if (extend == Extend::yes)
        self.selection.anchor = before.anchor;
    if (self.selection != before)
        self.undo.breakJoin();

    const double page = static_cast<double>(context.rowsPerPage) * self.layout.metrics().height;
    if (motion == Motion::pageUp)
        self.viewport.scrollBy(-page);
    if (motion == Motion::pageDown)
        self.viewport.scrollBy(page);
    self.finish(before, Impl::Changed::nothing, Impl::Reveal::caret);
    if (self.selection != before)
        self.shareSelection();
}

// The mouse

int64_t PlainTextView::offsetAt(double x, double y)
{
    return m_impl->viewport.hitTest(x, y).offset;
}

TextPosition PlainTextView::positionAt(double x, double y)
{
    return m_impl->viewport.hitTest(x, y);
}

/// What a click at an offset selects.
Range PlainTextView::Impl::granuleAt(int64_t offset) const
{
    assert(drag);
    const Rope& text = storage.text();
    switch (drag->granularity) {
    case Granularity::character:
        return {offset, 0};
    case Granularity::word:
        return wordAt(text, offset);
    case Granularity::line:
        break;
    }
    const Range line = text.lineRange(text.lineAt(offset));
    return Range::between(line.location, std::min(line.end() + 1, text.length()));
}

/// Selects from what the press selected to what is under the pointer, both whole.
void PlainTextView::Impl::extendDrag(double x, double y)
{
    assert(drag && drag->isPressed && drag->origin.end() <= length());
    const Range origin = drag->origin;
    if (drag->granularity == Granularity::character) {
        const TextPosition to = viewport.hitTest(x, y);
        selection = {.anchor = origin.location, .caret = to.offset, .affinity = to.affinity};
        return;
    }
    const Range granule = granuleAt(viewport.characterAt(x, y));
    if (granule.location < origin.location)
        selection = {.anchor = origin.end(), .caret = granule.location};
    else
        selection = {.anchor = origin.location, .caret = std::max(granule.end(), origin.end())};
}

void PlainTextView::mousePressed(double x, double y, Granularity granularity, Extend extend)
{
    commitComposition();
    Impl& self = *m_impl;
    const Selection before = self.selection;
    self.goalX.reset();
    if (extend == Extend::yes && self.drag) {
        self.drag->isPressed = true;
    } else {
        self.drag = Impl::Drag{.origin = {before.anchor, 0}, .granularity = granularity};
    }
    if (extend == Extend::no) {
        self.drag->origin = granularity == Granularity::character
            ? Range{self.viewport.hitTest(x, y).offset, 0}
            : self.granuleAt(self.viewport.characterAt(x, y));
    }
    self.extendDrag(x, y);
    self.undo.breakJoin();
    self.finish(before, Impl::Changed::nothing, Impl::Reveal::nothing);
}

void PlainTextView::mouseDragged(double x, double y)
{
    Impl& self = *m_impl;
    if (!self.drag || !self.drag->isPressed)
        return;
    const Selection before = self.selection;
    const double step = autoscrollStep(y, self.viewport.height(), self.layout.metrics().height);
    if (step != 0)
        self.viewport.scrollBy(step);
    self.extendDrag(x, y);
    self.finish(before, Impl::Changed::nothing, Impl::Reveal::nothing);
}

void PlainTextView::mouseReleased()
{
    Impl& self = *m_impl;
    if (!self.drag || !self.drag->isPressed)
        return;
    self.drag->isPressed = false;
    self.shareSelection();
}

} // namespace quillmark
