#include "app/editor/EditorScrollBar.h"

#include "app/look/Paint.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace quillmark {

namespace {

constexpr double thumbWidth = 6;
constexpr double shortestThumb = 32;
constexpr double margin = 3; ///< around the thumb

} // namespace

EditorScrollBar::EditorScrollBar(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::ArrowCursor);
    hide();
}

void EditorScrollBar::setPlace(double top, double height, double documentHeight)
{
    if (top == m_top && height == m_height && documentHeight == m_documentHeight)
        return;
    m_top = top;
    m_height = height;
    m_documentHeight = documentHeight;
    setVisible(m_documentHeight > m_height + 0.5);
    update();
}

QRectF EditorScrollBar::thumb() const
{
    const double track = std::max(1.0, height() - 2 * margin);
    const double length
        = std::clamp(track * m_height / m_documentHeight, std::min(shortestThumb, track), track);
    const double scrollable = std::max(1.0, m_documentHeight - m_height);
    const double top = (track - length) * std::clamp(m_top / scrollable, 0.0, 1.0);
    return {width() - margin - thumbWidth, margin + top, thumbWidth, length};
}

void EditorScrollBar::dragTo(double y)
{
    const double way = height() - 2 * margin - thumb().height();
    const double fraction = way > 0 ? std::clamp((y - m_grabbedAt - margin) / way, 0.0, 1.0) : 0;
    m_scrollRequested.emit(fraction * (m_documentHeight - m_height));
}

void EditorScrollBar::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), color(ThemeColor::background));
    QColor tint = color(ThemeColor::secondaryText);
    tint.setAlphaF(m_isDragging || underMouse() ? 0.7F : 0.4F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tint);
    painter.drawRoundedRect(snapped(painter, thumb()), thumbWidth / 2, thumbWidth / 2);
}

void EditorScrollBar::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const QRectF grip = thumb();
    const double y = event->position().y();
    const bool isOnThumb = y >= grip.top() && y <= grip.bottom();
    m_grabbedAt = isOnThumb ? y - grip.top() : grip.height() / 2; // beside the thumb it comes to the mouse
    m_isDragging = true;
    if (!isOnThumb)
        dragTo(y);
    update();
}

void EditorScrollBar::mouseMoveEvent(QMouseEvent* event)
{
    if (m_isDragging)
        dragTo(event->position().y());
}

void EditorScrollBar::mouseReleaseEvent(QMouseEvent*)
{
    m_isDragging = false;
    update();
}

void EditorScrollBar::enterEvent(QEnterEvent*)
{
    update();
}

void EditorScrollBar::leaveEvent(QEvent*)
{
    update();
}

} // namespace quillmark
