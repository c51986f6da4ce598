// What every view draws with: fonts sized in pixels, theme colours, hairlines and symbols. Main thread only.
#pragma once

#include "editor/Theme.h"

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>

#include <string_view>

class QPainter;

namespace quillmark {

/// The desktop's proportional font. `pixels` are device-independent and need not be whole.
QFont systemFont(double pixels, QFont::Weight weight = QFont::Normal);
QFont monospacedFont(double pixels);

/// The colour for the appearance in effect. Views ask for it each time they draw.
QColor color(ThemeColor name);

/// `text` on one line: line breaks and tabs become spaces.
QString singleLine(std::string_view text);

/// The rectangle moved and sized to whole device pixels.
QRectF snapped(const QPainter& painter, const QRectF& rect);

/// A point in whole device pixels, at least one: what a line of one point is drawn with.
double strokeWidth(const QPainter& painter);

/// A rounded rectangle on whole device pixels, its border of one point within `rect`.
void drawRounded(
    QPainter& painter, const QRectF& rect, double radius, const QColor& line, const QColor& ground);

/// What marks a row of a list: rounded, and inset from the edges of the list.
void paintRowGround(QPainter& painter, const QRectF& row, const QColor& ground);

/// Lines one device pixel thick along an inner edge of `rect`.
void drawHairline(QPainter& painter, const QRectF& rect, Qt::Edge edge, const QColor& color);

/// A symbol from the icon set in a square box; nothing when there is no such symbol.
void drawSymbol(QPainter& painter, std::string_view name, const QRectF& box, const QColor& color);

/// A filled circle around the centre of `box`.
void drawDot(QPainter& painter, const QRectF& box, double diameter, const QColor& color);

} // namespace quillmark
