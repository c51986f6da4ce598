#include "app/look/TextButton.h"

#include "app/look/Paint.h"

#include <QKeyEvent>
#include <QPainter>

#include <cmath>

namespace quillmark {

TextButton::TextButton(const QFont& font, const QString& toolTip, QWidget* parent)
    : QAbstractButton(parent)
{
    setFont(font);
    setToolTip(toolTip);
    setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
}

void TextButton::setLabel(const QString& label)
{
    setText(label);
    setAccessibleName(label);
    updateGeometry();
}

void TextButton::setTextColor(ThemeColor name)
{
    m_textColor = name;
    update();
}

QSize TextButton::sizeHint() const
{
    const QFontMetricsF metrics(font());
    return {int(std::ceil(metrics.horizontalAdvance(text()))), int(std::ceil(metrics.height()))};
}

void TextButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool isTouched = isDown() || underMouse() || hasFocus();
    QFont shown = font();
    shown.setUnderline(hasFocus());
    painter.setFont(shown);
    painter.setPen(color(isTouched ? ThemeColor::foreground : m_textColor));
    painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, text());
}

void TextButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        return click();
    QAbstractButton::keyPressEvent(event);
}

void TextButton::enterEvent(QEnterEvent*)
{
    update();
}

void TextButton::leaveEvent(QEvent*)
{
    update();
}

} // namespace quillmark
