#include "app/window/sidebar/SidebarDelegate.h"

#include "app/look/Paint.h"

#include <QPainter>

namespace quillmark {

namespace {

constexpr double fileSymbolBox = 14;
constexpr double fileSymbolGap = 4;
constexpr double symbolBearing = 2; ///< from the edge of a symbol's box to its strokes
constexpr double activeDot = 5;

std::optional<ThemeColor> groundColor(bool isSelected, QStyle::State state)
{
    if (state & QStyle::State_HasFocus)
        return ThemeColor::selection;
    if (isSelected)
        return ThemeColor::accentTint;
    if (state & QStyle::State_MouseOver)
        return ThemeColor::separator;
    return std::nullopt;
}

} // namespace

SidebarDelegate::SidebarDelegate(QObject* parent)
    : QAbstractItemDelegate(parent)
    , m_fileFont(systemFont(13))
    , m_headerFont(systemFont(11, QFont::DemiBold))
{
}

void SidebarDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const auto& model = static_cast<const SidebarModel&>(*index.model());
    const QRectF rect(option.rect);
    if (!(index.flags() & Qt::ItemIsSelectable))
        return paintHeader(*painter, rect, index);

    const Note* note = model.note(index);
    const bool isActive = model.isActive(index);
    if (const auto ground = groundColor(note && isActive, option.state))
        paintRowGround(*painter, rect, color(*ground));
    const QRectF content = rect.adjusted(contentInset, 0, -contentInset, 0);
    if (note)
        m_noteRow.paint(*painter, content, *note);
    else
        paintFile(*painter, content, index, isActive);
}

void SidebarDelegate::paintHeader(QPainter& painter, const QRectF& rect, const QModelIndex& index) const
{
    painter.setFont(m_headerFont);
    painter.setPen(color(ThemeColor::secondaryText));
    painter.drawText(rect.adjusted(contentInset, 0, -contentInset, -5), Qt::AlignLeft | Qt::AlignBottom,
        index.data().toString());
}

void SidebarDelegate::paintFile(
    QPainter& painter, const QRectF& rect, const QModelIndex& index, bool isActive) const
{
    const QRectF symbol(
        rect.left() - symbolBearing, rect.center().y() - fileSymbolBox / 2, fileSymbolBox, fileSymbolBox);
    drawSymbol(painter, "doc", symbol, color(ThemeColor::secondaryText));
    QRectF text = rect.adjusted(fileSymbolBox + fileSymbolGap, 0, 0, 0);
    if (isActive) {
        drawDot(painter, {rect.right() - activeDot, rect.top(), activeDot, rect.height()}, activeDot,
            color(ThemeColor::accent));
        text.setRight(rect.right() - activeDot - fileSymbolGap);
    }
    painter.setFont(m_fileFont);
    painter.setPen(color(ThemeColor::foreground));
    painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        QFontMetricsF(m_fileFont).elidedText(index.data().toString(), Qt::ElideRight, text.width()));
}

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const auto& model = static_cast<const SidebarModel&>(*index.model());
    return {option.rect.width(), model.layout().height(index.row())};
}

} // namespace quillmark
