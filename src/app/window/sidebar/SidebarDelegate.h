// Paints the rows of the sidebar: section titles, open files and notes.
#pragma once

#include "app/window/sidebar/NoteRow.h"
#include "app/window/sidebar/SidebarModel.h"

#include <QAbstractItemDelegate>

namespace quillmark {

class SidebarDelegate : public QAbstractItemDelegate {
    Q_OBJECT

public:
    static constexpr double contentInset = 18; ///< from the edges of the sidebar to the text of a row

    explicit SidebarDelegate(QObject* parent);

    /// The state says whether the mouse is over the row and whether the keyboard is at it.
    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void paintHeader(QPainter& painter, const QRectF& rect, const QModelIndex& index) const;
    void paintFile(QPainter& painter, const QRectF& rect, const QModelIndex& index, bool isActive) const;

    NoteRow m_noteRow;
    QFont m_fileFont;
    QFont m_headerFont;
};

} // namespace quillmark
