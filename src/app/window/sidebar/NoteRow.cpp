#include "app/window/sidebar/NoteRow.h"

#include "notes/Note.h"

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

NoteRow::NoteRow()
    : m_titleFont(systemFont(13, QFont::DemiBold))
    , m_previewFont(systemFont(11))
{
}

void NoteRow::paint(QPainter& painter, const QRectF& box, const Note& note) const
{
    const double titleHeight = std::ceil(QFontMetricsF(m_titleFont).height());
    const double previewHeight = std::ceil(QFontMetricsF(m_previewFont).height());
    const double top = box.center().y() - (titleHeight + lineGap + previewHeight) / 2;
    drawLine(painter, {box.left(), top, box.width(), titleHeight}, m_titleFont, ThemeColor::foreground,
        singleLine(note.title));
    drawLine(painter, {box.left(), top + titleHeight + lineGap, box.width(), previewHeight}, m_previewFont,
        ThemeColor::secondaryText, previewLine(note));
}

QString NoteRow::previewLine(const Note& note)
{
    if (!note.preview.empty())
        return singleLine(note.preview);
    return note.byteSize > 0 ? QStringLiteral("Нет дополнительного текста") : QStringLiteral("Пусто");
}

} // namespace quillmark
