// A row of a list in two lines: what it is, and below, quieter, what is to be known of it.
#pragma once

#include <QFont>
#include <QString>

class QPainter;
class QRectF;

namespace quillmark {

class TwoLineRow {
public:
    TwoLineRow();

    /// Draws the lines into `box`, cut at its width.
    void paint(QPainter& painter, const QRectF& box, const QString& title, const QString& below) const;

private:
    QFont m_titleFont;
    QFont m_belowFont;
};

} // namespace quillmark
