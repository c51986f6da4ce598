#include "app/look/TextLabel.h"

#include "app/look/Paint.h"

#include <QPainter>

#include <cmath>

namespace quillmark {

TextLabel::TextLabel(const QFont& font, ThemeColor textColor, QWidget* parent)
    : QWidget(parent)
    , m_textColor(textColor)
{
    setFont(font);
}

void TextLabel::setText(const QString& text)
{
    if (m_text == text)
        return;
    m_text = text;
    m_textWidth = widthOf(text, font());
    setAccessibleName(text);
    updateGeometry();
    update();
}

void TextLabel::setWraps()
{
    m_wraps = true;
    QSizePolicy policy = sizePolicy();
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

int TextLabel::heightForWidth(int width) const
{
    if (!m_wraps)
        return QWidget::heightForWidth(width);
    const QRectF room(0, 0, width, QWIDGETSIZE_MAX);
    return int(std::ceil(QFontMetricsF(font()).boundingRect(room, Qt::TextWordWrap, m_text).height()));
}

int TextLabel::widthOf(const QString& text, const QFont& font)
{
    return int(std::ceil(QFontMetricsF(font).horizontalAdvance(text)));
}

QSize TextLabel::sizeHint() const
{
    return {m_textWidth, int(std::ceil(QFontMetricsF(font()).height()))};
}

QSize TextLabel::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

void TextLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setPen(color(m_textColor));
    if (m_wraps) {
        painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap, m_text);
        return;
    }
    const bool isCut = width() < sizeHint().width();
    painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
        isCut ? QFontMetricsF(font()).elidedText(m_text, Qt::ElideRight, width()) : m_text);
}

} // namespace quillmark
