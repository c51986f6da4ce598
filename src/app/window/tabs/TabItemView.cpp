#include "app/window/tabs/TabItemView.h"

#include "app/look/Paint.h"
#include "app/look/SymbolButton.h"
#include "app/window/ItemToolTip.h"
#include "app/window/MainMenu.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

#include <cmath>

namespace quillmark {

namespace {

constexpr double horizontalPadding = 10;
constexpr double verticalPadding = 6;
constexpr double spacing = 6;
constexpr double dirtyDot = 6;
constexpr double fileSymbolBox = 12;
constexpr double largestTitle = 180;
constexpr double cornerRadius = 8;
constexpr int closeSize = 16;
constexpr double closeSymbolBox = 12;

/// The shape of the active tab: round above, square below, so that it joins the page.
QPainterPath joiningShape(const QRectF& rect)
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addRoundedRect(rect, cornerRadius, cornerRadius);
    path.addRect(rect.adjusted(0, rect.height() / 2, 0, 0));
    return path;
}

} // namespace

TabItemView::TabItemView(AppState& app, std::shared_ptr<EditorTab> tab, QWidget* parent)
    : QWidget(parent)
    , m_app(app)
    , m_tab(std::move(tab))
    , m_close(new SymbolButton("xmark", closeSymbolBox, toolTipOf("file.closeTab"), this))
{
    setFont(monospacedFont(12.5));
    connect(m_close, &SymbolButton::clicked, this, &TabItemView::closeClicked);
    m_connections.push_back(m_tab->title.onChange([this](const auto&) { contentsChanged(); }));
    m_connections.push_back(m_tab->isDirty.onChange([this](const auto&) { update(); }));
    m_connections.push_back(m_tab->source.onChange([this](const auto&) { contentsChanged(); }));
    m_connections.push_back(m_app.activeTabID.onChange([this](const auto&) {
        updateCloseOpacity();
        update();
    }));
    setAccessibleName(singleLine(m_tab->title.get()));
    updateCloseOpacity();
}

bool TabItemView::isActive() const
{
    return m_app.activeTabID.get() == m_tab->id;
}

void TabItemView::activate()
{
    m_app.selectTab(m_tab->id);
}

void TabItemView::contentsChanged()
{
    setAccessibleName(singleLine(m_tab->title.get()));
    update();
    Q_EMIT sizeHintChanged();
}

void TabItemView::updateCloseOpacity()
{
    m_close->setOpacity(m_hovering || isActive() ? 0.6 : 0.15);
}

QSize TabItemView::sizeHint() const
{
    const QFontMetricsF metrics(font());
    double width = 2 * horizontalPadding + dirtyDot + spacing + spacing + closeSize;
    width += std::min(metrics.horizontalAdvance(singleLine(m_tab->title.get())), largestTitle);
    if (m_tab->file())
        width += fileSymbolBox + spacing;
    return {int(std::ceil(width)), int(std::ceil(metrics.height() + 2 * verticalPadding))};
}

bool TabItemView::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    // Asked for each time: the file may have another name by now.
    QToolTip::showText(
        static_cast<QHelpEvent*>(event)->globalPos(), itemToolTip(m_app, *m_tab), this, rect());
    return true;
}

void TabItemView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (isActive()) {
        painter.setRenderHint(QPainter::Antialiasing);
        const QPainterPath shape = joiningShape(snapped(painter, rect()));
        painter.fillPath(shape, color(ThemeColor::background));
        if (parentWidget()->hasFocus())
            painter.fillPath(shape, color(ThemeColor::selection));
        painter.setRenderHint(QPainter::Antialiasing, false);
    }
    paintContents(painter, color(isActive() ? ThemeColor::foreground : ThemeColor::secondaryText));
}

void TabItemView::paintContents(QPainter& painter, const QColor& textColor) const
{
    double x = horizontalPadding;
    if (m_tab->isDirty.get())
        drawDot(painter, {x, 0, dirtyDot, double(height())}, dirtyDot, color(ThemeColor::accent));
    x += dirtyDot + spacing;
    if (m_tab->file()) {
        drawSymbol(
            painter, "doc", {x, (height() - fileSymbolBox) / 2, fileSymbolBox, fileSymbolBox}, textColor);
        x += fileSymbolBox + spacing;
    }
    painter.setPen(textColor);
    const QString title = singleLine(m_tab->title.get());
    const QFontMetricsF metrics(font());
    const double room = std::min(m_close->x() - spacing - x, largestTitle);
    const bool fits = metrics.horizontalAdvance(title) <= room;
    painter.drawText(QRectF(x, 0, room + 1, height()), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
        fits ? title : metrics.elidedText(title, Qt::ElideRight, room));
}

void TabItemView::resizeEvent(QResizeEvent*)
{
    m_close->setGeometry(
        width() - int(horizontalPadding) - closeSize, (height() - closeSize) / 2, closeSize, closeSize);
}

void TabItemView::enterEvent(QEnterEvent*)
{
    m_hovering = true;
    updateCloseOpacity();
}

void TabItemView::leaveEvent(QEvent*)
{
    m_hovering = false;
    updateCloseOpacity();
}

void TabItemView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        activate();
}

void TabItemView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::MiddleButton && rect().contains(event->position().toPoint()))
        Q_EMIT closeMiddleClicked();
}

void TabItemView::contextMenuEvent(QContextMenuEvent* event)
{
    openMenu(event->globalPos());
}

void TabItemView::openMenu(const QPoint& place)
{
    // A child of the window: choosing the item takes this view away while the menu is still closing.
    auto* menu = new QMenu(window());
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(
        QStringLiteral("Закрыть вкладку"), window(), [&app = m_app, id = m_tab->id] { app.closeTab(id); });
    menu->popup(place);
}

} // namespace quillmark
