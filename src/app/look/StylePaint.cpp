#include "app/look/StylePaint.h"

#include "app/look/Paint.h"

#include <QPainter>
#include <QStyleOption>

namespace quillmark {

namespace {

constexpr int menuTextInset = 14; ///< from the edge of an item to its text
constexpr int menuKeyGap = 36; ///< at least this between an item's text and its keys
constexpr double menuGroundRadius = 4;
constexpr double buttonRadius = 6;
constexpr double thumbInset = 2.5;

void fillRounded(QPainter& painter, const QRectF& rect, double radius, const QColor& ground)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(rect, radius, radius);
    painter.restore();
}

QColor faint(QColor color, double alpha)
{
    color.setAlphaF(float(alpha));
    return color;
}

struct MenuTexts {
    QString title;
    QString keys;
};

MenuTexts menuTexts(const QStyleOptionMenuItem& item)
{
    const qsizetype tab = item.text.indexOf(QLatin1Char('\t'));
    if (tab < 0)
        return {item.text, {}};
    return {item.text.left(tab), item.text.mid(tab + 1)};
}

/// Where checks stand, in front of all texts of a menu that has some.
int checkColumn(const QStyleOptionMenuItem& item)
{
    return item.menuHasCheckableItems ? 16 : 0;
}

void paintStrokes(QPainter& painter, const QPolygonF& line, const QColor& ink)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ink, 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(line);
    painter.restore();
}

/// The check of an item that is on, the arrow of one that has a menu of its own.
void paintMenuSigns(QPainter& painter, const QStyleOptionMenuItem& item)
{
    const double middle = QRectF(item.rect).center().y();
    if (item.checkType != QStyleOptionMenuItem::NotCheckable && item.checked) {
        const QPointF tip(item.rect.left() + menuTextInset + 3, middle + 3.5);
        paintStrokes(painter, QPolygonF({tip + QPointF(-3, -3), tip, tip + QPointF(5.5, -6.5)}),
            color(ThemeColor::accent));
    }
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu) {
        const QPointF tip(item.rect.right() - menuTextInset, middle);
        paintStrokes(painter, QPolygonF({tip + QPointF(-3.5, -3.5), tip, tip + QPointF(-3.5, 3.5)}),
            color(ThemeColor::secondaryText));
    }
}

} // namespace

int menuItemWidth(const QStyleOptionMenuItem& item)
{
    const MenuTexts texts = menuTexts(item);
    const QFontMetrics metrics(item.font);
    const int title = metrics.size(Qt::TextShowMnemonic, texts.title).width();
    // Qt adds the width of the menu's widest keys to each item.
    return checkColumn(item) + title + 2 * menuTextInset
        + (texts.keys.isEmpty() ? menuTextInset : menuKeyGap);
}

QRect scrollBarPart(const QStyleOptionSlider& bar, QStyle::SubControl part, int smallestThumb)
{
    const bool isHorizontal = bar.orientation == Qt::Horizontal;
    const int length = isHorizontal ? bar.rect.width() : bar.rect.height();
    const int extent = isHorizontal ? bar.rect.height() : bar.rect.width();
    const int64_t range = int64_t(bar.maximum) - bar.minimum;
    const int64_t whole = range + bar.pageStep;
    const int thumb = range <= 0 || whole <= 0
        ? length
        : std::clamp(int(int64_t(length) * bar.pageStep / whole), std::min(smallestThumb, length), length);
    const int start = QStyle::sliderPositionFromValue(
        bar.minimum, bar.maximum, bar.sliderPosition, length - thumb, bar.upsideDown);
    const auto stretch = [&](int from, int size) {
        return isHorizontal ? QRect(bar.rect.x() + from, bar.rect.y(), size, extent)
                            : QRect(bar.rect.x(), bar.rect.y() + from, extent, size);
    };
    switch (part) {
    case QStyle::SC_ScrollBarSlider:
        return stretch(start, thumb);
    case QStyle::SC_ScrollBarSubPage:
        return stretch(0, start);
    case QStyle::SC_ScrollBarAddPage:
        return stretch(start + thumb, length - start - thumb);
    case QStyle::SC_ScrollBarGroove:
        return bar.rect;
    default:
        return {}; // there are no arrows
    }
}

void paintPopUp(QPainter& painter, const QRect& rect)
{
    painter.fillRect(rect, color(ThemeColor::background));
    for (const Qt::Edge edge : {Qt::TopEdge, Qt::BottomEdge, Qt::LeftEdge, Qt::RightEdge})
        drawHairline(painter, rect, edge, color(ThemeColor::separator));
}

void paintMenuBarGround(QPainter& painter, const QRect& rect)
{
    painter.fillRect(rect, color(ThemeColor::barBackground));
}

void paintMenuBarItem(QPainter& painter, const QStyleOptionMenuItem& item)
{
    paintMenuBarGround(painter, item.rect);
    if (item.state & (QStyle::State_Selected | QStyle::State_Sunken))
        fillRounded(painter, QRectF(item.rect).adjusted(2, 3, -2, -3), menuGroundRadius,
            color(ThemeColor::separator));
    painter.setPen(color(ThemeColor::foreground));
    painter.drawText(item.rect, Qt::AlignCenter | Qt::TextHideMnemonic | Qt::TextSingleLine, item.text);
}

void paintMenuItem(QPainter& painter, const QStyleOptionMenuItem& item)
{
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        const QRectF line = QRectF(item.rect).adjusted(menuTextInset, 4, -menuTextInset, -4);
        drawHairline(painter, line, Qt::TopEdge, color(ThemeColor::separator));
        return;
    }
    const bool isEnabled = item.state & QStyle::State_Enabled;
    if (isEnabled && item.state & QStyle::State_Selected)
        fillRounded(painter, item.rect, menuGroundRadius, color(ThemeColor::accentTint));
    const MenuTexts texts = menuTexts(item);
    const QRect box = item.rect.adjusted(menuTextInset + checkColumn(item), 0, -menuTextInset, 0);
    painter.setFont(item.font);
    painter.setPen(faint(color(ThemeColor::foreground), isEnabled ? 1.0 : 0.35));
    painter.drawText(
        box, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextHideMnemonic | Qt::TextSingleLine, texts.title);
    painter.setPen(faint(color(ThemeColor::secondaryText), isEnabled ? 1.0 : 0.5));
    painter.drawText(box, Qt::AlignVCenter | Qt::AlignRight | Qt::TextSingleLine, texts.keys);
    paintMenuSigns(painter, item);
}

void paintScrollBar(QPainter& painter, const QStyleOptionSlider& bar, const QRect& thumb)
{
    if (bar.maximum <= bar.minimum)
        return;
    const bool isInUse
        = bar.state & QStyle::State_MouseOver || bar.activeSubControls & QStyle::SC_ScrollBarSlider;
    const QRectF pill = QRectF(thumb).adjusted(thumbInset, thumbInset, -thumbInset, -thumbInset);
    fillRounded(painter, pill, std::min(pill.width(), pill.height()) / 2,
        faint(color(ThemeColor::secondaryText), isInUse ? 0.6 : 0.3));
}

void paintButton(QPainter& painter, const QStyleOption& option)
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    const bool isDown = option.state & (QStyle::State_Sunken | QStyle::State_On);
    const bool isUnderMouse = option.state & QStyle::State_MouseOver && option.state & QStyle::State_Enabled;
    const QColor ground
        = isDown || isUnderMouse ? color(ThemeColor::separator) : color(ThemeColor::barBackground);
    if (!button) { // of a tool bar: flat until it is touched
        if (isDown || isUnderMouse)
            fillRounded(painter, option.rect, menuGroundRadius, ground);
        return;
    }
    const bool isDefault
        = option.state & QStyle::State_Enabled && button->features & QStyleOptionButton::DefaultButton;
    drawRounded(painter, option.rect, buttonRadius,
        color(isDefault ? ThemeColor::accent : ThemeColor::separator), ground);
}

void paintField(QPainter& painter, const QStyleOption& option)
{
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(&option);
    if (!frame || frame->lineWidth <= 0)
        return;
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    drawRounded(painter, option.rect, menuGroundRadius,
        color(hasFocus ? ThemeColor::accent : ThemeColor::separator), color(ThemeColor::background));
}

void paintComboBox(QPainter& painter, const QStyleOptionComboBox& box)
{
    drawRounded(
        painter, box.rect, buttonRadius, color(ThemeColor::separator), color(ThemeColor::barBackground));
    const QPointF tip(box.rect.right() - 12, box.rect.center().y() + 2.5);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color(ThemeColor::secondaryText), 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({tip + QPointF(-3.5, -3.5), tip, tip + QPointF(3.5, -3.5)}));
    painter.restore();
}

void paintHeader(QPainter& painter, const QRect& rect)
{
    painter.fillRect(rect, color(ThemeColor::background));
    drawHairline(painter, rect, Qt::BottomEdge, color(ThemeColor::separator));
}

} // namespace quillmark
