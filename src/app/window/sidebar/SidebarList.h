// The list of the sidebar. Geometry comes from SidebarLayout, so that a hundred thousand notes cost what ten
// do; what is selected is what the model says is active. When rows come and go, what stays keeps its place on
// the screen. Arrow keys and letters walk from row to row, and the keyboard stays in the list.
#pragma once

#include "app/window/sidebar/SidebarModel.h"

#include <QListView>

#include <functional>

namespace quillmark {

class SidebarList : public QListView {
    Q_OBJECT

public:
    SidebarList(SidebarModel& model, QWidget* parent);

    /// The user chose a row, by a click or Enter, to go on there.
    std::function<void(const QModelIndex&)> onChoose;
    /// The user came to a row by keys and wants to see what it holds.
    std::function<void(const QModelIndex&)> onWalk;
    bool isWalking() const { return m_isWalking; } ///< during onWalk
    /// The user went up from the first row.
    std::function<void()> onLeaveUpwards;
    /// The user pressed Escape.
    std::function<void()> onEscape;
    /// The user asked for a row's context menu, at a place on the screen.
    std::function<void(const QModelIndex&, const QPoint&)> onContextMenu;

    /// A menu about this row is open; none when the index is invalid.
    void setMenuRow(const QModelIndex& index);

    /// Makes the active row current, and visible when it is not.
    void followActive();
    /// Takes the keyboard, to the first note found or, without a search, the row that is the current one or
    /// could be.
    void enterFromAbove();
    QModelIndex firstRow() const; ///< of those that can be chosen; may be invalid

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
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    /// What was on the screen before the rows changed.
    struct Picture {
        struct Row {
            Uuid identity;
            int y = 0;
        };
        std::vector<Row> rows; ///< those to hold on to, the dearest first; none when the list was at its top
        bool hadActive = false;
    };

    const SidebarLayout& layout() const { return m_model.layout(); }
    void takePicture();
    void restorePicture();
    void makeCurrent(const QModelIndex& index);
    void makeActiveCurrent();
    void choose(const QModelIndex& index);
    void walkTo(const QModelIndex& index);
    QModelIndex selectableFrom(int row, int step) const;
    void setHovered(const QModelIndex& index);
    void paintNothingFound(QPainter& painter) const;

    SidebarModel& m_model;
    QPersistentModelIndex m_hovered;
    QPersistentModelIndex m_menuRow;
    Picture m_picture;
    bool m_isFollowing = false; ///< the current row moves after the model, not after the user
    bool m_isWalking = false;
};

} // namespace quillmark
