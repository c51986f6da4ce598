// Text that is dragged out of the EditorView, within it and into it.
#include "app/editor/EditorView.h"
#include "desktop/TextMimeData.h"

#include <QDrag>
#include <QDropEvent>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace quillmark {

namespace {

constexpr int scrollInterval = 30; // milliseconds

bool hasFiles(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    return std::ranges::any_of(urls, [](const QUrl& url) { return url.isLocalFile(); });
}

} // namespace

/// Whether a point is on what is painted as selected.
bool EditorView::isOnSelection(QPointF place)
{
    if (m_isRefreshPending)
        refresh(MayScroll::no);
    const auto row = std::ranges::find_if(m_frame.rows, [&](const FrameRow& candidate) {
        return place.y() >= candidate.top && place.y() < candidate.top + m_frame.rowHeight;
    });
    return row != m_frame.rows.end() && std::ranges::any_of(selectedSpans(*row), [&](const Span& span) {
        return place.x() >= span.left && place.x() < span.right;
    });
}

Qt::DropAction EditorView::execute(QDrag& drag, Qt::DropActions actions)
{
    return drag.exec(actions, actions & Qt::MoveAction ? Qt::MoveAction : Qt::CopyAction);
}

void EditorView::startDrag()
{
    m_pressOnSelection.reset();
    const Range dragged = m_text.selection().range();
    const Rope text = m_text.text();
    auto* drag = new QDrag(this); // goes by itself
    drag->setMimeData(new TextMimeData(text.slice(dragged)));
    m_isDroppedHere = false;
    const QPointer<EditorView> self(this);
    const Qt::DropAction action
        = execute(*drag, m_text.isEditable() ? Qt::CopyAction | Qt::MoveAction : Qt::CopyAction);
    if (!self)
        return;
    hideDropPlace();
    // Somebody else has it now. If the text has changed meanwhile, it is there twice rather than not at all.
    if (action == Qt::MoveAction && !m_isDroppedHere && m_text.text().isSameAs(text))
        m_text.replace(dragged, {});
}

/// Files are for the window to open.
bool EditorView::mayDrop(const QDropEvent& event) const
{
    return m_text.isEditable() && event.mimeData()->hasText() && !hasFiles(*event.mimeData());
}

void EditorView::dragEnterEvent(QDragEnterEvent* event)
{
    dragMoveEvent(event);
}

void EditorView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!mayDrop(*event)) {
        hideDropPlace();
        return event->ignore();
    }
    event->acceptProposedAction();
    showDropPlace(event->position());
}

void EditorView::dragLeaveEvent(QDragLeaveEvent*)
{
    hideDropPlace();
}

void EditorView::dropEvent(QDropEvent* event)
{
    hideDropPlace();
    if (!mayDrop(*event))
        return event->ignore();
    m_text.commitComposition();
    const auto offset
        = m_text.positionAt(event->position().x() - horizontalInset, event->position().y()).offset;
    if (event->source() == this) {
        m_isDroppedHere = true;
        const bool isMove = event->proposedAction() == Qt::MoveAction;
        m_text.dropOwn(m_text.selection().range(), offset, isMove ? DropKind::move : DropKind::copy);
    } else {
        m_text.drop(event->mimeData()->text().toStdU16String(), offset);
    }
    event->acceptProposedAction();
    setFocus();
}

void EditorView::showDropPlace(QPointF place)
{
    m_dropPlace = place;
    const double margin = m_shaper.metrics().height;
    const bool isAtEdge = place.y() < margin || place.y() >= height() - margin;
    if (!isAtEdge)
        m_dropScroll.stop();
    else if (!m_dropScroll.isActive())
        m_dropScroll.start(scrollInterval, this);
    refreshLater();
}

void EditorView::hideDropPlace()
{
    m_dropScroll.stop();
    if (std::exchange(m_dropPlace, std::nullopt))
        refreshLater();
}

/// The closer to the edge, the faster.
void EditorView::scrollTowardsDropPlace()
{
    if (!m_dropPlace)
        return m_dropScroll.stop();
    const double margin = m_shaper.metrics().height;
    const double above = margin - m_dropPlace->y();
    const double below = m_dropPlace->y() - (height() - margin);
    const double step = std::ceil(std::clamp(std::max(above, below), 0.0, margin) / 2);
    m_text.scrollBy(above > below ? -step : step);
}

} // namespace quillmark
