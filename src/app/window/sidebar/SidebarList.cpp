#include "app/window/sidebar/SidebarList.h"

#include "app/look/Paint.h"
#include "app/window/sidebar/SidebarDelegate.h"

#include <QContextMenuEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>

namespace quillmark {

SidebarList::SidebarList(SidebarModel& model, QWidget* parent)
    : QListView(parent)
    , m_model(model)
{
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setAutoScroll(false);
    setFocusPolicy(Qt::TabFocus); // a click goes on to what it opens, a menu leaves the keyboard where it is
    viewport()->setMouseTracking(true);
    viewport()->setAutoFillBackground(false);
    setAccessibleName(QStringLiteral("Заметки"));
    setItemDelegate(new SidebarDelegate(this));
    connect(&model, &SidebarModel::modelAboutToBeReset, this, &SidebarList::takePicture);
    setModel(&model);
    connect(&model, &SidebarModel::searchEnded, viewport(), qOverload<>(&QWidget::update));
    connect(&model, &SidebarModel::modelReset, this, &SidebarList::restorePicture); // after the selection's
    followActive();
}

void SidebarList::followActive()
{
    makeActiveCurrent();
    if (isVisible()) // until then it has no height that a row could be visible in
        scrollTo(m_model.activeIndex());
    viewport()->update();
}

void SidebarList::makeActiveCurrent()
{
    makeCurrent(m_model.activeIndex());
}

void SidebarList::makeCurrent(const QModelIndex& index)
{
    m_isFollowing = true;
    if (!index.isValid())
        selectionModel()->clear();
    else if (index != currentIndex())
        setCurrentIndex(index);
    m_isFollowing = false;
}

QModelIndex SidebarList::firstRow() const
{
    const QModelIndex first = selectableFrom(0, 1);
    return first.flags() & Qt::ItemIsSelectable ? first : QModelIndex();
}

void SidebarList::enterFromAbove()
{
    const QModelIndex entered = m_model.isSearching() ? m_model.firstNote()
        : currentIndex().isValid()                    ? currentIndex()
                                                      : firstRow();
    if (!entered.isValid())
        return;
    setFocus(Qt::TabFocusReason);
    if (m_model.isSearching())
        setCurrentIndex(entered);
    else
        makeCurrent(entered);
    scrollTo(currentIndex());
    viewport()->update();
}

QRect SidebarList::visualRect(const QModelIndex& index) const
{
    if (!index.isValid())
        return {};
    const int64_t top = layout().top(index.row()) - verticalOffset();
    return {0, int(top), viewport()->width(), layout().height(index.row())};
}

QModelIndex SidebarList::indexAt(const QPoint& point) const
{
    const int row = layout().rowAt(int64_t(point.y()) + verticalOffset());
    return row < 0 ? QModelIndex() : m_model.index(row);
}

void SidebarList::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (!index.isValid())
        return;
    const int64_t height = viewport()->height();
    const int64_t top = layout().top(index.row());
    const int64_t bottom = top + layout().height(index.row());
    const int64_t offset = verticalOffset();
    // The title of a section comes into view with its first row.
    const int64_t upper = index.row() > 0 && !(m_model.index(index.row() - 1).flags() & Qt::ItemIsEnabled)
        ? layout().top(index.row() - 1)
        : top;
    if (hint == PositionAtCenter)
        verticalScrollBar()->setValue(int((top + bottom - height) / 2));
    else if (upper < offset || hint == PositionAtTop)
        verticalScrollBar()->setValue(int(upper));
    else if (bottom > offset + height || hint == PositionAtBottom)
        verticalScrollBar()->setValue(int(bottom - height));
}

void SidebarList::doItemsLayout()
{
    QAbstractItemView::doItemsLayout(); // QListView would measure every row
}

void SidebarList::takePicture()
{
    m_picture = {};
    const QModelIndex active = m_model.activeIndex();
    m_picture.hadActive = active.isValid();
    if (verticalOffset() == 0)
        return;
    const auto add = [this](const QModelIndex& index) {
        if (const auto identity = m_model.identity(index))
            m_picture.rows.push_back({*identity, visualRect(index).top()});
    };
    if (visualRect(active).intersects(viewport()->rect()))
        add(active);
    for (int row = std::max(layout().rowAt(verticalOffset()), 0); row < layout().rowCount(); ++row) {
        const QModelIndex index = m_model.index(row);
        if (visualRect(index).top() >= viewport()->height())
            break;
        add(index);
    }
}

void SidebarList::restorePicture()
{
    for (const auto& [identity, y] : m_picture.rows) {
        if (const QModelIndex index = m_model.indexOf(identity); index.isValid()) {
            verticalScrollBar()->setValue(int(layout().top(index.row()) - y));
            break;
        }
    }
    const QModelIndex active = m_model.activeIndex();
    makeCurrent(active);
    if (isVisible() && active.isValid() && !m_picture.hadActive)
        scrollTo(active);
    viewport()->update();
}

void SidebarList::reset()
{
    m_isFollowing = true;
    QListView::reset();
    m_isFollowing = false;
    updateGeometries();
}

QModelIndex SidebarList::selectableFrom(int row, int step) const
{
    for (; row >= 0 && row < layout().rowCount(); row += step) {
        const QModelIndex index = m_model.index(row);
        if (index.flags() & Qt::ItemIsSelectable)
            return index;
    }
    return currentIndex();
}

QModelIndex SidebarList::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    const int current = currentIndex().isValid() ? currentIndex().row() : -1;
    const int last = layout().rowCount() - 1;
    const int64_t middle = layout().top(std::max(current, 0));
    switch (action) {
    case MoveUp:
    case MovePrevious:
        return selectableFrom(current - 1, -1);
    case MoveDown:
    case MoveNext:
        return selectableFrom(current + 1, 1);
    case MoveHome:
        return selectableFrom(0, 1);
    case MoveEnd:
        return selectableFrom(last, -1);
    case MovePageUp:
        return selectableFrom(std::max(layout().rowAt(middle - viewport()->height()), 0), 1);
    case MovePageDown: {
        const int row = layout().rowAt(middle + viewport()->height());
        return selectableFrom(row < 0 ? last : row, -1);
    }
    case MoveLeft:
    case MoveRight:
        break;
    }
    return currentIndex();
}

int SidebarList::horizontalOffset() const
{
    return 0;
}

int SidebarList::verticalOffset() const
{
    return verticalScrollBar()->value();
}

void SidebarList::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    selectionModel()->select(indexAt(rect.topLeft()), command);
}

QRegion SidebarList::visualRegionForSelection(const QItemSelection& selection) const
{
    QRegion region;
    for (const QModelIndex& index : selection.indexes())
        region += visualRect(index);
    return region;
}

void SidebarList::updateGeometries()
{
    const int64_t hidden = layout().totalHeight() - viewport()->height();
    verticalScrollBar()->setRange(0, int(std::max<int64_t>(hidden, 0)));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(20);
}

void SidebarList::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QListView::currentChanged(current, previous);
    viewport()->update();
    if (!m_isFollowing)
        walkTo(current);
}

void SidebarList::walkTo(const QModelIndex& index)
{
    if (!index.isValid() || !onWalk)
        return;
    const QScopedValueRollback walking(m_isWalking, true);
    onWalk(index);
}

void SidebarList::choose(const QModelIndex& index)
{
    if (index.isValid() && onChoose)
        onChoose(index);
}

void SidebarList::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>&)
{
    viewport()->update(visualRect(topLeft) | visualRect(bottomRight));
}

void SidebarList::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    QStyleOptionViewItem option;
    const int first = std::max(layout().rowAt(int64_t(event->rect().top()) + verticalOffset()), 0);
    for (int row = first; row < layout().rowCount(); ++row) {
        const QModelIndex index = m_model.index(row);
        option.rect = visualRect(index);
        if (option.rect.top() > event->rect().bottom())
            break;
        option.state.setFlag(QStyle::State_MouseOver, index == m_hovered || index == m_menuRow);
        option.state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
        itemDelegate()->paint(&painter, option, index);
    }
    if (m_model.hasFoundNothing())
        paintNothingFound(painter);
}

void SidebarList::paintNothingFound(QPainter& painter) const
{
    const QRectF firstNote(
        0, double(layout().top(layout().rowCount()) - verticalOffset()), viewport()->width(), 28);
    painter.setFont(systemFont(13));
    painter.setPen(color(ThemeColor::secondaryText));
    painter.drawText(firstNote.adjusted(SidebarDelegate::contentInset, 0, -SidebarDelegate::contentInset, 0),
        Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, QStringLiteral("Ничего не найдено"));
}

void SidebarList::resizeEvent(QResizeEvent*)
{
    updateGeometries();
}

void SidebarList::showEvent(QShowEvent* event)
{
    QListView::showEvent(event);
    updateGeometries();
    followActive();
}

void SidebarList::scrollContentsBy(int, int)
{
    setHovered(underMouse() ? indexAt(viewport()->mapFromGlobal(QCursor::pos())) : QModelIndex());
    viewport()->update();
}

void SidebarList::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return choose(currentIndex());
    case Qt::Key_Escape:
        if (onEscape)
            onEscape();
        return;
    case Qt::Key_Up:
        if (currentIndex() == firstRow() && onLeaveUpwards)
            return onLeaveUpwards();
        break;
    default:
        break;
    }
    QListView::keyPressEvent(event);
}

void SidebarList::focusOutEvent(QFocusEvent* event)
{
    QListView::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        makeActiveCurrent(); // one that the keyboard only passed is nothing outside the list
    viewport()->update();
}

void SidebarList::mousePressEvent(QMouseEvent* event)
{
    const QModelIndex index = indexAt(event->position().toPoint());
    if (event->button() != Qt::LeftButton || !(index.flags() & Qt::ItemIsSelectable))
        return;
    const QPersistentModelIndex pressed(index);
    makeCurrent(index);
    choose(pressed);
}

void SidebarList::mouseMoveEvent(QMouseEvent* event)
{
    setHovered(indexAt(event->position().toPoint()));
}

void SidebarList::mouseReleaseEvent(QMouseEvent*) {}

void SidebarList::mouseDoubleClickEvent(QMouseEvent*) {}

void SidebarList::contextMenuEvent(QContextMenuEvent* event)
{
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    if (!(index.flags() & Qt::ItemIsSelectable) || !onContextMenu)
        return;
    const QPoint place = isByKey ? viewport()->mapToGlobal(visualRect(index).center()) : event->globalPos();
    onContextMenu(index, place);
}

bool SidebarList::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Leave)
        setHovered({});
    return QListView::viewportEvent(event);
}

void SidebarList::setMenuRow(const QModelIndex& index)
{
    m_menuRow = index;
    viewport()->update();
}

void SidebarList::setHovered(const QModelIndex& index)
{
    if (m_hovered == index)
        return;
    viewport()->update(visualRect(m_hovered));
    m_hovered = index;
    viewport()->update(visualRect(m_hovered));
}

} // namespace quillmark
