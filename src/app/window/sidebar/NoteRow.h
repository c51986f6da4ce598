// A note in the sidebar: its title and below it a line of what follows.
#pragma once

#include "app/look/TwoLineRow.h"

namespace quillmark {

struct Note;

class NoteRow {
public:
    /// Draws the two lines into `box`, cut at its width.
    void paint(QPainter& painter, const QRectF& box, const Note& note) const;

    /// The second line: the preview, or what there is instead of one.
    static QString previewLine(const Note& note);

private:
    TwoLineRow m_row;
};

} // namespace quillmark
