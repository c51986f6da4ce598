#include "app/look/Paint.h"

#include "desktop/Fonts.h"
#include "desktop/QtAppearance.h"

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

namespace quillmark {

namespace {

constexpr double thinnestWhole = 1.75;
constexpr double symbolGrid = 16; ///< units that a symbol's drawing is wide

/// Strokes of about two device pixels or more are whole ones, so that their edges are sharp. Thinner ones
/// stay as they are drawn: one and a half would become one here and two there.
QByteArray withWholeStrokes(QByteArray svg, int devicePixels)
{
    static constexpr QByteArrayView attribute(" stroke-width=\"");
    const double pixelsAUnit = devicePixels / symbolGrid;
    for (qsizetype at = svg.indexOf(attribute); at >= 0; at = svg.indexOf(attribute, at)) {
        at += attribute.size();
        const qsizetype length = svg.indexOf('"', at) - at;
        const double pixels = svg.mid(at, length).toDouble() * pixelsAUnit;
        if (pixels >= thinnestWhole)
            svg.replace(at, length, QByteArray::number(std::round(pixels) / pixelsAUnit));
    }
    return svg;
}

QPixmap renderSymbol(std::string_view name, int devicePixels, const QColor& color)
{
    QFile file(QStringLiteral(":/icons/%1.svg").arg(QString::fromUtf8(name)));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray strokes = withWholeStrokes(file.readAll(), devicePixels);
    QSvgRenderer renderer(strokes.replace("currentColor", color.name().toLatin1()));
    QPixmap pixmap(devicePixels, devicePixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    renderer.render(&painter);
    return pixmap;
}

QPixmap symbolPixmap(std::string_view name, int devicePixels, const QColor& color)
{
    const QString key
        = QStringLiteral("symbol/%1/%2/%3").arg(QString::fromUtf8(name)).arg(devicePixels).arg(color.rgb());
    QPixmap pixmap;
    if (!QPixmapCache::find(key, &pixmap)) {
        pixmap = renderSymbol(name, devicePixels, color);
        QPixmapCache::insert(key, pixmap);
    }
    return pixmap;
}

/// Rounds. Half a pixel, give or take the error of a few sums, always goes the same way: else a row would
/// jump by a pixel between two paintings of the same place.
double wholePixel(double place)
{
    return std::floor(place + 0.5 + 1e-4);
}

} // namespace

QFont systemFont(double pixels, QFont::Weight weight)
{
    QFont font = withPixelSize(QFontDatabase::systemFont(QFontDatabase::GeneralFont), pixels);
    font.setWeight(weight);
    return font;
}

QFont monospacedFont(double pixels)
{
    return editorFont({}, pixels);
}

QColor color(ThemeColor name)
{
    return themeColor(name, variantOf(QGuiApplication::palette()));
}

QString singleLine(std::string_view text)
{
    QString line = QString::fromUtf8(text);
    for (QChar& character : line) {
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator
            || character == QChar::ParagraphSeparator)
            character = QChar::Space;
    }
    return line;
}

QRectF snapped(const QPainter& painter, const QRectF& rect)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF device = toDevice.mapRect(rect);
    const QPointF topLeft(wholePixel(device.left()), wholePixel(device.top()));
    const QPointF bottomRight(wholePixel(device.right()), wholePixel(device.bottom()));
    return toDevice.inverted().mapRect(QRectF(topLeft, bottomRight));
}

double strokeWidth(const QPainter& painter)
{
    const double scale = painter.deviceTransform().m11();
    return std::max(std::floor(scale), 1.0) / scale;
}

void drawRounded(
    QPainter& painter, const QRectF& rect, double radius, const QColor& line, const QColor& ground)
{
    const double width = strokeWidth(painter);
    const double half = width / 2;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(line, width));
    painter.setBrush(ground);
    painter.drawRoundedRect(snapped(painter, rect).adjusted(half, half, -half, -half), radius, radius);
    painter.restore();
}

void paintRowGround(QPainter& painter, const QRectF& row, const QColor& ground)
{
    constexpr double inset = 8;
    constexpr double radius = 6;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(snapped(painter, row.adjusted(inset, 1, -inset, -1)), radius, radius);
    painter.restore();
}

void drawHairline(QPainter& painter, const QRectF& rect, Qt::Edge edge, const QColor& color)
{
    const double pixel = 1.0 / painter.deviceTransform().m11();
    QRectF line = snapped(painter, rect);
    switch (edge) {
    case Qt::TopEdge:
        line.setHeight(pixel);
        break;
    case Qt::BottomEdge:
        line.setTop(line.bottom() - pixel);
        break;
    case Qt::LeftEdge:
        line.setWidth(pixel);
        break;
    case Qt::RightEdge:
        line.setLeft(line.right() - pixel);
        break;
    }
    painter.fillRect(line, color);
}

void drawSymbol(QPainter& painter, std::string_view name, const QRectF& box, const QColor& color)
{
    const QRectF place = snapped(painter, box);
    const double scale = painter.deviceTransform().m11();
    QColor opaque = color;
    opaque.setAlpha(255);
    QPixmap pixmap = symbolPixmap(name, qRound(place.width() * scale), opaque);
    pixmap.setDevicePixelRatio(scale);
    const double opacity = painter.opacity();
    painter.setOpacity(opacity * color.alphaF());
    painter.drawPixmap(place.topLeft(), pixmap);
    painter.setOpacity(opacity);
}

void drawDot(QPainter& painter, const QRectF& box, double diameter, const QColor& color)
{
    const QTransform toDevice = painter.deviceTransform();
    const double size = std::max(std::round(diameter * toDevice.m11()), 1.0); // as wide as it is high
    const QPointF corner = toDevice.map(box.center()) - QPointF(size, size) / 2;
    const QRectF dot(wholePixel(corner.x()), wholePixel(corner.y()), size, size);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(toDevice.inverted().mapRect(dot));
    painter.restore();
}

} // namespace quillmark
