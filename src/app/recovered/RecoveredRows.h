// The rows of the list of recovered texts: the first line, and below it when it was kept and what file it
// belongs to.
#pragma once

#include "app/look/TwoLineRow.h"
#include "core/AppState.h"

#include <QAbstractItemDelegate>
#include <QAbstractListModel>

namespace quillmark {

class RecoveredModel : public QAbstractListModel {
    Q_OBJECT

public:
    RecoveredModel(AppState& app, QObject* parent);

    const RecoveredEntry* entry(const QModelIndex& index) const; ///< null when there is none

    int rowCount(const QModelIndex& parent = {}) const override;
    /// The two lines, the second one as its description, and the path as the tool tip.
    QVariant data(const QModelIndex& index, int role) const override;

private:
    AppState& m_app;
    Connection m_connection;
    RecoveredTexts::Entries m_entries; ///< what the rows stand for until the view knows of others
};

class RecoveredDelegate : public QAbstractItemDelegate {
    Q_OBJECT

public:
    using QAbstractItemDelegate::QAbstractItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    TwoLineRow m_row;
};

} // namespace quillmark
