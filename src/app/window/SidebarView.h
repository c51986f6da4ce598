// The left column: the button for a new note, the open files and the notes.
#pragma once

#include "app/window/SidebarModel.h"

#include <QWidget>

class QMenu;

namespace quillmark {

class SidebarList;

class SidebarView : public QWidget {
    Q_OBJECT

public:
    SidebarView(AppState& app, QWidget* parent);

    SidebarList& list() { return *m_list; }
    SidebarModel& model() { return *m_model; }
    /// The menu of a row; null when the row has none.
    QMenu* makeContextMenu(const QModelIndex& index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void choose(const QModelIndex& index);

    AppState& m_app;
    SidebarModel* m_model;
    SidebarList* m_list;
    Connection m_activeTabConnection;
};

} // namespace quillmark
