// The list of the sidebar. Geometry comes from SidebarLayout, so that a hundred thousand notes cost what ten
// do; what is selected is what the model says is active.
#pragma once

#include "app/window/SidebarModel.h"

#include <QListView>

#include <functional>

namespace quillmark {

class SidebarList : public QListView {
    Q_OBJECT

public:
    SidebarList(SidebarModel& model, QWidget* parent);

    /// The user chose a row, with the mouse or the keyboard.
    std::function<void(const QModelIndex&)> onChoose;
    /// The user asked for a row's context menu, at a place on the screen.
    std::function<void(const QModelIndex&, const QPoint&)> onContextMenu;

    /// Makes the active row current, and visible when it is not.
    void followActive();

    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    void doItemsLayout() override;
    void reset() override;

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override;
    int verticalOffset() const override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void updateGeometries() override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void dataChanged(
        const QModelIndex& topLeft, const QModelIndex& bottomRight, const QList<int>& roles) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    const SidebarLayout& layout() const { return m_model.layout(); }
    QModelIndex selectableFrom(int row, int step) const;
    void setHovered(const QModelIndex& index);

    SidebarModel& m_model;
    QPersistentModelIndex m_hovered;
    bool m_isFollowing = false; ///< the current row moves after the model, not after the user
};

} // namespace quillmark
