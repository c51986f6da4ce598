// The rows of the sidebar for Qt's views: open files and notes, read from AppState whenever they are asked
// for.
#pragma once

#include "app/window/SidebarLayout.h"
#include "core/AppState.h"

#include <QAbstractListModel>

namespace quillmark {

class SidebarModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit SidebarModel(AppState& app, QObject* parent = nullptr);

    const SidebarLayout& layout() const { return m_layout; }
    SidebarLayout::Item item(const QModelIndex& index) const { return m_layout.item(index.row()); }
    const Note* note(const QModelIndex& index) const; ///< null when the row is not a note
    std::shared_ptr<EditorTab> fileTab(const QModelIndex& index) const; ///< null when the row is not a file
    bool isActive(const QModelIndex& index) const; ///< shows what the active tab shows
    QModelIndex activeIndex() const; ///< invalid when the active tab has no row

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    void rowsChanged();
    void watchTitles();
    void titleChanged(const Uuid& tabID);

    AppState& m_app;
    SidebarLayout m_layout;
    std::vector<Connection> m_connections;
    std::vector<Connection> m_titleConnections;
};

} // namespace quillmark
