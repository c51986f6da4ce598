// The strokes of Style, one function a control.
#pragma once

#include <QStyle>

class QPainter;
class QStyleOption;
class QStyleOptionComboBox;
class QStyleOptionMenuItem;
class QStyleOptionSlider;

namespace quillmark {

int menuItemWidth(const QStyleOptionMenuItem& item);
QRect scrollBarPart(const QStyleOptionSlider& bar, QStyle::SubControl part, int smallestThumb);

void paintPopUp(QPainter& painter, const QRect& rect);
void paintMenuBarGround(QPainter& painter, const QRect& rect);
void paintMenuBarItem(QPainter& painter, const QStyleOptionMenuItem& item);
void paintMenuItem(QPainter& painter, const QStyleOptionMenuItem& item);
void paintScrollBar(QPainter& painter, const QStyleOptionSlider& bar, const QRect& thumb);
void paintButton(QPainter& painter, const QStyleOption& option);
void paintField(QPainter& painter, const QStyleOption& option);
void paintComboBox(QPainter& painter, const QStyleOptionComboBox& box);
void paintHeader(QPainter& painter, const QRect& rect);

} // namespace quillmark
