// The left column: the button for a new note, the search field, the open files and the notes.
#pragma once

#include "app/window/sidebar/SidebarModel.h"
#include "core/Commands.h"

#include <QWidget>

class QMenu;

namespace quillmark {

class SearchField;
class SidebarList;

class SidebarView : public QWidget {
    Q_OBJECT

public:
    SidebarView(AppState& app, Shell& shell, QWidget* parent);

    SearchField& searchField() { return *m_search; }
    SidebarList& list() { return *m_list; }
    SidebarModel& model() { return *m_model; }
    /// The menu of a row; null when the row has none.
    QMenu* makeContextMenu(const QModelIndex& index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void wireSearch();
    void choose(const QModelIndex& index);
    void open(const QModelIndex& index);
    void focusEditor();

    AppState& m_app;
    Shell& m_shell;
    SearchField* m_search;
    SidebarModel* m_model;
    SidebarList* m_list;
    Connection m_activeTabConnection;
    Connection m_queryConnection;
};

} // namespace quillmark
