// A note in the sidebar: its title and below it a line of what follows.
#pragma once

#include <QFont>
#include <QString>

class QPainter;
class QRectF;

namespace quillmark {

struct Note;

class NoteRow {
public:
    NoteRow();

    /// Draws the two lines into `box`, cut at its width.
    void paint(QPainter& painter, const QRectF& box, const Note& note) const;

    /// The second line: the preview, or what there is instead of one.
    static QString previewLine(const Note& note);

private:
    QFont m_titleFont;
    QFont m_previewFont;
};

} // namespace quillmark
