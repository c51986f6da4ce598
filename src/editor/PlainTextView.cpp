#include "editor/PlainTextView.h"

#include "editor/PlainTextViewImpl.h"
#include "editor/SegmentCuts.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <utility>

namespace quillmark {
namespace {

using namespace std::chrono_literals;

// Counting the lines of a large text, in moments without keys or scrolling.
constexpr Duration idleBefore = 100ms;
constexpr Duration idleBetween = 5ms;
constexpr Duration longestMoment = 3ms;
constexpr int mostSteps = 64; ///< of about 32 Ki units; for clocks that stand still

} // namespace

PlainTextView::Impl::Impl(
    PlainTextView& ownerOfThis, Scheduler& schedulerToUse, Shaper& shaper, Clipboard& clipboardToUse)
    : owner(ownerOfThis)
    , scheduler(schedulerToUse)
    , clipboard(clipboardToUse)
    , undo(storage)
    , layout(storage, shaper)
    , viewport(layout)
    , edits(storage.onEdit([this](const TextEdit& edit, const Rope&) { shiftWith(edit); }))
{
    storage.setLetGo([this](std::shared_ptr<void> given) { scheduler.letGo(std::move(given)); });
}

void PlainTextView::Impl::shiftWith(const TextEdit& edit)
{
    selection.anchor = edit.moved(selection.anchor);
    selection.caret = edit.moved(selection.caret);
    assert(selection.range().end() <= length());
    viewport.applyEdit(edit);
    drag.reset();
}

void PlainTextView::Impl::finish(const Selection& before, Changed changed, Reveal reveal)
{
    assert(selection.range().location >= 0 && selection.range().end() <= length());
    assert(!composition || selection.isEmpty());
    if (reveal == Reveal::caret)
        viewport.reveal(selection.position());
    viewport.rows();
    const bool mayHaveMoved = changed == Changed::text || selection != before; // in lines, at least
    if (changed == Changed::text && delegate)
        delegate->textDidChange();
    if (mayHaveMoved && delegate)
        delegate->textViewDidChangeSelection();
    tellScrolled();
    needsDisplay.emit();
    settleWhenIdle();
}

void PlainTextView::Impl::tellScrolled()
{
    viewport.rows();
    const ScrollState now{
        .top = viewport.top(), .contentHeight = viewport.contentHeight(), .height = viewport.height()};
    if (std::exchange(lastScroll, now) != now)
        scrolled.emit();
}

void PlainTextView::Impl::settleWhenIdle()
{
    if (layout.isSettled())
        settling.cancel();
    else
        settling = scheduler.after(idleBefore, [this] { settleForAMoment(); });
}

/// From what is visible outwards. It corrects the height of the content and moves nothing on the screen.
void PlainTextView::Impl::settleForAMoment()
{
    const SteadyTime end = scheduler.now() + longestMoment;
    const int64_t visible = viewport.rows().empty() ? 0 : viewport.rows().front().layout.range.location;
    for (int step = 0; step < mostSteps && !layout.isSettled() && scheduler.now() < end; ++step)
        layout.settleNear(visible);
    tellScrolled();
    if (!layout.isSettled())
        settling = scheduler.after(idleBetween, [this] { settleForAMoment(); });
}

PlainTextView::PlainTextView(Scheduler& scheduler, Shaper& shaper, Clipboard& clipboard)
    : m_impl(std::make_unique<Impl>(*this, scheduler, shaper, clipboard))
{
}

PlainTextView::~PlainTextView() = default;

const TextStorage& PlainTextView::storage() const
{
    return m_impl->storage;
}

const Rope& PlainTextView::text() const
{
    return m_impl->storage.text();
}

LayoutManager& PlainTextView::layoutManager()
{
    return m_impl->layout;
}

void PlainTextView::setDelegate(Delegate* delegate)
{
    m_impl->delegate = delegate;
}

void PlainTextView::setText(Rope text)
{
    Impl& self = *m_impl;
    const bool wasComposing = self.composition.has_value();
    self.dropComposition(); // it belonged to a text that nobody sees any more
    Rope old = self.storage.text();
    self.storage.replace({0, self.length()}, text);
    self.undo.removeAll();
    self.scheduler.letGo(std::move(old));
    self.selection = {};
    self.goalX.reset();
    self.viewport.scrollToStart();
    self.finish(self.selection, Impl::Changed::nothing, Impl::Reveal::nothing);
    if (self.delegate)
        self.delegate->textViewDidChangeSelection();
    if (wasComposing)
        self.resetRequested.emit();
}

bool PlainTextView::isEditable() const
{
    return m_impl->isEditable;
}

void PlainTextView::setEditable(bool editable)
{
    if (!editable)
        commitComposition();
    m_impl->isEditable = editable;
}

// The visible area

void PlainTextView::setVisibleSize(double width, double height)
{
    m_impl->viewport.setSize(width, height);
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

void PlainTextView::setVerticalInset(double inset)
{
    m_impl->viewport.setVerticalInset(inset);
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

void PlainTextView::fontChanged()
{
    m_impl->layout.fontChanged();
    m_impl->goalX.reset();
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

const std::vector<VisibleRow>& PlainTextView::visibleRows()
{
    return m_impl->viewport.rows();
}

void PlainTextView::scrollBy(double pixels)
{
    m_impl->viewport.scrollBy(pixels);
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

double PlainTextView::scrollTop() const
{
    return m_impl->viewport.top();
}

double PlainTextView::visibleHeight() const
{
    return m_impl->viewport.height();
}

double PlainTextView::contentHeight() const
{
    return m_impl->viewport.contentHeight();
}

void PlainTextView::scrollTo(double top)
{
    m_impl->viewport.scrollTo(top);
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

void PlainTextView::scrollToCaret()
{
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::caret);
}

void PlainTextView::bringIntoView(int64_t offset)
{
    m_impl->viewport.reveal({characterBoundaryAtOrBefore(text(), offset)}, Viewport::Landing::third);
    m_impl->finish(m_impl->selection, Impl::Changed::nothing, Impl::Reveal::nothing);
}

CaretPlace PlainTextView::caretPlace() const
{
    return m_impl->viewport.placeOf(m_impl->selection.position());
}

CaretPlace PlainTextView::placeOf(int64_t offset, Affinity affinity) const
{
    return m_impl->viewport.placeOf({std::clamp<int64_t>(offset, 0, m_impl->length()), affinity});
}

// What the widget obeys

// What the widget obeys

void PlainTextView::becomeFirstResponder()
{
    m_impl->firstResponderRequested.emit();
}

Connection PlainTextView::onNeedsDisplay(Slot slot)
{
    return m_impl->needsDisplay.connect(std::move(slot));
}

Connection PlainTextView::onFirstResponderRequested(Slot slot)
{
    return m_impl->firstResponderRequested.connect(std::move(slot));
}

Connection PlainTextView::onScrolled(Slot slot)
{
    return m_impl->scrolled.connect(std::move(slot));
}

Connection PlainTextView::onCommitRequested(Slot slot)
{
    return m_impl->commitRequested.connect(std::move(slot));
}

Connection PlainTextView::onResetRequested(Slot slot)
{
    return m_impl->resetRequested.connect(std::move(slot));
}

} // namespace quillmark
