#include "app/look/TwoLineRow.h"

#include "app/look/Paint.h"

#include <QPainter>

#include <cmath>

namespace quillmark {

namespace {

constexpr double lineGap = 2;

void drawLine(
    QPainter& painter, const QRectF& box, const QFont& font, ThemeColor textColor, const QString& text)
{
    painter.setFont(font);
    painter.setPen(color(textColor));
    painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        QFontMetricsF(font).elidedText(text, Qt::ElideRight, box.width()));
}

} // namespace

TwoLineRow::TwoLineRow()
    : m_titleFont(systemFont(13, QFont::DemiBold))
    , m_belowFont(systemFont(11))
{
}

void TwoLineRow::paint(QPainter& painter, const QRectF& box, const QString& title, const QString& below) const
{
    const double titleHeight = std::ceil(QFontMetricsF(m_titleFont).height());
    const double belowHeight = std::ceil(QFontMetricsF(m_belowFont).height());
    const double top = box.center().y() - (titleHeight + lineGap + belowHeight) / 2;
    drawLine(
        painter, {box.left(), top, box.width(), titleHeight}, m_titleFont, ThemeColor::foreground, title);
    drawLine(painter, {box.left(), top + titleHeight + lineGap, box.width(), belowHeight}, m_belowFont,
        ThemeColor::secondaryText, below);
}

} // namespace quillmark
