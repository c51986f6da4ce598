#include "app/window/sidebar/NoteRow.h"

#include "app/look/Paint.h"
#include "notes/Note.h"

namespace quillmark {

void NoteRow::paint(QPainter& painter, const QRectF& box, const Note& note) const
{
    m_row.paint(painter, box, singleLine(note.title), previewLine(note));
}

QString NoteRow::previewLine(const Note& note)
{
    if (!note.preview.empty())
        return singleLine(note.preview);
    return note.byteSize > 0 ? QStringLiteral("Нет дополнительного текста") : QStringLiteral("Пусто");
}

} // namespace quillmark
