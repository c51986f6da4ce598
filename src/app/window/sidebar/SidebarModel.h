// The rows of the sidebar for Qt's views: open files and the notes that the search leaves, read from AppState
// whenever they are asked for.
#pragma once

#include "app/window/sidebar/SidebarLayout.h"
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
    bool isSearching() const { return !m_app.store.searchQuery->empty(); }

    QModelIndex firstNote() const; ///< of those shown; invalid when there is none

    /// No note matches, and none can be found any more.
    bool hasFoundNothing() const;

    /// What a row shows, for as long as it shows it: the id of the tab or the note; nothing for a title.
    std::optional<Uuid> identity(const QModelIndex& index) const;
    QModelIndex indexOf(const Uuid& identity) const; ///< invalid when it has no row

    int rowCount(const QModelIndex& parent = {}) const override;
    /// The text of a row, its tool tip, and for a screen reader a note's second line.
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    void searchEnded();

private:
    struct ShownNote {
        Uuid id;
        size_t place = 0; ///< among the notes of the store
    };

    QString rowText(const QModelIndex& index) const;
    void rowsChanged();
    std::vector<ShownNote> shownNotes() const;
    void watchTabs();
    void titleChanged(const Uuid& tabID);

    AppState& m_app;
    SidebarLayout m_layout;
    std::vector<Uuid> m_files;
    std::vector<ShownNote> m_notes;
    std::vector<Connection> m_connections;
    std::vector<Connection> m_tabConnections;
};

} // namespace quillmark
