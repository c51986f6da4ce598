#include "app/look/SymbolButton.h"

#include "app/look/Paint.h"

#include <QPainter>

namespace quillmark {

namespace {

constexpr double groundRadius = 5;
constexpr double labelInset = 10;
constexpr double labelGap = 6;
constexpr double symbolBearing = 2; ///< from the edge of a symbol's box to its strokes
constexpr double labelSize = 13;

} // namespace

SymbolButton::SymbolButton(std::string symbol, double symbolSize, const QString& toolTip, QWidget* parent)
    : QAbstractButton(parent)
    , m_symbol(std::move(symbol))
    , m_symbolSize(symbolSize)
{
    setToolTip(toolTip);
    setAccessibleName(toolTip);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
}

void SymbolButton::setLabel(const QString& label)
{
    setText(label);
    setAccessibleName(label);
    setFont(systemFont(labelSize));
}

void SymbolButton::setTextColor(ThemeColor name)
{
    m_textColor = name;
    update();
}

void SymbolButton::setOpacity(double opacity)
{
    if (m_opacity == opacity)
        return;
    m_opacity = opacity;
    update();
}

QSize SymbolButton::sizeHint() const
{
    if (text().isEmpty())
        return {24, 24};
    const double textWidth = QFontMetricsF(font()).horizontalAdvance(text());
    return QSizeF(2 * labelInset + m_symbolSize + labelGap + textWidth, 28).toSize();
}

void SymbolButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (underMouse() || isDown()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color(isDown() ? ThemeColor::accentTint : ThemeColor::separator));
        painter.drawRoundedRect(snapped(painter, rect()), groundRadius, groundRadius);
    }
    painter.setOpacity(m_opacity);
    QRectF box(0, 0, m_symbolSize, m_symbolSize);
    box.moveCenter(QRectF(rect()).center());
    if (!text().isEmpty())
        box.moveLeft(labelInset - symbolBearing);
    drawSymbol(painter, m_symbol, box, color(ThemeColor::secondaryText));
    if (text().isEmpty())
        return;
    painter.setFont(font());
    painter.setPen(color(m_textColor));
    const QRectF textBox = QRectF(rect()).adjusted(box.right() + labelGap, 0, -labelInset, 0);
    painter.drawText(textBox, Qt::AlignVCenter | Qt::AlignLeft,
        QFontMetricsF(font()).elidedText(text(), Qt::ElideRight, textBox.width()));
}

void SymbolButton::enterEvent(QEnterEvent*)
{
    update();
}

void SymbolButton::leaveEvent(QEvent*)
{
    update();
}

} // namespace quillmark
