// The mouse and wheel of the EditorView: clicks, dragging, the primary selection, the context menu,
// scrolling.
#include "app/editor/EditorView.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QStyleHints>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace quillmark {

namespace {

constexpr int autoscrollInterval = 30; // milliseconds
constexpr double unitsPerNotch = 120; ///< of QWheelEvent::angleDelta

/// Pixels that a wheel event asks for, up when positive.
double wheelPixels(const QWheelEvent& event, double rowHeight)
{
    // X reports scrolled pixels in the units of the driver: there, notches are the only sound measure.
    if (event.hasPixelDelta() && QGuiApplication::platformName() != QLatin1String("xcb"))
        return event.pixelDelta().y();
    return event.angleDelta().y() / unitsPerNotch * QGuiApplication::styleHints()->wheelScrollLines()
        * rowHeight;
}

} // namespace

bool EditorView::isThirdClick(const QMouseEvent& event) const
{
    if (!m_doubleClick)
        return false;
    const QStyleHints& hints = *QGuiApplication::styleHints();
    const ulong elapsed = event.timestamp() - m_doubleClick->time;
    const double distance = (event.position() - m_doubleClick->place).manhattanLength();
    return elapsed <= static_cast<ulong>(hints.mouseDoubleClickInterval())
        && distance <= hints.mouseDoubleClickDistance();
}

void EditorView::pressAt(QPointF place, Granularity granularity, Extend extend)
{
    m_isSelecting = true;
    m_dragPlace = place;
    m_text.mousePressed(place.x() - horizontalInset, place.y(), granularity, extend);
    restartBlinking();
}

void EditorView::mousePressEvent(QMouseEvent* event)
{
    m_text.commitComposition();
    if (event->button() == Qt::MiddleButton)
        return pastePrimarySelectionAt(event->position());
    if (event->button() != Qt::LeftButton)
        return;
    const auto granularity = isThirdClick(*event) ? Granularity::line : Granularity::character;
    const auto extend = event->modifiers() & Qt::ShiftModifier ? Extend::yes : Extend::no;
    m_doubleClick.reset();
    const bool isPlain = granularity == Granularity::character && extend == Extend::no;
    if (isPlain && isOnSelection(event->position()))
        m_pressOnSelection = event->position();
    else
        pressAt(event->position(), granularity, extend);
}

void EditorView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return mousePressEvent(event);
    m_pressOnSelection.reset();
    m_doubleClick = DoubleClick{event->timestamp(), event->position()};
    pressAt(event->position(), Granularity::word, Extend::no);
}

void EditorView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_pressOnSelection) {
        const double distance = (event->position() - *m_pressOnSelection).manhattanLength();
        if (distance >= QApplication::startDragDistance())
            startDrag();
        return;
    }
    if (!m_isSelecting)
        return;
    m_dragPlace = event->position();
    drag();
    const bool isOutside = m_dragPlace.y() < 0 || m_dragPlace.y() >= height();
    if (!isOutside)
        m_autoscroll.stop();
    else if (!m_autoscroll.isActive())
        m_autoscroll.start(autoscrollInterval, this);
}

void EditorView::drag()
{
    m_text.mouseDragged(m_dragPlace.x() - horizontalInset, m_dragPlace.y());
}

void EditorView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (const auto place = std::exchange(m_pressOnSelection, std::nullopt)) // nothing was dragged: a click
        pressAt(*place, Granularity::character, Extend::no);
    if (!m_isSelecting)
        return;
    m_isSelecting = false;
    m_autoscroll.stop();
    m_text.mouseReleased();
}

void EditorView::pastePrimarySelectionAt(QPointF place)
{
    if (!m_text.isEditable())
        return;
    const TextPosition position = m_text.positionAt(place.x() - horizontalInset, place.y());
    m_text.select(Selection::at(position));
    m_text.paste(Clipboard::Buffer::primarySelection);
}

void EditorView::wheelEvent(QWheelEvent* event)
{
    const double ratio = devicePixelRatioF();
    m_wheelRest += wheelPixels(*event, m_shaper.metrics().height);
    // Only whole device pixels keep text sharp; the allowance is for sums that are whole but for an error of
    // rounding.
    const double whole = std::trunc(m_wheelRest * ratio + std::copysign(1e-6, m_wheelRest)) / ratio;
    m_wheelRest -= whole;
    if (whole != 0)
        m_text.scrollBy(-whole);
    event->accept();
}

QMenu* EditorView::makeContextMenu()
{
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const bool hasSelection = !m_text.selection().isEmpty();
    const auto add = [&](const QString& title, bool isEnabled, void (*run)(PlainTextView&)) {
        menu->addAction(title, this, [this, run] { run(m_text); })->setEnabled(isEnabled);
    };
    add(QStringLiteral("Вырезать"), hasSelection && m_text.isEditable(),
        [](PlainTextView& text) { text.cut(); });
    add(QStringLiteral("Копировать"), hasSelection, [](PlainTextView& text) { text.copy(); });
    add(QStringLiteral("Вставить"), m_text.isEditable() && m_clipboard.hasText(),
        [](PlainTextView& text) { text.paste(); });
    menu->addSeparator();
    add(QStringLiteral("Выбрать все"), !m_text.text().isEmpty(),
        [](PlainTextView& text) { text.selectAll(); });
    return menu;
}

void EditorView::contextMenuEvent(QContextMenuEvent* event)
{
    QPoint place = event->globalPos();
    if (event->reason() == QContextMenuEvent::Mouse) {
        const TextPosition position = m_text.positionAt(event->x() - horizontalInset, event->y());
        if (!m_text.selection().range().contains(position.offset))
            m_text.select(Selection::at(position));
    } else {
        place = mapToGlobal(m_frame.caret.value_or(QRectF()).bottomLeft().toPoint());
    }
    makeContextMenu()->popup(place);
}

} // namespace quillmark
